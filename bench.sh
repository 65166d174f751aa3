#!/usr/bin/env bash
# Builds and runs the benchmarks.
set -euo pipefail

usage() {
    cat <<'EOM'
Usage: ./bench.sh [--quick]
Installs what is missing, builds what ships with its benchmarks, and prints tables: for each program ours beside other
libraries, and what stands alone with its aim. Takes some twenty minutes after the build; let the machine rest meanwhile.

  --quick   fewer repetitions and shorter measures: about seven minutes
  --help    this text
EOM
}

cd "$(dirname "${BASH_SOURCE[0]}")"
options=()
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --quick) options+=(--quick); shift ;;
        *) echo "bench.sh: unknown option $1" >&2; exit 2 ;;
    esac
done

. scripts/packages.sh
packages_install packages.txt packages-bench.txt
log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "building (bench) ..." >&2
if ! { cmake --preset bench && cmake --build --preset bench; } >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    exit 1
fi
python3 -B bench/report.py build/bench "${options[@]}"
