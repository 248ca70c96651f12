// Access to untyped memory, shared by all families.
#ifndef TESSEL_SRC_BYTES_H
#define TESSEL_SRC_BYTES_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

// What the layouts of records are told in.
inline constexpr size_t pointer_size = sizeof(void *);

// Copies between ranges that do not overlap. The small fixed widths become one load and one store
// each: most transfers of typed data are single elements, and a call to memcpy costs more than the
// rest of such a transfer.
inline void copy_bytes(void *dest, const void *source, size_t bytes)
{
    switch (bytes) {
    case 1:
        memcpy(dest, source, 1);
        return;
    case 2:
        memcpy(dest, source, 2);
        return;
    case 4:
        memcpy(dest, source, 4);
        return;
    default:
        memcpy(dest, source, bytes);
        return;
    }
}

template <typename Word>
inline Word load(const void *address)
{
    Word word;
    memcpy(&word, address, sizeof word);
    return word;
}

template <typename Word>
inline void store(void *address, Word word)
{
    memcpy(address, &word, sizeof word);
}

// Signed 32-bit addition that wraps. Counters of callers may start anywhere.
constexpr int32_t wrap_add(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

constexpr int32_t wrap_negate(int32_t a)
{
    return static_cast<int32_t>(0u - static_cast<uint32_t>(a));
}

#endif
