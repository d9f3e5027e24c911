#!/usr/bin/env python3
"""What numpy makes of the surface in data/, and of a block of it: for each line of words of the tool the size of the
result and the FNV-1a hash, of 64 bits, of its samples, row by row as little-endian doubles. Writes turned.txt beside
this script."""
import pathlib

import numpy

HERE = pathlib.Path(__file__).resolve().parent
SURFACE = numpy.loadtxt(HERE.parents[2] / "data" / "afm_gwyddion_text_export.txt", encoding="utf-8")
BLOCK = SURFACE[10:250, 3:104]  # not square, and no round numbers

TURNS = {
    "rotate": lambda samples: numpy.rot90(samples, -1),
    "rotate --by 90": lambda samples: numpy.rot90(samples, -1),
    "rotate --by 180": lambda samples: numpy.rot90(samples, 2),
    "rotate --by 270": lambda samples: numpy.rot90(samples, 1),
    "flip --along 1": lambda samples: numpy.flip(samples, 0),
    "flip --along 2": lambda samples: numpy.flip(samples, 1),
    "transpose": numpy.transpose,
    "crop --dim1 5:6 --dim2 7:": lambda samples: samples[5:6, 7:],
}


def hash_of(samples):
    value = 0xCBF29CE484222325
    for byte in samples.astype("<f8").tobytes():
        value = (value ^ byte) * 0x100000001B3 & 0xFFFFFFFFFFFFFFFF
    return value


def line(source, words, samples):
    return f"{source} {samples.shape[0]} {samples.shape[1]} {hash_of(samples):016x} {words}\n"


lines = [line("surface", "crop --dim1 10:250 --dim2 3:104", BLOCK)]
for source, samples in ("surface", SURFACE), ("block", BLOCK):
    lines += [line(source, words, turn(samples)) for words, turn in TURNS.items()]
(HERE / "turned.txt").write_text("".join(lines), newline="\n")
