// Native code behind a call, in a library of its own: the way from a program into a shared library
// takes longer than a multiplication, so both sides of a comparison go it.
#ifndef TESSEL_BENCH_BEHIND_CALL_H
#define TESSEL_BENCH_BEHIND_CALL_H

#include <cstddef>
#include <cstdint>

int64_t native_mul(int64_t a, int64_t b);
int64_t native_divide(int64_t a, int64_t b);
int64_t native_remainder(int64_t a, int64_t b);
int32_t native_less(int64_t a, int64_t b);
int32_t native_equal(int64_t a, int64_t b);

struct native_node {
    native_node *next;
};

native_node *native_push(native_node **head, size_t size);
void native_pop(native_node **head);

#endif
