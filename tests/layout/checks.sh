#!/usr/bin/env bash
# Rules of the source tree that would compile when broken. Prints every offending line.
#
#   tests/layout/checks.sh FOLDER-OF-THE-SOURCES
set -uo pipefail
cd "$1" || exit 2
failures=0

# The files of the project below the given places.
sources()
{
  git ls-files -- "$@" 2>/dev/null | grep . ||
    find "$@" -type f -not -path './build/*' -not -path './out/*' -not -path './.git/*' 2>/dev/null
}

# forbid RULE PATTERN FILE...: no line of the files may match.
forbid()
{
  local rule=$1 pattern=$2
  shift 2
  [ $# -gt 0 ] || return 0
  local found
  if found=$(grep -HnP -- "$pattern" "$@" 2>/dev/null); then
    printf '%s:\n%s\n\n' "$rule" "$found"
    failures=$((failures + 1))
  fi
}

code() { sources "$@" | grep -E '\.(h|cpp)$'; }
headers() { sources "$@" | grep -E '\.h$'; }

include='^[[:space:]]*#[[:space:]]*include[[:space:]]*[<"]'
widgets='(QtWidgets|QtOpenGL|QOpenGL|QWidget|QMainWindow|QDialog|QApplication|QLabel|QAbstract(Scroll|Button|Slider)|QPushButton|QMenu|QToolBar|GL/)'

forbid "Below the windows nobody includes widgets or OpenGL" "$include$widgets" \
  $(code kernels host/mc host/zx host/io samples apps/cli apps/common)
forbid "Kernels and base utilities know no Qt" "$include(Q[A-Z]|Qt[A-Z])" $(code kernels host/mc samples)
forbid "Kernels use the number helpers, nothing else of the host" \
  "$include(zx|io|qx)/|${include}mc/(?!McRound\.h|McMath\.h)" $(code kernels)
forbid "Headers of the alignment classes know no window" "$include(qx/|Qx|$widgets)" \
  $(headers zxalign | grep -E '/(Zx|Slice)[^/]*$')
forbid "The package reads and writes no files" "$include(io/|QFile|QSaveFile|fstream)" $(code zxalign)
forbid "The package throws nothing" '(^|[^[:alnum:]_"])throw([^[:alnum:]_]|$)' $(code zxalign)
forbid "Programs know the package by its interface alone" "${include}zxalign/(?!ZxAlignControl\.h)" $(code apps)

without_guard=$(headers . | xargs -r grep -L '^#pragma once')
if [ -n "$without_guard" ]; then
  printf 'Headers without #pragma once:\n%s\n\n' "$without_guard"
  failures=$((failures + 1))
fi

text=$(sources . | grep -vE '^(\./)?tests/layout/|\.(png|tif|tiff|nrrd|mrc|mha|raw|gz|jpg|bmp)$')
forbid "Work that is left is kept outside the sources" '(TODO|FIXME)([^[:alnum:]]|$)' $text
forbid "Folders of one machine" '(^|[^[:alnum:]._~-])/(work|home|root|Users)/' $text
forbid "References to documents that a reader does not have" \
  '(^|[^[:alnum:]])(Parts? [0-9]+(\.[0-9]+)*|[Tt]he spec(ification)?)([^[:alnum:]]|$)' $text

for program in run test .ci/run docs/make-screenshots bench/phantom_accuracy bench/robust_accuracy bench/robust_report bench/robust_speed tests/layout/checks.sh; do
  if [ -e "$program" ] && [ ! -x "$program" ]; then
    printf '%s is not executable\n' "$program"
    failures=$((failures + 1))
  fi
done

[ "$failures" -eq 0 ] && echo "The layout keeps its rules."
exit "$((failures > 0))"
