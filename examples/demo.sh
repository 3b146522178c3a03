#!/usr/bin/env bash
# usage: demo.sh SUITE SCRATCH
# Runs moxcopy from the suite installed in SUITE on the sample project.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
suite=$1
scratch=$2

show() { # Prints a command line, then runs it.
    printf '\n\033[1m$ %s\033[0m\n' "$*"
    "$@"
}

mkdir -p "$scratch"
cp -r "$here/project/plant" "$scratch/plant"
python3 "$here/project/fill.py" "$scratch/plant"
cp "$here/project/ToolInfo" "$here/project/ToolInfo.site" "$suite/"

cd "$scratch"
export PATH="$suite/bin:$PATH"
show moxcopy -projdir plant -system brewery -target copies -verbose
show moxcopy -projdir plant -system brewery -target copies -Force -filter '*.dgm' mashing fermenting
show diff -r plant/brewery copies/brewery
printf '\nThe copy and its original are the same.\n'
