#include "tessel/file.h"

#include "heap_watch.h"
#include "stdio_stream.h"

#include <gtest/gtest.h>

#include <stdio.h>

namespace
{

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
