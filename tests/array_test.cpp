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
using bytes = std::vector<unsigned char>;

constexpr uint32_t rows = 5, unit = 90, pointer = sizeof(void *);
constexpr std::array<int8_t, rows> numbers[] = {{2, 0, 7, 1, 4}, {5, 3, 1, 2, 6}};

// A size list as a caller stores it: numbers `width` bytes apart, of 16 bits at unknown widths.
bytes stored(const std::array<int8_t, rows> &list, uint32_t width)
{
    bytes all(rows * width + 2);
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
    const void *at[] = {first, second};
    for (uint32_t row = 0; row < rows; row++) {
        const uint32_t i = steps & MEM_STEP_FIRST && width > 0 ? row : 0;
        const uint32_t j = steps & MEM_STEP_SECOND && width > 0 ? row : 0;
        sizes[row] = unit * static_cast<uint32_t>((first ? numbers[0][i] : 1) *
                                                  (second ? numbers[1][j] : 1));
        total += sizes[row];
        EXPECT_EQ(mem_iterate_2d(unit, &at[0], &at[1], flags), sizes[row]);
    }
    EXPECT_EQ(memSize2D(rows, unit, first, second, flags), rows * pointer + total);

    unsigned char **const arrays[] = {
        static_cast<unsigned char **>(memAlloc2D(rows, unit, first, second, flags)),
        static_cast<unsigned char **>(memAlloc2D(rows, unit, first, second, flags)),
        static_cast<unsigned char **>(memAlloc2DExt(rows, unit, first, second, flags))};
    const auto contents = [&](unsigned char **array) {
        bytes all;
        for (size_t row = 0; row < rows; row++)
            all.insert(all.end(), array[row], array[row] + sizes[row]);
        return all;
    };
    for (unsigned char **const target : arrays)
        for (unsigned char **const source : arrays) {
            memSet2D(target, 0x7a1, rows, unit, first, second, flags);
            EXPECT_EQ(contents(target), bytes(total, 0xa1));
            for (uint32_t row = 0; row < rows; row++)
                for (uint32_t i = 0; i < sizes[row]; i++)
                    source[row][i] = static_cast<unsigned char>((i + row) % 251);
            if (target != source)
                memCopy2D(target, source, rows, unit, first, second, flags);
            EXPECT_EQ(contents(target), contents(source));
        }
    // In one block the rows follow the table without a gap.
    unsigned char *expected = reinterpret_cast<unsigned char *>(arrays[0] + rows);
    for (size_t row = 0; row < rows; expected += sizes[row++])
        EXPECT_EQ(arrays[0][row], expected);
    memFree(arrays[0]);
    memFree(arrays[1]);
    memFree2DExt(arrays[2], rows);
}

TEST(Array2D, RowsFollowTheSizeListsInEveryKindOfArray)
{
    const bytes ones(4, 0xff);
    for (const uint32_t width : {0u, 1u, 2u, 3u, 4u, 8u}) {
        const bytes lists[] = {stored(numbers[0], width), stored(numbers[1], width)};
        for (uint32_t i = 0; i < 16; i++)
            check_array(width, i & 1 ? lists[0].data() : nullptr, i & 2 ? lists[1].data() : nullptr,
                        i / 4 * MEM_STEP_FIRST);
        const void *minus_one = ones.data(), *none = nullptr;
        EXPECT_EQ(mem_iterate_2d(10, &minus_one, &none, width), static_cast<uint32_t>(-10));
    }
    char **const rect = static_cast<char **>(memAllocRect(3, 1000));
    EXPECT_EQ(rect[2] - rect[0], 2000);
    memInitRect(rect, rect[1], 2, 5);
    EXPECT_EQ(rect[1] - rect[0], 5);
    EXPECT_EQ(rect[2] - rect[0], 1000); // no more rows than were asked for
    memFree(rect);
    EXPECT_EQ(memSizeRect(3, 100000), 3 * pointer + 300000);
}

TEST(Array2D, WhatIsTooBigIsNotAllocated)
{
    const std::array<uint32_t, 2> big = {65536, 65536}, mixed = {1, 0x80000000}, none = {0, 0};
    heap = {};
    EXPECT_EQ(memAllocRect(65536, 65536), nullptr);
    EXPECT_EQ(memAllocRect(UINT32_MAX / pointer + 1, 0), nullptr);
    EXPECT_EQ(memAllocRect(1, UINT32_MAX - pointer + 1), nullptr);
    EXPECT_EQ(memAlloc2D(1, 65536, big.data(), nullptr, 4), nullptr);
    EXPECT_EQ(memAlloc2D(1, 1, big.data(), big.data(), 4), nullptr);
    EXPECT_EQ(memAlloc2D(UINT32_MAX, UINT32_MAX, big.data(), big.data(), 4), nullptr);
    EXPECT_EQ(memAlloc2DExt(-1, 1, nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(memAlloc2DExt(INT32_MAX, 1, nullptr, nullptr, 0), nullptr);
    // Refused before anything is asked for.
    EXPECT_EQ(heap.last_size, 0u);
    EXPECT_EQ(memAlloc2DExt(2, 2, mixed.data(), nullptr, 4 | MEM_STEP_FIRST), nullptr);
    EXPECT_EQ(heap.last_size, 2u);
    memFree(memAlloc2D(2, UINT32_MAX, big.data(), none.data(), 4)); // a factor of 0 always fits
    EXPECT_EQ(heap.last_size, 2 * sizeof(void *));
    EXPECT_EQ(heap.held, 0);
}

TEST(LongRun, StepsUntilNothingRemains)
{
    uintptr_t position = UINTPTR_MAX; // as wide as a pointer, and wraps like one
    int32_t left = 40;
    for (const int expected : {16, 16, 8})
        EXPECT_EQ(mem_long_iter(&position, &left, 65536 + 16), expected);
    EXPECT_EQ(left, -8);
    EXPECT_EQ(position, 31u);
    left = 16;
    EXPECT_EQ(mem_long_iter(&position, &left, 16), 16);
    EXPECT_EQ(left, 0);
    EXPECT_EQ(position, 47u);
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
    const size_t count = array.size();
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
            EXPECT_EQ(search(array.data(), static_cast<uint32_t>(count), 2, &key, compare, wanted),
                      found ? &array[probes.back()] : nullptr);
            EXPECT_EQ(key.probes, probes);
        }
        EXPECT_EQ(index, found ? probes.back() : 12345);
    };
    check(memLinSearch, compare_key, linear);
    check(memBinSearch, compare_element, halving);
    EXPECT_EQ(memCountIdentityExt(&key, array.data(), static_cast<uint32_t>(count), 2, compare_key),
              std::count(array.begin(), array.end(), number));
}

TEST(ArraySearch, ProbesTheElementsThatTheModelProbes)
{
    std::mt19937 random(1);
    for (size_t i = 0; i < 800; i++) {
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
    for (const uint32_t count : {0u, 1u, 7u, 8u, 254u, 255u, 256u, 65535u, 70000u, 200001u}) {
        std::vector<Word> words(count);
        for (size_t i = 0; i < count; i++)
            words[i] = static_cast<Word>(count % 2 ? i % 5 * i % 300 - i % 3 : 255);
        bytes data(count * sizeof(Word) + 1); // at an odd address
        const auto *const raw = reinterpret_cast<const unsigned char *>(words.data());
        std::copy_n(raw, count * sizeof(Word), data.begin() + 1);
        for (const uint32_t number : {0u, 1u, 255u, 256u, 65535u, 0x10001u, 0xffffffffu}) {
            const auto same = [&](Word word) { return word == number; };
            const auto expected = std::count_if(words.begin(), words.end(), same);
            EXPECT_EQ(expected, memCountIdentity(&data[1], count, sizeof(Word), number))
                << number << " among " << count << " of " << sizeof(Word) << " bytes";
        }
    }
}

TEST(ArrayWords, AreCountedAtEveryWidth)
{
    check_words<uint8_t>();
    check_words<uint16_t>();
    check_words<uint32_t>();
}
} // namespace
