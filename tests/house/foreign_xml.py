#!/usr/bin/env python3
"""Other people's readers of XML take what the library writes, and see the same in it.

foreign_xml.py xmllint|expat FOLDER

FOLDER has data files as XML, each with a binary one of the same name. xmllint has to find the documents well-formed. What
expat sees has to be in the binary file, in that order: the keys, and the data where it stands in a default encoding.
Status 77: there is no such reader here.
"""
import base64
import pathlib
import pyexpat
import shutil
import struct
import subprocess
import sys


def elements_of(document):
    """(name, attributes, text) of each element, texts without those of elements inside"""
    elements, opened = [], []

    def start(name, attributes):
        elements.append((name, attributes, []))
        opened.append(elements[-1])

    parser = pyexpat.ParserCreate()
    parser.StartElementHandler = start
    parser.EndElementHandler = lambda _: opened.pop()
    parser.CharacterDataHandler = lambda text: opened[-1][2].append(text)
    parser.Parse(document, True)
    return [(name, attributes, "".join(texts)) for name, attributes, texts in elements]


def decode(attributes, text):
    """The bytes that stand in a default encoding, or None; without zeros at the end where no size tells of them."""
    if attributes.get("encoding") == "def/base64":
        return base64.b64decode(text.replace("\n", ""), validate=True)
    if attributes.get("encoding") == "def/hex64":
        data = int(text, 16).to_bytes(8, "little")
        return data[: int(attributes["size"])] if "size" in attributes else data.rstrip(b"\0")
    return None


def follow(elements, stored):
    """How many of the entries in a document have data in a default encoding."""
    decoded = 0
    place = len("QOR DATA") + 4
    for tag, attributes, text in elements:
        if "typeid" not in attributes:
            continue  # part of a value
        if tag != ("DataContainer" if attributes["typeid"] == "125" else "Data"):
            raise ValueError(f"{tag} {attributes}")
        key = attributes.get("key", "").encode()
        place = stored.index(struct.pack("<I", len(key)) + key, place) + 4 + len(key)
        if place > len(stored) or stored[place] != int(attributes["typeid"]):
            raise ValueError(f"another type than {attributes['typeid']} behind the key {key}")
        data = decode(attributes, text)
        if data is not None:
            decoded += 1
            place = stored.index(data, place) + len(data)
    return decoded


def read_by_expat(documents):
    decoded = 0
    for document in documents:
        try:
            root, *elements = elements_of(document.read_bytes())
            if root[0] != "DataContainer" or not elements:
                raise ValueError(f"the root {root[0]} and {len(elements)} elements in it")
            decoded += follow(elements, document.with_suffix(".qordata").read_bytes())
        except (ValueError, pyexpat.ExpatError) as error:
            sys.exit(f"{document}: {error}")
    print(f"{decoded} entries in default encodings")


def main():
    documents = sorted(pathlib.Path(sys.argv[2]).glob("*.qordml"))
    if not documents:
        sys.exit(f"{sys.argv[2]}: no documents")
    if sys.argv[1] == "expat":
        return read_by_expat(documents)
    if not shutil.which("xmllint"):
        sys.exit(77)
    sys.exit(subprocess.run(["xmllint", "--noout", "--nonet", *documents]).returncode)


if __name__ == "__main__":
    main()
