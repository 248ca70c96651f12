#include "array.h"
#include "heap_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <random>
#include <vector>

namespace
{

using byte_vector = std::vector<unsigned char>;

constexpr bool big = std::endian::native == std::endian::big;
constexpr uint32_t pointer = sizeof(void *);

TEST(Memory, Align)
{
    const int32_t rows[][3] = {{-9, 4, -4}, {-7, 4, -4}, {-6, 4, 0},  {0, 4, 0},  {1, 4, 4},
                               {5, 4, 8},   {0, -4, -4}, {2, -4, 0},  {9, -4, 4}, {10, -3, 6},
                               {-1, 0, -1}, {7, 1, 7},   {-8, 4, -4}, {4, 4, 4},  {8, -4, 0}};
    for (const auto &[value, unit, aligned] : rows)
        EXPECT_EQ(memAlign(value, unit), aligned) << value << " to " << unit;
    EXPECT_EQ(memAlign(INT32_MAX, 4), INT32_MIN + 4);
    EXPECT_EQ(memAlign(INT32_MIN + 2, -1), INT32_MIN);
}

TEST(Memory, Blocks)
{
    heap = {};
    void *block = memResize(nullptr, 3);
    memcpy(block, "abc", 3);
    block = memResize(block, 5000);
    EXPECT_EQ(memcmp(block, "abc", 3), 0);
    memset(block, 'x', 5000);
    memReset(&block);
    EXPECT_EQ(block, nullptr);
    memReset(&block);
    block = memCAlloc(5000);
    auto *const zeros = static_cast<char *>(block);
    EXPECT_EQ(std::count(zeros, zeros + 5000, 0), 5000);
    memFree(block);
    for (const uint32_t extra : {0u, 24u}) {
        char *const body = static_cast<char *>(memAllocExtra(10, extra));
        EXPECT_EQ(memExtra(body, extra), body - extra);
        EXPECT_EQ(heap.last_size, 10 + extra);
        memFreeExtra(body, extra);
        memFreeExtra(nullptr, extra);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(memExtra(nullptr, extra)), uintptr_t{0} - extra);
    }
    EXPECT_FALSE(memAllocExtra(UINT32_MAX, 1) || memAllocExtra(2, UINT32_MAX));
    EXPECT_EQ(heap.held, 0);
}

// Every size up to one above the widest register, between bytes that belong to somebody else.
TEST(Elements, Inversions)
{
    EXPECT_EQ(memByteOrder(), big ? MEM_ORDER_BIG : MEM_ORDER_LITTLE);
    EXPECT_EQ(memByteOrderHint(MEM_ORDER_BIG), !big);
    EXPECT_EQ(memByteOrderHint(MEM_ORDER_OTHER), big ? 3 : 2);
    // Only a whole word is an order; every other counts as little-endian.
    for (const uint32_t order : {0u, 0x1000u, 0x2100u, 0x3002u, 0x2u, 0x6000u})
        EXPECT_EQ(memByteOrderHint(order), big) << order;
    for (uint32_t size = 0; size < 10; size++)
        for (uint32_t count = 0; count < 20; count++) {
            const size_t end = size * count + 1;
            byte_vector before(end + 1), scratch(size + 1);
            std::generate(before.begin(), before.end(), [n = 200]() mutable { return n++; });
            byte_vector bytes = before, within = before, all = before;
            std::reverse(&all[1], &all[end]);
            for (size_t at = 1; at < end; at += size)
                std::reverse(&within[at], &within[at] + size);
            memInvertB(&bytes[1], count, size);
            EXPECT_EQ(bytes, within);
            // To reverse the bytes of all elements and then the elements reverses all bytes.
            memInvertA(&bytes[1], scratch.data(), static_cast<int32_t>(count), size);
            EXPECT_EQ(bytes, all);
            memInvert(&bytes[1], size * count);
            EXPECT_EQ(bytes, before);
            for (const uint32_t order : {0u, 0x1000u, 0x2000u, 0x3000u, 0x2f00u, 0x8f00u}) {
                bytes = before;
                const bool other = (order & 0x3000) == 0x3000,
                           foreign = ((order & 0x3000) == 0x2000) != big;
                EXPECT_EQ(memReorder(&bytes[1], count, order | size),
                          size > 1 && (other || foreign));
                EXPECT_EQ(bytes, size > 1 && foreign && !other ? within : before) << order;
            }
        }
}

TEST(Elements, ReduceAndRestore)
{
    const uint32_t value = 0xfffefdfc;
    const uint16_t low = 0xfdfc;
    for (uint32_t width = 0; width < 5; width++) {
        byte_vector bytes(5);
        store(&bytes[1], value);
        byte_vector expected = bytes;
        if (width == 1)
            expected[1] = 0xfc;
        else if (width == 2)
            store(&expected[1], low);
        memReduceInt(&bytes[1], width);
        EXPECT_EQ(bytes, expected);
        EXPECT_EQ(memRestoreInt(&bytes[1], width), width == 1 ? 0xfc : width == 2 ? low : value);
    }
}

TEST(Elements, ConvCopyWalksBothRuns)
{
    int16_t narrow[] = {1, -2, 3};
    std::vector<int32_t> wide(4, 7);
    const auto widen = [](void *first, void *second) {
        *static_cast<int32_t *>(second) = *static_cast<int16_t *>(first);
    };
    memConvCopy(narrow, &wide[0], widen, -1, 2, 4);
    memConvCopy(narrow, &wide[3], widen, 3, 2, -4);
    EXPECT_EQ(wide, (std::vector<int32_t>{7, 3, -2, 1}));
}

constexpr uint32_t rows = 5, unit = 90;
constexpr std::array<int8_t, rows> numbers[] = {{2, 0, 7, 1, 4}, {5, 3, 1, 2, 6}};

// A size list as a caller stores it: numbers `width` bytes apart, of 16 bits at unknown widths.
byte_vector stored(const std::array<int8_t, rows> &list, uint32_t width)
{
    byte_vector all(rows * width + 2);
    for (size_t i = rows; i-- > 0;) {
        if (width == 1)
            store(&all[i], list[i]);
        else if (width == 4)
            store(&all[i * width], int32_t{list[i]});
        else
            store(&all[i * width], int16_t{list[i]});
    }
    return all;
}

void check_array(uint32_t width, const void *first, const void *second, uint32_t steps)
{
    SCOPED_TRACE(testing::Message() << width << (first ? " first" : "") << (second ? " second" : "")
                                    << std::hex << " steps " << steps);
    const uint32_t flags = width | steps;
    std::array<uint32_t, rows> sizes;
    uint32_t total = 0;
    for (uint32_t row = 0; row < rows; row++) {
        const uint32_t i = steps & MEM_STEP_FIRST && width > 0 ? row : 0;
        const uint32_t j = steps & MEM_STEP_SECOND && width > 0 ? row : 0;
        sizes[row] = unit * static_cast<uint32_t>((first ? numbers[0][i] : 1) *
                                                  (second ? numbers[1][j] : 1));
        total += sizes[row];
    }
    EXPECT_EQ(memSize2D(rows, unit, first, second, flags), rows * pointer + total);

    // In one block the rows follow the table without a gap.
    auto **const whole =
        static_cast<unsigned char **>(memAlloc2D(rows, unit, first, second, flags));
    unsigned char *next = reinterpret_cast<unsigned char *>(whole + rows);
    for (size_t row = 0; row < rows; next += sizes[row++])
        EXPECT_EQ(whole[row], next);
    auto **const parts =
        static_cast<unsigned char **>(memAlloc2DExt(rows, unit, first, second, flags));
    const auto contents = [&](unsigned char **array) {
        byte_vector all;
        for (size_t row = 0; row < rows; row++)
            all.insert(all.end(), array[row], array[row] + sizes[row]);
        return all;
    };
    for (const auto &[target, source] : {std::pair(whole, parts), std::pair(parts, whole)}) {
        memSet2D(target, 0x7a1, rows, unit, first, second, flags);
        EXPECT_EQ(contents(target), byte_vector(total, 0xa1));
        for (uint32_t row = 0; row < rows; row++)
            for (uint32_t i = 0; i < sizes[row]; i++)
                source[row][i] = static_cast<unsigned char>((i + row) % 251);
        memCopy2D(target, source, rows, unit, first, second, flags);
        EXPECT_EQ(contents(target), contents(source));
    }
    memFree(whole);
    memFree2DExt(parts, rows);
}

TEST(Array2D, RowsFollowTheSizeLists)
{
    heap = {};
    for (const uint32_t width : {0u, 1u, 2u, 3u, 4u, 8u}) {
        const byte_vector lists[] = {stored(numbers[0], width), stored(numbers[1], width)};
        for (uint32_t i = 0; i < 16; i++)
            check_array(width, i & 1 ? lists[0].data() : nullptr, i & 2 ? lists[1].data() : nullptr,
                        i / 4 * MEM_STEP_FIRST);
        const uint32_t minus_one = UINT32_MAX;
        EXPECT_EQ(memSize2D(1, 10, &minus_one, nullptr, width), pointer - 10);
    }
    char **const rect = static_cast<char **>(memAllocRect(3, 1000));
    EXPECT_EQ(rect[2] - rect[0], 2000);
    memInitRect(rect, rect[1], 2, 5);
    EXPECT_EQ(rect[1] - rect[0], 5);
    EXPECT_EQ(rect[2] - rect[0], 1000); // no more rows than were asked for
    memFree(rect);
    EXPECT_EQ(memSizeRect(3, 100000), 3 * pointer + 300000);
    EXPECT_EQ(heap.held, 0);
}

TEST(Array2D, WhatIsTooBigIsNotAllocated)
{
    const uint32_t big_sizes[] = {65536, 65536}, mixed[] = {1, 0x80000000}, none[] = {0, 0};
    heap = {};
    EXPECT_EQ(memAllocRect(65536, 65536), nullptr);
    EXPECT_EQ(memAllocRect(UINT32_MAX / pointer + 1, 0), nullptr);
    EXPECT_EQ(memAllocRect(1, UINT32_MAX - pointer + 1), nullptr);
    EXPECT_EQ(memAlloc2D(1, 65536, big_sizes, nullptr, 4), nullptr);
    EXPECT_EQ(memAlloc2D(UINT32_MAX, UINT32_MAX, big_sizes, big_sizes, 4), nullptr);
    EXPECT_EQ(memAlloc2DExt(-1, 1, nullptr, nullptr, 0), nullptr);
    // Refused before anything is asked for.
    EXPECT_EQ(heap.last_size, 0u);
    EXPECT_EQ(memAlloc2DExt(2, 2, mixed, nullptr, 4 | MEM_STEP_FIRST), nullptr);
    EXPECT_EQ(heap.last_size, 2u);
    memFree(memAlloc2D(2, UINT32_MAX, big_sizes, none, 4)); // a factor of 0 always fits
    EXPECT_EQ(heap.last_size, 2 * pointer);
    EXPECT_EQ(heap.held, 0);
}

// A search key that notes which elements it is compared with.
struct search_key {
    const std::vector<int16_t> &array;
    int16_t number;
    mutable std::vector<size_t> probes = {};
};

int32_t compare_element(const void *element, const void *search)
{
    const auto *const key = static_cast<const search_key *>(search);
    const auto *const at = static_cast<const int16_t *>(element);
    key->probes.push_back(static_cast<size_t>(at - key->array.data()));
    return key->array.at(key->probes.back()) - key->number;
}

int32_t compare_key(const void *search, const void *element)
{
    return compare_element(element, search);
}

void check_searches(const std::vector<int16_t> &array, int16_t number)
{
    const auto count = static_cast<uint32_t>(array.size());
    std::vector<size_t> linear, halving;
    for (size_t i = 0; i < count && (i == 0 || array[i - 1] != number); i++)
        linear.push_back(i);
    for (size_t low = 0, high = count; low < high;) {
        const size_t middle = (low + high - 1) / 2;
        halving.push_back(middle);
        low = array[middle] < number ? middle + 1 : low;
        high = array[middle] > number ? middle : array[middle] < number ? high : 0;
    }
    const search_key key = {array, number};
    const auto check = [&](auto search, mem_compare_proc compare, const auto &probes) {
        const bool found = !probes.empty() && array[probes.back()] == number;
        uint32_t index = 12345;
        for (uint32_t *const wanted : {&index, static_cast<uint32_t *>(nullptr)}) {
            key.probes.clear();
            EXPECT_EQ(search(array.data(), count, 2, &key, compare, wanted),
                      found ? &array[probes.back()] : nullptr);
            EXPECT_EQ(key.probes, probes);
        }
        EXPECT_EQ(index, found ? probes.back() : 12345);
    };
    check(memLinSearch, compare_key, linear);
    check(memBinSearch, compare_element, halving);
    EXPECT_EQ(memCountIdentityExt(&key, array.data(), count, 2, compare_key),
              std::count(array.begin(), array.end(), number));
}

TEST(ArraySearch, ProbesTheElementsThatTheModelProbes)
{
    std::mt19937 random(1);
    for (size_t i = 0; i < 400; i++) {
        std::vector<int16_t> array(i / 20);
        for (int16_t &number : array)
            number = static_cast<int16_t>(random() % 30);
        if (i % 2)
            std::sort(array.begin(), array.end());
        for (int16_t number = -1; number < 31; number = static_cast<int16_t>(number + 3))
            check_searches(array, number);
    }
}

TEST(ArraySearch, HalvingEndsForEveryCount)
{
    static int calls; // of elements without a size: the longest array that exists
    const auto up = [](const void *, const void *) { return calls++, INT32_MIN; };
    const auto down = [](const void *, const void *) { return calls++, INT32_MAX; };
    for (const uint32_t count : {0u, 1u, 2u, 0x7fffffffu, 0x80000000u, 0x80000001u, 0xffffffffu})
        for (const mem_compare_proc compare : {mem_compare_proc{up}, mem_compare_proc{down}}) {
            calls = 0;
            EXPECT_EQ(memBinSearch("", count, 0, nullptr, compare, nullptr), nullptr);
            EXPECT_TRUE(calls <= 32 - std::countl_zero(count) && (calls > 0) == (count > 0))
                << count;
        }
}

template <typename Word>
void check_words()
{
    for (const uint32_t count : {0u, 1u, 254u, 255u, 256u, 65535u, 70001u}) {
        std::vector<Word> words(count);
        for (size_t i = 0; i < count; i++)
            words[i] = static_cast<Word>(count % 2 ? i % 5 * i % 300 - i % 3 : 255);
        byte_vector data(count * sizeof(Word) + 1); // at an odd address
        const auto *const raw = reinterpret_cast<const unsigned char *>(words.data());
        std::copy_n(raw, count * sizeof(Word), data.begin() + 1);
        for (const uint32_t number : {0u, 1u, 255u, 256u, 65535u, 0x10001u, 0xffffffffu})
            EXPECT_EQ(std::count_if(words.begin(), words.end(),
                                    [&](Word word) { return word == number; }),
                      memCountIdentity(&data[1], count, sizeof(Word), number))
                << number << " among " << count << " of " << sizeof(Word) << " bytes";
    }
}

TEST(ArrayWords, AreCountedAtEveryWidth)
{
    check_words<uint8_t>();
    check_words<uint16_t>();
    check_words<uint32_t>();
}

} // namespace
