#!/bin/sh
# Runs the examples tree and copy, whose programs are the first arguments, in a directory of their
# own, and compares what they print, their exit codes and the copies with tables. Further arguments
# are the command that runs programs of their kind where they do not run by themselves.
tree=$1
copy=$2
shift 2
emulator=$*
failed=0
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cd "$place" || exit 1
mkdir -p t/a/b t/ab t/c
touch t/f.c t/a/g.c t/a/b/h.h t/ab/i.h t/.hidden

# check WANT GOT WHAT
check() {
  [ "$1" = "$2" ] && return
  failed=1
  printf '%s\n  gave %s\n  not  %s\n' "$3" "$2" "$1"
}

# A listing has its lines in the order of the system.
row() {
  want=$1
  shift
  got="$($emulator "$tree" "$@" 2>&1 | LC_ALL=C sort | tr '\n' ';')"
  check "$want" "$got" "tree $*"
}

row '        h.h;    b/;    g.c;    i.h;a/;ab/;c/;directories: 4, files: 4;f.c;t;' t
row '    b/;a/;ab/;c/;directories: 4;t;' -d t
row '        h.h;    b/;    i.h;a/;ab/;directories: 3, files: 2;t/;' --name '*?h' t/
row 'directories: 0, files: 1;f.c;t;' -n f.c t
row 'none;tree: none: not a directory that can be read;' none
row 'tree: t: one directory at a time;' . t

# copies CODE HELD MESSAGE ARGUMENT...: what the target holds afterwards.
copies() {
  want="$1 $2 $3"
  shift 3
  output=$($emulator "$copy" "$@" 2>&1)
  check "$want" "$? $(cat target) $output" "copy $*"
}

printf 0123456789 >source
copies 0 0123456789 '' source target
copies 1 0123456789 'copy: source to target: the target cannot be opened, or is there already; --force overwrites it' source target
printf 0123 >target
copies 0 0123456789 '' --continue source target
printf abc >target
copies 0 0123456789 '' -f source target
copies 2 0123456789 'copy: ./target and target are the same file' -f ./target target
copies 2 0123456789 'copy: t\..\target and t/../target are the same file' -f 't\..\target' t/../target
copies 2 0123456789 'copy: --continue keeps what --force overwrites' -cf source target
copies 2 0123456789 'copy: one source and one target are needed' source
echo >short
copies 1 0123456789 'copy: target is longer than short already' -c short target
copies 1 0123456789 'copy: none to target: the source cannot be opened, or is no file' -f none target
exit $failed
