#include "text_source.h"

#include <gtest/gtest.h>

using namespace std::string_literals; // for texts that hold NUL characters

namespace
{

const comments usual = {"#", "/*", "*/"};

// Writes down each event and its character, '-' for null.
int32_t listen(const io_source *, io_text *text, int32_t event, char *character)
{
    *reinterpret_cast<std::string *>(text->callback_data) +=
        {static_cast<char>('0' + event), character ? *character : '-'};
    return 0;
}

// What the scanner's model, which its fuzz target has, is held against.
TEST(iotext, reads_a_commented_text_item_by_item)
{
    const std::string worked = "  key = 1 # n\r\nnext\r\n\r\n/* b\r\n c */ after  \n"
                               "*/ stray\nlast /* o\n";
    const struct {
        int32_t result;
        const char *item;
        int32_t line, terminator, error_line, place;
        const char *events;
    } items[] = {
        {2, "key = 1", 1, 'k', 0, 15, "0 0 0k0e0y0 0=0 010 4#2 2n0\n5\n"},
        {1, "next", 2, '\n', 0, 21, "0n0e0x0t1\n"},
        {1, "after", 5, '\n', 0, 43, "0\n6/3 3b3\n3 3c3 7*0 0a0f0t0e0r0 0 1\n"},
        {-1025, "", 5, '*', 5, 45, ""},
        {1, "stray", 6, '\n', 5, 52, "0 0s0t0r0a0y1\n"},
        {-1025, "last", 7, 'l', 7, 62, "0l0a0s0t0 6/3 3o3\n"},
        {0, "", 7, 'l', 7, 62, ""},
    };
    for (const shape how : shapes) {
        const text_source source(worked, how);
        io_text text = text_record(usual);
        std::string events;
        text.callback = listen;
        text.callback_data = reinterpret_cast<uintptr_t>(&events);
        text.callback_flags = 0x3f;
        for (const auto &expected : items) {
            SCOPED_TRACE(testing::Message() << expected.item << " step " << how.step);
            char room[64];
            events.clear();
            EXPECT_EQ(iotextRead(&source, "\n", room, 64, 0, &text), expected.result);
            EXPECT_STREQ(room, expected.item);
            EXPECT_EQ(text.count, static_cast<int32_t>(strlen(room)));
            EXPECT_EQ(text.line, expected.line);
            EXPECT_EQ(text.terminator, expected.terminator);
            EXPECT_EQ(text.error_line, expected.error_line);
            EXPECT_EQ(source.position(), expected.place);
            EXPECT_EQ(events, expected.events);
        }
    }
}

TEST(iotext, needs_no_record)
{
    for (const shape how : shapes) {
        const text_source source(" #a =b ;/c", how);
        char room[4];
        EXPECT_EQ(iotextRead(&source, nullptr, room, 0, 0, nullptr), IOTEXT_TOO_LONG);
        EXPECT_EQ(iotextReadString(&source, room, 0, 0, '"', 0, 0, nullptr), IOTEXT_TOO_LONG);
        EXPECT_EQ(iotextRead(&source, nullptr, room, 4, 0, nullptr), IOTEXT_STOPPED);
        EXPECT_STREQ(room, "#a");
        EXPECT_EQ(iotextWait(&source, "=", nullptr), IOTEXT_STOPPED);
        EXPECT_EQ(iotextSleep(&source, ";ABCDEFGHIJKLMNOP", nullptr), IOTEXT_STOPPED);
        EXPECT_EQ(iotextObserve(&source, "/", nullptr), IOTEXT_STOPPED);
        EXPECT_EQ(source.rest(), "c");
    }
}

struct string_row {
    std::string in, dest; // "~" for an untouched `dest`
    uint32_t flags = 0;
    int32_t size = 9, result = 1;
    std::string rest = "";
    int32_t count = -1, line = 0; // -1 for the length of `dest`
    std::string quotes = "''\0"s; // `open`, `close`, `last`
};

const string_row string_rows[] = {
    {"''", "", 0, 1, 1, "", 0, 0},           {"'ab#'", "ab", 0x8000, 9, -1028, "", 0},
    {"'a\\t", "a", 0, 9, -1, "t"},           {R"('\n\'\0\\x')", R"(\n\'\0\\x)", 2, 10},
    {"'a\0b'"s, "ab", 0, 9, 1, ""},          {"<a>b", "a", 0, 9, 1, "b", 1, 0, "<>\0"s},
    {"'a#/**/b'", "a#/**/b", 0, 9},          {"abc'd", "abc", 0, 9, 1, "d", 3, 0, "'''"},
    {"'abc'", "ab", 0, 3, -4, "'"},          {"# c'\n /*'*/ 'a'", "a", 0, 9, 1, "", 1, 1},
    {"' \\t '", "", 0x10, 9, 1, ""},         {"'a\\\n\nb'", "a", 0, 9, -1028, "b'", 0, 1},
    {"'a \\0'", "a\0"s, 0x10, 9, 1},         {"'a\\\r\nb'", "a\\\r\nb", 5, 9, 1, "", 5, 1},
    {"'a\\q'", "a", 2, 3, -4, "q'"},         {"a\xe9", "a", 0, 9, 1, "", 1, 0, "\0\xe9z"s},
    {"' a \\tb \\t'", " a\tb", 0x10},        {R"('\t\'\\\n\r\0\q')", "\t'\\\n\r\0q"s, 0, 8},
    {"'a\\", "a", 0, 9, -1, "", 1, 0},       {"'a\\\nb\\\rc\\\r\nd\\\n\re'", "abcde", 2, 6},
    {"'ab\\t'", "ab", 0, 3, -4, "t'"},       {"'ab\r\ncd'", "ab", 0, 9, -1028, "cd'", 2, 1},
    {"'a\\\n'", "a", 1, 3, -4, "\n'"},       {"ab\0c"s, "ab", 0, 9, 1, "c", 2, 0, "\0\0\0"s},
    {" 'abc' x", "abc", 0, 4, 1, " x"},      {"'a\\\r\nb'", "a\\\r", 1, 9, -1028, "b'", 0, 1},
    {" # c\n", "~", 0, 9, 0, "", 0, 1},      {"'ab\r\nc", "ab", 0, 9, 1, "c", 2, 1, "'\n\0"s},
    {"x 'a'", "~", 0, 9, -100, "a'", 2},     {"ab\\tc ", "ab\tc", 0x10, 9, 0, "", 1, 0, "\0'\0"s},
    {"'a\n'", "a", 4, 2, -4, "'", 1, 1},     {"'a\r\nb\rc\n\n'", "a\nb\nc\n\n", 4, 9, 1, "", 7, 4},
    {"'\\t\\\nb\\\r'", "\t\\\nb\\\r", 1, 7}, {"'ab#x\nc/*\n'*/e'", "abce", 0x8000, 9, 1, "", 4, 2},
    {"'a*/b'", "a", 0x8000, 9, -1025, "b'"}, {"' \n # c\n a\\t \n b '", "a\tb ", 8, 9, 1, "", 4, 3},
};

TEST(iotext, reads_quoted_strings)
{
    for (const string_row &row : string_rows) {
        const size_t length = row.dest.size();
        std::string room;
        const auto read = [&](const text_source &source, io_text *text) {
            room.assign(static_cast<size_t>(row.size) + 1, '~');
            return iotextReadString(&source, room.data(), row.size, row.quotes[0], row.quotes[1],
                                    row.quotes[2], row.flags | 0x4000, text);
        };
        for (const shape how : shapes) {
            SCOPED_TRACE(testing::PrintToString(row.in) + " flags " + std::to_string(row.flags));
            const text_source source(row.in, how), unrecorded(row.in, how);
            io_text text = text_record(usual);
            EXPECT_EQ(read(source, &text), row.result);
            EXPECT_EQ(room.substr(0, length), row.dest);
            EXPECT_EQ(room[length], row.dest == "~" ? '~' : '\0');
            EXPECT_EQ(room.back(), '~');
            EXPECT_EQ(source.rest(), row.rest);
            EXPECT_EQ(text.count, row.count < 0 ? static_cast<int32_t>(length) : row.count);
            EXPECT_EQ(text.line, row.line);
            EXPECT_TRUE(row.result != 1 ||
                        text.terminator == static_cast<signed char>(row.quotes[1]));
            if (row.in.find_first_of("#/") == std::string::npos) {
                EXPECT_EQ(read(unrecorded, nullptr), row.result);
                EXPECT_EQ(room.substr(0, length), row.dest);
            }
        }
    }
}

} // namespace
