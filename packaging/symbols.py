#!/usr/bin/env python3
"""Keeps the exported names of the library with the version that brought them.

usage: symbols.py LIBRARY LIST VERSION     names of the library join LIST with VERSION;
                                           names that are gone leave it
       symbols.py --template LIST SONAME PACKAGE
                                           LIST as the template that dpkg-gensymbols reads

A line of LIST is "VERSION NAME", the name as C++ spells it.
"""

import subprocess
import sys


def read(path):
    with open(path, encoding="utf-8") as file:
        return {name: version for version, name in
                (line.rstrip("\n").split(" ", 1) for line in file)}


def exported(library):
    lines = subprocess.run(["nm", "-D", "-C", "--defined-only", library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    return {line.split(" ", 2)[2] for line in lines}


def update(library, path, version):
    try:
        known = read(path)
    except FileNotFoundError:
        known = {}
    with open(path, "w", encoding="utf-8") as file:
        for name in sorted(exported(library)):
            file.write(f"{known.get(name, version)} {name}\n")


def template(path, soname, package):
    print(f"{soname} {package} #MINVER#")
    for name, version in sorted(read(path).items()):
        print(f' (c++)"{name}@Base" {version}')


if sys.argv[1] == "--template":
    template(*sys.argv[2:])
else:
    update(*sys.argv[1:])
