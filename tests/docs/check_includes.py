#!/usr/bin/env python3
"""The rooms of src/ include one another as the table of docs/architecture.md says, and in no ring."""

import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parents[2]
allowed = {}
for line in (root / "docs/architecture.md").read_text().splitlines():
    cells = [cell.strip() for cell in line.strip("|").split("|")]
    if len(cells) == 3 and (room := re.fullmatch(r"`(\w+)`", cells[0])):
        allowed[room[1]] = set(re.findall(r"`(\w+)`", cells[2]))

faults = []
rooms = {path.name for path in (root / "src").iterdir() if path.is_dir()}
if rooms != set(allowed):
    faults.append(f"docs/architecture.md describes {sorted(allowed)}, src/ holds {sorted(rooms)}")
for path in sorted((root / "src").rglob("*.[hc]*")):
    room = path.relative_to(root / "src").parts[0]
    for line in path.read_text().splitlines():
        included = re.match(r'#include "(\w+)/', line)
        if included and included[1] in rooms and included[1] not in allowed.get(room, set()) | {room}:
            faults.append(f"{path.relative_to(root)} includes {included[1]}, which {room} may not")

# Rooms that include none of those left can be taken away; what remains is a ring.
left = dict(allowed)
while lowest := [room for room, includes in left.items() if not includes & set(left)]:
    for room in lowest:
        del left[room]
if left:
    faults.append(f"ring: {sorted(left)}")

print("\n".join(faults) or f"{len(allowed)} rooms, no ring")
sys.exit(bool(faults))
