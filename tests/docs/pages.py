#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Looks over what is written: links lead somewhere, manual pages are clean and refer to pages that exist.

usage: pages.py ROOT
"""

import pathlib
import re
import shutil
import subprocess
import sys

root = pathlib.Path(sys.argv[1])
faults = []

for page in [*root.glob("*.md"), *root.glob("docs/**/*.md"), *root.glob("examples/**/*.md")]:
    text = re.sub(r"^```.*?^```$", "", page.read_text(encoding="utf-8"), flags=re.M | re.S)
    for target in re.findall(r"\]\(([^)#\s]+)(?:#[^)]*)?\)", text):
        if "://" not in target and not (page.parent / target).exists():
            faults.append(f"{page}: there is no {target}")
for page in root.glob("docs/cookbook/*.md"):
    if page.name != "README.md" and page.name not in (root / "docs/cookbook/README.md").read_text():
        faults.append(f"{page}: the cookbook's list does not have it")

manual = sorted(root.glob("docs/man/*.[1-9]"))
names = {page.name for page in manual}
for page in manual:
    text = page.read_text(encoding="utf-8")
    for name, section in re.findall(r"Xr (\S+) (\d)", text):
        if (name.startswith("mox") or name == "toolinfo") and f"{name}.{section}" not in names:
            faults.append(f"{page}: there is no page {name}({section})")
    for section in ["SEE ALSO"] + (["EXIT STATUS"] if page.suffix == ".1" else []):
        if f".Sh {section}" not in text:
            faults.append(f"{page}: no section {section}")
    for command in (["mandoc", "-Tlint", "-Wwarning"], ["groff", "-ww", "-mandoc", "-Tutf8"]):
        if shutil.which(command[0]):
            done = subprocess.run([*command, str(page)], capture_output=True, text=True)
            output = done.stdout if command[0] == "mandoc" else done.stderr
            if done.returncode != 0 or output:
                faults.append(f"{page}: {command[0]}: {output}")

print("\n".join(faults))
sys.exit(bool(faults))
