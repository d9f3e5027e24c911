"""Reads an X3P file as a script with numpy does; MeasurementBench takes the time.

x3p_numpy.py MAIN < POINTS          once, from the text of main.xml and the unpacked points
x3p_numpy.py --serve FILE TARGET    writes the names of these two entries; for each line of the input, which names some
                                    of the steps "unpack", "parse" and "save", it then does these and writes the seconds
                                    that this took
"""
import os
import sys
import time
import zipfile
from xml.etree import ElementTree

import numpy

TYPES = {"I": "<i2", "L": "<i4", "F": "<f4", "D": "<f8"}


def parse(main, points):
    """The heights as layers of rows, and the increments along x and y."""
    root = ElementTree.fromstring(main)
    shape = [int(root.findtext("Record3/MatrixDimension/Size" + axis)) for axis in "ZYX"]
    heights = numpy.frombuffer(points, TYPES[root.findtext("Record1/Axes/CZ/DataType")]).reshape(shape)
    return heights, [float(root.findtext(f"Record1/Axes/C{axis}/Increment")) for axis in "XY"]


def find_entries(name):
    with zipfile.ZipFile(name) as archive:
        main = min((entry for entry in archive.namelist() if entry.endswith("main.xml")), key=len)
        link = ElementTree.fromstring(archive.read(main)).findtext("Record3/DataLink/PointDataLink")
    return main, main.removesuffix("main.xml") + link.replace("\\", "/")


def unpack(name, entries):
    with zipfile.ZipFile(name) as archive:
        return [archive.read(entry) for entry in entries]


def save(name, heights):
    with open(name, "wb") as file:
        file.write(heights)
        file.flush()
        os.fsync(file.fileno())


def serve(name, target):
    entries = find_entries(name)
    texts = unpack(name, entries)
    print(*entries, sep="\n", flush=True)
    for line in sys.stdin:
        begin = time.perf_counter()
        heights, _ = parse(*(unpack(name, entries) if "unpack" in line else texts))
        if "save" in line:
            save(target, heights)
        print(time.perf_counter() - begin, flush=True)


if sys.argv[1] == "--serve":
    serve(*sys.argv[2:])
else:
    parse(sys.argv[1], sys.stdin.buffer.read())
