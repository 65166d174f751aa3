#!/usr/bin/env bash
# Builds and passes the tests.
set -euo pipefail

usage() {
    cat <<'EOM'
Usage: ./test.sh [--all] [--long] [--preset NAME] [--fuzz-seconds N] [--tidy-all]
Installs what is missing, builds once and runs all tests but the long ones.

  --all             also: AddressSanitizer with UndefinedBehaviorSanitizer, ThreadSanitizer, clang-tidy on what
                    changed, every header compiled alone, each fuzzer for some seconds over its corpus
  --long            also the soak of two minutes
  --preset NAME     what to build: debug (default) or release
  --fuzz-seconds N  how long each fuzzer of --all runs (default 10)
  --tidy-all        clang-tidy on every source instead of what changed
  --help            this text
EOM
}

cd "$(dirname "${BASH_SOURCE[0]}")"
all= long= preset=debug fuzz_seconds=10 tidy=changed
while [ $# -gt 0 ]; do
    case $1 in
        --help) usage; exit 0 ;;
        --all) all=1; shift ;;
        --long) long=1; shift ;;
        --tidy-all) tidy=all; shift ;;
        --preset) [ $# -gt 1 ] || { echo "test.sh: --preset needs a name" >&2; exit 2; }; preset=$2; shift 2 ;;
        --fuzz-seconds) [ $# -gt 1 ] || { echo "test.sh: --fuzz-seconds needs a number" >&2; exit 2; }
                        fuzz_seconds=$2; shift 2 ;;
        *) echo "test.sh: unknown option $1" >&2; exit 2 ;;
    esac
done

. scripts/packages.sh
packages_install packages.txt packages-dev.txt

step() { printf '\n== %s (%ss)\n' "$1" "$SECONDS"; }

build() { # PRESET [OPTION...]
    local name=$1 log=build/$1.log
    shift
    mkdir -p build
    if ! { cmake --preset "$name" "$@" && cmake --build --preset "$name"; } >"$log" 2>&1; then
        grep -E 'error|warning|undefined' "$log" | head -n 40 || true
        tail -n 20 "$log"
        exit 1
    fi
}

run_tests() { # PRESET [CTEST-OPTION...]
    local name=$1
    shift
    ctest --test-dir "build/$name" --output-on-failure -j 3 -LE long --no-tests=error "$@"
}

step "build $preset"
build "$preset" -DTESSARINE_TESTS=ON
step "tests"
run_tests "$preset"

if [ -n "$all" ]; then
    step "headers alone"
    python3 scripts/check_headers.py
    for sanitizer in asan tsan; do
        step "build $sanitizer"
        build "$sanitizer"
        if [ "$sanitizer" = asan ]; then  # the checker wants a compiler's commands that it understands
            step "clang-tidy"
            python3 scripts/check_tidy.py build/asan "$tidy"
        fi
        step "tests $sanitizer"
        run_tests "$sanitizer" -E '^tree\.'  # the tree is the same
    done
    step "fuzzers"
    python3 scripts/run_fuzzers.py build/asan "$fuzz_seconds"
fi
if [ -n "$long" ]; then
    step "soak"
    ctest --test-dir "build/$preset" --output-on-failure -L long --no-tests=error
fi
step "all passed"
