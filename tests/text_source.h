// A text as a source for the scanner.
#ifndef TESSEL_TESTS_TEXT_SOURCE_H
#define TESSEL_TESTS_TEXT_SOURCE_H

#include "tessel/iotext.h"

#include "scripted_stream.h"

#include <array>
#include <memory>

// How a text reaches the scanner: as a memory block, or through a stream whose buffer has a capacity
// and whose back end gives so many bytes a read at most.
struct shape {
    int32_t capacity; // 0 for a memory block
    int32_t step;
};

inline constexpr shape shapes[] = {{0, 0},   {1, 512}, {2, 512}, {3, 512}, {5, 512}, {512, 512},
                                   {512, 1}, {1, 1},   {2, 1},   {3, 2},   {5, 1},   {512, 3}};

struct text_source : io_source {
    std::unique_ptr<char[]> data; // just as large as the text: a sanitizer sees what goes beyond
    io_memory memory;
    scripted_stream stream;

    text_source(const std::string &text, shape how) : data(new char[text.size()]), stream(text)
    {
        memory = {static_cast<int32_t>(text.size()), 0, data.get()};
        text.copy(data.get(), text.size());
        stream.longest_read = how.step;
        stream.journal = nullptr;
        static_cast<io_source &>(*this) = {&memory, ioLockMemory, ioUnlockMemory};
        if (how.capacity > 0 && ioAllocBuffer(&stream, how.capacity))
            static_cast<io_source &>(*this) = {&stream, ioLockBuffer, ioUnlockBuffer};
    }
    int32_t position() const
    {
        return context == &memory ? memory.position : stream.back - stream.unread();
    }
    std::string rest() const
    {
        return stream.data.substr(static_cast<size_t>(position()));
    }
};

using comments = std::array<std::string, 3>; // line comment, block open, block close

inline io_text text_record(const comments &delimiters, int32_t line = 0)
{
    const auto &[line_comment, open, close] = delimiters;
    io_text text = {};
    text.line = line;
    text.line_comment = line_comment.data();
    text.block_open = open.data();
    text.block_close = close.data();
    text.line_comment_length = static_cast<int32_t>(line_comment.size());
    text.block_open_length = static_cast<int32_t>(open.size());
    text.block_close_length = static_cast<int32_t>(close.size());
    return text;
}

#endif
