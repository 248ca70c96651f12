#!/bin/sh
# Runs the example radix, whose program is the first argument, and compares its output, what it says
# on standard error and its exit code with a table. Further arguments are the command that runs
# programs of its kind where they do not run by themselves.
radix=$1
shift
emulator=$*
failed=0
errors=$(mktemp)
trap 'rm -f "$errors"' EXIT

# row INPUT OUTPUT MESSAGE ARGUMENT...: lines are joined; a row with a message has exit code 1.
row() {
  want="$2 | ${3:+radix: $3} | $([ -z "$3" ]; echo $?)"
  input=$1
  shift 3
  output=$(printf '%s' "$input" | $emulator "$radix" "$@" 2>"$errors")
  code=$?
  got=$(echo "$(echo $output) | $(cat "$errors") | $code" | tr -d '\r')
  [ "$got" = "$want" ] && return
  failed=1
  printf 'radix %s\n  gave %s\n  not  %s\n' "$*" "$got" "$want"
}

row '' '255 -1 1' '' --from 16 --to=10 Ff ffffffffffffffff 0000000000000000000001
row '' '18446744073709551615 = 18446744073709551615' '' -uvf10 18446744073709551615
row '' 'ffffffffffffffff 7' '' -t 16 -- -1 +7
row '' '-9223372036854775808 0 0' '' -- -9223372036854775808 000 -0
row ' 77 -10 +1 ' '63 -8 1' '' -f8
row '' '' '9223372036854775808: does not fit 64 bits with a sign' 9223372036854775808
row '' '' '-8000000000000001: does not fit 64 bits with a sign' -f16 -- -8000000000000001
row '' '' '-1: does not fit 64 bits without a sign' -u -- -1
row '' '' '3w5e11264sgsg: does not fit 64 bits without a sign' -uf36 3w5e11264sgsg
row '' '3 4' '12x: not a number in radix 10' 3 12x 4
row '3 - 7' '3 7' '-: not a number in radix 8' -f 8
row '' '' '-u1: unknown option; -- ends the options' 5 -u1
row '' '' '--unsigned=1: unknown option, or one that takes no value' --unsigned=1
row '' '' '-: unknown option, or one that takes no value' -
row '' '' '--from: a radix must follow' --from
for bad in 1 37 '' +x 4294967306; do
  row '' '' "$bad: not a radix from 2 to 36" -t "$bad"
done
exit $failed
