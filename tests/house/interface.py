#!/usr/bin/env python3
"""Compares what the libraries offer to the linker with the list in interface.txt, so that it changes only on purpose.

interface.py LIST DIRECTORY            libraries of Linux: their strong symbols are those of the list
interface.py LIST DIRECTORY --windows  libraries of Windows: each symbol of the list is exported
interface.py LIST DIRECTORY --write    writes the list anew
"""
import pathlib
import re
import subprocess
import sys

LIBRARIES = ["QorCore", "Nalix", "Tivor"]


def output_of(*command, text=None):
    return subprocess.run(command, input=text, check=True, text=True, stdout=subprocess.PIPE).stdout


def strong_symbols(library):
    lines = output_of("nm", "--dynamic", "--defined-only", library).splitlines()
    return [name.partition("@")[0] for _, kind, name in map(str.split, lines) if kind in "TBDR"]


def exported_symbols(library):
    table = output_of("x86_64-w64-mingw32-objdump", "-p", library).partition("[Ordinal/Name Pointer] Table")[2]
    return re.findall(r"^\t\[ *\d+\] (\S+)$", table, re.MULTILINE)


def interface_of(symbols):
    names = output_of("c++filt", text="\n".join(symbols)).splitlines()
    # The integers of 64 bits have another name on the other system.
    names = (re.sub(r"\b(\d+)u?ll?\b", r"\1", name.replace("long long", "long")) for name in names)
    return {name for name in names if re.match(r"(\w+ for )?Qor::", name)}


def main():
    listed, directory, *how = sys.argv[1:]
    listed, directory = pathlib.Path(listed), pathlib.Path(directory)
    if how == ["--windows"]:
        found = interface_of(s for name in LIBRARIES for s in exported_symbols(directory / f"{name}.dll"))
    else:
        found = interface_of(s for name in LIBRARIES for s in strong_symbols(directory / f"lib{name}.so"))
    if how == ["--write"]:
        listed.write_text("".join(name + "\n" for name in sorted(found)))
        return
    expected = set(listed.read_text().splitlines())
    differences = [f"missing: {name}" for name in sorted(expected - found)]
    if not how:
        differences += [f"new: {name}" for name in sorted(found - expected)]
    print("\n".join(differences + [f"{len(found)} symbols, {len(differences)} differences"]))
    if not expected or differences:
        sys.exit("The interface differs from the list; where that is meant, write the list anew with --write")


if __name__ == "__main__":
    main()
