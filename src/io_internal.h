// The buffer of a stream, as the streams family sees it.
#ifndef TESSEL_SRC_IO_INTERNAL_H
#define TESSEL_SRC_IO_INTERNAL_H

#include "tessel/io.h"

#include <stddef.h>

inline constexpr int32_t io_default_capacity = 512;

// The data area lies directly behind the head, in the same block.
inline char *io_data(io_buffer *buffer)
{
    return reinterpret_cast<char *>(buffer) + sizeof(io_buffer);
}

// The next unread byte in read mode, the next free one in write mode.
inline char *io_current(io_buffer *buffer)
{
    return io_data(buffer) + buffer->position;
}

// Drops all bytes and leaves the buffer without a mode.
void io_reset_buffer(io_buffer *buffer);

// The two ways into read mode and write mode. The result is the number of unread bytes, or the
// room, or -1 when the back end failed. An empty buffer is refilled, and a full one written out,
// only if `threshold` is at most its capacity; a buffer that holds any unread byte, or has any
// room, is left alone however much the caller is about to need.
int32_t io_ready_rmode(io_stream *stream, int32_t threshold);
int32_t io_ready_wmode(io_stream *stream, int32_t threshold);

#endif
