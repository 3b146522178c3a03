#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Looks at what is about to be committed: format of the staged sources, directions of
# includes. Takes a second or two; building and testing is left to ./dev.
#
#   ln -s ../../scripts/pre-commit.sh .git/hooks/pre-commit
#
# or, with the program of that name, `pre-commit install` (.pre-commit-config.yaml).
set -euo pipefail
cd "$(git rev-parse --show-toplevel)"

staged() { git diff --cached --name-only -z --diff-filter=ACMR -- '*.h' '*.cpp'; }

# The staged text counts, not what the file has become since.
# shellcheck disable=SC2016
check_one='git show ":$1" | clang-format --dry-run -Werror --assume-filename="$1"'
status=0
if command -v clang-format >/dev/null; then
    staged | xargs -0 -r -n 1 -P "$(nproc)" sh -c "$check_one" check || {
        echo "pre-commit: ./dev format puts these into the project's format" >&2
        status=1
    }
else
    echo "pre-commit: clang-format is missing, so the format is not looked at" >&2
fi
python3 scripts/check_sources.py || status=1
exit "$status"
