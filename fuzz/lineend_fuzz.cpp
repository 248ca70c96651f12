// Line ends are converted as one character after the other would be: the same text and style, the
// same calls of both back ends, the same buffers.
#include "fuzz_input.h"

#include "../tests/scripted_stream.h"

#include <map>

using namespace std::string_literals; // for texts that hold NUL characters

namespace
{

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
    int32_t capacity, reads, writes, longest_read, good_calls;
    char lacks; // 'r' or 'w' for that procedure

    explicit side(fuzz_input &input)
    {
        const int32_t capacities[] = {0, 1, 2, 3, 5, 15, 16, 17, 18, 33, 40, 64, 512, 0, 40, 64};
        const uint32_t bits = input.byte(), before = input.byte(), calls = input.byte();
        capacity = capacities[bits % 16];
        reads = before & 0x10 ? before % 10 : 0;
        writes = before & 0x20 ? before % 10 : 0;
        longest_read = bits & 0x10 ? 1 + calls % 40 : INT32_MAX;
        good_calls = bits & 0x20 ? calls % 8 : INT32_MAX;
        lacks = bits < 0xf0 ? ' ' : "rw"[bits % 2];
    }
    void set_up(scripted_stream &stream, const std::string &data) const
    {
        char bytes[] = "0123456789";
        stream.data = data;
        expect(!capacity || ioAllocBuffer(&stream, capacity));
        ioRead(&stream, bytes, reads, 0);
        ioWrite(&stream, bytes, writes, 0);
        stream.longest_read = longest_read;
        if (good_calls < INT32_MAX) {
            stream.script.assign(good_calls, INT32_MAX);
            stream.script.push_back(good_calls % 2 - 1);
        }
        stream.read = lacks == 'r' ? nullptr : stream.read;
        stream.write = lacks == 'w' ? nullptr : stream.write;
    }
};

// All that can be seen of a stream.
std::string seen(const scripted_stream &s)
{
    std::string all = s.data + " at " + std::to_string(s.back);
    if (const io_buffer *const b = s.buffer) {
        for (const int32_t number : {b->size, b->count, b->position, b->mode})
            all += ' ' + std::to_string(number);
        all.append(reinterpret_cast<const char *>(b + 1), std::max(b->count, b->position));
    }
    return all;
}

} // namespace

void run(fuzz_input input)
{
    enum { from_stream, from_output, from_string };
    const uint32_t flags = input.byte() & ~0x10u, kind = input.byte() % 4;
    const side in_side(input), out_side(input);
    const std::string text = input.text("\n\r\n\rab \x8a\x8d\x0b\x0e\0"s);
    const std::string string = text.c_str();
    const block characters = exactly(string + '\0');
    std::string results[2];
    for (const bool singly : {false, true}) {
        scripted_stream in, out;
        std::string calls;
        in_side.set_up(in, text);
        out_side.set_up(out, kind == from_output ? text : "");
        in.journal = out.journal = &calls;
        io_stream *const stream = kind >= from_string ? nullptr : kind == from_output ? &out : &in;
        const int32_t style =
            singly   ? convert_singly(&out, stream, characters.get(), flags)
            : stream ? iotextConvert(&out, stream, flags)
                     : iotextConvert(&out, characters.get(), flags | IOTEXT_FROM_STRING);
        results[singly] = std::to_string(style) + calls + seen(in) + seen(out);
    }
    expect(results[0] == results[1]);
}
