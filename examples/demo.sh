#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: demo.sh SUITE SCRATCH
# Shows the tools of the suite installed in SUITE at work on the sample project.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
suite=$1
scratch=$2

say() { printf '\n\033[1m# %s\033[0m\n' "$*"; }
show() { # Prints a command line, then runs it.
    printf '\033[1m$ %s\033[0m\n' "$*"
    "$@"
}

on_terminal() { # As show, on a terminal of its own, whatever the output of this script is.
    printf '\033[1m$ %s\033[0m\n' "$*"
    TERM=xterm LC_ALL=C.UTF-8 python3 -c 'import os, pty, sys
sys.exit(os.waitstatus_to_exitcode(pty.spawn(sys.argv[1:])))' "$@" </dev/null
}

mkdir -p "$scratch"
cp -r "$here/project/plant" "$scratch/plant"
python3 "$here/project/fill.py" "$scratch/plant"
cp "$here/project/ToolInfo" "$suite/"
cp "$here/project/ToolInfo.site" "$scratch/" # where the tools are started

mkdir -p "$suite/bin/W32NTX86" # where the tools look for their texts

cd "$scratch"
export PATH="$suite/bin:$PATH"
unset ToolInfo TOOLINFO KAZCOREROOT

say "The texts of the tools, compiled from a source text"
show moxmsg -source "$here/project/messages.txt" -output "$suite/bin/W32NTX86/msg_file"

say "What is installed, and whether all of it is as it was made"
show moxinfo -product .

say "What the tools are configured with, and from where"
show moxinfo -verbose tmp_dir site_name '${ti.mox_file_path}'

say "Where the value of one variable comes from, and what did not win"
KAZ_PRINTER=porch show moxinfo --origin tmp_dir printer

say "What a reader of configuration passes over without a word"
cat >mistakes <<'LINES'
# where copies go
tmp_dri = copies
paper A3
printer = "porch"
ToolInfo = ToolInfo.site
LINES
show cat mistakes
show moxinfo -toolinfo mistakes --check || printf '(status %d)\n' $?

say "Whether all that the tools need is as it should be"
show moxtool doctor || printf '(status %d)\n' $?

say "A report of the project, for a browser and for a word processor"
show moxreport -projdir plant -output plant.html -verbose
show moxreport -projdir plant -output plant.rtf -orientation landscape -Quiet
show ls -l plant.html plant.rtf

say "A small system, with commentary, to a directory of our choice"
show moxcopy -projdir plant -system logistics -target backup -verbose

say "A slip of the pen, in an option and in a name"
show moxcopy -projdir plant -sistem logistics || printf '(status %d)\n' $?
show moxcopy -projdir plant -system Brewry || printf '(status %d)\n' $?

say "What a copy over the earlier one would do, without doing it"
printf 'mine\n' >backup/logistics/notes.txt
show moxcopy -projdir plant -system logistics -target backup --plan

say "A large one, on a terminal; the ToolInfo variable tmp_dir says where to"
on_terminal moxcopy -projdir plant -system brewery

say "The same where the output is no terminal: plain bytes"
show moxcopy -projdir plant -system brewery -Force | cat
show diff -r plant/brewery copies/brewery

say "Two diagrams alone; the copy is there already, so -Force answers the question"
show moxcopy -projdir plant -system brewery -Force mashing fermenting

say "A name that no diagram has"
show moxcopy -projdir plant -system brewery -Force 'mash*' || printf '(status %d)\n' $?
