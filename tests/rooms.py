#!/usr/bin/env python3
"""rooms.py <src>: checks which folders of the sources include which."""

import re
import sys
from pathlib import Path

src = Path(sys.argv[1]).resolve()

MAY_INCLUDE = {
    "core": {"<cuda_runtime.h>"},
    "lanes": set(),
    "FastNearfield": {"core", "lanes", "parallel", "FastNearfield/point", "FastNearfield/packs", "FastNearfield/nodes"},
    "FastNearfield/point": {"core", "lanes"},
    "FastNearfield/packs": {"core", "lanes", "FastNearfield/point"},
    "FastNearfield/nodes": {"lanes"},
    "FastNearfield/intervals": {"core", "lanes", "FastNearfield", "FastNearfield/point"},
    "field": {"core", "parallel", "FastNearfield", "FastNearfield/intervals", "field/bins",
              "field/filter"},
    "field/bins": {"lanes", "FastNearfield/intervals"},
    "field/filter": {"lanes"},
    "matlab": {"core", "lanes", "FastNearfield", "field", "<mex.h>", "<quit.h>"},
    "tools": {"FastNearfield"},
    "emulation": {"parallel", "<cuda_runtime.h>"},
    "parallel": set(),
}
GENERATED = {"matlab": {"version.h", "device.h"}}
LIBRARIES = {"<cuda_runtime.h>", "<mex.h>", "<quit.h>"}


def room_of(file):
    folders = file.relative_to(src).parts[:-1]
    return "/".join(folders[:2]) if "/".join(folders[:2]) in MAY_INCLUDE else folders[0]


def target_of(file, name):
    """The folder or library that an #include refers to, or None if every file may include it."""
    if name.startswith("<pistonfield/"):
        name = f'"{name[len("<pistonfield/"):-1]}"'
    if name.startswith("<"):
        return name if name in LIBRARIES else None
    name = name.strip('"')
    for folder in file.parent, src:
        target = (folder / name).resolve()
        if target.is_file():
            return room_of(target)
    return None if name in GENERATED.get(room_of(file), ()) else "no folder"


faults, seen = [], 0
for file in sorted(path for path in src.rglob("*") if path.suffix in {".h", ".cpp", ".cu"}):
    room = room_of(file)
    for name in re.findall(r'^\s*#\s*include\s+(<[^>]+>|"[^"]+")', file.read_text(), re.MULTILINE):
        seen += 1
        target = target_of(file, name)
        if target not in {None, room} | MAY_INCLUDE[room]:
            faults.append(f"{file.relative_to(src)} includes {name} of {target}: {room} must not include it")
rooms = {path.name for path in src.iterdir() if path.is_dir()}
faults += [f"src/{room}: no such folder, or not in the table" for room in rooms ^ {name.split("/")[0] for name in MAY_INCLUDE}]
print("\n".join(faults) or f"{seen} includes, {len(rooms)} rooms")
sys.exit(bool(faults) or not seen)
