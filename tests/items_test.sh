#!/bin/sh
# Runs the examples items and wordcount, the first arguments, on the file of the third and on one made
# here, and compares what they print. Further arguments are the command that runs such programs where
# they do not run by themselves.
items=$1
wordcount=$2
sample=$3
shift 3
emulator=$*
failed=0
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT

# check WHAT compares what was printed, on any system, with what is wanted.
check() {
  tr -d '\r' <"$place/printed" | diff "$place/wanted" - && return
  failed=1
  echo "FAILED: $1"
}

cp "$sample/sample.conf" "$place"
cd "$place" || exit 1
$emulator "$items" sample.conf >printed || failed=1
cp "$sample/sample.items" wanted
check items

mkdir folder
printf 'b a # a comment a\na /* a a\n*/ "q"\n' >folder/words
printf 'a\0c' >folder/binary
# Below a folder only line comments are left out.
$emulator "$wordcount" folder/words folder >printed || failed=1
cat >wanted <<'END'
folder: 1 text files, 0 of them not to their end; 1 others passed over
      6  a                        ========================================
      2  "q"                      ==============
      2  b                        ==============
      1  */                       =======
      1  /*                       =======
12 items, 5 different
END
check wordcount

$emulator "$items" missing >printed 2>&1 && { echo "FAILED: a file that is missing"; failed=1; }
exit $failed
