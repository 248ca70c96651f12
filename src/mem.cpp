#include "tessel/mem.h"

#include "array.h"
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

// Eight 16-bit lanes. Byte swaps are a shift each way in such lanes and an exchange of whole lanes,
// which every vector unit has; compilers do not find this way through a loop of 32-bit or 64-bit
// swaps and take those word by word.
typedef uint16_t swap_lanes __attribute__((vector_size(16)));

template <typename Word>
static void invert_lanes(swap_lanes &lanes)
{
    lanes = lanes << 8 | lanes >> 8;
    if constexpr (sizeof(Word) == 4)
        lanes = __builtin_shufflevector(lanes, lanes, 1, 0, 3, 2, 5, 4, 7, 6);
    else if constexpr (sizeof(Word) == 8)
        lanes = __builtin_shufflevector(lanes, lanes, 3, 2, 1, 0, 7, 6, 5, 4);
}

template <typename Word>
static void invert_words(unsigned char *data, size_t count)
{
    const size_t bytes = count * sizeof(Word);
    const size_t in_vectors = bytes / sizeof(swap_lanes) * sizeof(swap_lanes);
    // Elements of 2 bytes are so quick that counting the rounds would take as long again.
#pragma GCC unroll 4
    for (size_t i = 0; i < in_vectors; i += sizeof(swap_lanes)) {
        swap_lanes lanes;
        memcpy(&lanes, data + i, sizeof lanes);
        invert_lanes<Word>(lanes);
        memcpy(data + i, &lanes, sizeof lanes);
    }
    for (size_t i = in_vectors; i < bytes; i += sizeof(Word))
        store(data + i, swap_bytes(load<Word>(data + i)));
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

// Two-dimensional arrays

// One list of one 32-bit number, and none: what rows of equal size are.
constexpr uint32_t rect_flags = sizeof(uint32_t);

static void set_row(void *table, size_t row, void *address)
{
    store(static_cast<char *>(table) + row * sizeof(void *), address);
}

uint32_t memSize2D(uint32_t rows, uint32_t unit, const void *first, const void *second,
                   uint32_t flags)
{
    uint32_t total = rows * static_cast<uint32_t>(sizeof(void *));
    for (uint32_t row = 0; row < rows; row++)
        total += mem_iterate_2d(unit, &first, &second, flags);
    return total;
}

void memInit2D(void *table, void *data, uint32_t rows, uint32_t unit, const void *first,
               const void *second, uint32_t flags)
{
    char *address = static_cast<char *>(data ? data : table);
    if (!data)
        address += rows * sizeof(void *);
    for (uint32_t row = 0; row < rows; row++) {
        set_row(table, row, address);
        address += mem_iterate_2d(unit, &first, &second, flags);
    }
}

// As mem_iterate_2d(), but a size that does not fit 32 bits shows as one that does not.
static uint64_t next_row_size(uint32_t unit, const void *&first, const void *&second,
                              uint32_t flags)
{
    const uint64_t product = uint64_t{unit} * take_dimension(first, flags, MEM_STEP_FIRST);
    const uint32_t factor = take_dimension(second, flags, MEM_STEP_SECOND);
    if (product > UINT32_MAX && factor > 1)
        return product;
    return product * factor;
}

// As memSize2D(), but a total that does not fit 32 bits shows as one that does not. The table alone
// decides first, so that nobody waits for the sum over billions of rows.
static uint64_t block_size(uint32_t rows, uint32_t unit, const void *first, const void *second,
                           uint32_t flags)
{
    uint64_t total = rows * uint64_t{sizeof(void *)};
    for (uint32_t row = 0; row < rows && total <= UINT32_MAX; row++)
        total += next_row_size(unit, first, second, flags);
    return total;
}

static void *alloc_if_fits(uint64_t size)
{
    return size <= UINT32_MAX ? memAlloc(static_cast<uint32_t>(size)) : nullptr;
}

void *memAlloc2D(uint32_t rows, uint32_t unit, const void *first, const void *second,
                 uint32_t flags)
{
    void *const table = alloc_if_fits(block_size(rows, unit, first, second, flags));
    if (table)
        memInit2D(table, nullptr, rows, unit, first, second, flags);
    return table;
}

// A run of no bytes may have a null address, which memcpy and memset must not be given.
static void copy_run(char *target, const char *source, size_t bytes)
{
    if (bytes > 0)
        memcpy(target, source, bytes);
}

static void fill_run(char *target, int32_t byte, size_t bytes)
{
    if (bytes > 0)
        memset(target, byte, bytes);
}

// Rows that follow each other without a gap, as in an array in one block, are copied and filled as
// one run, so they are taken for parts of one block: at 16 bytes a row this takes half the time of
// a call for each. Behind this length a run is not worth extending, and the C library copies blocks
// of 64 KiB at once more slowly.
constexpr size_t longest_run = 1024;

void memCopy2D(void *target, const void *source, uint32_t rows, uint32_t unit, const void *first,
               const void *second, uint32_t flags)
{
    char *to = nullptr;
    const char *from = nullptr;
    size_t run = 0;
    for (uint32_t row = 0; row < rows; row++) {
        char *const next_to = row_at(target, row);
        const char *const next_from = row_at(source, row);
        if (run == 0 || run >= longest_run || next_to != to + run || next_from != from + run) {
            copy_run(to, from, run);
            to = next_to;
            from = next_from;
            run = 0;
        }
        run += mem_iterate_2d(unit, &first, &second, flags);
    }
    copy_run(to, from, run);
}

void memSet2D(void *table, int32_t byte, uint32_t rows, uint32_t unit, const void *first,
              const void *second, uint32_t flags)
{
    char *to = nullptr;
    size_t run = 0;
    for (uint32_t row = 0; row < rows; row++) {
        char *const next_to = row_at(table, row);
        if (run == 0 || run >= longest_run || next_to != to + run) {
            fill_run(to, byte, run);
            to = next_to;
            run = 0;
        }
        run += mem_iterate_2d(unit, &first, &second, flags);
    }
    fill_run(to, byte, run);
}

uint32_t memSizeRect(uint32_t rows, uint32_t rowBytes)
{
    return memSize2D(rows, 1, &rowBytes, nullptr, rect_flags);
}

void memInitRect(void *table, void *data, uint32_t rows, uint32_t rowBytes)
{
    memInit2D(table, data, rows, 1, &rowBytes, nullptr, rect_flags);
}

void *memAllocRect(uint32_t rows, uint32_t rowBytes)
{
    return memAlloc2D(rows, 1, &rowBytes, nullptr, rect_flags);
}

void *memAlloc2DExt(int32_t rows, uint32_t unit, const void *first, const void *second,
                    uint32_t flags)
{
    // A negative number of rows counts as one far too big.
    void *const table = alloc_if_fits(static_cast<uint32_t>(rows) * uint64_t{sizeof(void *)});
    if (!table)
        return nullptr;
    for (int32_t row = 0; row < rows; row++) {
        void *const address = alloc_if_fits(next_row_size(unit, first, second, flags));
        if (!address) {
            memFree2DExt(table, row);
            return nullptr;
        }
        set_row(table, static_cast<size_t>(row), address);
    }
    return table;
}

void memFree2DExt(void *table, int32_t rows)
{
    if (!table)
        return;
    for (int32_t row = 0; row < rows; row++)
        memFree(row_at(table, static_cast<size_t>(row)));
    memFree(table);
}

// Array search and counting

static const char *element_at(const void *base, size_t index, uint32_t size)
{
    return static_cast<const char *>(base) + index * size;
}

// Reports an element that was found, as both searches do.
static void *found_at(const void *element, uint32_t index, uint32_t *indexRef)
{
    if (indexRef)
        *indexRef = index;
    return const_cast<void *>(element);
}

void *memLinSearch(const void *base, uint32_t count, uint32_t size, const void *key,
                   mem_compare_proc compare, uint32_t *index)
{
    for (uint32_t i = 0; i < count; i++) {
        const char *const element = element_at(base, i, size);
        if (compare(key, element) == 0)
            return found_at(element, i, index);
    }
    return nullptr;
}

void *memBinSearch(const void *base, uint32_t count, uint32_t size, const void *key,
                   mem_compare_proc compare, uint32_t *index)
{
    // What is left begins at `left` and has `count` elements, so that no bound can wrap.
    const char *left = static_cast<const char *>(base);
    uint32_t low = 0;
    while (count > 0) {
        const uint32_t before = (count - 1) / 2;
        const char *const element = element_at(left, before, size);
        const int32_t order = compare(element, key);
        if (order == 0)
            return found_at(element, low + before, index);
        if (order < 0) {
            left = element + size;
            low += before + 1;
            count /= 2;
        } else {
            count = before;
        }
    }
    return nullptr;
}

// Counts in blocks that a counter of the element's own width can hold, so that the compiler's
// vectors have as many lanes for counting as for comparing.
template <typename Word>
static uint32_t count_words(const void *base, size_t count, uint32_t number)
{
    const Word wanted = static_cast<Word>(number);
    if (wanted != number)
        return 0;
    constexpr size_t block = static_cast<Word>(-1);
    uint32_t total = 0;
    for (size_t start = 0; start < count; start += block) {
        const size_t end = count - start < block ? count : start + block;
        Word found = 0;
        for (size_t i = start; i < end; i++)
            found = static_cast<Word>(found +
                                      (load<Word>(element_at(base, i, sizeof(Word))) == wanted));
        total += found;
    }
    return total;
}

uint32_t memCountIdentity(const void *base, uint32_t count, uint32_t width, uint32_t number)
{
    switch (width) {
    case 1:
        return count_words<uint8_t>(base, count, number);
    case 2:
        return count_words<uint16_t>(base, count, number);
    case 4:
        return count_words<uint32_t>(base, count, number);
    default:
        break;
    }
    uint32_t found = 0;
    for (size_t i = 0; i < count; i++)
        found += memRestoreInt(element_at(base, i, width), width) == number;
    return found;
}

uint32_t memCountIdentityExt(const void *key, const void *base, uint32_t count, uint32_t size,
                             mem_compare_proc compare)
{
    uint32_t found = 0;
    for (size_t i = 0; i < count; i++)
        found += compare(key, element_at(base, i, size)) == 0;
    return found;
}
