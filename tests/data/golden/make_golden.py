#!/usr/bin/env python3
"""Golden data files: one for each class that occurs in files, made from the description of the format alone
(docs/format/binary.md). contents.txt says in plain notation what each of them holds.

make_golden.py           writes the files beside this script
make_golden.py --check   compares those that are there, and writes nothing
"""
import collections
import pathlib
import struct
import sys

# A value: its bytes, how a person reads it, and where it stands in a sorted collection (None: it cannot be in one).
Value = collections.namedtuple("Value", "data words order", defaults=[None])
Unit = collections.namedtuple("Unit", "name symbol scale offset exponents")

INTEGERS = dict(int8="b", uint8="B", schar="b", int16="h", uint16="H", int32="i", uint32="I", long="i", ulong="I",
                int64="q", uint64="Q")  # fmt: skip
FLOATS = dict(float=("f", "I", 8, 23), double=("d", "Q", 11, 52))  # bits of exponent and of fraction
STRINGS = ("AsciiString", "UnicodeString")
SCALARS = dict(bool=1, int8=2, uint8=3, int16=4, uint16=5, int32=6, uint32=7, long=8, int64=10, uint64=11, float=12,
               double=13)  # fmt: skip
FAMILY = "int8 uint8 int16 uint16 int32 uint32 int64 uint64 float double complex".split()
ARRAYS = "int8 uint8 int16 uint16 int32 uint32 long ulong float double int64 uint64 bool".split()

WITHOUT_SIZE = (*SCALARS.values(), 23, 24)
WITH_CLASS_NAME = (14, 15, 16, 20, 64, 65, 66, 67, 68, 124)

NO_UNIT = Unit("", "", 1.0, 0.0, (0, 0, 0, 0, 0, 0, 0, 0))
MILLIMETER = Unit("Millimeter", "mm", 1e-3, 0.0, (1, 0, 0, 0, 0, 0, 0, 0))
MICROMETER = Unit("Micrometer", "um", 1e-6, 0.0, (1, 0, 0, 0, 0, 0, 0, 0))
CELSIUS = Unit("Celsius", "degC", 1.0, 273.15, (0, 0, 0, 0, 1, 0, 0, 0))
FURLONG = Unit("Furlong", "fur", 201.168, 0.0, (1, 0, 0, 0, 0, 0, 0, 0))
MADE_UP = Unit("Üb", "ü", -0.5, float("inf"), (-128, 127, 1, -1, 2, -2, 3, -3))


def pack(codes, *numbers):
    return struct.pack("<" + codes, *numbers)


def text(content):
    data = content.encode() if isinstance(content, str) else content
    return pack("I", len(data)) + data


def integers(code):
    bits = 8 * struct.calcsize(code)
    lowest, highest = (0, 2**bits - 1) if code.isupper() else (-(2 ** (bits - 1)), 2 ** (bits - 1) - 1)
    return [Value(pack(code, number), str(number), number) for number in (0, 1, lowest, highest)]


def floats(code, raw, exponent_bits, fraction_bits):
    """0, 1, lowest, highest, -0, the smallest above 0, both infinities, and the quiet NaN."""
    one = (2 ** (exponent_bits - 1) - 1) << fraction_bits
    infinity = (2**exponent_bits - 1) << fraction_bits
    minus = 1 << (exponent_bits + fraction_bits)
    values = []
    for bits in (0, one, minus | (infinity - 1), infinity - 1, minus, 1, infinity, minus | infinity,
                 infinity | 1 << (fraction_bits - 1)):  # fmt: skip
        number = struct.unpack("<" + code, pack(raw, bits))[0]
        words = format(number, ".9g" if code == "f" else ".17g")
        values.append(Value(pack(raw, bits), words, number if number == number else None))
    return values


def unit(one):
    data = text(one.name) + text(one.symbol) + pack("dd8b", one.scale, one.offset, *one.exponents)
    return Value(data, f"unit {tuple(one)}")


def unitized(number, one):
    order = (one.exponents, number * one.scale + one.offset, one.name) if number == number else None
    number_data = pack("d", number) if number == number else pack("Q", 0x7FF8 << 48)
    return Value(number_data + unit(one).data, f"{number} of {unit(one).words}", order)


def string(data):
    plain = data.decode(errors="backslashreplace").replace("\0", "\\x00")
    return Value(text(data), f'"{plain}"', data)


def samples(element):
    """The values of an element type; all else is made of them."""
    if element in INTEGERS:
        return integers(INTEGERS[element])
    if element in FLOATS:
        return floats(*FLOATS[element])
    if element.startswith("complex"):
        parts = samples(element.partition("_")[2] or "double")
        return [Value(a.data + b.data, f"({a.words}, {b.words})") for a, b in zip(parts, reversed(parts))]
    return {
        "bool": [Value(b"\0", "false", 0), Value(b"\1", "true", 1)],
        "UnitizedValue": [unitized(0.0, NO_UNIT), unitized(2.5, MILLIMETER), unitized(-0.0, CELSIUS),
                          unitized(float("nan"), FURLONG)],
        "AsciiString": [string(data) for data in (b"", b"a", "Grüße".encode(), b"a\0b", b"\xff\xfe")],
        "UnicodeString": [string(data.encode()) for data in ("", "a", "ö", "\U0001F600")],
    }[element]  # fmt: skip


def joined(values):
    return b"".join(value.data for value in values)


def listed(values):
    return "[" + ", ".join(value.words for value in values) + "]"


def sequence(values, in_front=b""):
    return Value(in_front + pack("Q", len(values)) + joined(values), listed(values))


def sorted_set(values):
    """Of equal values the first stays."""
    values = sorted((value for value in values if value.order is not None), key=lambda value: value.order)
    return sequence([value for i, value in enumerate(values) if i == 0 or value.order != values[i - 1].order])


def sorted_map(values):
    """Leads from the first of the values to the last."""
    pairs = sorted(zip(values, reversed(values)), key=lambda pair: pair[0].order)
    words = ", ".join(f"{key.words}: {value.words}" for key, value in pairs)
    return Value(pack("Q", len(pairs)) + b"".join(map(joined, pairs)), "{" + words + "}")


def matrix(values, size1, size2, by_columns):
    grid = [[values[(3 * i + j) % len(values)] for j in range(size2)] for i in range(size1)]
    lines = zip(*grid) if by_columns else grid
    words = f"{size1} x {size2}: " + ", ".join(map(listed, grid))
    return Value(pack("QQ", size1, size2) + b"".join(map(joined, lines)), words.rstrip(": "))


def positions(values, one):
    return Value(unit(one).data + pack("Q", len(values)) + joined(values), f"{listed(values)} of {unit(one).words}")


def crossed(pair):
    return Value(joined(pair), " x ".join(value.words for value in pair))


def position_functions():
    spacings = samples("UnitizedValue")
    yield 124, "FixedSpacing1D", numbered(spacings)
    pairs = [*zip(spacings, reversed(spacings)), (unitized(1.0, MILLIMETER), unitized(1000.0, MICROMETER))]
    yield 124, "FixedSpacing2D", numbered(map(crossed, pairs))
    odd = [Value(pack("Q", bits), f"nan of bits {bits:X}") for bits in (0x7FF0000000000001, 2**64 - 1)]
    one, many = samples("double")[1:2], samples("double") + odd
    yield 124, "ArrayPosition1D", {"empty": positions([], NO_UNIT), "one": positions(one, MADE_UP),
                                   "many": positions(many, NO_UNIT)}  # fmt: skip
    grids = dict(empty=[positions([], NO_UNIT)] * 2, one=[positions(one, MADE_UP), positions([], MILLIMETER)],
                 many=[positions(many[:3], NO_UNIT), positions(many, FURLONG)])  # fmt: skip
    yield 124, "ArrayPosition2D", {key: crossed(pair) for key, pair in grids.items()}


def place(signature, function, source, line):
    return text(signature) + text(function) + text(source) + pack("I", line)


def errors():
    raised = ("void Save()", "Save", "BinaryDataFile", 123)
    calls = [("int main()", "main", "Program", 7), ("void Store()", "Store", "Store", 2**32 - 1)]
    unwound = ("void Flush()", "Flush", "DataFile", 0)
    data = text("IOError") + text("Disk full") + text("Qor.Tivor.BinaryDataFile") + pack("I", 2) + place(*raised)
    data += pack("Q", 2) + place(*calls[0]) + place(*calls[1]) + pack("Q", 1) + place(*unwound)
    data += pack("Q", 2) + text("File") + text("a.qordata") + text("Key") + text("")
    words = (f"IOError 'Disk full' of category 'Qor.Tivor.BinaryDataFile', severity 2, raised at {raised}, call stack "
             f"{calls}, unwind stack [{unwound}], variables 'File' = 'a.qordata', 'Key' = ''")  # fmt: skip
    empty = text("Error") + text("") + text("") + pack("I", 0) + place("", "", "", 0) + pack("QQQ", 0, 0, 0)
    return [Value(empty, "Error, severity 0, all else empty"), Value(data, words)]


def entry(key, code, class_name, data):
    width = next(width for width in (1, 2, 4, 8) if len(data) < 1 << 8 * width)
    size = b"" if code in WITHOUT_SIZE else bytes([width]) + len(data).to_bytes(width, "little")
    return text(key) + bytes([code]) + (text(class_name) if code in WITH_CLASS_NAME else b"") + size + data


def container(*entries):
    return b"".join(entry(*one) for one in entries) + bytes(4) + b"\x7f\xff\xff"


def containers():
    inner = container(("text", 21, "", "Grüße".encode()))
    nested = container(("flag", 1, "", b"\1"), ("count", 6, "", pack("i", -2)), ("inner", 125, "", inner))
    words = '{"flag": bool true, "count": int32 -2, "inner": DataContainer {"text": AsciiString "Grüße"}}'
    return {"empty": Value(container(), "{}"), "nested": Value(nested, words)}


def plain(code, number):
    return Value(pack(code, number), str(number))


def word(content):
    return Value(content.encode(), f'"{content}"')


def described(*properties):
    """An object that is stored as its properties: (key, code, class, value) each."""
    words = ", ".join(f'"{key}": {name or code} {value.words}' for key, code, name, value in properties)
    return Value(container(*((key, code, name, value.data) for key, code, name, value in properties)), f"{{{words}}}")


def profile(samples_of, kind, scale, *positions_of):
    array = []
    element, values = samples_of or (None, [])
    if element:
        in_front = pack("I", len(values[0].data))
        array = [("Array", 64, "Array_" + element, sequence(values, in_front))]
    type_id = {"int16": 4, "double": 13, None: 0}[element]
    return described(*array, ("DataKind", 21, "", word(kind)), ("DataScale", 27, "", scale),
                     ("NumPoints", 11, "", plain("Q", len(values))), ("ValueTypeID", 14, "ETypeID", plain("i", type_id)),
                     ("ValueTypeName", 21, "", word(element or "Unknown Type")), ("Version", 21, "", word("1.0")),
                     *positions_of)  # fmt: skip


def surface(samples_of, sizes, kind, origin, *positions_of):
    matrix_of = [("Matrix", samples_of[0], "", samples_of[1])] if samples_of else []
    return described(*matrix_of, ("Dimension1Points", 7, "", plain("I", sizes[0])),
                     ("Dimension2Points", 7, "", plain("I", sizes[1])),
                     ("MatrixType", 14, "EMatrixTypeID", plain("i", samples_of[0] if samples_of else 0)),
                     ("Aspect", 12, "", plain("f", 1.0)), ("DataScale", 27, "", unitized(1.0, NO_UNIT)),
                     ("DataKind", 21, "", word(kind)), ("Version", 21, "", word("1.0")),
                     ("Origin", 14, "Data2D::EOrigin", plain("i", origin)), *positions_of)  # fmt: skip


def measured_arrays():
    numbers = samples("double")
    half = unitized(0.5, MILLIMETER)
    fixed = [("PositionFunction", 124, "FixedSpacing1D", half), ("Extent", 27, "", unitized(1.5, MILLIMETER))]
    uneven = positions(numbers, FURLONG)
    yield 124, "Data1D", {
        "empty": profile(None, "Unknown", unitized(1.0, NO_UNIT)),
        "one": profile(("int16", samples("int16")), "Height", unitized(2.5, MILLIMETER), *fixed),
        "many": profile(("double", numbers), "Unknown", unitized(1.0, NO_UNIT),
                        ("PositionFunction", 124, "ArrayPosition1D", uneven)),
    }  # fmt: skip
    pair = unitized(1.0, MILLIMETER), unitized(1000.0, MICROMETER)
    spaced = [("PositionFunction", 124, "FixedSpacing2D", crossed(pair)), ("Dimension1Extent", 27, "", pair[0]),
              ("Dimension2Extent", 27, "", unitized(2000.0, MICROMETER))]  # fmt: skip
    grid = crossed([positions(numbers[:2], MADE_UP), positions(numbers[:3], NO_UNIT)])
    yield 124, "Data2D", {
        "empty": surface(None, (0, 0), "Unknown", 0),
        "one": surface((82, matrix(samples("int16"), 2, 3, False)), (2, 3), "Unknown", 3, *spaced),
        "many": surface((105, matrix(numbers, 2, 3, True)), (2, 3), "Unknown", 0,
                        ("PositionFunction", 124, "ArrayPosition2D", grid)),
    }  # fmt: skip


def folder(key, *properties):
    return key, 125, "DataContainer", described(*properties)


def channel(kind, *keys):
    return kind, 66, "StdList_AsciiString", sequence([string(key.encode()) for key in keys])


def data_set(metadata, surfaces, profiles, *additional):
    row = 82, matrix(samples("int16"), 1, 3, False)
    made = [(key, 124, "Data2D", surface(row, (1, 3), kind, 0)) for key, kind in surfaces]
    lines = [(key, 124, "Data1D", profile(("int16", samples("int16")), kind, unitized(1.0, NO_UNIT)))
             for key, kind in profiles]  # fmt: skip
    return described(folder("MetaData", ("DataFormat", 21, "", word("QOR Data Set")), *metadata),
                     folder("2D_Data", *made), folder("1D_Data", *lines), *additional)  # fmt: skip


def data_sets():
    unknown = [folder("2D_Channels", channel("Unknown", "s")), folder("1D_Channels", channel("Unknown", "p"))]
    kinds = folder("2D_Channels", channel("Height", "b", "a"), channel("Intensity", "image"))
    metadata = [kinds, ("PrimaryData2D", 21, "", word("b")), folder("1D_Channels", channel("Height", "b")),
                ("DataSetName", 21, "", word("Name"))]  # fmt: skip
    surfaces = [("b", "Height"), ("image", "Intensity"), ("a", "Height")]
    note = "Note", 1, "bool", Value(b"\1", "true")
    return {"empty": data_set([], [], []), "one": data_set(unknown, [("s", "")], [("p", "")]),
            "many": data_set(metadata, surfaces, [("b", "Height")], note)}  # fmt: skip


def numbered(values):
    return {str(i): value for i, value in enumerate(values)}


def by_count(form, values):
    return {"empty": form([]), "one": form(values[1:2]), "many": form(values)}


def collections_of(element, code):
    sets = ["StdSet_", "StdUnorderedSet_"] if element in STRINGS else ["StdSet_"]
    for prefix in ["StdVector_", "StdList_", "StdDeque_"] + sets:
        yield code, prefix + element, by_count(sorted_set if prefix in sets else sequence, samples(element))


def rows():
    """(code, class, values by key) of each file."""
    yield from ((code, element, numbered(samples(element))) for element, code in SCALARS.items())
    for code, name, elements in ((14, "Signed", "int8 int16 int32 int64"), (16, "Floating", "float double"),
                                 (15, "Unsigned", "uint8 uint16 uint32 uint64")):  # fmt: skip
        numbers = [samples(element) for element in elements.split()]
        yield code, "Golden::" + name, {f"{len(v.data)}-{i}": v for values in numbers for i, v in enumerate(values)}
    for element in ("int16", "int32", "long", "int64", "float", "double"):
        yield 20, "complex_" + element, numbered(samples("complex_" + element))
    for code, element in zip((21, 22), STRINGS):
        yield code, element, numbered(value._replace(data=value.data[4:]) for value in samples(element))
    ticks = (0, 1, -1, -(2**63), 2**63 - 1, 116444736000000000)
    for code, name in ((23, "QORTime"), (24, "QORElapse")):
        yield code, name, numbered(Value(b"\1" + pack("q", number), f"{number} ticks") for number in ticks)
    yield 25, "QORError", numbered(errors())
    yield 26, "UnitDescriptor", numbered(map(unit, (NO_UNIT, MILLIMETER, CELSIUS, MADE_UP)))
    yield 27, "UnitizedValue", numbered(samples("UnitizedValue"))
    for position, element in enumerate(FAMILY + ["UnitizedValue"]):
        yield 32 + position, "Vector_" + element, by_count(sequence, samples(element))
    for first, name in ((80, "Matrix_"), (96, "FortranMatrix_")):
        for position, element in enumerate(FAMILY):
            shapes = dict(empty=(0, 0), row=(1, 3), many=(2, 3))
            yield first + position, name + element, {
                key: matrix(samples(element), *shape, first == 96) for key, shape in shapes.items()
            }
    for element in ARRAYS:
        size = pack("I", len(samples(element)[0].data))
        yield 64, "Array_" + element, by_count(lambda values, size=size: sequence(values, size), samples(element))
    for element, code in [*((element, 65) for element in ARRAYS + ["schar"]), *((element, 66) for element in STRINGS),
                          ("UnitizedValue", 68)]:  # fmt: skip
        yield from collections_of(element, code)
    for element in STRINGS:
        for prefix in ("StdMap_", "StdUnorderedMap_"):
            yield 67, prefix + element, by_count(sorted_map, samples(element))
    yield 28, "DataSet", data_sets()
    yield from position_functions()
    yield from measured_arrays()
    yield 125, "DataContainer", containers()


def files():
    contents = ["The value under each key of each file. nan is 7FC00000 or 7FF8000000000000; (real, imaginary);",
                "[sequence]; {map}; rows x columns: [row], [row]; unit (name, symbol, scale, offset, exponents);",
                "\\xNN in a text is that byte."]  # fmt: skip
    made = {}
    for code, name, values in sorted(rows(), key=lambda row: row[0]):
        file_name = f"{code:03}-{name.removeprefix('Golden::')}.qordata"
        contents.append(f"\n{file_name}" + (f", class {name}" if "::" in name else ""))
        contents += [f'  "{key}": {value.words}' for key, value in values.items()]
        entries = [(key, code, name, value.data) for key, value in values.items()]
        made[file_name] = b"QOR DATA\1\0\0A" + container(*entries)
    return made | {"contents.txt": "\n".join(contents + [""]).encode()}


def main(arguments):
    script = pathlib.Path(__file__).resolve()
    made = files()
    if arguments == ["--check"]:
        # What stands in the XML files is compared with the binary ones by tests/house/foreign_xml.py.
        others = [script, *script.parent.glob("*.qordml")]
        there = {path.name: path.read_bytes() for path in script.parent.iterdir() if path not in others}
        wrong = sorted(name for name in made.keys() | there.keys() if made.get(name) != there.get(name))
        return "not as they are made: " + ", ".join(wrong) if wrong else 0
    if arguments:
        return __doc__
    for name, content in made.items():
        (script.parent / name).write_bytes(content)
    return 0


sys.exit(main(sys.argv[1:]))
