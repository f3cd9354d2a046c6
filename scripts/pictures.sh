#!/usr/bin/env bash
# Draws the pictures of docs/images/ anew: of the made-up server large, what show prints on a terminal, and the page; of
# a fleet of five servers, what Prometheus alerts of. Needs a build in build/release; installs chromium and Prometheus.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

need_packages chromium "${FLEET_PACKAGES[@]}"
command=build/release/bin/mngsrvraid
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# photograph PAGE PICTURE WIDTH HEIGHT
photograph() {
    chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --user-data-dir="$folder/profile" \
        --window-size="$3,$4" --screenshot="$2" "file://$1" >/dev/null 2>&1
}

"$command" --scenario large --host storage7 --output "$folder/page.html" show --format html

# A terminal of its own, so that there are colours and a width.
COLUMNS=120 TERM=xterm script -qec "$command --scenario large --host storage7 show 2>/dev/null" /dev/null >"$folder/show.txt" </dev/null
python3 - "$folder/show.txt" "$folder/show.html" <<'PYTHON'
import html
import re
import sys

COLOURS = {"32": "#3fb950", "36": "#39c5cf", "33": "#d29922", "35": "#d2a8ff", "1;31": "#ff7b72", "1": "#ffffff"}

with open(sys.argv[1], encoding="utf-8") as shown:
    text = html.escape(shown.read().replace("\r", ""))
text = re.sub(r"\x1b\[0m", "</span>", text)
text = re.sub(r"\x1b\[([0-9;]+)m", lambda code: f'<span style="color:{COLOURS[code[1]]}">', text)
with open(sys.argv[2], "w", encoding="utf-8") as page:
    page.write('<meta charset="utf-8"><body style="margin:0;background:#0d1117"><pre style="margin:16px;color:#c9d1d9;'
               f'font:13px/1.35 DejaVu Sans Mono,monospace"><span style="color:#fff">$ mngsrvraid show</span>\n{text}</pre>')
PYTHON

mkdir -p docs/images
photograph "$folder/show.html" "$PWD/docs/images/show.png" 1000 852
photograph "$folder/page.html" "$PWD/docs/images/page.png" 1280 1180
python3 scripts/fleet.py build/release/bin picture 5 "$PWD/docs/images/fleet.png"
