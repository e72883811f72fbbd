#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Runs all designs of the example: run.sh TURNBUCKLE [ARGUMENT...]
if [ $# -lt 1 ]; then
    echo "usage: $0 TURNBUCKLE [ARGUMENT...]" >&2
    exit 2
fi
case $1 in
/*) program=$1 ;;
*/*) program=$PWD/$1 ;;
*) program=$1 ;;
esac
shift
cd "$(dirname "$0")" || exit 4

# The project is stored beside its sources and is only made again after a change of them.
if [ ! -f chain.tbk ] || [ -n "$(find make_project.py templates samples -newer chain.tbk)" ]; then
    if command -v python3 >/dev/null; then
        python3 make_project.py || exit 4
    else
        echo "$0: no python3; running chain.tbk as it is" >&2
    fi
fi
exec "$program" run chain.tbk --all-designs "$@"
