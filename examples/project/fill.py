#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Gives the systems of a copied sample project their bulk.

usage: fill.py PROJECT

Writes about a hundred files of varied size into the system "brewery" of the
project directory: revisions, drawings and logs, the same ones every time.
"""

import pathlib
import random
import sys

rng = random.Random(7)
system = pathlib.Path(sys.argv[1]) / "brewery"


def write(name, size):
    path = system / name
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(rng.randbytes(size))


for revision in range(1, 61):
    diagram = rng.choice(["overview", "mashing", "fermenting", "Cold_store"])
    write(f"filestore/{diagram}.{revision + 10}", rng.choice([0, 120, 900, 4096, 17000]))
for sheet in range(1, 25):
    write(f"drawings/sheet {sheet:02}.plot", rng.randrange(20_000, 400_000))
for day in range(1, 13):
    write(f"logs/tank-{day:02}/level.log", rng.randrange(1_000, 60_000))
write("drawings/large/whole plant.plot", 12_000_000)
write("drawings/large/Größe ü.plot", 64_000)
