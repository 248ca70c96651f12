#include "array.h"
#include "heap_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <vector>

namespace
{

using byte_vector = std::vector<unsigned char>;

constexpr bool big = std::endian::native == std::endian::big;
constexpr uint32_t pointer = sizeof(void *);

TEST(Memory, Align)
{
    const int32_t cases[][3] = {
        {-7, 4, -4},
        {-6, 4, 0},
        {1, 4, 4},
        {1, -4, -4},
        {2, -4, 0},
        {-1, 0, -1},
        {INT32_MAX, 4, INT32_MIN + 4},
        {INT32_MIN + 2, -1, INT32_MIN},
    };
    for (const auto &[value, unit, aligned] : cases)
        EXPECT_EQ(memAlign(value, unit), aligned) << value << " to " << unit;
}

TEST(Memory, Blocks)
{
    heap = {};
    void *block = memResize(memCAlloc(50), 5000);
    EXPECT_EQ(heap.last_size, 5000u);
    EXPECT_EQ(std::string(static_cast<char *>(block), 50), std::string(50, '\0'));
    memReset(&block);
    EXPECT_EQ(block, nullptr);
    char *const body = static_cast<char *>(memAllocExtra(10, 24));
    EXPECT_EQ(heap.last_size, 34u);
    EXPECT_EQ(memExtra(body, 24), body - 24);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(memExtra(nullptr, 24)), uintptr_t{0} - 24);
    memFreeExtra(body, 24);
    memFreeExtra(nullptr, 24);
    EXPECT_FALSE(memAllocExtra(UINT32_MAX, 1) || memAllocExtra(2, UINT32_MAX));
    EXPECT_EQ(heap.held, 0);
}

// Every size up to one above the widest register, between bytes that belong to somebody else.
TEST(Elements, OrdersAndInversions)
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
            for (const uint32_t order : {0x1000u, 0x2f00u, 0x3000u}) {
                bytes = before;
                const bool other = order == 0x3000, foreign = (order == 0x2f00) != big && !other;
                EXPECT_EQ(memReorder(&bytes[1], count, order | size),
                          size > 1 && (other || foreign));
                EXPECT_EQ(bytes, size > 1 && foreign ? within : before) << order;
            }
        }
}

TEST(Elements, ReduceRestoreAndConvert)
{
    const uint32_t value = 0xfffefdfc, restored[] = {value, 0xfc, 0xfdfc, value, value};
    for (uint32_t width = 0; width < 5; width++) {
        uint32_t number = value, expected = value;
        if (width == 1)
            store(&expected, uint8_t{0xfc});
        else if (width == 2)
            store(&expected, uint16_t{0xfdfc});
        memReduceInt(&number, width);
        EXPECT_EQ(number, expected);
        EXPECT_EQ(memRestoreInt(&number, width), restored[width]);
    }
    int16_t narrow[] = {1, -2, 3};
    std::vector<int32_t> wide(4, 7);
    const auto widen = [](void *first, void *second) {
        *static_cast<int32_t *>(second) = *static_cast<int16_t *>(first);
    };
    memConvCopy(narrow, &wide[3], widen, 3, 2, -4);
    EXPECT_EQ(wide, (std::vector<int32_t>{7, 3, -2, 1}));
}

constexpr uint32_t rows = 5, unit = 90;

// Numbers as a caller stores them, `width` bytes apart: of 16 bits at an unknown width.
struct size_list {
    uint32_t numbers[rows];
    unsigned char bytes[rows * 8 + 2] = {};

    const void *stored(uint32_t width)
    {
        for (size_t i = rows; i-- > 0;) {
            if (width == 1)
                store(bytes + i, static_cast<uint8_t>(numbers[i]));
            else if (width == 4)
                store(bytes + i * width, numbers[i]);
            else
                store(bytes + i * width, static_cast<uint16_t>(numbers[i]));
        }
        return bytes;
    }
};

TEST(Array2D, RowsFollowTheSizeLists)
{
    size_list lists[] = {{{2, 0, 7, 1, 4}}, {{5, 3, 1, 2, 6}}};
    for (uint32_t bits = 0; bits < 9 * 16; bits++) {
        const uint32_t width = bits / 16, steps = bits / 4 % 4 * MEM_STEP_FIRST;
        const void *const first = bits & 1 ? lists[0].stored(width) : nullptr;
        const void *const second = bits & 2 ? lists[1].stored(width) : nullptr;
        void **const table =
            static_cast<void **>(memAlloc2D(rows, unit, first, second, width | steps));
        // The rows follow the table, and each other, without a gap.
        size_t end = rows * sizeof *table;
        for (uint32_t row = 0; row < rows; row++) {
            EXPECT_EQ(table[row], reinterpret_cast<char *>(table) + end) << bits << ' ' << row;
            const uint32_t i = steps & MEM_STEP_FIRST && width > 0 ? row : 0;
            const uint32_t j = steps & MEM_STEP_SECOND && width > 0 ? row : 0;
            end += unit * (first ? lists[0].numbers[i] : 1) * (second ? lists[1].numbers[j] : 1);
        }
        EXPECT_EQ(memSize2D(rows, unit, first, second, width | steps), end);
        EXPECT_EQ(heap.last_size, end);
        memFree(table);
    }
    const uint32_t minus_one = UINT32_MAX;
    for (const uint32_t width : {1u, 2u, 4u})
        EXPECT_EQ(memSize2D(1, 10, &minus_one, nullptr, width), pointer - 10);
    EXPECT_EQ(memSizeRect(3, 100000), 3 * pointer + 300000);
}

// Rows in one block and rows in blocks of their own are filled and copied alike.
TEST(Array2D, FillsAndCopies)
{
    heap = {};
    const uint32_t sizes[rows] = {200, 0, 1100, 1, 400};
    constexpr uint32_t flags = 4 | MEM_STEP_FIRST;
    char **const tables[] = {
        static_cast<char **>(memAlloc2D(rows, 1, sizes, nullptr, flags)),
        static_cast<char **>(memAlloc2D(rows, 1, sizes, nullptr, flags)),
        static_cast<char **>(memAlloc2DExt(rows, 1, sizes, nullptr, flags)),
    };
    for (char **const target : tables)
        for (char **const source : tables) {
            memSet2D(target, 0x700 + 'a', rows, 1, sizes, nullptr, flags);
            for (size_t row = 0; row < rows; row++)
                EXPECT_EQ(std::string(target[row], sizes[row]), std::string(sizes[row], 'a'));
            for (size_t row = 0; row < rows; row++)
                std::generate_n(source[row], sizes[row], [n = row]() mutable { return ++n % 101; });
            if (target != source)
                memCopy2D(target, source, rows, 1, sizes, nullptr, flags);
            for (size_t row = 0; row < rows; row++)
                EXPECT_TRUE(std::equal(target[row], target[row] + sizes[row], source[row]));
        }
    memFree(tables[0]);
    memFree(tables[1]);
    memFree2DExt(tables[2], rows);
    char **const rect = static_cast<char **>(memAllocRect(3, 1000));
    memInitRect(rect, rect[1], 2, 5);
    EXPECT_TRUE(rect[1] - rect[0] == 5 && rect[2] - rect[0] == 1000);
    memFree(rect);
    EXPECT_EQ(heap.held, 0);
}

TEST(Array2D, WhatIsTooBigIsNotAllocated)
{
    const uint32_t big_sizes[] = {65536, 65536}, mixed[] = {1, 0x80000000}, half[] = {0x80000000},
                   four[] = {4}, none[] = {0, 0};
    heap = {};
    EXPECT_EQ(memAllocRect(65536, 65536), nullptr);
    EXPECT_EQ(memAllocRect(UINT32_MAX / pointer + 1, 0), nullptr);
    EXPECT_EQ(memAllocRect(1, UINT32_MAX - pointer + 1), nullptr);
    EXPECT_EQ(memAlloc2D(1, 65536, big_sizes, nullptr, 4), nullptr);
    EXPECT_EQ(memAlloc2D(UINT32_MAX, UINT32_MAX, big_sizes, big_sizes, 4), nullptr);
    EXPECT_EQ(memAlloc2D(1, 0x80000000, half, four, 4), nullptr); // 2 to the 64th
    EXPECT_EQ(memAlloc2DExt(-1, 1, nullptr, nullptr, 0), nullptr);
    // Refused before anything is asked for.
    EXPECT_EQ(heap.last_size, 0u);
    EXPECT_EQ(memAlloc2DExt(2, 2, mixed, nullptr, 4 | MEM_STEP_FIRST), nullptr);
    EXPECT_EQ(heap.last_size, 2u);
    memFree(memAlloc2D(2, UINT32_MAX, big_sizes, none, 4)); // a factor of 0 always fits
    EXPECT_EQ(heap.last_size, 2 * pointer);
    EXPECT_EQ(heap.held, 0);
}

int32_t compare_numbers(const void *left, const void *right)
{
    return *static_cast<const int16_t *>(left) - *static_cast<const int16_t *>(right);
}

// Of equal elements a search gives the first, or the first that halving meets.
TEST(ArraySearch, FindsAsTheModelFinds)
{
    const int16_t one = 1; // and no index is wanted
    EXPECT_EQ(memLinSearch(&one, 1, 2, &one, compare_numbers, nullptr), &one);
    for (size_t bits = 0; bits < 3 * 40; bits++) {
        std::vector<int16_t> array(bits / 3);
        for (size_t i = 0; i < array.size(); i++)
            array[i] = static_cast<int16_t>(i / (1 + bits % 3) * 2);
        const auto count = static_cast<uint32_t>(array.size());
        for (int16_t number = -1; number < 80; number++) {
            size_t low = 0, high = count, middle = count;
            while (low < high && array[middle = (low + high - 1) / 2] != number)
                (array[middle] < number ? low : high) = middle + (array[middle] < number);
            const auto first = std::find(array.begin(), array.end(), number) - array.begin();
            const bool there = static_cast<size_t>(first) < count;
            uint32_t indexes[] = {999, 999};
            EXPECT_EQ(memLinSearch(array.data(), count, 2, &number, compare_numbers, &indexes[0]),
                      there ? &array[static_cast<size_t>(first)] : nullptr);
            EXPECT_EQ(memBinSearch(array.data(), count, 2, &number, compare_numbers, &indexes[1]),
                      there ? &array[middle] : nullptr);
            EXPECT_EQ(indexes[0], there ? first : 999);
            EXPECT_EQ(indexes[1], there ? middle : 999);
            EXPECT_EQ(memCountIdentityExt(&number, array.data(), count, 2, compare_numbers),
                      std::count(array.begin(), array.end(), number));
        }
    }
}

// Of elements without a size: the longest array that exists.
TEST(ArraySearch, HalvingEndsForEveryCount)
{
    static int calls;
    const mem_compare_proc compares[] = {
        [](const void *, const void *) { return calls++, INT32_MIN; },
        [](const void *, const void *) { return calls++, INT32_MAX; }};
    for (const uint32_t count : {0u, 1u, 2u, 0x7fffffffu, 0x80000000u, 0x80000001u, 0xffffffffu})
        for (const mem_compare_proc compare : compares) {
            calls = 0;
            EXPECT_EQ(memBinSearch("", count, 0, nullptr, compare, nullptr), nullptr);
            EXPECT_TRUE(calls <= 32 - std::countl_zero(count) && (calls > 0) == (count > 0));
        }
}

TEST(ArraySearch, CountsWordsOfEveryWidth)
{
    const auto check = [](auto zero) {
        using word = decltype(zero);
        for (const uint32_t count : {0u, 1u, 254u, 255u, 256u, 65535u, 70001u}) {
            byte_vector data(count * sizeof(word) + 1); // at an odd address
            std::vector<word> words(count, 255);
            for (size_t i = 0; i < count; i++) {
                words[i] = static_cast<word>(count % 2 ? i % 5 * i % 300 - i % 3 : 255);
                store(&data[1 + i * sizeof(word)], words[i]);
            }
            for (const uint32_t number : {0u, 1u, 255u, 256u, 65535u, 0x10001u, 0xffffffffu})
                EXPECT_EQ(std::count_if(words.begin(), words.end(),
                                        [&](word each) { return each == number; }),
                          memCountIdentity(&data[1], count, sizeof(word), number))
                    << number << " among " << count << " of " << sizeof(word) << " bytes";
        }
    };
    check(uint8_t{});
    check(uint16_t{});
    check(uint32_t{});
    // At any other width it is the first four bytes that count.
    const uint32_t pairs[] = {7, 0, 7, 1};
    EXPECT_EQ(memCountIdentity(pairs, 2, 8, 7), 2u);
}

} // namespace
