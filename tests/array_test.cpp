// Two-dimensional arrays, array searches and counts. Linked against the objects of the library with
// malloc and free wrapped, so that an allocation can be made to fail and blocks can be counted.
#include "array.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <vector>

namespace
{
struct heap_watch {
    int fail_at = -1; // which allocation from now on fails, from 0
    int allocations = 0;
    int live = 0;
};

heap_watch heap;
} // namespace

extern "C" {
void *__real_malloc(size_t size);
void __real_free(void *block);

void *__wrap_malloc(size_t size)
{
    if (heap.allocations++ == heap.fail_at)
        return nullptr;
    heap.live++;
    return __real_malloc(size);
}

void __wrap_free(void *block)
{
    if (block)
        heap.live--;
    __real_free(block);
}
}

namespace
{
constexpr uint32_t pointer = sizeof(void *);

// A size list as a caller stores it: numbers of `width` bytes, those of unknown widths of two.
std::vector<unsigned char> stored(const std::vector<int32_t> &numbers, uint32_t width)
{
    std::vector<unsigned char> bytes(numbers.size() * width + 2);
    for (size_t i = numbers.size(); i-- > 0;) {
        if (width == 1)
            store(&bytes[i * width], static_cast<int8_t>(numbers[i]));
        else if (width == 4)
            store(&bytes[i * width], numbers[i]);
        else
            store(&bytes[i * width], static_cast<int16_t>(numbers[i]));
    }
    return bytes;
}

// One way to describe an array, and the row sizes that follow from it.
struct layout {
    static constexpr uint32_t rows = 5;
    uint32_t width;
    bool has_first, has_second;
    uint32_t steps;

    uint32_t unit = 3;
    std::vector<int32_t> first_numbers = {2, 0, 7, 1, 4}, second_numbers = {5, 3, 1, 2, 6};
    std::vector<unsigned char> first_bytes = stored(first_numbers, width);
    std::vector<unsigned char> second_bytes = stored(second_numbers, width);

    const void *first() const
    {
        return has_first ? first_bytes.data() : nullptr;
    }
    const void *second() const
    {
        return has_second ? second_bytes.data() : nullptr;
    }
    uint32_t flags() const
    {
        return width | steps;
    }
    static size_t number_of_row(size_t row, bool steps, uint32_t width)
    {
        return steps && width > 0 ? row : 0;
    }
    std::vector<uint32_t> sizes() const
    {
        std::vector<uint32_t> all;
        for (size_t row = 0; row < rows; row++) {
            uint32_t size = unit;
            if (has_first)
                size *= static_cast<uint32_t>(
                    first_numbers[number_of_row(row, steps & MEM_STEP_FIRST, width)]);
            if (has_second)
                size *= static_cast<uint32_t>(
                    second_numbers[number_of_row(row, steps & MEM_STEP_SECOND, width)]);
            all.push_back(size);
        }
        return all;
    }
};

template <typename Check>
void for_each_layout(Check check)
{
    for (const uint32_t width : {0u, 1u, 2u, 3u, 4u, 8u})
        for (const uint32_t lists : {0u, 1u, 2u, 3u})
            for (const uint32_t steps :
                 {0, MEM_STEP_FIRST + 0, MEM_STEP_SECOND + 0, MEM_STEP_FIRST | MEM_STEP_SECOND}) {
                SCOPED_TRACE(testing::Message()
                             << "width " << width << " lists " << lists << " steps " << steps);
                check(layout{width, (lists & 1) != 0, (lists & 2) != 0, steps});
            }
}

std::vector<unsigned char> contents(void *table, const std::vector<uint32_t> &sizes)
{
    std::vector<unsigned char> all;
    for (size_t row = 0; row < sizes.size(); row++) {
        const auto *const bytes = static_cast<unsigned char **>(table)[row];
        all.insert(all.end(), bytes, bytes + sizes[row]);
    }
    return all;
}

TEST(Array2D, RowsFollowTheSizeListsInEveryKindOfArray)
{
    for_each_layout([](const layout &it) {
        const std::vector<uint32_t> sizes = it.sizes();
        uint32_t total = it.rows * pointer;
        const void *first = it.first(), *second = it.second();
        for (const uint32_t size : sizes) {
            EXPECT_EQ(mem_iterate_2d(it.unit, &first, &second, it.flags()), size);
            total += size;
        }
        const auto moved = [&](bool has, uint32_t step) {
            return has && it.steps & step ? it.rows * it.width : 0;
        };
        EXPECT_EQ(reinterpret_cast<uintptr_t>(first) - reinterpret_cast<uintptr_t>(it.first()),
                  moved(it.has_first, MEM_STEP_FIRST));
        EXPECT_EQ(reinterpret_cast<uintptr_t>(second) - reinterpret_cast<uintptr_t>(it.second()),
                  moved(it.has_second, MEM_STEP_SECOND));
        EXPECT_EQ(memSize2D(it.rows, it.unit, it.first(), it.second(), it.flags()), total);

        // In one block: rows behind the table, without a gap. A table elsewhere points there too.
        void *const block = memAlloc2D(it.rows, it.unit, it.first(), it.second(), it.flags());
        std::array<void *, layout::rows + 1> table = {};
        memInit2D(table.data(), static_cast<void **>(block) + it.rows, it.rows, it.unit, it.first(),
                  it.second(), it.flags());
        char *expected = static_cast<char *>(block) + it.rows * pointer;
        for (size_t row = 0; row < it.rows; row++) {
            EXPECT_EQ(static_cast<void **>(block)[row], expected);
            EXPECT_EQ(table[row], expected);
            expected += sizes[row];
        }
        EXPECT_EQ(table[it.rows], nullptr);
        memset(static_cast<void **>(block)[0], 0x55, total - it.rows * pointer);

        // Between the kinds, and through tables whose rows stand the other way round.
        void *const separate =
            memAlloc2DExt(layout::rows, it.unit, it.first(), it.second(), it.flags());
        memSet2D(separate, 0x7a1, it.rows, it.unit, it.first(), it.second(), it.flags());
        EXPECT_EQ(contents(separate, sizes),
                  std::vector<unsigned char>(total - it.rows * pointer, 0xa1));
        for (size_t row = 0; row < it.rows; row++)
            memset(static_cast<void **>(separate)[row], static_cast<int>(row), sizes[row]);
        memCopy2D(block, separate, it.rows, it.unit, it.first(), it.second(), it.flags());
        EXPECT_EQ(contents(block, sizes), contents(separate, sizes));
        void *const copy = memAlloc2D(it.rows, it.unit, it.first(), it.second(), it.flags());
        memCopy2D(copy, block, it.rows, it.unit, it.first(), it.second(), it.flags());
        EXPECT_EQ(contents(copy, sizes), contents(separate, sizes));
        memSet2D(copy, -1, it.rows, it.unit, it.first(), it.second(), it.flags());
        EXPECT_EQ(contents(copy, sizes),
                  std::vector<unsigned char>(total - it.rows * pointer, 0xff));
        memFree(copy);
        memFree(block);
        memFree2DExt(separate, layout::rows);
    });
}

TEST(Array2D, ManyShortRowsAreCopiedAndFilledWhole)
{
    constexpr uint32_t rows = 3000;
    void *const source = memAllocRect(rows, 3);
    void *const target = memAllocRect(rows, 3);
    const std::vector<uint32_t> sizes(rows, 3);
    for (uint32_t i = 0; i < 3 * rows; i++)
        static_cast<unsigned char **>(source)[0][i] = static_cast<unsigned char>(i * 7 + i / 256);
    // Two rows exchanged in both tables, so that runs of neighbours break in the middle.
    for (void *const table : {source, target})
        std::swap(static_cast<void **>(table)[1200], static_cast<void **>(table)[1201]);
    memSet2D(target, 9, rows, 3, nullptr, nullptr, 0);
    EXPECT_EQ(contents(target, sizes), std::vector<unsigned char>(3 * rows, 9));
    memCopy2D(target, source, rows, 3, nullptr, nullptr, 0);
    EXPECT_EQ(contents(target, sizes), contents(source, sizes));
    memFree(source);
    memFree(target);
}

TEST(Array2D, ListNumbersKeepTheirSign)
{
    const unsigned char ones[] = {0xff, 0xff, 0xff, 0xff};
    for (const uint32_t flags : {1u, 2u, 4u, 7u}) {
        const void *list = ones, *none = nullptr;
        EXPECT_EQ(mem_iterate_2d(10, &list, &none, flags), static_cast<uint32_t>(-10)) << flags;
        EXPECT_EQ(list, ones);
    }
}

TEST(Array2D, RectanglesAreArraysOfEqualRows)
{
    EXPECT_EQ(memSizeRect(3, 100000), 3 * pointer + 300000);
    EXPECT_EQ(memSizeRect(0, 100000), 0u);
    char **const rect = static_cast<char **>(memAllocRect(3, 100000));
    EXPECT_EQ(rect[2] - rect[0], 200000);
    std::array<char *, 3> table;
    memInitRect(table.data(), rect[1], 2, 5);
    table[2] = nullptr;
    EXPECT_EQ(table, (std::array<char *, 3>{rect[1], rect[1] + 5, nullptr}));
    memFree(rect);
}

TEST(Array2D, TooBigForAnAllocationIsNullAndAllocatesNothing)
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
    EXPECT_EQ(heap.allocations, 0);

    EXPECT_EQ(memAlloc2DExt(2, 2, mixed.data(), nullptr, 4 | MEM_STEP_FIRST), nullptr);
    EXPECT_EQ(heap.allocations, 2);
    EXPECT_EQ(heap.live, 0);
    // A factor of 0 makes any row fit.
    void *const block = memAlloc2D(2, UINT32_MAX, big.data(), none.data(), 4);
    EXPECT_NE(block, nullptr);
    memFree(block);
}

TEST(Array2D, NoBlockRemainsWhereverAllocationFails)
{
    const std::array<int8_t, 4> lengths = {3, 1, 0, 2};
    constexpr int32_t rows = lengths.size();
    const auto allocate = [&] {
        return memAlloc2DExt(rows, 8, lengths.data(), nullptr, 1 | MEM_STEP_FIRST);
    };
    for (int fail_at = 0; fail_at <= rows; fail_at++) {
        heap = {.fail_at = fail_at};
        EXPECT_EQ(allocate(), nullptr);
        EXPECT_EQ(heap.allocations, fail_at + 1);
        EXPECT_EQ(heap.live, 0) << "after a failure at " << fail_at;
    }
    heap = {};
    void *const table = allocate();
    EXPECT_EQ(heap.live, rows + 1);
    memFree2DExt(table, rows);
    EXPECT_EQ(heap.live, 0);

    heap = {.fail_at = 0};
    EXPECT_EQ(memAlloc2D(rows, 8, nullptr, nullptr, 0), nullptr);
    heap = {};
    memFree2DExt(memAlloc2DExt(0, 8, nullptr, nullptr, 0), 0);
    memFree2DExt(nullptr, 7);
    EXPECT_EQ(heap.allocations, 1);
    EXPECT_EQ(heap.live, 0);
}

TEST(LongRun, StepsUntilNothingRemains)
{
    struct run {
        int32_t length;
        uint32_t step;
        std::vector<uint16_t> taken;
        int32_t left;
        uintptr_t moved;
    };
    const run runs[] = {{100, 60, {60, 40}, -20, 60},
                        {120, 60, {60, 60}, 0, 120},
                        {40, 65536 + 16, {16, 16, 8}, -8, 32},
                        {130000, 64000, {64000, 64000, 2000}, -62000, 128000}};
    for (const run &expected : runs) {
        uintptr_t position = UINTPTR_MAX; // as wide as a pointer, and wraps like one
        int32_t left = expected.length;
        std::vector<uint16_t> taken;
        while (left > 0)
            taken.push_back(mem_long_iter(&position, &left, expected.step));
        EXPECT_EQ(taken, expected.taken);
        EXPECT_EQ(left, expected.left);
        EXPECT_EQ(position + 1, expected.moved);
    }
}

// The key of the searches: knows its own address and the array, so that a comparison notices which
// of its arguments is which, and every element that it is asked about.
struct search_key {
    const search_key *self;
    const int16_t *base;
    uint32_t count;
    int16_t number;
    mutable std::vector<uint32_t> probes;
};

int32_t compare_element(const void *element, const void *search)
{
    const auto *const key = static_cast<const search_key *>(search);
    const auto *const at = static_cast<const int16_t *>(element);
    EXPECT_EQ(key->self, key);
    EXPECT_TRUE(at >= key->base && at < key->base + key->count);
    key->probes.push_back(static_cast<uint32_t>(at - key->base));
    return *at - key->number;
}

int32_t compare_key(const void *search, const void *element)
{
    return compare_element(element, search);
}

std::vector<uint32_t> halving_probes(const std::vector<int16_t> &array, int16_t number)
{
    std::vector<uint32_t> probes;
    int64_t low = 0, high = static_cast<int64_t>(array.size()) - 1;
    while (low <= high) {
        const int64_t middle = (low + high) / 2;
        probes.push_back(static_cast<uint32_t>(middle));
        const int16_t element = array[static_cast<size_t>(middle)];
        if (element == number)
            break;
        (element < number ? low : high) = element < number ? middle + 1 : middle - 1;
    }
    return probes;
}

TEST(ArraySearch, FindsWhatTheModelFindsInAnyArray)
{
    std::mt19937 random(1);
    const auto check = [](const std::vector<int16_t> &array, int16_t number) {
        const auto count = static_cast<uint32_t>(array.size());
        search_key key = {&key, array.data(), count, number, {}};
        const auto matches = static_cast<uint32_t>(std::count(array.begin(), array.end(), number));
        EXPECT_EQ(memCountIdentityExt(&key, array.data(), count, 2, compare_key), matches);

        for (const bool wants_index : {false, true}) {
            const auto result = [&](auto search, mem_compare_proc compare) {
                key.probes.clear();
                uint32_t index = 12345;
                void *const found =
                    search(array.data(), count, 2, &key, compare, wants_index ? &index : nullptr);
                const bool told = found && wants_index;
                EXPECT_EQ(index, told ? key.probes.back() : 12345);
                EXPECT_TRUE(!found || found == array.data() + key.probes.back());
                return found != nullptr;
            };
            const auto at = std::find(array.begin(), array.end(), number);
            EXPECT_EQ(result(memLinSearch, compare_key), matches > 0);
            EXPECT_EQ(key.probes.size(), at - array.begin() + (matches > 0));
            const std::vector<uint32_t> probes = halving_probes(array, number);
            const bool found = !probes.empty() && array[probes.back()] == number;
            EXPECT_EQ(result(memBinSearch, compare_element), found);
            EXPECT_EQ(key.probes, probes);
        }
    };
    for (size_t count = 0; count < 40; count++) {
        for (int round = 0; round < 20; round++) {
            std::vector<int16_t> array(count);
            for (int16_t &number : array)
                number = static_cast<int16_t>(random() % 30);
            if (round % 2)
                std::sort(array.begin(), array.end());
            for (int16_t number = -1; number <= 30; number = static_cast<int16_t>(number + 3))
                check(array, number);
        }
    }
}

int32_t always_before(const void *, const void *calls)
{
    ++*static_cast<int *>(const_cast<void *>(calls));
    return INT32_MIN;
}

int32_t always_behind(const void *, const void *calls)
{
    ++*static_cast<int *>(const_cast<void *>(calls));
    return INT32_MAX;
}

TEST(ArraySearch, HalvingEndsForEveryCount)
{
    // Elements of no size, so that the longest array is one that exists.
    for (const uint32_t count : {0u, 1u, 2u, 0x7fffffffu, 0x80000000u, 0x80000001u, 0xffffffffu}) {
        for (const mem_compare_proc compare : {always_before, always_behind}) {
            int calls = 0;
            EXPECT_EQ(memBinSearch("", count, 0, &calls, compare, nullptr), nullptr);
            int most = 0;
            for (uint32_t left = count; left > 0; left /= 2)
                most++;
            EXPECT_LE(calls, most) << count;
            EXPECT_EQ(calls > 0, count > 0);
        }
    }
}

template <typename Word>
void check_counts()
{
    std::mt19937 random(sizeof(Word));
    for (const size_t count : {0u, 1u, 15u, 254u, 255u, 256u, 1000u, 65535u, 70000u, 200000u}) {
        for (const uint32_t variety : {1u, 3u, 300u}) {
            std::vector<Word> words(count);
            for (Word &word : words)
                word = static_cast<Word>(random() % variety - 1);
            std::vector<unsigned char> bytes(count * sizeof(Word) + 1);
            if (count > 0)
                memcpy(&bytes[1], words.data(), count * sizeof(Word));
            for (const uint32_t number : {0u, 1u, 255u, 256u, 65535u, 0x10001u, 0xffffffffu}) {
                const auto expected = std::count_if(words.begin(), words.end(),
                                                    [&](Word word) { return word == number; });
                EXPECT_EQ(
                    memCountIdentity(&bytes[1], static_cast<uint32_t>(count), sizeof(Word), number),
                    expected)
                    << count << " of " << sizeof(Word) << " bytes, number " << number;
            }
        }
    }
}

TEST(ArrayCount, CountsZeroExtendedElementsOfEachWidth)
{
    check_counts<uint8_t>();
    check_counts<uint16_t>();
    check_counts<uint32_t>();
}

TEST(Invert, ElementsOfEverySizeAndCountAtAnyAlignment)
{
    for (const uint32_t size : {0u, 1u, 2u, 3u, 4u, 5u, 8u, 16u})
        for (uint32_t count = 0; count < 40; count++) {
            std::vector<unsigned char> bytes(count * size + 2);
            for (size_t i = 0; i < bytes.size(); i++)
                bytes[i] = static_cast<unsigned char>(i);
            std::vector<unsigned char> expected = bytes;
            for (size_t i = 0; i < count; i++)
                std::reverse(expected.begin() + 1 + static_cast<ptrdiff_t>(i * size),
                             expected.begin() + 1 + static_cast<ptrdiff_t>((i + 1) * size));
            memInvertB(&bytes[1], count, size);
            EXPECT_EQ(bytes, expected) << count << " elements of " << size;
        }
}
} // namespace
