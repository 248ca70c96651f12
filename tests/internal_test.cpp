#include "tessel/file.h"
#include "tessel/mem.h"
#include "tessel/string.h"

#include "heap_watch.h"
#include "stdio_stream.h"

#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

namespace
{

TEST(StringBuilding, CopiesAndJoins)
{
    static const struct {
        const char *left, *right, *result;
        int32_t room; // the target's capacity, or the extra room of a new block
        bool to_target;
    } rows[] = {
        {"abc", nullptr, "abc", 4, true},
        {"abc", nullptr, nullptr, 3, true},
        {"abc", nullptr, nullptr, -1, true},
        {nullptr, nullptr, nullptr, 4, true},
        {nullptr, "b", "b", 2, true},
        {"ab", "cde", "abcde", 6, true},
        {"abc", nullptr, nullptr, -1, false},
        {"ab", "cde", "abcde", 2, false},
        {"", "", "", 0, false},
    };
    for (const auto &[left, right, result, room, to_target] : rows) {
        SCOPED_TRACE(testing::Message() << room << (result ? result : " no result"));
        heap = {};
        char buffer[] = "#######";
        char *const target = to_target ? buffer : nullptr;
        char *const built =
            right ? strUnion(target, left, right, room) : strCopy(target, left, room);
        EXPECT_STREQ(built, result);
        const size_t used = result ? strlen(result) + 1 : 0;
        EXPECT_TRUE(!built || (built == buffer) == to_target);
        EXPECT_STREQ(buffer + (to_target ? used : 0), &"#######"[to_target ? used : 0]);
        if (built && !to_target) {
            EXPECT_EQ(heap.last_size, used + static_cast<size_t>(room));
            memFree(built);
        }
        EXPECT_EQ(heap.held, 0);
    }
    char twice[8] = "ab";
    EXPECT_STREQ(strUnion(twice, twice, "cd", sizeof twice), "abcd");
}

TEST(StringBuilding, Inserts)
{
    const int32_t none = INT32_MIN; // no word, so that the buffer must stay
    static const struct {
        const char *text, *insertion, *result;
        int32_t position, capacity, word, word_after;
    } rows[] = {
        {"abc", "XY", "aXYbc", 1, 6, 10, 0},
        {"abc", "XY", nullptr, 1, 5, none, none},
        {"abc", "XY", "aXYbc", 1, 5, 10, 16},
        {"abc", "XY", "XYabc", 0, 0, 0, 6},
        {"abc", "XY", "abcXY", INT32_MAX, 6, none, none},
        {"abc", "XY", "abcXY", INT32_MIN, -1, 10, 0},
        {"abc", nullptr, "abc", 1, 0, 10, 0},
        {nullptr, "XY", nullptr, 1, 0, 10, 0},
        // The new capacity does not fit, or does not even hold the insertion.
        {"abc", "XY", nullptr, 1, 5, INT32_MAX - 5, 0},
        {"abc", "XY", nullptr, 1, 5, -5, 0},
    };
    for (const auto &[text, insertion, result, position, capacity, word, word_after] : rows) {
        SCOPED_TRACE(testing::Message() << position << ' ' << capacity << ' ' << word);
        heap = {};
        char *const block = strCopy(nullptr, text, 8);
        int32_t room = word;
        char *const built =
            strInsert(block, insertion, position, capacity, word == none ? nullptr : &room);
        EXPECT_STREQ(built, result);
        EXPECT_EQ(room, word_after);
        if (word_after > 0) {
            EXPECT_EQ(heap.last_size, strlen(text) + 1 + static_cast<uint32_t>(word_after));
        }
        if (!built) {
            EXPECT_STREQ(block, text);
        }
        // Replacing it has released the old block.
        EXPECT_EQ(heap.held, text ? 1 : 0);
        memFree(built ? built : block);
    }
    char twice[9] = "abcd";
    EXPECT_STREQ(strInsert(twice, twice, 2, sizeof twice, nullptr), "ababcdcd");
    char text[4] = "ab";
    EXPECT_STREQ(strAppend(text, "c", sizeof text, nullptr), "abc");
}

TEST(StringComparison, FindsInLists)
{
    const char colours[] = "red\0green\0blue\0";
    EXPECT_EQ(strFind(colours, "red", 0), 0);
    EXPECT_EQ(strFind(colours, "blue", 0), 2);
    EXPECT_EQ(strFind(colours, "gree", 0), -1);
    EXPECT_EQ(strFind(colours, "GREEN", 0), -1);
    EXPECT_EQ(strFind(colours, "GREEN", STR_NO_CASE), 1);
    EXPECT_EQ(strFind(colours, "", 0), -1);
}

TEST(StandardFiles, ReadWriteAndSeek)
{
    FILE *const file = tmpfile();
    ASSERT_TRUE(file);
    io_stream s = {stdioRead, stdioWrite, stdioSeek, reinterpret_cast<intptr_t>(file), nullptr, 0};
    char text[6] = "hello";
    EXPECT_EQ(stdioWrite(&s, text, 5), 5);
    EXPECT_EQ(stdioSeek(&s, 0, 1), 5);
    EXPECT_EQ(stdioSeek(&s, -4, 2), 1);
    EXPECT_EQ(stdioSeek(&s, -2, 1), -1);
    EXPECT_EQ(stdioRead(&s, text, 6), 4);
    EXPECT_STREQ(text, "elloo");
    // A query is no seek, which would forget the end.
    EXPECT_EQ(stdioSeek(&s, 0, 1), 5);
    EXPECT_TRUE(feof(file));
    EXPECT_EQ(stdioRead(&s, text, 6), 0);
    EXPECT_EQ(stdioSeek(&s, INT32_MAX, 0), INT32_MAX);
    EXPECT_EQ(stdioSeek(&s, 1, 1), -1);
    EXPECT_EQ(stdioSeek(&s, 0, 1), INT32_MAX);
    fseek(file, 1, SEEK_CUR);
    EXPECT_EQ(stdioSeek(&s, 0, 1), -1);
    fclose(file);
}

} // namespace
