#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Takes the present behaviour as the expected one: update_expected.sh BUILD_DIR. Look at the diff.
set -e
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
F_UPDATE_EXPECTED=1 "$build/bin/genint_tst_registry" registryIsAsExpected
"$build/bin/turnbuckle" commands --markdown >"$here/../docs/script-reference.md"
