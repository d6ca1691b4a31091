# What ./run, ./test and .ci/run share. Sourced, not run.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
program=$(basename "$0")
stage_name="starting"

# stage TEXT: says what is done next; a failure names it.
stage()
{
  stage_name=$*
  printf '== %s\n' "$*"
}

fail()
{
  printf '%s\n' "$*" >&2
  exit 1
}

report_failure()
{
  local status=$?
  if [ "$status" -ne 0 ]; then
    printf '== %s FAILED while: %s (exit status %d)\n' "$program" "$stage_name" "$status" >&2
  fi
}
trap report_failure EXIT

# quietly LOG COMMAND...: keeps what a command prints in a file and shows it only when the command fails.
quietly()
{
  local log=$1
  shift
  mkdir -p "$(dirname "$log")"
  if ! "$@" >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    return 1
  fi
}

as_root()
{
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    fail "Packages are missing: run this as root once, or install sudo."
  fi
}

# missing_packages FILE...: the packages of the lists that are not installed.
missing_packages()
{
  local wanted installed
  wanted=$(sed -e 's/#.*//' -e '/^[[:space:]]*$/d' "$@" | sort -u)
  # shellcheck disable=SC2086
  installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' $wanted 2>/dev/null |
    sed -n 's/ installed$//p' | sort -u || true)
  comm -23 <(printf '%s\n' "$wanted") <(printf '%s\n' "$installed")
}

packages_installed=no

# install_packages FILE...: installs what the lists name and is missing. Asks the package index only then.
install_packages()
{
  command -v dpkg-query >/dev/null ||
    fail "This is no Debian system: install what scripts/packages.txt names, then use cmake --preset release."
  local missing
  missing=$(missing_packages "$@")
  [ -n "$missing" ] || return 0
  stage "Installing" $missing
  quietly "$root/build/packages.log" as_root apt-get -q update
  # shellcheck disable=SC2086
  quietly "$root/build/packages.log" as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get -q install -y --no-install-recommends $missing
  packages_installed=yes
}

# configure PRESET WITH_TESTS: configures where it has not been done yet, or without the tests that are asked for
# now (ninja does it by itself when a CMake file has changed).
configure()
{
  local preset=$1 tests=$2
  local folder="$root/build/$preset"
  local cache="$folder/CMakeCache.txt"
  if [ -e "$folder/build.ninja" ] && [ "$packages_installed" = no ] &&
    { [ "$tests" = OFF ] || grep -q '^ZX_BUILD_TESTS:BOOL=ON' "$cache"; }; then
    return 0
  fi
  # What has tests keeps them.
  if [ -e "$cache" ] && grep -q '^ZX_BUILD_TESTS:BOOL=ON' "$cache"; then tests=ON; fi
  stage "Configuring ($preset)"
  (cd "$root" && quietly "$root/build/configure-$preset.log" cmake --fresh --preset "$preset" \
    -DZX_BUILD_TESTS="$tests" "${@:3}")
}

# build PRESET [TARGET...]
build()
{
  stage "Building ($1)"
  ninja -C "$root/build/$1" "${@:2}"
}
