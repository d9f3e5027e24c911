#!/usr/bin/env python3
"""Whether files of measurements are what their formats ask for, by a reader that shares no line with the library's.

foreign_measurements.py TIVOR WORK DATA...

X3P files of every form are made here, taken through `TIVOR convert` to a binary data file and back, and must hold the
same points then; so must the real files of the folders DATA, also in the other formats. What was written is checked for
strictness: entries, checksums, elements in the order of the schema, dates.
"""
import hashlib
import itertools
import json
import math
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import xml.etree.ElementTree as ET
import zipfile

NAMESPACE = "{http://www.opengps.eu/2008/ISO5436_2}"
TYPES = {"I": "h", "L": "i", "F": "f", "D": "d"}
DATE = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(\.\d+)?(Z|[+-]\d\d:\d\d)?")
DATUM = re.compile(r"([-+]?\d*\.?\d+([eE][-+]?\d{1,4})?)?(;[-+]?\d*\.?\d+([eE][-+]?\d{1,4})?)*")
ORDER = {  # the children of an element, in the schema's order; those in brackets may be missing
    "ISO5436_2": "Record1 [Record2] Record3 Record4 [VendorSpecificID]",
    "Record1": "Revision FeatureType Axes",
    "Axes": "CX CY CZ [Rotation]",
    "CX": "AxisType DataType Increment Offset",
    "Record2": "Date [Creator] Instrument CalibrationDate ProbingSystem [Comment]",
    "Instrument": "Manufacturer Model Serial Version",
    "ProbingSystem": "Type Identification",
    "MatrixDimension": "SizeX SizeY SizeZ",
    "DataLink": "PointDataLink MD5ChecksumPointData [ValidPointsLink] [MD5ChecksumValidPoints]",
    "Record4": "ChecksumFile",
}
ORDER["CY"] = ORDER["CZ"] = ORDER["CX"]


def expect(condition, *what):
    if not condition:
        raise AssertionError(" ".join(str(part) for part in what))


def check_order(element, name):
    allowed = ORDER.get(name)
    if allowed:
        pattern = "".join(f"({word[1:-1]} )?" if word[0] == "[" else f"{word} " for word in allowed.split())
        found = "".join(child.tag + " " for child in element)
        expect(re.fullmatch(pattern, found), name, "holds", found)
    for child in element:
        check_order(child, child.tag)


def read_x3p(path, strict=True):
    """The points as tuples of x, y and z, in metres, z None where missing; in the order of the file."""
    archive = zipfile.ZipFile(path)
    main = next(name for name in archive.namelist() if re.fullmatch(r"([^_].*/)?main\.xml", name))
    folder, xml = main[: -len("main.xml")], archive.read(main)
    root = ET.fromstring(xml)
    if strict:
        expect(archive.namelist()[:2] == ["main.xml", "md5checksum.hex"], archive.namelist())
        expect(archive.read("md5checksum.hex").decode() == hashlib.md5(xml).hexdigest() + " *main.xml\n", "checksum")
        expect(root.tag == NAMESPACE + "ISO5436_2", root.tag)
        check_order(root, "ISO5436_2")
        for date in root.iter("Date"), root.iter("CalibrationDate"):
            expect(all(DATE.fullmatch(element.text) for element in date), "dates")
    axes = [root.find(f"Record1/Axes/C{axis}") for axis in "XYZ"]
    absolute = [axis.find("AxisType").text == "A" for axis in axes]
    number = lambda axis, name, default: float(axis.findtext(name) or default)
    increments = [number(axis, "Increment", 1) for axis in axes]
    offsets = [number(axis, "Offset", 0) for axis in axes]
    record = root.find("Record3")
    matrix = record.find("MatrixDimension")
    size = [int(child.text) for child in matrix] if matrix is not None else [int(record.find("ListDimension").text), 1, 1]
    count = math.prod(size)
    link = record.find("DataLink")
    if link is not None:
        points = archive.read(folder + link.findtext("PointDataLink"))
        expect(hashlib.md5(points).hexdigest() == link.findtext("MD5ChecksumPointData").lower(), "checksum of points")
        layout = "<" + "".join(TYPES[axis.findtext("DataType")] for axis, is_a in zip(axes, absolute) if is_a)
        rows = [list(row) for row in struct.iter_unpack(layout, points)]
        if link.find("ValidPointsLink") is not None:
            bits = archive.read(folder + link.findtext("ValidPointsLink"))
            expect(hashlib.md5(bits).hexdigest() == link.findtext("MD5ChecksumValidPoints").lower(), "checksum of bits")
            rows = [row if bits[i // 8] >> i % 8 & 1 else [] for i, row in enumerate(rows)]
    else:
        texts = [datum.text or "" for datum in record.find("DataList")]
        expect(all(DATUM.fullmatch(text) for text in texts), "pattern of Datum")
        rows = [[float(part) for part in text.split(";")] if text else [] for text in texts]
    expect(len(rows) == count, len(rows), "points of", count)
    result = []
    for i, row in enumerate(rows):
        stored = dict(zip((axis for axis in range(3) if absolute[axis]), row))
        index = [i % size[0], i // size[0] % size[1]] if matrix is not None else [i, i]
        point = []
        for axis in range(3):
            value = stored.get(axis) if absolute[axis] else index[axis]
            point.append(None if value is None or not math.isfinite(value) else increments[axis] * value + offsets[axis])
        result.append(point)
    return size, result


def read_gsf(path):
    data = pathlib.Path(path).read_bytes()
    end = data.index(0)
    lines = data[:end].decode().split("\n")
    expect(lines[0] == "Gwyddion Simple Field 1.0" and lines[-1] == "", lines[0])
    header = dict(line.split(" = ", 1) for line in lines[1:-1])
    begin = end + 4 - end % 4
    expect(data[end:begin] == bytes(begin - end), "padding")
    size = [int(header["XRes"]), int(header["YRes"]), 1]
    expect(header["XYUnits"] == header["ZUnits"] == "m", header)
    heights = struct.unpack(f"<{size[0] * size[1]}f", data[begin:])
    spacing = [float(header["XReal"]) / size[0], float(header["YReal"]) / size[1]]
    points = grid(size, spacing, heights, 1)
    offset = [float(header.get(name, 0)) for name in ("XOffset", "YOffset")]
    return size, [[x + offset[0], y + offset[1], z] for x, y, z in points]


def read_sdf(path):
    header, samples, _ = pathlib.Path(path).read_text().split("\n*\n", 2)
    lines = header.split("\n")
    expect(lines[0] == "aISO-1.0", lines[0])
    fields = dict(re.split(" *= *", line, maxsplit=1) for line in lines[1:])
    size = [int(fields["NumPoints"]), int(fields["NumProfiles"]), 1]
    heights = [math.nan if text == "BAD" else float(text) for text in samples.split()]
    if fields["DataType"] == "3":
        heights = [struct.unpack("f", struct.pack("f", height))[0] for height in heights]
    return size, grid(size, [float(fields["Xscale"]), float(fields["Yscale"])], heights, float(fields["Zscale"]))


def grid(size, spacing, heights, scale):
    expect(len(heights) == size[0] * size[1], len(heights), "samples of", size)
    return [[i % size[0] * spacing[0], i // size[0] * spacing[1], z * scale if math.isfinite(z) else None]
            for i, z in enumerate(heights)]


def from_zero(points):
    return [point if None in point else [point[0] - points[0][0], point[1] - points[0][1], point[2]]
            for point in points]


READERS = {"x3p": read_x3p, "gsf": read_gsf, "sdf": read_sdf}


def compare(expected, found, tolerance, what):
    expect(expected[0] == found[0], what, "has", found[0], "instead of", expected[0])
    for i, (left, right) in enumerate(zip(expected[1], found[1])):
        if left[2] is None or right[2] is None:
            expect(left[2] is None and right[2] is None, what, "point", i, left, right)
            continue
        for a, b in zip(left, right):
            # `None` for the y of a profile
            expect(a is None or b is None or abs(a - b) <= tolerance * abs(a), what, "point", i, left, right)


def make_x3p(path, feature, storage, letter, axes, scaled, missing):
    """A file of one form; returns its points as `read_x3p` does, found without reading it."""
    size = {"SUR": [4, 3, 1], "PRF": [7, 1, 1], "PCL": [5, 1, 1], "layers": [3, 2, 2]}[feature]
    feature = "SUR" if feature == "layers" else feature
    count = math.prod(size)
    offset, increment = scaled
    spacing = [2.5e-6, 1e-6]
    kinds = "AA" if feature == "PCL" or axes == "free" else axes
    heights = [((i * 37) % 50 - 20) * {"I": 1, "L": 1000003}.get(letter, 0.125) for i in range(count)]
    begins = [4e-6, -2e-6] if axes in ("IA", "AI") else [0.0, 0.0]
    lost = {1, count - 1} if missing else set()
    rows = []
    for i in range(count):
        index = [i % size[0], i // size[0] % size[1]]
        places = [(index[axis] ** 2 + (i / 64 if axes == "free" else 0)) * spacing[axis] for axis in range(2)]
        rows.append([place for place, kind in zip(places, kinds) if kind == "A"] + [heights[i]])
    axis_xml = "".join(
        f"<C{name}><AxisType>{kind}</AxisType><DataType>{kind_letter}</DataType><Increment>{inc!r}</Increment>"
        f"<Offset>{off!r}</Offset></C{name}>"
        for name, kind, kind_letter, inc, off in (("X", kinds[0], "D", spacing[0] if kinds[0] == "I" else 1.0, begins[0]),
                                                  ("Y", kinds[1], "D", spacing[1] if kinds[1] == "I" else 1.0, begins[1]),
                                                  ("Z", "A", letter, increment, offset)))
    if storage == "text":
        texts = ("" if i in lost else ";".join(repr(v) if isinstance(v, float) and letter in "FD" or k < len(row) - 1
                                               else str(int(v)) for k, v in enumerate(row))
                 for i, row in enumerate(rows))
        data, files = "<DataList>" + "".join(f"<Datum>{text}</Datum>" for text in texts) + "</DataList>", {}
    else:
        layout = "<" + "d" * kinds.count("A") + TYPES[letter]
        bits = bytearray((count + 7) // 8)
        for i in range(count):
            bits[i // 8] |= (i not in lost) << i % 8
        points = b"".join(struct.pack(layout, *(int(v) if letter in "IL" and k == len(row) - 1 else v
                                                for k, v in enumerate(row))) for row in rows)
        files = {"bindata/data.bin": points, "bindata/valid.bin": bytes(bits)}
        data = (f"<DataLink><PointDataLink>bindata/data.bin</PointDataLink>"
                f"<MD5ChecksumPointData>{hashlib.md5(points).hexdigest()}</MD5ChecksumPointData>"
                f"<ValidPointsLink>bindata/valid.bin</ValidPointsLink>"
                f"<MD5ChecksumValidPoints>{hashlib.md5(bits).hexdigest()}</MD5ChecksumValidPoints></DataLink>")
    dimension = (f"<ListDimension>{count}</ListDimension>" if feature == "PCL" else "<MatrixDimension>" + "".join(
        f"<Size{axis}>{n}</Size{axis}>" for axis, n in zip("XYZ", size)) + "</MatrixDimension>")
    xml = (f'<p:ISO5436_2 xmlns:p="http://www.opengps.eu/2008/ISO5436_2"><Record1><Revision>ISO5436 - 2000</Revision>'
           f"<FeatureType>{feature}</FeatureType><Axes>{axis_xml}</Axes></Record1><Record3>{dimension}{data}</Record3>"
           f"<Record4><ChecksumFile>md5checksum.hex</ChecksumFile></Record4></p:ISO5436_2>").encode()
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as archive:
        archive.writestr("main.xml", xml)
        archive.writestr("md5checksum.hex", hashlib.md5(xml).hexdigest() + " *main.xml\n")
        for name, content in files.items():
            archive.writestr(name, content)


def convert(tivor, source, target, *options, expects=(0,)):
    run = subprocess.run([tivor, "convert", "--force", *options, source, target], capture_output=True, text=True)
    expect(run.returncode in expects, source, "->", target, run.stderr)
    return run


def check_forms(tivor, work):
    made, kept, back = (work / name for name in ("made", "kept", "back"))
    made.mkdir()
    forms = []
    for feature, storage, letter in itertools.product(("SUR", "PRF", "PCL", "layers"), ("text", "binary"), "ILFD"):
        for axes, scaled, missing in itertools.product(("II", "AI", "IA", "AA", "free"),
                                                       ((0.0, 1e-9), (-0.5, 0.001)), (0, 1)):
            if (feature == "PCL" and (axes != "II" or missing)) or (feature == "PRF" and axes in ("IA", "AA", "free")):
                continue
            forms.append((feature, storage, letter, axes, scaled, missing))
            make_x3p(made / f"{len(forms)}.x3p", *forms[-1])
    convert(tivor, made, kept, "--to", "dataset")
    convert(tivor, kept, back, "--to", "x3p")
    for number, form in enumerate(forms, 1):
        expected, found = read_x3p(made / f"{number}.x3p"), read_x3p(back / f"{number}.x3p")
        if form[0] == "PRF":  # has no y
            expected[1][:] = [[x, None, z] for x, _, z in expected[1]]
        compare(expected, found, 1e-15, form)
    return len(forms)


def check_files(tivor, work, folder):
    count = 0
    for name in sorted(json.loads((folder / "expected.json").read_text())):
        source, kind = folder / name, name.rpartition(".")[2]
        if kind not in READERS:
            continue
        original = read_x3p(source, strict=False) if kind == "x3p" else READERS[kind](source)
        for target in READERS:
            run = convert(tivor, source, work / f"file.{target}", expects=(0, 1) if target == "x3p" else (0, 1, 2))
            if run.returncode == 2:  # points on no even grid have a place in X3P only
                expect("evenly spaced" in run.stderr or "expected a surface" in run.stderr or "positions" in run.stderr,
                       name, "->", target, run.stderr)
                continue
            found = READERS[target](work / f"file.{target}")
            expected = original if target != "sdf" else (original[0], from_zero(original[1]))
            compare(expected, found, {"gsf": 1e-7, "sdf": 1e-12, "x3p": 1e-15}[target], f"{name} -> {target}")
            count += 1
    return count


def main(tivor, work, *folders):
    work = pathlib.Path(work)
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    forms = check_forms(tivor, work)
    files = sum(check_files(tivor, work, pathlib.Path(folder)) for folder in folders)
    print(f"{forms} forms of X3P came back; {files} files that were written hold what they were made of")


if __name__ == "__main__":
    main(*sys.argv[1:])
