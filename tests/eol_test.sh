#!/bin/sh
# Runs the example eol, whose program is the first argument, on a file and a link to it in a directory
# of their own. Compares what it prints, its exit code, the text and permissions of the file and what
# lies in the directory with a table. Further arguments are the command that runs programs of its kind
# where they do not run by themselves.
eol=$1
shift
emulator=$*
failed=0
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cd "$place" && ln -s f link || exit 1

# row TEXT OUTPUT CODE AFTER ARGUMENT...: the file has the first text before and the other after;
# no other text means the same. Lines of output are joined.
row() {
  printf "$1" >f && chmod 640 f
  want="$2 | $3 | $(printf "${4:-$1}" | od -c) 640 f link"
  shift 4
  output=$($emulator "$eol" "$@" 2>&1)
  code=$?
  got="$(echo $output) | $code | $(od -c <f) $(stat -c %a f) $(echo *)"
  [ "$got" = "$want" ] && [ -L link ] && return
  failed=1
  printf 'eol %s\n  gave %s\n  not  %s\n' "$*" "$got" "$want"
}

for style in 'lf \n' 'crlf \r\n' 'cr \r' 'lfcr \n\r'; do
  name=${style% *}
  end=${style#* }
  row "a${end}b$end${end}c" "f: $name" 0 '' f
  row "a$end${end}b" '' 0 '' "--to=$name" f
  row 'a\n\nb\r\n\nc\rd\n' '' 0 "a$end${end}b${end}c${end}d$end" -t "$name" link
done
row 'a' 'f: none' 0 '' f
row 'a' '' 0 '' -tlf f
row 'a\r\nb\n' 'f: mixed, crlf first' 0 '' f
row 'a\r\n\n' 'f: mixed, crlf first link: mixed, crlf first' 0 '' f -- link
row 'a\nb\r' 'eol: none: no regular file that can be opened f: mixed, lf first' 1 '' none f
row 'a\n' 'eol: .: no regular file that can be opened' 1 'a\r' --to cr . f
row 'a\n' 'eol: no file given; eol --help tells more' 2 '' --to cr
row 'a\n' 'eol: LF: not a style; these are lf, crlf, cr and lfcr' 2 '' f --to LF
row 'a\n' 'eol: --to: a style must follow' 2 '' f --to
row 'a\n' 'eol: -x: unknown option; -- ends the options' 2 '' -x f

# Where a signal or a failure keeps a new file from growing, the old one stays as it is, and alone.
ulimit -c 0 && ulimit -f 128
row "$(printf '%065535d\\n' 0)" '' 153 '' --to crlf f
trap '' XFSZ
row "$(printf '%065535d\\n' 0)" 'eol: f: cannot be changed, and is as it was' 1 '' --to crlf f
exit $failed
