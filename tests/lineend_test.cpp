#include "scripted_stream.h"
#include "tessel/iotext.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <sstream>

using namespace std::string_literals; // for texts that hold NUL characters

namespace
{
std::string text_of(const byte_vector &bytes)
{
    return {bytes.begin(), bytes.end()};
}

// The conversion as it is defined, a character at a time; of a string where there is no stream.
int32_t convert_singly(io_stream *out, io_stream *stream, const char *string, uint32_t flags)
{
    const std::string line_ends[] = {"", "\n", "\r", "\r\n", "", "\r", "\n", "\n\r"};
    const std::map<std::string, int32_t> styles = {
        {"", 8}, {"\n", 1}, {"\r", 2}, {"\r\n", 3}, {"\n\r", 7}};
    std::string seen;
    for (char c, last = 0;;) {
        const int32_t got = stream ? ioRead(stream, &c, 1, 0) : (c = *string++) != 0;
        if (got != 1)
            return got == -1 ? 0 : styles.at(seen);
        std::string text(1, c);
        const bool half = c == '\n' || c == '\r';
        if (half) {
            seen += seen.find(c) == seen.npos ? text : "";
            text = last && last != c ? "" : line_ends[flags & 7];
        }
        last = !half ? 0 : last ? last : c;
        for (char &t : text)
            if (!ioFullWrite(out, &t, 1, 0))
                return 0;
    }
}

// One side of a conversion: its stream, what happens to that before, how its calls end.
struct side {
    std::string data;
    int32_t capacity = 0, reads = 0, writes = 0, longest_read = INT32_MAX;
    std::deque<int32_t> script = {};
    char lacks = ' '; // 'r' or 'w' for that procedure

    void set_up(scripted_stream &stream) const
    {
        char bytes[] = "0123456789";
        stream.data.assign(data.begin(), data.end());
        EXPECT_TRUE(!capacity || ioAllocBuffer(&stream, capacity));
        ioRead(&stream, bytes, reads, 0);
        ioWrite(&stream, bytes, writes, 0);
        stream.longest_read = longest_read;
        stream.script = script;
        stream.read = lacks == 'r' ? nullptr : stream.read;
        stream.write = lacks == 'w' ? nullptr : stream.write;
    }
};

enum source { from_stream, from_string, from_output };

// Compares all that can be seen: the result, the calls of both back ends in order, the streams.
void compare(const side &input, const side &output, uint32_t flags, source kind)
{
    const char *const text = input.data.c_str();
    const std::vector<char> string(text, text + strlen(text) + 1); // with nothing behind it
    std::ostringstream seen[2];
    for (const bool singly : {false, true}) {
        std::string calls;
        scripted_stream in, out;
        input.set_up(in);
        output.set_up(out);
        in.journal = out.journal = &calls;
        io_stream *const stream = kind == from_string ? nullptr : kind == from_output ? &out : &in;
        seen[singly] << (singly   ? convert_singly(&out, stream, string.data(), flags)
                         : stream ? iotextConvert(&out, stream, flags)
                                  : iotextConvert(&out, string.data(), flags | 0x10))
                     << ": " << calls;
        for (const scripted_stream *const s : {&in, &out}) {
            seen[singly] << '\n' << text_of(s->data) << " at " << s->back;
            const io_buffer none = {}, &b = s->buffer ? *s->buffer : none;
            seen[singly] << ' ' << b.size << ' ' << b.count << ' ' << b.position << ' ' << b.mode
                         << ' ';
            seen[singly].write(reinterpret_cast<const char *>(&b + 1),
                               std::max(b.count, b.position));
        }
    }
    EXPECT_EQ(seen[0].str(), seen[1].str()) << testing::PrintToString(input.data) << ' ' << flags;
}

TEST(LineEnds, AllShortTexts)
{
    std::vector<std::string> texts = {""};
    for (size_t i = 0; texts[i].size() < 5; i++)
        for (const char c : "a\n\r\0"s)
            texts.push_back(texts[i] + c);
    for (const std::string &text : texts)
        for (uint32_t flags = 0; flags < 8; flags++) {
            compare({text}, {""}, flags, from_stream);
            compare({text, 3}, {"", 16, 0, 3}, flags | 0xffffffe8, from_stream);
            for (const int32_t capacity : {1, 2, 5, 40}) {
                compare({text, 7}, {"", capacity}, flags, from_stream);
                compare({text}, {"", capacity}, flags, from_string);
            }
        }
}

TEST(LineEnds, RandomTextsBuffersAndFailures)
{
    const auto seed = static_cast<uint32_t>(GTEST_FLAG_GET(random_seed));
    std::mt19937 random(seed);
    const auto below = [&](int32_t n) { return static_cast<int32_t>(random() % 65536) % n; };
    const auto make_side = [&] {
        side made;
        for (int32_t pieces = below(12); pieces > 0; pieces--) {
            made.data.append(size_t(below(below(2) ? 3 : 50)), "ab \x8a\x8d\x0b\x0e"[below(7)]);
            for (int32_t ends = below(5); ends > 0; ends--)
                made.data += "\n\r\n\r\0"[below(below(4) ? 2 : 5)];
        }
        made.capacity = std::array{0, 1, 2, 3, 15, 16, 17, 18, 33, 64, 1000}[size_t(below(11))];
        made.reads = below(3) ? 0 : below(10);
        made.writes = below(3) ? 0 : below(10);
        made.longest_read = below(2) ? INT32_MAX : 1 + below(40);
        made.script.assign(size_t(below(8)), INT32_MAX);
        made.script.push_back(below(3) ? INT32_MAX : below(3) - 1);
        made.lacks = "rw        "[below(10)];
        return made;
    };
    for (int turn = 0; turn < 30000 && !HasFailure(); turn++) {
        SCOPED_TRACE("turn " + std::to_string(turn) + " with seed " + std::to_string(seed));
        const side input = make_side(), output = make_side();
        compare(input, output, random() & 15, static_cast<source>(below(3)));
    }
}

// What the definition above is held against.
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
            scripted_stream in(byte_vector(text.begin(), text.end())), out, string, plain;
            EXPECT_TRUE(!capacity || (ioAllocBuffer(&in, 40) && ioAllocBuffer(&out, capacity)));
            EXPECT_EQ(iotextConvert(&out, &in, flags), result) << output;
            EXPECT_TRUE(ioFlushBuffer(&out));
            EXPECT_EQ(text_of(out.data), output);
            EXPECT_EQ(iotextWrite(&string, text.c_str(), flags), 1);
            EXPECT_EQ(text_of(string.data), output.c_str()); // to its NUL
            EXPECT_EQ(iotextWriteString(&plain, text.c_str()), text != "");
            EXPECT_EQ(text_of(plain.data), text.c_str());
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
            scripted_stream s(byte_vector(text.begin(), text.end()));
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
