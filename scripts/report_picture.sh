#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: report_picture.sh BIN PICTURE
# Shows the page that the moxreport of BIN makes of the sample project, as a headless
# browser renders it.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
bin=$(realpath "$1")
picture=$(realpath "$2")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# The same picture each time: moments and contents are fixed.
cp -r "$top/examples/project/plant" "$scratch/plant"
python3 "$top/examples/project/fill.py" "$scratch/plant"
moment=1773324309
find "$scratch/plant" -type f -print0 | sort -z | while IFS= read -r -d '' file; do
    touch -d "@$((moment -= 7717))" "$file"
done
HOME=$scratch TZ=UTC0 SOURCE_DATE_EPOCH=$moment "$bin/moxreport" \
    -projdir "$scratch/plant" -output "$scratch/report.html" -Quiet
# The sandbox wants rights that containers do not give; the page is our own.
HOME=$scratch chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --window-size=800,760 \
    --user-data-dir="$scratch/profile" --screenshot="$picture" "file://$scratch/report.html" 2>/dev/null
[ -s "$picture" ]
