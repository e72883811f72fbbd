#!/bin/sh
# Installs what packages.txt names and this machine lacks; asks nothing when all is there.
set -eu
cd "$(dirname "$0")/.."
missing=
for p in $(sed 's/#.*//' packages.txt); do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'ok installed' || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
echo "installing:$missing"
as_root=
if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null || { echo "install these packages as root:$missing" >&2; exit 1; }
    as_root=sudo
fi
$as_root apt-get update -qq
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing
