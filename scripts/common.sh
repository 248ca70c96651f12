# Shared by the scripts: where the project is, and what they need of the system. To be sourced.

set -eu
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# need WHAT:PACKAGE... makes sure that each command or file is there and installs the Debian
# packages of those that are missing.
need() {
  local entry what packages=()
  for entry in "$@"; do
    what=${entry%%:*}
    case $what in
      /*) [ -e "$what" ] || packages+=("${entry#*:}") ;;
      *) command -v "$what" >/dev/null || packages+=("${entry#*:}") ;;
    esac
  done
  [ ${#packages[@]} -gt 0 ] || return 0

  if ! command -v apt-get >/dev/null; then
    echo "This needs what Debian calls: ${packages[*]}. Please install it and try again." >&2
    exit 1
  fi
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null || ! sudo -n true 2>/dev/null; then
      echo "This needs ${packages[*]}, and only root may install it." \
        "Please run as root: apt-get install ${packages[*]}" >&2
      exit 1
    fi
    as_root=(sudo -n)
  fi
  echo "Installing ${packages[*]}" >&2
  if ! { "${as_root[@]}" apt-get update -q &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
      apt-get install -q -y --no-install-recommends "${packages[@]}"; } >&2; then
    echo "${packages[*]} could not be installed; without it this cannot go on." >&2
    exit 1
  fi
}

need_build() {
  need g++:g++ cmake:cmake ninja:ninja-build
}

need_tests() {
  need_build
  need /usr/include/gtest/gtest.h:libgtest-dev
}

# run_tests PRESET configures, builds and tests, and adds up what passed and failed. A test that was
# left out has done neither.
tests_passed=0
tests_failed=0
run_tests() {
  local preset=$1 report counts status=0
  report=$PWD/build/$preset/report.xml
  rm -f "$report"
  cmake --preset "$preset"
  cmake --build --preset "$preset"
  ctest --preset "$preset" --output-junit "$report" || status=$?
  if [ ! -s "$report" ]; then
    echo "The tests of the preset $preset did not run." >&2
    exit 1
  fi
  counts=$(sed -n '/<testsuite /,/>/p' "$report" | tr '\n\t' '  ')
  local tests failures left_out
  tests=$(count_of tests)
  failures=$(count_of failures)
  left_out=$(($(count_of skipped) + $(count_of disabled)))
  if [ "$tests" -eq "$left_out" ]; then
    echo "The preset $preset has no tests that ran." >&2
    exit 1
  fi
  if [ "$left_out" -gt 0 ]; then
    echo "$left_out tests of the preset $preset were skipped."
  fi
  # A run that fails without a failed test has failed all the same.
  if [ "$status" -ne 0 ] && [ "$failures" -eq 0 ]; then
    tests_failed=$((tests_failed + 1))
  fi
  tests_failed=$((tests_failed + failures))
  tests_passed=$((tests_passed + tests - failures - left_out))
}

# count_of NAME gives a number of the report that run_tests reads.
count_of() {
  sed -n "s/.* $1=\"\([0-9]*\)\".*/\1/p" <<<"$counts"
}

# check NAME COMMAND... counts a check and shows the output of one that fails.
check() {
  local name=$1 output
  shift
  if output=$("$@" 2>&1); then
    echo "ok: $name"
    tests_passed=$((tests_passed + 1))
  else
    printf 'FAILED: %s\n%s\n' "$name" "$output"
    tests_failed=$((tests_failed + 1))
  fi
}

# stage COMMAND... runs what closes with its count, and adds that up.
stage() {
  local output status counts
  output=$(mktemp)
  "$@" 2>&1 | tee "$output"
  status=${PIPESTATUS[0]}
  counts=$(tail -n 1 "$output" | sed -n 's/^\([0-9]*\) passed, \([0-9]*\) failed$/\1 \2/p')
  rm -f "$output"
  if [ -z "$counts" ]; then
    tests_failed=$((tests_failed + 1))
    return
  fi
  tests_passed=$((tests_passed + ${counts% *}))
  tests_failed=$((tests_failed + ${counts#* }))
  # A stage that fails without a failed test has failed all the same.
  if [ "$status" -ne 0 ] && [ "${counts#* }" -eq 0 ]; then
    tests_failed=$((tests_failed + 1))
  fi
}

# only_libc LIBRARY tells whether that is all that a shared library needs. Its loader counts as part
# of it: on some processors the guard of the stack stands there.
only_libc() {
  local needed
  needed=$(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | grep -v '^ld-linux')
  [ "$needed" = libc.so.6 ] || { echo "needs: $needed"; false; }
}

# The names that the headers declare as exported.
declared() {
  grep -hE '^TESSEL_API ' include/tessel/*.h |
    sed -E 's/^([^(]*[ *])?([A-Za-z0-9_]+)\(.*/\2/' | sort
}

# Closes a script with the count, and with a failure if anything failed or nothing ran.
finish() {
  echo "$tests_passed passed, $tests_failed failed"
  [ "$tests_failed" -eq 0 ] && [ "$tests_passed" -gt 0 ]
}
