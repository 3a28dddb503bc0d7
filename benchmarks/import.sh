#!/bin/sh
# import.sh ROOT MARKER...: the values that follow the markers, a line for each case, by a shell
# pipeline, for comparison. On the campaign these are the cases of import.py; a path with a newline,
# or one in which a marker stands twice, is read otherwise.
set -eu
export LC_ALL=C

root=$1
shift
number='([-+]?[0-9.]+([DEde][-+]?[0-9]+)?)'
pattern='^.*'
values=
group=1
for marker; do
    pattern=$pattern$marker$number'.*'
    values="$values \\$group"
    group=$((group + 2))
done
find "$root" -type f -printf '%P\n' | sed -nE "s/$pattern/$values/p" | sort -u
