#!/usr/bin/env python3
"""Holds a list made by sbom.py against an unpacked suite.

usage: check_sbom.py LIST DIRECTORY
"""

import hashlib
import json
import pathlib
import sys

listing = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
directory = pathlib.Path(sys.argv[2])
problems = []
for field in ("spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace", "creationInfo"):
    if not listing.get(field):
        problems.append(f"{field} is missing")
listed = {entry["fileName"].removeprefix("./"): entry for entry in listing["files"]}
there = {str(path.relative_to(directory)): path for path in directory.rglob("*")
         if path.is_file() and not path.is_symlink()}
problems += [f"{name}: not the same files" for name in sorted(listed.keys() ^ there.keys())]
for name in listed.keys() & there.keys():
    content = there[name].read_bytes()
    for checksum in listed[name]["checksums"]:
        if hashlib.new(checksum["algorithm"].lower(), content).hexdigest() != checksum["checksumValue"]:
            problems.append(f"{name}: another {checksum['algorithm']}")
known = {entry["SPDXID"] for key in ("packages", "files") for entry in listing[key]} | {"SPDXRef-DOCUMENT"}
for relation in listing["relationships"]:
    for end in ("spdxElementId", "relatedSpdxElement"):
        if relation[end] not in known:
            problems.append(f"{relation[end]} is nowhere")
if not any(package["name"].startswith("libstdc++") for package in listing["packages"]):
    problems.append("what it needs of the system is missing")
print("\n".join(problems) or f"{len(listed)} files as listed, {len(listing['packages'])} packages")
sys.exit(1 if problems else 0)
