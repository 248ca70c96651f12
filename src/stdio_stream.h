// A back end over a standard FILE, whose pointer is the stream's handle. It is not exported; reads
// and writes show a failure as a short count, since fread and fwrite do.
#ifndef TESSEL_SRC_STDIO_STREAM_H
#define TESSEL_SRC_STDIO_STREAM_H

#include "tessel/io.h"

int32_t stdioRead(io_stream *stream, void *dest, int32_t bytes);
int32_t stdioWrite(io_stream *stream, const void *source, int32_t bytes);
int32_t stdioSeek(io_stream *stream, int32_t offset, int32_t whence);

#endif
