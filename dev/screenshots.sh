#!/bin/sh
# Pictures of the window into docs/pictures, light and dark, at 100 % and 200 %: screenshots.sh
# [PAGE...]. Look at each of them after a change of a widget.
set -e
cd "$(dirname "$0")/.."
cmake --preset dev >/dev/null
cmake --build --preset dev --target turnbuckle-pictures turnbuckle-runner turnbuckle-reader
folder=${PICTURES:-docs/pictures}
for scale in 1 2; do
    [ $scale = 2 ] && suffix=-200 || suffix=
    QT_SCALE_FACTOR=$scale QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 2800x2000x24" \
        build/dev/bin/turnbuckle-pictures "$folder" "$suffix" "$@"
done
