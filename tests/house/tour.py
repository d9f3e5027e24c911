#!/usr/bin/env python3
"""Runs the commands that README shows of the tool, one after the other, as they are shown.

tour.py README TIVOR DATA WORK
"""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys


def main(readme, tivor, data, work):
    work = pathlib.Path(work)
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    shutil.copyfile(f"{data}/bullet_sample-land.x3p", work / "scan.x3p")
    shutil.copyfile(f"{data}/afm_gwyddion_text_export.txt", work / "surface.txt")
    section = pathlib.Path(readme).read_text(encoding="utf-8").split("## The tool", 1)[1].split("\n## ", 1)[0]
    commands = re.findall(r"^    tivor (.*?) *# ", section, re.MULTILINE)
    for command in commands:
        before = set(os.listdir(work))
        words = shlex.split(command)
        run = subprocess.run([tivor, *words], cwd=work, capture_output=True, text=True, encoding="utf-8")
        made = set(os.listdir(work)) - before
        asked = {word for word in words[2:3] if "." in word and words[0] not in ("get", "set", "ls", "diff")}
        if run.returncode not in (0, 1) or not run.stdout and words[0] != "diff" or made != asked:
            sys.exit(f"tivor {command}: status {run.returncode}, made {made}\n{run.stdout}{run.stderr}")
    print(f"{len(commands)} commands do what README says")
    return 0 if len(commands) > 15 else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
