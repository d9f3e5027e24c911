#!/usr/bin/env python3
"""Who may include whom: fails on every #include that is not downward, and on #ifdef _WIN32
or __linux__ outside the platform layer.

include-edges.py TREE          checks the sources below TREE
include-edges.py --self-test   checks this check, by lines that must and must not be found
"""
import pathlib
import re
import sys

# From bottom to top; each layer sees itself and all before it. `files` stands beside the three above the container.
LAYERS = ["core", "nalix", "model", "serialization", "factory", "container", "properties", "arrays", "datasets"]
SEES = {layer: set(LAYERS[: i + 1]) for i, layer in enumerate(LAYERS)}
SEES["files"] = SEES["container"] | {"files"}
SEES["top"] = SEES["datasets"] | {"files", "top"}
SEES["core"], SEES["nalix"] = {"core"}, {"nalix"}

# include/Tivor is flat: the layer of each header.
TIVOR_HEADERS = {
    "model": "Export Fwd TypeFacts DataObject BuiltInDataObjects GenericWrapper Long32 ScalarData "
    "Serializer XMLContentHandler",
    "serialization": "SerializationManager XMLHandler ArrayDataObjects CollectionSerialization",
    "factory": "DataObjectFactory UnboundDataObject PlugIn",
    "container": "DataContainer",
    "files": "DataFile DataFileTypeManager BinaryDataFile XMLDataFile",
    "properties": "PropertyContainer PropertyHandlers",
    "arrays": "Position1D Position2D MeasuredArray Data1D Data2D MatrixView SampleStatistics LengthBounds "
    "Data2DOperation",
    "datasets": "DataKinds DataChannel DataSet Codec",
}
LAYER_OF_HEADER = {f"include/Tivor/{name}.h": layer for layer, names in TIVOR_HEADERS.items() for name in names.split()}

# Reading needs the factory, so serialization may name it; in return its header knows no more than the model.
FACTORY_HEADER = "include/Tivor/DataObjectFactory.h"

ROOTS = {"Tivor": "include/Tivor", "QorCore": "suite/core/include/QorCore", "Nalix": "suite/nalix/include/Nalix"}
PUBLIC = tuple(root + "/" for root in ROOTS.values())
# Nalix stands alone, so its one question to the system is not in the platform layer of the core.
# The kernels of surfaces ask the processor only, by its compilers' own header.
PLATFORM = ("suite/core/src/platform/", "suite/nalix/src/PlatformMemory.cpp", "src/arrays/SampleKernels.cpp")
MAY_ASK_FOR_PLATFORM = PLATFORM + tuple(root + "/Export.h" for root in ROOTS.values())

STANDARD = re.compile(r"[a-z_0-9]+")
BOOST_IN_PUBLIC = re.compile(r"boost/(shared_array|logic/tribool(_fwd|_io)?)\.hpp")
INCLUDE = re.compile(r'\s*#\s*include\s*([<"])([^>"]+)[>"]')
PLATFORM_NAME = r"\b(_?WIN(32|64)|__MINGW(32|64)__|__linux__|__unix__)\b"
ASKS_FOR_PLATFORM = re.compile(r"\s*#\s*(if|ifdef|ifndef|elif)\b.*" + PLATFORM_NAME)


def layer_of(path):
    """The layer of a file of ours, None when it belongs to none."""
    if path.startswith("include/Tivor/"):
        return LAYER_OF_HEADER.get(path)
    if path.startswith("suite/"):
        return path.split("/")[1]
    if path == "src/BuiltInTypes.cpp" or not path.startswith(("src/", "include/")):
        return "top"
    folder = path.split("/")[1]
    return folder if folder in SEES else None


def resolve(path, quote, name, files):
    """The file of ours that an include names, None when it is a header of somebody else."""
    root, _, rest = name.partition("/")
    if quote == "<":
        return f"{ROOTS[root]}/{rest}" if root in ROOTS else None
    beside = pathlib.PurePosixPath(path).parent / name
    parts = []
    for part in beside.parts:
        parts.pop() if part == ".." and parts else parts.append(part)
    beside = "/".join(parts)
    return beside if beside in files or not path.startswith("src/") else f"src/{name}"


def foreign_allowed(path, name):
    """Whether `path` may include `name`, a header of the standard library, the system or another project."""
    layer = layer_of(path)
    if STANDARD.fullmatch(name) or layer == "top" or path.startswith(PLATFORM):
        return True
    if path.startswith(PUBLIC):
        return layer != "nalix" and BOOST_IN_PUBLIC.fullmatch(name) is not None
    if layer == "core":
        return name.startswith("boost/") or name in ("expat.h", "emmintrin.h")
    return layer != "nalix" and (name.startswith(("boost/", "tsl/")) or name == "xxhash.h")


def fault_of(path, line, files):
    """What is wrong with one line, None when nothing is."""
    if ASKS_FOR_PLATFORM.match(line):
        return None if path.startswith(MAY_ASK_FOR_PLATFORM) else "asks for the platform outside the platform layer"
    include = INCLUDE.match(line)
    if not include:
        return None
    target = resolve(path, *include.groups(), files)
    if target is None:
        return None if foreign_allowed(path, include[2]) else f"may not include {include[2]}"
    if target not in files:
        return f"{include[2]} is none of our headers"
    source, layer = layer_of(path), layer_of(target)
    if path.startswith(PUBLIC) and not target.startswith(PUBLIC):
        return f"a public header may not include {include[2]}, which is not installed"
    sees = SEES["model"] if path == FACTORY_HEADER else SEES[source]
    if layer not in sees and not (source == "serialization" and target == FACTORY_HEADER):
        return f"{source} may not include {include[2]} of {layer or 'no known layer'}"
    return None


def check(texts):
    """The faults in `texts`, a dictionary of path and content."""
    for path, text in sorted(texts.items()):
        if layer_of(path) is None:
            yield f"{path}: no layer is known for this file; TIVOR_HEADERS and LAYERS in .ci/include-edges.py list them"
            continue
        for number, line in enumerate(text.splitlines(), 1):
            fault = fault_of(path, line, texts)
            if fault:
                yield f"{path}:{number}: {fault}"


def read_tree(tree):
    folders = [tree / name for name in ("include", "src", "suite", "tools", "plugins", "examples")]
    paths = [path for folder in folders for path in folder.rglob("*") if path.suffix in (".h", ".cpp")]
    return {path.relative_to(tree).as_posix(): path.read_text(encoding="utf-8") for path in paths}


def self_test():
    ours = ["src/model/Own.h", "src/serialization/Own.h", "suite/core/src/Own.h", "suite/core/include/QorCore/Stream.h",
            "suite/nalix/include/Nalix/Matrix.h", *LAYER_OF_HEADER]
    good = [
        ("include/Tivor/DataObject.h", "#include <QorCore/Stream.h>"),
        ("include/Tivor/DataObject.h", "#include <boost/logic/tribool.hpp>"),
        ("include/Tivor/DataFile.h", "#include <Tivor/DataContainer.h>"),
        ("src/model/X.cpp", '#include "Own.h"'),
        ("src/model/X.cpp", "#include <xxhash.h>"),
        ("src/serialization/X.cpp", '#include "model/Own.h"'),
        ("src/serialization/X.cpp", '#include "../model/Own.h"'),
        ("src/serialization/X.cpp", "#include <Tivor/DataObjectFactory.h>"),
        ("src/datasets/X.cpp", "#include <Tivor/Data2D.h>"),
        ("src/BuiltInTypes.cpp", "#include <Tivor/Codec.h>"),
        ("suite/core/src/X.cpp", "#include <expat.h>"),
        ("suite/core/src/X.cpp", "#include <emmintrin.h>"),
        ("suite/core/src/X.cpp", "// #ifdef _WIN32 stands in the platform layer only"),
        ("suite/core/src/platform/X.cpp", "#include <dlfcn.h>"),
        ("suite/core/src/platform/X.cpp", "#ifdef _WIN32"),
        ("suite/nalix/src/PlatformMemory.cpp", "#include <sys/mman.h>"),
        ("include/Tivor/Export.h", "#if defined(_WIN32)"),
    ]
    bad = [
        ("include/Tivor/DataObject.h", "#include <Tivor/DataContainer.h>"),
        ("include/Tivor/DataObject.h", "#include <Tivor/Unheard.h>"),
        ("include/Tivor/DataObject.h", "#include <boost/format.hpp>"),
        ("include/Tivor/DataObject.h", "#include <xxhash.h>"),
        ("include/Tivor/DataObject.h", "#include <tsl/robin_map.h>"),
        ("include/Tivor/DataObject.h", '#include "../../src/model/Own.h"'),
        ("include/Tivor/Unheard.h", "#include <string>"),
        ("include/Tivor/DataObjectFactory.h", "#include <Tivor/SerializationManager.h>"),
        ("include/Tivor/PropertyContainer.h", "#include <Tivor/DataFile.h>"),
        ("include/Tivor/DataFile.h", "#include <Tivor/PropertyContainer.h>"),
        ("src/model/X.cpp", '#include "serialization/Own.h"'),
        ("src/model/X.cpp", '#include "../serialization/Own.h"'),
        ("src/model/X.cpp", "# include  <Tivor/DataObjectFactory.h>"),
        ("src/model/X.cpp", '#include "Missing.h"'),
        ("src/model/X.cpp", "#include <expat.h>"),
        ("src/model/X.cpp", "#include <unistd.h>"),
        ("src/model/X.cpp", "#elif !defined(_WIN32)"),
        ("suite/nalix/src/X.cpp", "#ifdef __linux__"),
        ("src/serialization/X.cpp", "#include <Tivor/UnboundDataObject.h>"),
        ("src/unheard/X.cpp", "#include <string>"),
        ("suite/core/src/X.cpp", "#include <Tivor/Fwd.h>"),
        ("suite/core/src/X.cpp", "#include <Nalix/Matrix.h>"),
        ("suite/core/src/X.cpp", "#include <xxhash.h>"),
        ("suite/core/include/QorCore/Stream.h", "#include <expat.h>"),
        ("suite/nalix/src/X.cpp", "#include <QorCore/Stream.h>"),
        ("suite/nalix/src/X.cpp", "#include <boost/shared_array.hpp>"),
        ("suite/nalix/include/Nalix/Matrix.h", "#include <boost/shared_array.hpp>"),
        ("examples/demo.cpp", "#ifdef _WIN32"),
    ]
    texts = dict.fromkeys(ours, "")
    wrong = [f"wrongly found: {path}: {line}" for path, line in good if list(check(texts | {path: line}))]
    wrong += [f"not found: {path}: {line}" for path, line in bad if len(list(check(texts | {path: line}))) != 1]
    print(f"{len(good) + len(bad) - len(wrong)} of {len(good) + len(bad)} lines judged as they should be")
    return wrong


def main():
    if sys.argv[1:] == ["--self-test"]:
        faults = self_test()
    else:
        texts = read_tree(pathlib.Path(sys.argv[1]))
        faults = list(check(texts)) if texts else ["no sources there"]
        print(f"{len(texts)} files read")
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


sys.exit(main())
