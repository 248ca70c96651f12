#include "tessel/mem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <string.h>
#include <vector>

namespace
{

using byte_vector = std::vector<unsigned char>;

constexpr bool big = std::endian::native == std::endian::big;

TEST(Memory, Align)
{
    const auto aligned = [](int32_t first, int32_t last, int32_t unit) {
        std::vector<int32_t> results;
        for (int32_t value = first; value <= last; value++)
            results.push_back(memAlign(value, unit));
        return results;
    };
    using results = std::vector<int32_t>;
    EXPECT_EQ(aligned(-9, 5, 4), (results{-4, -4, -4, 0, 0, 0, 0, 0, 0, 0, 4, 4, 4, 4, 8}));
    EXPECT_EQ(aligned(0, 10, -4), (results{-4, -4, 0, 0, 0, 0, 0, 0, 0, 4, 4}));
    EXPECT_EQ(aligned(10, 10, -3), results{6});
    EXPECT_EQ(aligned(-1, 1, 0), (results{-1, 0, 1}));
    EXPECT_EQ(memAlign(INT32_MIN, 1), INT32_MIN);
    EXPECT_EQ(memAlign(INT32_MAX, 4), INT32_MIN + 4);
    EXPECT_EQ(memAlign(INT32_MIN + 2, -1), INT32_MIN);
}

TEST(Memory, Blocks)
{
    void *block = memResize(nullptr, 3);
    memcpy(block, "abc", 3);
    block = memResize(block, 5000);
    EXPECT_EQ(memcmp(block, "abc", 3), 0);
    memset(block, 'x', 5000);
    memReset(&block);
    EXPECT_EQ(block, nullptr);
    memReset(&block);
    auto *const zeros = static_cast<char *>(memCAlloc(5000));
    EXPECT_EQ(std::count(zeros, zeros + 5000, 0), 5000);
    memFree(zeros);
    for (const uint32_t extra : {0u, 1u, 24u}) {
        char *const body = static_cast<char *>(memAllocExtra(10, extra));
        ASSERT_EQ(memExtra(body, extra), body - extra);
        memset(body - extra, 'x', 10 + extra);
        memFreeExtra(body, extra);
        memFreeExtra(nullptr, extra);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(memExtra(nullptr, extra)), uintptr_t{0} - extra);
    }
    EXPECT_FALSE(memAllocExtra(UINT32_MAX, 1) || memAllocExtra(2, UINT32_MAX));
}

TEST(Elements, Orders)
{
    EXPECT_EQ(memByteOrder(), big ? MEM_ORDER_BIG : MEM_ORDER_LITTLE);
    EXPECT_EQ(memByteOrderHint(MEM_ORDER_BIG), !big);
    EXPECT_EQ(memByteOrderHint(MEM_ORDER_OTHER), big ? 3 : 2);
    // Only a whole word is an order; every other counts as little-endian.
    for (const uint32_t order : {0u, 0x1000u, 0x2100u, 0x3002u, 0x2u, 0x6000u})
        EXPECT_EQ(memByteOrderHint(order), big) << order;
}

// Every size up to one above the widest register, between bytes that belong to somebody else.
TEST(Elements, Inversions)
{
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
        memcpy(&bytes[1], &value, 4);
        byte_vector expected = bytes;
        memcpy(&expected[1], &low, width == 2 ? 2 : 0);
        expected[1] = width == 1 ? 0xfc : expected[1];
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
    memConvCopy(narrow, &wide[0], widen, 0, 2, 4);
    memConvCopy(narrow, &wide[0], widen, -1, 2, 4);
    memConvCopy(narrow, &wide[3], widen, 3, 2, -4);
    EXPECT_EQ(wide, (std::vector<int32_t>{7, 3, -2, 1}));
}

} // namespace
