// The rows of a two-dimensional array and how they follow each other, and long runs cut into short
// steps: shared with the transfers that walk both.
#ifndef TESSEL_SRC_ARRAY_H
#define TESSEL_SRC_ARRAY_H

#include "tessel/mem.h"

#include "bytes.h"

inline char *row_at(const void *table, size_t row)
{
    return load<char *>(static_cast<const char *>(table) + row * sizeof(void *));
}

// The number that a size list has for the next row; no list counts as 1. The list moves on behind
// the number if its bit says so, formed on an integer, since a width of its own may lead out of the
// list behind the last number.
inline uint32_t take_dimension(const void *&list, uint32_t flags, uint32_t step)
{
    if (!list)
        return 1;
    const void *const number = list;
    const uint32_t width = flags & MEM_WIDTH_MASK;
    if (flags & step)
        list = reinterpret_cast<const void *>(reinterpret_cast<uintptr_t>(list) + width);
    switch (width) {
    case 1:
        return static_cast<uint32_t>(load<int8_t>(number));
    case 4:
        return load<uint32_t>(number);
    default:
        return static_cast<uint32_t>(load<int16_t>(number));
    }
}

// Size of the next row: the one rule that all procedures over such arrays share. It wraps.
inline uint32_t mem_iterate_2d(uint32_t unit, const void **firstRef, const void **secondRef,
                               uint32_t flags)
{
    const uint32_t first = take_dimension(*firstRef, flags, MEM_STEP_FIRST);
    return first * take_dimension(*secondRef, flags, MEM_STEP_SECOND) * unit;
}

// Takes the next step of a run: gives its size and moves the position behind it. The last, short
// step leaves the position where it is and the remaining count below 0, which ends the caller's
// loop as 0 does.
inline uint16_t mem_long_iter(uintptr_t *positionRef, int32_t *remainingRef, uint32_t step)
{
    const uint16_t taken = static_cast<uint16_t>(step);
    *remainingRef = wrap_add(*remainingRef, -int32_t{taken});
    if (*remainingRef < 0)
        return static_cast<uint16_t>(wrap_add(*remainingRef, taken));
    *positionRef += taken;
    return taken;
}

// memSize2D() for rows of equal size.
uint32_t memSizeRect(uint32_t rows, uint32_t rowBytes);

#endif
