#include "tessel/mem.h"

#include "bytes.h"
#include "element.h"

#include <stdlib.h>

void *memAlloc(uint32_t size)
{
    return malloc(size);
}

void *memResize(void *block, uint32_t size)
{
    return realloc(block, size);
}

void *memCAlloc(uint32_t size)
{
    void *const block = memAlloc(size);
    if (block)
        memset(block, 0, size);
    return block;
}

void memFree(void *block)
{
    free(block);
}

void memReset(void *blockRef)
{
    memFree(load<void *>(blockRef));
    store<void *>(blockRef, nullptr);
}

void *memAllocExtra(uint32_t size, uint32_t extra)
{
    if (size > UINT32_MAX - extra)
        return nullptr;
    char *const block = static_cast<char *>(memAlloc(size + extra));
    return block ? block + extra : nullptr;
}

void memFreeExtra(void *body, uint32_t extra)
{
    if (body)
        memFree(memExtra(body, extra));
}

void *memExtra(void *body, uint32_t extra)
{
    // On integers, since a null body has an answer too and a pointer could not be moved from there.
    return reinterpret_cast<void *>(reinterpret_cast<uintptr_t>(body) - extra);
}

int32_t memAlign(int32_t value, int32_t unit)
{
    if (unit == 0)
        return value;
    const int32_t sum = wrap_add(value, wrap_add(unit, -1));
    // At 64 bits, so that the lowest number divided by -1 has a quotient.
    const int64_t quotient = int64_t{sum} / unit;
    return static_cast<int32_t>(static_cast<uint32_t>(quotient * unit));
}

uint32_t memByteOrder(void)
{
    return machine_order();
}

int32_t memByteOrderHint(uint32_t order)
{
    return conversion_code(order);
}

int32_t memReorder(void *data, uint32_t count, uint32_t descriptor)
{
    const int32_t conversion = element_conversion(descriptor);
    if (conversion == MEM_CONVERT_NONE)
        return 0;
    // Nobody knows how the third order arranges its bytes, so none is moved for it.
    if (conversion == MEM_CONVERT_INVERT)
        memInvertB(data, count, element_size(descriptor));
    return 1;
}

void memInvert(void *data, uint32_t length)
{
    if (length < 2)
        return;
    unsigned char *first = static_cast<unsigned char *>(data);
    unsigned char *last = first + length - 1;
    while (first < last) {
        const unsigned char byte = *first;
        *first++ = *last;
        *last-- = byte;
    }
}

static uint16_t swap_bytes(uint16_t word)
{
    return __builtin_bswap16(word);
}

static uint32_t swap_bytes(uint32_t word)
{
    return __builtin_bswap32(word);
}

static uint64_t swap_bytes(uint64_t word)
{
    return __builtin_bswap64(word);
}

// Elements of a register's width are swapped in registers, which also lets the compiler take
// several at a time.
template <typename Word>
static void invert_words(unsigned char *element, size_t count)
{
    for (size_t i = 0; i < count; i++)
        store(element + i * sizeof(Word), swap_bytes(load<Word>(element + i * sizeof(Word))));
}

void memInvertB(void *data, uint32_t count, uint32_t size)
{
    unsigned char *const element = static_cast<unsigned char *>(data);
    switch (size) {
    case 2:
        invert_words<uint16_t>(element, count);
        return;
    case 4:
        invert_words<uint32_t>(element, count);
        return;
    case 8:
        invert_words<uint64_t>(element, count);
        return;
    default:
        for (size_t i = 0; i < count; i++)
            memInvert(element + i * size, size);
        return;
    }
}

void memInvertA(void *data, void *scratch, int32_t count, uint32_t size)
{
    if (count < 2)
        return;
    char *first = static_cast<char *>(data);
    char *last = first + size_t{size} * static_cast<uint32_t>(count - 1);
    for (int32_t exchanges = count / 2; exchanges > 0; exchanges--) {
        copy_bytes(scratch, first, size);
        copy_bytes(first, last, size);
        copy_bytes(last, scratch, size);
        first += size;
        last -= size;
    }
}

void memConvCopy(void *first, void *second, mem_convert_proc convert, int32_t count,
                 int32_t firstStep, int32_t secondStep)
{
    char *from = static_cast<char *>(first);
    char *to = static_cast<char *>(second);
    for (int32_t i = 0; i < count; i++) {
        // Stepping in front of every call but the first keeps both inside their runs.
        if (i > 0) {
            from += firstStep;
            to += secondStep;
        }
        convert(from, to);
    }
}

void memReduceInt(void *address, uint32_t width)
{
    const uint32_t value = load<uint32_t>(address);
    if (width == 1)
        store(address, static_cast<uint8_t>(value));
    else if (width == 2)
        store(address, static_cast<uint16_t>(value));
}

uint32_t memRestoreInt(const void *address, uint32_t width)
{
    if (width == 1)
        return load<uint8_t>(address);
    if (width == 2)
        return load<uint16_t>(address);
    return load<uint32_t>(address);
}
