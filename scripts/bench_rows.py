# SPDX-License-Identifier: Apache-2.0
"""What the benchmark programs have measured, as rows: one for each work and size.

A row is decided by runs in a process of its own, in which no other row has broken up
the heap. The same benchmarks in one process for the whole area stand beside them.
"""

import collections
import json
import math
import re
import statistics
import sys

ours = "moxtools"
nanoseconds = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
# What the benchmark library appends to names.
suffixes = re.compile(r"(real_time|manual_time|process_time|(iterations|repeats|min_time|threads):.*)$")


def measure(entry):
    """The value of one run: (is it memory?, bytes or nanoseconds)."""
    if "bytes" in entry:
        return True, entry["bytes"]
    # Work that other processes do, or that waits, is measured by the clock.
    clock = re.search(r"/(real_time|manual_time)\b", entry["run_name"])
    return False, entry["real_time" if clock else "cpu_time"] * nanoseconds[entry["time_unit"]]


class Row:
    def __init__(self):
        self.values = collections.defaultdict(list)
        self.is_memory = False
        self.family = sys.maxsize
        self.names = set()  # as the program calls its benchmarks
        self.together = None  # the same row in one process with all others

    def medians(self):
        return {name: statistics.median(values) for name, values in self.values.items()}

    def peers(self):
        medians = self.medians()
        medians.pop(ours, None)
        return medians

    def best_peer(self):
        peers = self.peers()
        return min(peers, key=peers.get) if peers else None

    def ratio(self, peer=None):
        """Ours to that of @p peer, the best one by default; None where one is missing."""
        medians = self.medians()
        other = medians.get(peer or self.best_peer())
        return medians[ours] / other if ours in medians and other else None

    def cells(self):
        """Ours, best peer, our ratio to it, to the standard library where it is not the
        best, and to the best in one process with all rows."""
        medians = self.medians()
        best = self.best_peer()
        return (self.shown(medians[ours]) if ours in medians else "",
                "" if best is None else f"{self.shown(medians[best])} ({best})",
                ratio_shown(self.ratio()),
                ratio_shown(self.ratio("std") if best != "std" else None),
                ratio_shown(self.together.ratio() if self.together else None))

    def shown(self, value):
        if self.is_memory:
            return f"{value:.0f} bytes"
        for unit, size in reversed(nanoseconds.items()):
            if value >= size or unit == "ns":
                return f"{value / size:.3g} {unit}" if value < 1000 * size else f"{value / size:.0f} {unit}"


def ratio_shown(ratio):
    return "" if ratio is None else f"{ratio:.2f}"


def rows_of(path, problems):
    """The rows of one file of results."""
    rows = collections.defaultdict(Row)
    # The file is empty when no benchmark fits the filter.
    for entry in json.loads(path.read_text() or '{"benchmarks": []}')["benchmarks"]:
        if entry["run_type"] != "iteration":
            continue
        if entry.get("error_occurred"):
            problems.append(f"{entry['run_name']}: {entry['error_message']}")
            continue
        parts = [part for part in entry["run_name"].split("/") if not suffixes.match(part)]
        if len(parts) not in (2, 3):
            problems.append(f"{entry['run_name']}: not work/implementation/size")
            continue
        row = rows[parts[0], parts[2] if len(parts) == 3 else ""]
        row.is_memory, value = measure(entry)
        row.values[parts[1]].append(value)
        row.names.add(entry["run_name"])
        row.family = min(row.family, entry["family_index"])
    if not rows:
        problems.append(f"{path.stem}: nothing was measured")
    for (work, size), row in rows.items():
        if ours not in row.values:
            problems.append(f"{work} {size}: no row of ours")
    return in_order(rows)


def decided(alone, together):
    """The rows of both forms in one: those of their own processes decide."""
    rows = {}
    for key, row in together.items():
        rows[key] = alone.get(key, row)
        if rows[key] is not row:
            rows[key].together = row
    return rows


def in_order(rows):
    """Works as their program registers them, sizes rising."""
    first = {}
    for (work, _), row in rows.items():
        first[work] = min(row.family, first.get(work, sys.maxsize))
    return dict(sorted(rows.items(), key=lambda item: (first[item[0][0]], number(item[0][1]))))


def number(size):
    return int(size) if size.isdigit() else 0


def size_shown(size):
    return f"{int(size):,}" if size.isdigit() else size


def ratios_of(rows):
    """What stands on a logarithmic scale: rows without a peer do not."""
    ratios = [(f"{work} {size_shown(size)}".strip(), row.ratio()) for (work, size), row in rows.items()]
    return [(label, ratio) for label, ratio in ratios if ratio]


def geometric_mean(values):
    """Twice as fast and twice as slow are as good as equal, which no other mean says;
    None for no values."""
    values = list(values)
    return math.exp(math.fsum(map(math.log, values)) / len(values)) if values else None
