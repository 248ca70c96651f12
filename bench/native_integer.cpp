#include "native_integer.h"

int64_t native_mul(int64_t a, int64_t b)
{
    return a * b;
}

int64_t native_divide(int64_t a, int64_t b)
{
    return a / b;
}

int64_t native_remainder(int64_t a, int64_t b)
{
    return a % b;
}
