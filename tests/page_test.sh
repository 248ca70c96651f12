#!/bin/sh
# Runs the program of a page, which is the first argument, in an empty folder. It must succeed, print
# what the file that is the second argument holds, and leave the folder empty. Further arguments are
# the command that runs programs of its kind where they do not run by themselves.
program=$1
page=$2
shift 2
failed=0
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
mkdir "$place/folder" && cd "$place/folder" || exit 1

"$@" "$program" >"$place/printed" || {
  echo "$program: exit code $?"
  failed=1
}
# On Windows a printed line ends in two characters.
tr -d '\r' <"$place/printed" | diff -u "$page" - || failed=1
[ -z "$(ls -A)" ] || {
  echo "$program: left $(ls -A)"
  failed=1
}
exit $failed
