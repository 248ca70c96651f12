// Native arithmetic behind a call, in a library of its own: the way from a program into a shared
// library takes longer than a multiplication, so both sides of the comparison go it.
#ifndef TESSEL_BENCH_NATIVE_INTEGER_H
#define TESSEL_BENCH_NATIVE_INTEGER_H

#include <cstdint>

int64_t native_mul(int64_t a, int64_t b);
int64_t native_divide(int64_t a, int64_t b);
int64_t native_remainder(int64_t a, int64_t b);

#endif
