// Line ends of a stream and of a string are converted as the simplest procedure converts them.
#include "fuzz_input.h"

void run(fuzz_input input)
{
    const uint32_t flags = input.byte(), piece = 1 + input.byte(), in_capacity = input.byte();
    const uint32_t out_capacity = input.byte(), string = flags & IOTEXT_FROM_STRING;
    const std::string all(input.at, input.end), text = string ? all.c_str() : all;
    std::string expected;
    static constexpr const char *styles[] = {"", "\n", "\r", "\r\n", "", "\r", "\n", "\n\r"};
    char pattern = 0;
    int32_t style = 0;
    for (const char c : text) {
        const bool end = c == '\n' || c == '\r';
        pattern = !end ? '\0' : pattern ? pattern : c;
        style |= c == '\n' ? IOTEXT_LF : c == '\r' ? IOTEXT_CR : 0;
        expected += !end ? std::string{c} : c == pattern ? styles[flags & 7] : "";
    }
    if (style == IOTEXT_CRLF && text[text.find_first_of("\r\n")] == '\n')
        style = IOTEXT_LFCR;
    const block from = exactly(string ? text + '\0' : text), to = exactly(expected);
    io_memory source = {static_cast<int32_t>(text.size()), 0, from.get()};
    io_memory target = {static_cast<int32_t>(expected.size()), 0, to.get()};
    memset(to.get(), 0, expected.size());
    io_stream in = {read_slowly, nullptr, nullptr, reinterpret_cast<intptr_t>(&source)};
    io_stream out = {nullptr, memWrite, nullptr, reinterpret_cast<intptr_t>(&target)};
    in.reserved = piece;
    if (in_capacity > 0)
        ioAllocBuffer(&in, in_capacity);
    if (out_capacity > 0)
        ioAllocBuffer(&out, out_capacity);
    const void *const from_where = string ? static_cast<void *>(from.get()) : &in;
    expect(iotextConvert(&out, from_where, flags) == (style ? style : int{IOTEXT_NO_LINE_END}));
    expect(ioFreeBuffer(&out) && ioFreeBuffer(&in) && target.position == target.size);
    expect(expected == std::string(to.get(), expected.size()));
}
