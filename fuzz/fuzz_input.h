// What the fuzz targets share: taking their input apart, exact blocks, and slow streams beside memory.
#ifndef TESSEL_FUZZ_FUZZ_INPUT_H
#define TESSEL_FUZZ_FUZZ_INPUT_H

#include "tessel.h"
#include <algorithm>
#include <memory>
#include <stdlib.h>
#include <string.h>
#include <string>
#include <vector>

inline void expect(bool holds)
{
    if (!holds)
        abort();
}

// A heap block of just these bytes, so that the sanitizer sees a step too far.
using block = std::unique_ptr<char[]>;

inline block exactly(const std::string &bytes)
{
    block copy(new char[bytes.size()]);
    bytes.copy(copy.get(), bytes.size());
    return copy;
}

// Takes values from the front of the data; behind its end all of them are zero and empty.
struct fuzz_input {
    const uint8_t *at, *end;

    uint32_t byte()
    {
        return at < end ? *at++ : 0;
    }
    uint32_t number()
    {
        const uint32_t low = byte(), middle = byte(), high = byte();
        return byte() << 24 | high << 16 | middle << 8 | low;
    }
    std::string bytes(size_t most)
    {
        const size_t length = std::min<size_t>(byte() % (most + 1), end - at);
        at += length;
        return std::string(at - length, at);
    }
};

void run(fuzz_input input);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    run({data, data + size});
    return 0;
}

// Memory that is handed out a few bytes at a time: as many as `reserved` says, which is no one's.
inline int32_t read_slowly(io_stream *stream, void *dest, int32_t bytes)
{
    return memRead(stream, dest, std::min<int32_t>(bytes, stream->reserved));
}

// `call` must read the same from memory and from a stream. A callback's string is `callback_data`.
template <typename procedure>
void compare_sources(fuzz_input input, uint32_t room, io_text text, procedure call)
{
    const std::string delimiters[] = {input.bytes(4), input.bytes(4), input.bytes(4)};
    text.line_comment = delimiters[0].data();
    text.line_comment_length = delimiters[0].size();
    text.block_close = delimiters[1].data();
    text.block_close_length = delimiters[1].size();
    text.block_open = delimiters[2].data();
    text.block_open_length = text.block_close_length ? delimiters[2].size() : 0;
    const uint32_t capacity = 1 + input.byte(), piece = 1 + input.byte();
    const block data = exactly({input.at, input.end});
    io_memory whole = {static_cast<int32_t>(input.end - input.at), 0, data.get()}, slow = whole;
    io_stream stream = {read_slowly, nullptr, nullptr, reinterpret_cast<intptr_t>(&slow)};
    stream.reserved = piece;
    ioAllocBuffer(&stream, capacity);
    const auto read_all = [&](const io_source &source, io_text record) {
        std::string seen;
        record.callback_data = reinterpret_cast<uintptr_t>(&seen);
        // An inverted scan may stand still on its stop character, so the calls are limited.
        for (int calls = 0, result = 1; calls < 64 && result && result != IOTEXT_FAILED; calls++) {
            const std::string untouched(room, '\1');
            const block dest = exactly(untouched);
            result = call(&source, dest.get(), &record, calls);
            const std::string item(dest.get(), room);
            expect(result == IOTEXT_FAILED || item == untouched || item.find('\0') < room);
            seen += item;
            for (const int32_t value : {result, record.line, record.count, record.error_line})
                seen += ' ' + std::to_string(value);
        }
        return seen;
    };
    expect(read_all({&whole, ioLockMemory, ioUnlockMemory}, text) ==
           read_all({&stream, ioLockBuffer, ioUnlockBuffer}, text));
    expect(whole.position == slow.position - stream.buffer->count + stream.buffer->position);
    ioFreeBuffer(&stream);
}

#endif
