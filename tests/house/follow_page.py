#!/usr/bin/env python3
"""Does what a page of the documentation says, in an empty folder, and fails where something else comes out.

follow_page.py PAGE SOURCES INSTALLED FOLDER

A paragraph that begins with `name`: and the block of code behind it are a file, the same as in SOURCES, and written
where the reader stands by then. A block "sh" is commands; a block "console" is commands behind "$ " and what they say.
All run in one shell, one after another, with the package INSTALLED as $HOME/tivor and FOLDER, made anew, as $HOME.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
FILE = re.compile(r"`([\w.]+)`: ")
END = "--- end of command, status "


def steps_of(page):
    """(command, what it must say or None, file to be written before or None)"""
    behind = 0
    for block in BLOCK.finditer(page):
        language, text = block.groups()
        paragraph = page[behind : block.start()].strip().split("\n\n")[-1]
        behind = block.end()
        if language == "sh":
            yield from ((line, None, None) for line in text.splitlines())
        elif language == "console":
            for step in re.split(r"^\$ ", text, flags=re.MULTILINE)[1:]:
                command, said = step.split("\n", 1)
                yield command, said, None
        elif named := FILE.match(paragraph):
            yield f'cp "$PAGE_FILES/{named[1]}" .', "", (named[1], text)
        else:
            sys.exit(f"a block that is neither a file nor commands:\n{text}")


def lines_of(text):
    return [line.rstrip() for line in text.splitlines()]


def main():
    page, sources, installed, folder = map(pathlib.Path, sys.argv[1:])
    shutil.rmtree(folder, ignore_errors=True)
    files = folder / "files of the page"
    files.mkdir(parents=True)
    (folder / "tivor").symlink_to(installed.absolute())
    steps = list(steps_of(page.read_text()))
    shown = dict(file for _, _, file in steps if file)
    if shown != {path.name: path.read_text() for path in sources.iterdir()}:
        sys.exit(f"the files on the page are not those in {sources}: {sorted(shown)}")
    for name, text in shown.items():
        (files / name).write_text(text)

    script = "".join(f'{command}\necho "{END}$?"\n' for command, _, _ in steps)
    environment = dict(os.environ, HOME=str(folder.absolute()), PAGE_FILES=str(files.absolute()))
    run = subprocess.run(["sh", "-c", script], cwd=folder, env=environment, text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    outcomes = re.findall(f"(.*?){END}(\\d+)\n", run.stdout, re.DOTALL)
    print(run.stdout)
    if len(outcomes) != len(steps) or not any(said for _, said, _ in steps):
        sys.exit(f"{len(outcomes)} of {len(steps)} commands ran, or none of them has to say something")
    for (command, expected, _), (said, status) in zip(steps, outcomes):
        if expected is None and status != "0":
            sys.exit(f"failed: {command}")
        if expected is not None and lines_of(said) != lines_of(expected):
            sys.exit(f"{command}\nsaid:\n{said}instead of:\n{expected}")


if __name__ == "__main__":
    main()
