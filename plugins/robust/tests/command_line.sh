#!/usr/bin/env bash
# The method as the command line offers it: found by its short name, its settings listed and checked, its
# confidence in the report and in what the command quality prints.
#
#   plugins/robust/tests/command_line.sh PROGRAM
set -euo pipefail
zxalign=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail()
{
  printf '%s\n' "$*" >&2
  exit 1
}
# has TEXT PATTERN
has() { grep -qE -- "$2" <<<"$1" || fail "\"$2\" is not in: $1"; }

"$zxalign" phantom spun.nrrd --slices 5 --size 160 --angle 170 --shift 20 --seed 4 --truth truth.csv --quiet
text=$("$zxalign" align spun.nrrd -o aligned.nrrd --method robust --neighbours 2 --reference 2 \
  --truth truth.csv --report report.json 2>&1)
has "$text" '^Distance from the truth: .* largest 0\.[0-9]+ px'
has "$text" '^Accumulated over the stack: mean [0-9.]+ px, largest [0-9.]+ px'
has "$(cat report.json)" '"confidence": (1\.0|0\.9)'
has "$(cat report.json)" '"neighbours": "2"'
has "$("$zxalign" quality aligned.nrrd)" '^slices 3 - 4 .* confidence of slice [34]: (1\.00|0\.9)'
# Another method knows nothing of it, and nothing old stays.
"$zxalign" align aligned.nrrd -o again.nrrd --method gravity --quiet
! "$zxalign" quality again.nrrd | grep -q confidence || fail "An old confidence is still there."

has "$("$zxalign" align --help)" 'least-confidence'
if text=$("$zxalign" align spun.nrrd -o none.nrrd --method robust --set largest-angle=200 2>&1); then
  fail "An angle of 200 degrees was taken."
fi
has "$text" 'largest-angle cannot be "200"; it takes: 0 to 180'

# A limit that nothing reaches: every pair is named and left.
text=$("$zxalign" align spun.nrrd -o left.csv --transforms-only --method robust --set least-confidence=1 2>&1)
has "$text" 'Slices 2 and 3 are left as they are: .* \(confidence 0\.9|1\.00\)'
has "$text" '4 of them were left as they are'
