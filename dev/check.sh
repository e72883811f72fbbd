#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Form, clang-tidy and forbidden calls: check.sh [--all]
#
# clang-tidy takes ten seconds a file, so it looks at what changed since CHECK_BASE: where the branch
# left origin/main, or, on main itself, the newest commit that is older than a day. What passed once
# isn't looked at again.
set -euo pipefail
cd "$(dirname "$0")/.."
failed=0
complain() { printf '%s\n' "$*" >&2; failed=1; }

sources=$(git ls-files '*.cpp' '*.h')
# shellcheck disable=SC2086
clang-format --dry-run -Werror $sources || complain "form: clang-format -i mends it"

# Numbers never follow the locale, libraries never end the process or open dialogs of their own.
calls='\b(std::sto[a-z]+|atof|strtod|sprintf|vsprintf|gets|popen|tmpnam|quick_exit|std::abort)[[:space:]]*\('
found=$(git grep -nE "$calls" -- host text genint app runner || true)
[ -z "$found" ] || complain "forbidden calls:" "$found"
found=$(git grep -nE '(^|[^.>a-zA-Z_:])exit[[:space:]]*\(|[^:]std::exit|setlocale|qDebug|QMessageBox' \
    -- host text genint ':!host/gui' | grep -v '_exit' || true)
[ -z "$found" ] || complain "not for libraries:" "$found"
found=$(git grep -nP '\r$|[ \t]+$' -- '*.cpp' '*.h' '*.cmake' '*.txt' '*.sh' '*.py' ':!tests/data' || true)
[ -z "$found" ] || complain "blanks at the end of a line, or foreign line ends:" "$found"
found=$(git grep -nE '#include "(fgenint|fsoftcon|fdefinitiongenint|fconfigurationgenint|fresultsgenint)' \
    -- host text ':!text/*' | grep -v '"fsoftconbase.h"' || true)
[ -z "$found" ] || complain "the host knows the library:" "$found"

found=$(git grep -nE '(FHistoryTransaction [a-z]+\(nullptr, |\.(title|menu)\()"' -- host genint |
    grep -vE '"nolabel"|" \+ ' || true)
[ -z "$found" ] || complain "texts that a user sees are marked with F_TEXT:" "$found"

base=${CHECK_BASE:-$(git merge-base HEAD origin/main 2>/dev/null || true)}
[ -n "$base" ] && [ "$base" != "$(git rev-parse HEAD)" ] ||
    base=$(git rev-list -1 --before='1 day ago' HEAD)
[ -n "$base" ] || base=$(git rev-list --max-parents=0 HEAD | tail -n 1)
if [ "${1:-}" = --all ]; then
    changed=$(git ls-files 'host/*.cpp' 'text/*.cpp' 'genint/*.cpp' 'app/*.cpp')
else
    changed=$(git diff --name-only --diff-filter=d "$base" -- 'host/*.cpp' 'text/*.cpp' 'genint/*.cpp' 'app/*.cpp')
fi
if [ -n "$changed" ]; then
    cmake --preset tidy >/dev/null
    mkdir -p build/tidy/passed
    # What a file was checked with: its own text, all headers, the rules.
    common=$(cat .clang-tidy $(git ls-files '*.h') | sha256sum)
    todo=
    for file in $changed; do
        mark=build/tidy/passed/$( (cat "$file"; echo "$file $common") | sha256sum | cut -c1-40)
        [ -e "$mark" ] || todo="$todo $file=$mark"
    done
    # shellcheck disable=SC2086
    printf '%s\n' $todo | sed '/^$/d' | xargs -r -P "$(nproc)" -I{} sh -c '
        file=${1%%=*} mark=${1#*=}
        if out=$(clang-tidy -p build/tidy --quiet "$file" 2>/dev/null); then : >"$mark"
        else printf "%s\n" "$out"; exit 1; fi' _ {} || complain "clang-tidy"
fi
[ "$failed" = 0 ] && echo "check: nothing to mend"
exit "$failed"
