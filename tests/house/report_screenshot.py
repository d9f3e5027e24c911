#!/usr/bin/env python3
"""A report is a page that a browser shows: report_screenshot.py TOOL DIRECTORY FILE

Makes a report of FILE, checks that it is well-formed and asks for nothing from elsewhere, and lets Chromium show it: it
must have many colours, and nothing to complain about. Exit status 77 without Chromium.
"""
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import xml.etree.ElementTree
import zlib


def read_png(data):
    """The rows of an 8-bit PNG, unfiltered, and its bytes per pixel."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "no PNG"
    at, packed = 8, b""
    while at < len(data):
        size, kind = struct.unpack_from(">I4s", data, at)
        body = data[at + 8 : at + 8 + size]
        if kind == b"IHDR":
            width, height, bits, colours = struct.unpack_from(">IIBB", body)
            assert bits == 8 and colours in (2, 6), "other pixels than expected"
        packed += body if kind == b"IDAT" else b""
        at += 12 + size
    step = 3 if colours == 2 else 4
    raw, length, rows = zlib.decompress(packed), width * step, []
    above = bytearray(length)
    for y in range(height):
        kind, row = raw[y * (length + 1)], bytearray(raw[y * (length + 1) + 1 : (y + 1) * (length + 1)])
        for i in range(length) if kind else ():
            left, up, corner = (row[i - step], above[i], above[i - step]) if i >= step else (0, above[i], 0)
            nearest = min((left, up, corner), key=lambda value: abs(left + up - corner - value))
            row[i] = (row[i] + (left, up, (left + up) // 2, nearest)[kind - 1]) & 255
        rows.append(row)
        above = row
    return rows, step


def check_page(page):
    text = page.read_text(encoding="utf-8")
    for element in xml.etree.ElementTree.fromstring(text).iter():
        for name, value in element.attrib.items():
            if name in ("src", "href", "srcset", "style") or name.startswith("on"):
                assert name == "src" and value.startswith("data:image/png;base64,"), f"{name} is {value[:60]}"
        assert element.tag not in ("script", "link", "iframe", "object"), element.tag
    assert not re.search(r"url\(|@import", text.split("</style>")[0]), "the style asks for more"


def main():
    tool, directory, file = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3]
    shutil.rmtree(directory, ignore_errors=True)
    directory.mkdir(parents=True)
    page, picture = directory / "report.html", directory / "report.png"
    subprocess.run([tool, "report", file, page], check=True)
    check_page(page)
    browser = shutil.which("chromium")
    if browser is None:
        sys.exit(77)
    shown = subprocess.run(
        [browser, "--headless=new", "--no-sandbox", "--disable-gpu", f"--screenshot={picture}",
         f"--user-data-dir={directory / 'profile'}", "--window-size=1200,2000", "--enable-logging=stderr", "--v=0",
         page.resolve().as_uri()], stderr=subprocess.PIPE, text=True, timeout=100, check=True)
    complaints = [line for line in shown.stderr.splitlines() if "CONSOLE" in line]
    assert not complaints, "\n".join(complaints)
    rows, step = read_png(picture.read_bytes())
    colours = {bytes(row[i : i + 3]) for row in rows for i in range(0, len(row), step)}
    print(f"{len(rows)} rows of pixels, {len(colours)} colours")
    assert len(rows) == 2000 and len(colours) > 300, "the page is blank, or has no picture"


main()
