// The same text over a memory block and over a stream that hands it out in small pieces gives the
// same items, whatever the modes, delimiters, room and capacity.
#include "tessel.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

namespace
{
struct setup {
    uint32_t mode;
    int32_t room;
    int32_t capacity;
    int32_t piece;
    std::string stops;
    std::string delimiters[3];
};

// A memory back end that gives a few bytes at a time.
struct pieces {
    io_memory memory;
    int32_t piece;
};

int32_t read_piece(io_stream *stream, void *dest, int32_t bytes)
{
    pieces *const from = reinterpret_cast<pieces *>(stream->handle);
    io_stream inner = {};
    inner.handle = reinterpret_cast<intptr_t>(&from->memory);
    return memRead(&inner, dest, bytes < from->piece ? bytes : from->piece);
}

std::vector<std::string> read_all(const io_source &source, const setup &chosen)
{
    io_text text = {};
    text.line_comment = chosen.delimiters[0].data();
    text.line_comment_length = static_cast<int32_t>(chosen.delimiters[0].size());
    text.block_open = chosen.delimiters[1].data();
    text.block_open_length = static_cast<int32_t>(chosen.delimiters[1].size());
    text.block_close = chosen.delimiters[2].data();
    text.block_close_length = static_cast<int32_t>(chosen.delimiters[2].size());
    std::vector<std::string> items;
    std::vector<char> room(static_cast<size_t>(chosen.room));
    // An inverted scan may stand still on its stop character, so the calls are counted as well.
    for (int calls = 0; calls < 64; calls++) {
        const int32_t result =
            iotextRead(&source, chosen.stops.c_str(), room.data(), chosen.room, chosen.mode, &text);
        items.push_back(std::to_string(result) + ' ' + std::to_string(text.count) + ' ' +
                        std::to_string(text.line) + ' ' + room.data());
        if (result == IOTEXT_END || result == IOTEXT_FAILED)
            break;
    }
    return items;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    constexpr size_t head = 12;
    if (size < head)
        return 0;
    const auto text_of = [&](size_t at, size_t most) {
        return std::string(reinterpret_cast<const char *>(data) + at, data[at + 1] % (most + 1));
    };
    setup chosen = {data[0],          1 + data[1] % 64, 1 + data[2] % 40,
                    1 + data[3] % 20, text_of(4, 2),    {}};
    for (size_t i = 0; i < 3; i++)
        chosen.delimiters[i] = text_of(6 + 2 * i, 2);
    if (chosen.delimiters[2].empty())
        chosen.delimiters[1].clear();

    std::vector<char> block(data + head, data + size);
    block.push_back('\0'); // so that an empty text has an address too
    const io_memory memory = {static_cast<int32_t>(block.size() - 1), 0, block.data()};

    io_memory whole = memory;
    const auto expected = read_all({&whole, ioLockMemory, ioUnlockMemory}, chosen);

    pieces back_end = {memory, chosen.piece};
    io_stream stream = {};
    stream.read = read_piece;
    stream.handle = reinterpret_cast<intptr_t>(&back_end);
    ioAllocBuffer(&stream, chosen.capacity);
    const auto got = read_all({&stream, ioLockBuffer, ioUnlockBuffer}, chosen);
    ioFreeBuffer(&stream);
    if (got != expected)
        abort();
    return 0;
}
