#!/usr/bin/env python3
"""Lists what an installed suite consists of and needs, as SPDX 2.3 in JSON.

usage: sbom.py DIRECTORY NAME VERSION OUTPUT

Every file of DIRECTORY with its checksums; the shared libraries that its programs
and libraries ask for, with the version of the system's package that has them, where
the system can tell.
"""

import datetime
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

licence = "Apache-2.0"


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout


def identifier(text):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", text)


def files(directory):
    for number, path in enumerate(sorted(p for p in directory.rglob("*")
                                         if p.is_file() and not p.is_symlink())):
        content = path.read_bytes()
        yield path, content[:4] == b"\x7fELF", {
            "SPDXID": identifier(f"File-{number}"),
            "fileName": f"./{path.relative_to(directory)}",
            "checksums": [{"algorithm": name.upper(), "checksumValue": hashlib.new(name, content).hexdigest()}
                          for name in ("sha1", "sha256")],
            "licenseConcluded": licence, "licenseInfoInFiles": ["NOASSERTION"],
            "copyrightText": "NOASSERTION"}


def needed(paths):
    """Names of shared libraries that are asked for and that are not here."""
    names = set()
    for path in paths:
        names.update(re.findall(r"\(NEEDED\).*\[(.+)\]", output("readelf", "-dW", str(path))))
    return sorted(names - {path.name for directory in {p.parent for p in paths}
                           for path in directory.iterdir()})


def provider(library):
    """Name and version of the system's package that has the library."""
    found = re.search(r"=> (\S+)", next((line for line in output("ldconfig", "-p").splitlines()
                                         if line.split()[:1] == [library]), ""))
    places = [found[1], os.path.realpath(found[1])] if found else []
    for place in places + [p.removeprefix("/usr") for p in places] + ["/usr" + p for p in places]:
        owner = re.match(r"([^:,\s]+)", output("dpkg", "-S", place))
        if owner:
            return owner[1], output("dpkg-query", "-W", "-f", "${Version}", owner[1])
    return library, "NOASSERTION"


def package(name, version, **more):
    return {"SPDXID": identifier(f"Package-{name}"), "name": name, "versionInfo": version,
            "downloadLocation": "NOASSERTION", "copyrightText": "NOASSERTION",
            "licenseConcluded": "NOASSERTION", "licenseDeclared": "NOASSERTION", **more}


def main():
    directory, name, version, target = sys.argv[1:]
    listed = list(files(pathlib.Path(directory).resolve()))
    checksums = sorted(entry["checksums"][0]["checksumValue"] for _, _, entry in listed)
    code = hashlib.sha1("".join(checksums).encode()).hexdigest()
    own = package(name, version, filesAnalyzed=True, licenseConcluded=licence, licenseDeclared=licence,
                  licenseInfoFromFiles=["NOASSERTION"],
                  packageVerificationCode={"packageVerificationCodeValue": code})
    libraries = needed([path for path, is_code, _ in listed if is_code])
    others = {owner: package(owner, number, filesAnalyzed=False)
              for owner, number in map(provider, libraries)}
    stamp = int(os.environ.get("SOURCE_DATE_EPOCH") or datetime.datetime.now().timestamp())
    document = {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"{name}-{version}",
        "documentNamespace": f"urn:spdx:{name}-{version}-{code}",
        "creationInfo": {"creators": ["Tool: sbom.py"],
                         "created": datetime.datetime.utcfromtimestamp(stamp).strftime("%Y-%m-%dT%H:%M:%SZ")},
        "packages": [own, *others.values()],
        "files": [entry for _, _, entry in listed],
        "relationships": [{"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES",
                           "relatedSpdxElement": own["SPDXID"]}]
        + [{"spdxElementId": own["SPDXID"], "relationshipType": "DEPENDS_ON",
            "relatedSpdxElement": other["SPDXID"]} for other in others.values()]
        + [{"spdxElementId": own["SPDXID"], "relationshipType": "CONTAINS",
            "relatedSpdxElement": entry["SPDXID"]} for _, _, entry in listed]}
    pathlib.Path(target).write_text(json.dumps(document, indent=1) + "\n", encoding="utf-8")


main()
