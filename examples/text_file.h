// Files for the examples: a stream with a buffer, and a commented text file as the scanner sees it.
// Comments start with # or stand between /* and */; lines count from 1.
#ifndef TESSEL_EXAMPLES_TEXT_FILE_H
#define TESSEL_EXAMPLES_TEXT_FILE_H

#include "tessel.h"

#include <filesystem>
#include <string>
#include <system_error>

// A path as the library reads it: where it names nothing, with slashes for its backslashes.
inline std::filesystem::path read_path(const char *path)
{
    std::error_code ignored;
    if (std::filesystem::exists(path, ignored))
        return path;
    std::string slashed = path;
    strReplaceToken(slashed.data(), "\\", "/", 0);
    return slashed;
}

struct text_file {
    const char *path;
    io_stream stream;
    io_source source;
    io_text text;
};

inline constexpr int32_t buffer_size = 64 << 10;

// Opens a file; a stream that is not opened needs no closing.
inline bool open_to_read(io_stream &stream, const char *path)
{
    stream = {};
    stream.read = fileRead;
    stream.seek = fileSeek;
    if (!fileOpen(&stream, path, FILE_READ))
        return false;
    if (ioAllocBuffer(&stream, buffer_size))
        return true;
    fileClose(&stream);
    return false;
}

// Flushes and closes a file and releases the buffer.
inline bool close_file(io_stream &stream)
{
    const bool closed = fileClose(&stream);
    ioFreeBuffer(&stream);
    return closed;
}

inline bool open_text_file(text_file &file, const char *path)
{
    file = {};
    file.path = path;
    file.source = {&file.stream, ioLockBuffer, ioUnlockBuffer};
    file.text.line = 1;
    file.text.line_comment = "#";
    file.text.line_comment_length = 1;
    file.text.block_open = "/*";
    file.text.block_open_length = 2;
    file.text.block_close = "*/";
    file.text.block_close_length = 2;
    return open_to_read(file.stream, path);
}

// What a failure of the scanner means, for a person.
inline const char *text_failure(int32_t result)
{
    switch (result) {
    case IOTEXT_TOO_LONG:
        return "item too long";
    case IOTEXT_COMMENT_FAULT:
        return "comment not closed, or closed without being open";
    case IOTEXT_STRING_FAULT:
        return "string not closed";
    default:
        return "cannot be read";
    }
}

#endif
