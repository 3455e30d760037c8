"""fatbins.py <file>: what the device code in an object or a module is compiled for.

One line for each source file: sm_75 for code of that architecture, compute_75 for PTX. It finds what
cuobjdump --list-elf --list-ptx does, which not every toolkit has.
"""

import struct
import sys

HEADER = struct.pack("<IHH", 0xBA55ED50, 1, 16)
PREFIX = {1: "compute", 2: "sm"}


def architectures(data, place, end):
    while place < end:
        kind, _, header_size, size = struct.unpack_from("<HHIQ", data, place)
        yield f"{PREFIX[kind]}_{struct.unpack_from('<I', data, place + 28)[0]}"
        place += header_size + size


with open(sys.argv[1], "rb") as file:
    data = file.read()
place = data.find(HEADER)
while place >= 0:
    (size,) = struct.unpack_from("<Q", data, place + 8)
    end = place + 16 + size
    print(*architectures(data, place + 16, end))
    place = data.find(HEADER, end)
