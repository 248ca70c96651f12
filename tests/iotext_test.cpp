#include "tessel/iotext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string.h>
#include <string>
#include <tuple>

using namespace std::string_literals; // for texts that hold NUL characters

namespace
{

uint32_t below(std::minstd_rand &random, uint32_t bound)
{
    return static_cast<uint32_t>(random() % bound);
}

// What a callback hears, and what it answers: nothing special, or a play of cancellations, drops,
// changed characters and changed flags that every copy repeats.
struct listener {
    std::string heard; // characters ('-' for null), behind the digit of a new event; and places
    int32_t last = 0;  // event
    bool plays = false;
    std::minstd_rand script = {};

    int32_t hear(int32_t event, char *character, uint32_t &flags, int32_t place)
    {
        const bool has_view = event < IOTEXT_ON_LINE_OPEN;
        if (heard.empty() || event != last)
            heard += static_cast<char>('0' + event);
        last = event;
        heard += character ? *character : '-';
        if (!has_view)
            heard += static_cast<char>(place);
        if (plays && below(script, 24) == 0)
            return IOTEXT_CANCELLED;
        if (plays && below(script, 8) == 0)
            flags = below(script, 0x40);
        if (plays && has_view && below(script, 8) == 0)
            *character = "z \n"[below(script, 4)];
        return plays ? static_cast<int32_t>(below(script, 8)) : 0; // only 2 has a meaning
    }
};

// What one call shows: result, room, count, line, terminator, error_line, events, and where the
// source then stands.
using outcome =
    std::tuple<int32_t, std::string, int32_t, int32_t, int32_t, int32_t, std::string, int32_t>;

using comments = std::array<std::string, 3>; // line comment, block open, block close
const comments usual = {"#", "/*", "*/"};

// The scanner, written plainly: the whole text and an index into it. What ends a scan from the
// outside is thrown.
struct scan_model {
    static constexpr int32_t at_once = -2; // a failure that leaves the item and the record alone
    static constexpr size_t none = 3, cut = 4;
    std::string in;
    size_t fail_at; // no character from here on can be seen, nor the end of the text
    comments delimiters;
    io_text text; // without delimiters
    listener ears;
    std::string room = {};
    size_t stored = 0, at = 0;
    uint32_t wanted = 0;
    int32_t line = 0, count = 0;

    bool has(size_t characters) const
    {
        if (at + characters > fail_at)
            throw at_once;
        return at + characters <= in.size();
    }
    bool line_end() const
    {
        return in[at] == '\n' || in[at] == '\r';
    }
    void take()
    {
        const char c = in[at];
        const bool pairs = line_end();
        if (++at == fail_at && pairs)
            throw int32_t{-1};
        if (pairs && at < in.size() && line_end() && in[at] != c)
            at++;
    }
    int32_t tell(int32_t event, const char *character)
    {
        constexpr uint32_t bits[] = {0x01, 0x02, 0x04, 0x08, 0x10, 0x10, 0x20, 0x20};
        if (!(wanted & bits[event]))
            return 0;
        const int32_t answer = ears.hear(event, const_cast<char *>(character), text.callback_flags,
                                         static_cast<int32_t>(at));
        if (answer == -1027)
            throw answer;
        if (event != 0 || answer != 2)
            wanted = text.callback_flags;
        return answer;
    }
    // Consumes the delimiter that stands here, from the i-th on, and gives its index.
    size_t delimiter(size_t i)
    {
        for (; i < none; i++) {
            const std::string &d = delimiters[i];
            if (d.empty() || d[0] != in[at])
                continue;
            if (!has(d.size()))
                return cut;
            if (in.compare(at, d.size(), d) == 0) {
                at += d.size();
                return i;
            }
        }
        return none;
    }
    int32_t comment(bool block)
    {
        int32_t lines = 0; // of a block, counted when it ends
        bool closed = false;
        tell(block ? 6 : 4, delimiters[block].c_str());
        while (!closed && has(1)) {
            const size_t which = block && !line_end() ? delimiter(2) : none;
            if (which != none) {
                closed = which == 2;
                break;
            }
            const char c = line_end() ? '\n' : in[at];
            closed = line_end() && !block;
            if (closed) {
                at++; // a cancellation comes between the halves of a line end
                tell(0, &c);
                at--;
            }
            (block ? lines : line) += line_end();
            take();
            if (!closed)
                tell(block ? 3 : 2, &c);
        }
        line += lines;
        if (block && !closed)
            return -1025;
        tell(block ? 7 : 5, block ? delimiters[2].c_str() : closed ? "\n" : nullptr);
        return 2;
    }
    int32_t scan_text(const std::string &set, uint32_t mode)
    {
        while (has(1)) {
            const size_t which = mode & 0x08 ? none : delimiter(0);
            if (which < none)
                return which == 2 ? -1025 : comment(which == 1);
            const char c = line_end() ? '\n' : in[at];
            const bool member = c == '\0' || set.find(c) != std::string::npos;
            const bool stops = !(mode & 0x04) && member == !(mode & 0x01);
            const bool stays = stops && mode & 0x01;
            if (!stays) {
                line += line_end();
                take();
            }
            if (stops) {
                text.terminator = static_cast<signed char>(c);
                if (!stays)
                    tell(1, &c);
                return 1;
            }
            if (tell(0, &c) == 2)
                continue;
            if (stored + 1 < room.size())
                room[stored++] = c;
            else if (!room.empty() && !(mode & 0x02))
                return -4;
            count++;
        }
        return 0;
    }
    int32_t scan(const std::string &set, uint32_t mode)
    {
        wanted = text.callback_flags;
        line = text.line;
        stored = 0;
        count = 0;
        int32_t result;
        try {
            result = scan_text(set, mode);
        } catch (int32_t broken) {
            result = broken;
        }
        if (result == at_once)
            return result;
        if (result == -1025)
            text.error_line = line;
        // White space that begins with a NUL is none for the trim.
        const std::string item = room.substr(0, stored);
        const size_t kept = item.find_last_not_of(" \t\r\n\0"s) + 1;
        room[stored] = '\0';
        if (!(mode & 0x40) && item[kept] != '\0') {
            room[kept] = '\0';
            count -= static_cast<int32_t>(stored - kept);
        }
        text.line = line;
        text.count = count;
        return result;
    }
    // `size` 0 means no room: the item is only counted.
    outcome read(const char *delimiter_set, int32_t size, uint32_t mode)
    {
        const std::string set = delimiter_set ? delimiter_set : " \t\r\n";
        std::string skip, kept_room(static_cast<size_t>(size), '~');
        for (const char c : " \t\r\n"s)
            if (!(mode & 0x20) || set.find(c) == std::string::npos)
                skip += c;
        ears.heard.clear();
        int32_t result;
        do {
            room.clear();
            result = mode & 0x10 ? 0 : scan(skip, 0x19);
            room = kept_room;
            result = result < 0 ? -1 : scan(set, mode);
            kept_room = room;
        } while (result == 2 && text.count <= 0 && !(mode & 0x80));
        result = result == at_once ? -1 : result;
        const auto place = static_cast<int32_t>(at);
        return {result,          room + '~',      text.count, text.line,
                text.terminator, text.error_line, ears.heard, place};
    }
};

// How a text reaches the scanner: as a memory block, or through a stream whose buffer has a
// capacity and whose back end gives so many bytes a read at most.
struct shape {
    int32_t capacity; // 0 for a memory block
    int32_t step;
};

constexpr shape byte_by_byte = {512, 1};
constexpr shape shapes[] = {{0, 0}, {1, 512}, {2, 512}, {3, 512}, {5, 512}, {512, 512},
                            {1, 1}, {2, 1},   {3, 2},   {5, 1},   {512, 3}, byte_by_byte};

// A text as a source, with a record and its callback.
struct session {
    std::unique_ptr<char[]> data; // just as large as the text: a sanitizer sees what goes beyond
    io_memory memory;             // its position is also that of the stream's back end
    io_stream stream = {};
    io_source source;
    int32_t step;
    int32_t failing = INT32_MAX; // where the back end fails
    bool failed = false;
    io_text text = {};
    listener ears = {};

    session(const std::string &in, shape how, const comments &delimiters)
        : data(new char[in.size()]), step(how.step)
    {
        memcpy(data.get(), in.data(), in.size());
        memory = {static_cast<int32_t>(in.size()), 0, data.get()};
        source = {&memory, ioLockMemory, ioUnlockMemory};
        if (how.capacity > 0) {
            stream.read = read_back;
            stream.handle = reinterpret_cast<intptr_t>(this);
            source = {&stream, ioLockBuffer, ioUnlockBuffer};
            ioAllocBuffer(&stream, how.capacity);
        }
        text.line_comment = delimiters[0].data();
        text.block_open = delimiters[1].data();
        text.block_close = delimiters[2].data();
        text.line_comment_length = static_cast<int32_t>(delimiters[0].size());
        text.block_open_length = static_cast<int32_t>(delimiters[1].size());
        text.block_close_length = static_cast<int32_t>(delimiters[2].size());
        text.callback = call_back;
        text.callback_data = reinterpret_cast<uintptr_t>(this);
    }
    session(const session &) = delete;
    ~session()
    {
        ioFreeBuffer(&stream);
    }
    int32_t position() const
    {
        const io_buffer *const buffer = stream.buffer;
        return memory.position - (buffer ? buffer->count - buffer->position : 0);
    }
    std::string rest() const
    {
        return {data.get() + position(), data.get() + memory.size};
    }
    // Lets the back end fail from an index on, and then every lock.
    void fail_from(size_t index)
    {
        failing = static_cast<int32_t>(index);
        source.lock = lock;
    }
    outcome read(const char *set, int32_t size, uint32_t mode)
    {
        std::string room(static_cast<size_t>(size) + 1, '~'); // one more, to stay as it is
        ears.heard.clear();
        const int32_t result =
            iotextRead(&source, set, size > 0 ? room.data() : nullptr, size, mode, &text);
        return {result,          room,       text.count, text.line, text.terminator,
                text.error_line, ears.heard, position()};
    }

    static int32_t call_back(const io_source *from, io_text *record, int32_t event, char *character)
    {
        session &s = *reinterpret_cast<session *>(record->callback_data);
        EXPECT_TRUE(from == &s.source && record == &s.text);
        const int32_t place = event < IOTEXT_ON_LINE_OPEN ? 0 : s.position();
        return s.ears.hear(event, character, record->callback_flags, place);
    }
    static int32_t read_back(io_stream *from, void *dest, int32_t bytes)
    {
        session &s = *reinterpret_cast<session *>(from->handle);
        const int32_t left = std::min(s.memory.size, s.failing) - s.memory.position;
        s.failed = s.failed || s.memory.position == s.failing;
        const int32_t moved = s.failed ? 0 : std::min({bytes, s.step, left});
        memcpy(dest, s.data.get() + s.memory.position, static_cast<size_t>(moved));
        s.memory.position += moved;
        return s.failed ? -1 : moved;
    }
    static void *lock(void *context, intptr_t size, uint32_t flags)
    {
        void *const view = ioLockBuffer(context, size, flags);
        const intptr_t owner = static_cast<io_stream *>(context)->handle;
        return reinterpret_cast<session *>(owner)->failed ? nullptr : view;
    }
};

const std::string worked_text = "  key = 1 # note\r\nnext\r\n\r\n/* block\r\n comment */ after  \n"
                                "*/ stray\nlast /* open\n";
const outcome worked_items[] = {
    {2, "key = 1", 7, 1, 'k', 0, "0  key = 1 4#\v2 note0\n5\n\x12", 18},
    {1, "next", 4, 2, '\n', 0, "0next1\n", 24},
    {1, "after", 5, 5, '\n', 0, "0\n6/\0343 block\n comment 7*/0 after  1\n", 56},
    {-1025, "", 0, 5, '*', 5, "", 58},
    {1, "stray", 5, 6, '\n', 5, "0 stray1\n", 65},
    {-1025, "last", 4, 7, 'l', 7, "0last 6/H3 open\n", 78},
    {0, "", 0, 7, 'l', 7, "", 78},
};

TEST(iotext, reads_a_commented_text_item_by_item)
{
    for (const shape how : shapes) {
        session s(worked_text, how, usual);
        s.text.callback_flags = 0x3f;
        for (const outcome &expected : worked_items) {
            outcome got = s.read("\n", 64, 0);
            std::get<1>(got) = std::get<1>(got).c_str();
            EXPECT_EQ(got, expected) << "capacity " << how.capacity << " step " << how.step;
        }
    }
}

// Reads a text to its end, item by item, beside the model, with arguments drawn by lot.
void compare_with_model(const std::string &in, shape how, std::minstd_rand random)
{
    const auto pick = [&](const auto &from) {
        return from[below(random, static_cast<uint32_t>(std::size(from)))];
    };
    const char *const sets[] = {nullptr, "",        "\n",    "\xe9", "#/",        " \n",
                                "\r",    "*\xe9\n", "\n\r ", "#",    "@[`{:\x7f", "z9\xff"};
    const std::string opens[] = {"",  "#",     "/",      "//",  "/*",  "#*",
                                 "*", "\xe9#", "/*\xe9", "\n#", "\0/"s};
    const std::string closes[] = {"",     "*",      "/",  "**",  "*/",  "#",
                                  "\xe9", "*/\xe9", "/*", "*\n", "*\0"s};
    const char *const set = pick(sets);
    const int32_t size = pick(std::to_array({0, 1, 2, 3, 4, 25, 150}));
    const uint32_t mode = below(random, 0x200) & pick(std::to_array({0x1ffu, 0xa7u, 0x50u}));
    comments delimiters = {pick(opens), pick(opens), pick(closes)};
    if (delimiters[2].empty()) // nothing else closes a block comment
        delimiters[1].clear();

    session s(in, how, delimiters);
    s.ears.plays = below(random, 2);
    s.ears.script.seed(below(random, 1000));
    s.text.terminator = 99;
    size_t fail_at = std::string::npos;
    if (how.capacity > 0 && below(random, 4) == 0)
        s.fail_from(fail_at = below(random, static_cast<uint32_t>(in.size()) + 1));
    const uint32_t flags = pick(std::to_array({0u, 0x3fu, below(random, 0x40)}));
    scan_model model = {in, fail_at, delimiters, s.text, s.ears};
    // An inverted scan may stay where it is for ever.
    for (int call = 0, result = 1; call < 30 && result != 0 && result != -1; call++) {
        s.text.callback_flags = model.text.callback_flags = flags;
        const outcome expected = model.read(set, size, mode);
        outcome got = s.read(set, size, mode);
        result = std::get<0>(expected);
        if (s.failed) // nobody knows where it stands
            std::get<7>(got) = std::get<7>(expected);
        ASSERT_EQ(got, expected) << testing::PrintToString(
                                        std::tuple(in, delimiters, std::string(set ? set : "white"),
                                                   size, mode, flags))
                                 << " call " << call << " capacity " << how.capacity << " step "
                                 << how.step << " fails at " << fail_at;
    }
}

TEST(iotext, reads_as_the_model)
{
    const std::string alphabet = "\xe9 \r\n#/*\0"s, words = "azAZ09\x80\xff", others = "@[`{:\x7f";
    const auto letters = static_cast<uint32_t>(alphabet.size());
    std::minstd_rand random(1);
    // All short texts.
    size_t texts = 1;
    for (size_t length = 0; length <= 5; length++, texts *= letters) {
        for (size_t n = 0; n < texts && !HasFatalFailure(); n++) {
            std::string in;
            for (size_t left = n; in.size() < length; left /= letters)
                in += alphabet[left % letters];
            random.discard(20);
            compare_with_model(in, shapes[0], random);
            compare_with_model(in, shapes[1 + below(random, std::size(shapes) - 1)], random);
        }
    }
    // Longer ones, among them such with long words.
    for (int n = 0; n < 2000 && !HasFatalFailure(); n++) {
        std::string in(below(random, 120), 'a');
        const uint32_t length = 1 + below(random, 30);
        for (char &c : in) {
            const std::string &from = below(random, length) > 0 ? words
                                      : below(random, 4) > 0    ? alphabet
                                                                : others;
            c = from[random() % from.size()];
        }
        for (const shape how : shapes)
            compare_with_model(in, how, random);
    }
}

TEST(iotext, front_ends_move_the_source)
{
    using front_end = int32_t (*)(const io_source *, const char *, io_text *);
    constexpr front_end sleep = iotextSleep, await = iotextWait, watch = iotextObserve;
    const struct {
        front_end proc;
        const char *in, *set;
        int32_t result, terminator, line;
        const char *rest;
    } rows[] = {
        {sleep, "a #,\n c,d", ",", 1, ',', 1, "d"},  {sleep, "  \nx", "\n", 1, '\n', 1, "x"},
        {sleep, "ab c", nullptr, 1, ' ', 0, "c"},    {sleep, "a*/b", "b", -1025, 77, 0, "b"},
        {await, " \n/*=*/=x", "=", 1, '=', 1, "x"},  {await, " \r\nx", "\n", 1, '\n', 1, "x"},
        {await, " y =x", "=", -100, '=', 0, "x"},    {await, "y/*=*/=", "=", -100, 'y', 0, "="},
        {await, " # =\n ", "=", 0, '#', 1, ""},      {watch, "\n#\n x", nullptr, 1, 'x', 2, "x"},
        {watch, " ,#\n, x", ",", 1, ' ', 1, " x"},   {watch, "\n\r\n x", "\n", 1, ' ', 2, " x"},
        {watch, ",\r\nx", ",", 1, '\n', 0, "\r\nx"}, {watch, ",/*,*/", ",", 0, ',', 0, ""},
        {await, " y */=", "=", -1025, 'y', 0, "="},
    };
    for (const auto &row : rows) {
        for (const shape how : shapes) {
            // Without comments the record makes no difference.
            session s(row.in, how, usual), unrecorded(row.in, how, usual);
            s.text.terminator = 77;
            EXPECT_EQ(row.proc(&s.source, row.set, &s.text), row.result) << row.in;
            EXPECT_EQ(s.rest(), row.rest) << row.in;
            EXPECT_EQ(s.text.line, row.line) << row.in;
            EXPECT_EQ(s.text.terminator, row.terminator) << row.in;
            if (!strpbrk(row.in, "#/")) {
                EXPECT_EQ(row.proc(&unrecorded.source, row.set, nullptr), row.result) << row.in;
            }
        }
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
        const auto read = [&](session &s, io_text *text) {
            room.assign(static_cast<size_t>(row.size) + 1, '~');
            return iotextReadString(&s.source, room.data(), row.size, row.quotes[0], row.quotes[1],
                                    row.quotes[2], row.flags | 0x4000, text);
        };
        SCOPED_TRACE(testing::PrintToString(row.in) + " flags " + std::to_string(row.flags));
        for (const shape how : shapes) {
            session s(row.in, how, usual), unrecorded(row.in, how, usual);
            EXPECT_EQ(read(s, &s.text), row.result);
            EXPECT_EQ(room.substr(0, length), row.dest);
            EXPECT_EQ(room[length], row.dest == "~" ? '~' : '\0');
            EXPECT_EQ(room.back(), '~');
            EXPECT_EQ(s.rest(), row.rest);
            EXPECT_EQ(s.text.count, row.count < 0 ? static_cast<int32_t>(length) : row.count);
            EXPECT_EQ(s.text.line, row.line);
            EXPECT_TRUE(row.result != 1 ||
                        s.text.terminator == static_cast<signed char>(row.quotes[1]));
            if (row.in.find_first_of("#/") == std::string::npos) {
                EXPECT_EQ(read(unrecorded, nullptr), row.result);
                EXPECT_EQ(room.substr(0, length), row.dest);
            }
        }
        // Wherever the source fails, the string does.
        for (size_t index = 0; index < row.in.size() - row.rest.size(); index++) {
            session s(row.in, byte_by_byte, usual);
            s.fail_from(index);
            EXPECT_EQ(read(s, &s.text), -1) << "at " << index;
        }
    }
}

} // namespace
