#include "scripted_stream.h"
#include "tessel/iotext.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace std::string_literals; // for texts that hold NUL characters

namespace
{

// What the definition, which the fuzz target has, is held against.
TEST(LineEnds, Conversions)
{
    const std::tuple<std::string, uint32_t, std::string, int32_t> rows[] = {
        {"", IOTEXT_LF, "", IOTEXT_NO_LINE_END},
        {"abc", IOTEXT_NO_LINE_END, "abc", 8},
        {"a\n\n", IOTEXT_CRLF, "a\r\n\r\n", IOTEXT_LF},
        {"\r\na\r\n", 1, "\na\n", IOTEXT_CRLF},
        {"\na\r", IOTEXT_LFCR, "\n\ra\n\r", 7},
        {"\ra\n\n", 0, "a", 3},
        {"\r\n\na\r\n\r\n", IOTEXT_CR, "\ra\r\r", 3},
        {"\n\r\r\n", 1, "\n\n", IOTEXT_LFCR},
        {"\na\r", 4, "a", 7},
        {"\na\n", 5, "\ra\r", 1},
        {"\ra\r", 6, "\na\n", IOTEXT_CR},
        {"a\0b\n"s, 8, "a\0b"s, 1}};
    for (const auto &[text, flags, output, result] : rows)
        for (const int32_t capacity : {0, 1, 40}) {
            scripted_stream in(text), out, string, plain;
            EXPECT_TRUE(!capacity || (ioAllocBuffer(&in, 40) && ioAllocBuffer(&out, capacity)));
            EXPECT_EQ(iotextConvert(&out, &in, flags), result) << output;
            EXPECT_TRUE(ioFlushBuffer(&out));
            EXPECT_EQ(out.data, output);
            EXPECT_EQ(iotextWrite(&string, text.c_str(), flags), 1);
            EXPECT_EQ(string.data, output.c_str()); // to its NUL
            EXPECT_EQ(iotextWriteString(&plain, text.c_str()), text != "");
            EXPECT_EQ(plain.data, text.c_str());
        }
}

TEST(LineEnds, FirstLineEnd)
{
    // The text, the index of a read that fails, the result, and the length, -1 if it is not told.
    const std::tuple<std::string, int32_t, int32_t, int32_t> rows[] = {
        {"", 9, 8, 0},        {"abc", 9, 8, 3},  {"abc\n", 9, 1, 4}, {"abc\nd\r", 9, 1, 5},
        {"abc\r\n", 9, 3, 5}, {"\r", 9, 2, 1},   {"\r\rb", 9, 2, 2}, {"\n\rb", 9, 7, 2},
        {"\n\nb", 9, 1, 2},   {"a\nb", 0, 0, 0}, {"a\nb", 1, 0, 1},  {"a\nb", 2, 0, -1}};
    for (const auto &[text, fails, result, expected] : rows)
        for (const int32_t capacity : {0, 1, 40}) {
            scripted_stream s(text);
            EXPECT_TRUE(!capacity || ioAllocBuffer(&s, capacity));
            s.script.assign(static_cast<size_t>(fails), fails < 9 ? 1 : INT32_MAX);
            s.script.push_back(IO_FAILED);
            int32_t length = -1;
            EXPECT_EQ(iotextFormat(&s, capacity ? &length : nullptr), result) << text << capacity;
            EXPECT_EQ(length, capacity ? expected : -1) << text << capacity;
            s.script.clear();
            EXPECT_EQ(ioSeek(&s, 0, IO_FROM_CURRENT), fails < 9 ? fails : expected) << text;
        }
}

} // namespace
