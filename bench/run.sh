#!/usr/bin/env bash
# Usage: bench/run.sh BUILD_DIR [AREA ...]   areas: reader writer runs project window (default: all)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$1
shift
cmake --build "$build" --target bench_programs >/dev/null
exec python3 "$here/main.py" "$build/bin" "${TURNBUCKLE_BENCH_DATA:-$build/bench}" "$@"
