#!/usr/bin/env bash
# Builds what is needed and runs the remote: on a real serial line, or on three simulated head amps.
set -euo pipefail

usage() {
    cat <<'EOM'
Usage: ./run.sh [--port NAME] [--preset NAME] [-- TALV-HOST-OPTION...]
Installs what is missing, builds, and controls head amps.

  --port NAME     a real serial line, for instance ttyUSB0; without it three simulated head amps, whose front
                  panels are turned now and then
  --preset NAME   what to build and run: release (default) or debug
  --help          this text

On a terminal it shows a live view that takes commands ("help" lists them, "quit" ends). Without one it runs a
short tour that prints JSON Lines and ends with 0.
EOM
}

cd "$(dirname "${BASH_SOURCE[0]}")"
port= preset=release
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --port) [ $# -gt 1 ] || { echo "run.sh: --port needs a name" >&2; exit 2; }; port=$2; shift 2 ;;
        --preset) [ $# -gt 1 ] || { echo "run.sh: --preset needs a name" >&2; exit 2; }; preset=$2; shift 2 ;;
        --) shift; break ;;
        *) echo "run.sh: unknown option $1" >&2; exit 2 ;;
    esac
done

. scripts/packages.sh
packages_install packages.txt
log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "building ($preset) ..." >&2
if ! { cmake --preset "$preset" -DTESSARINE_TESTS=OFF && cmake --build --preset "$preset"; } >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    exit 1
fi
bin=$PWD/build/$preset/bin
rm -f "$log"  # what follows takes this script's place, and nothing is trapped any more
[ -z "$port" ] || exec "$bin/talv-host" --port "$port" "$@"
exec python3 scripts/demo.py "$bin" "$@"
