#include "tessel/file.h"

#include "bytes.h"
#include "platform.h"
#include "stdio_stream.h"

// Memory

static io_memory *memory_of(const io_stream *stream)
{
    return reinterpret_cast<io_memory *>(stream->handle);
}

// The bytes that a transfer moves: those asked for, or those left in the block.
static int32_t memory_amount(const io_memory *memory, int32_t bytes)
{
    const int64_t left = int64_t{memory->size} - memory->position;
    return bytes < left ? bytes : static_cast<int32_t>(left);
}

int32_t memRead(io_stream *stream, void *dest, int32_t bytes)
{
    io_memory *const memory = memory_of(stream);
    const int32_t amount = memory_amount(memory, bytes);
    if (amount <= 0)
        return 0;
    const char *const source = static_cast<const char *>(memory->base) + memory->position;
    copy_bytes(dest, source, static_cast<uint32_t>(amount));
    memory->position += amount;
    return amount;
}

int32_t memWrite(io_stream *stream, const void *source, int32_t bytes)
{
    io_memory *const memory = memory_of(stream);
    const int32_t amount = memory_amount(memory, bytes);
    if (amount <= 0)
        return 0;
    char *const dest = static_cast<char *>(memory->base) + memory->position;
    copy_bytes(dest, source, static_cast<uint32_t>(amount));
    memory->position += amount;
    return amount;
}

int32_t memSeek(io_stream *stream, int32_t offset, int32_t whence)
{
    io_memory *const memory = memory_of(stream);
    int64_t position = offset;
    if (whence == IO_FROM_END)
        position += memory->size;
    else if (whence != IO_FROM_START)
        position += memory->position;
    if (position < 0 || position > memory->size)
        return IO_FAILED;
    memory->position = static_cast<int32_t>(position);
    return memory->position;
}

// Files

static int descriptor_of(const io_stream *stream)
{
    return static_cast<int>(stream->handle);
}

// The system's open mode for a path that the flags allow to be opened, or -1 for a refusal.
static int open_mode(const char *path, uint32_t flags)
{
    if (!(flags & FILE_WRITE)) {
        if (!(flags & FILE_READ) || !platform_is_plain(path))
            return -1;
        return O_RDONLY;
    }
    if (!(flags & FILE_EXISTING) && platform_exists(path))
        return -1;
    const int access = flags & FILE_READ ? O_RDWR : O_WRONLY;
    return access | O_CREAT | (flags & FILE_TRUNCATE ? O_TRUNC : 0);
}

int32_t fileOpen(io_stream *stream, const char *path, uint32_t flags)
{
    const int mode = open_mode(path, flags);
    if (mode == -1)
        return 0;
    const int descriptor = open(path, mode | platform_binary | platform_private, platform_owner);
    stream->handle = descriptor;
    if (descriptor == -1)
        return 0;
    ioResetBuffer(stream);
    return 1;
}

int32_t fileClose(io_stream *stream)
{
    if (stream->handle == 0)
        return 1;
    if (!ioFlushBuffer(stream))
        return 0;
    return close(descriptor_of(stream)) != -1;
}

int32_t fileRead(io_stream *stream, void *dest, int32_t bytes)
{
    return platform_read(descriptor_of(stream), dest, bytes);
}

int32_t fileWrite(io_stream *stream, const void *source, int32_t bytes)
{
    return platform_write(descriptor_of(stream), source, bytes);
}

int32_t fileSeek(io_stream *stream, int32_t offset, int32_t whence)
{
    const int descriptor = descriptor_of(stream);
    // A move from the start cannot reach a position that the result does not hold, and from the
    // current position the way back is known; only from elsewhere it has to be asked for.
    int64_t before = 0;
    if (whence != IO_FROM_START && whence != IO_FROM_CURRENT)
        before = platform_seek(descriptor, 0, IO_FROM_CURRENT);
    const int64_t after = platform_seek(descriptor, offset, whence);
    if (after <= INT32_MAX)
        return static_cast<int32_t>(after);
    if (whence == IO_FROM_CURRENT)
        before = after - offset;
    platform_seek(descriptor, before, IO_FROM_START);
    return IO_FAILED;
}

// Standard files

static FILE *file_of(const io_stream *stream)
{
    return reinterpret_cast<FILE *>(stream->handle);
}

int32_t stdioRead(io_stream *stream, void *dest, int32_t bytes)
{
    return static_cast<int32_t>(fread(dest, 1, static_cast<uint32_t>(bytes), file_of(stream)));
}

int32_t stdioWrite(io_stream *stream, const void *source, int32_t bytes)
{
    return static_cast<int32_t>(fwrite(source, 1, static_cast<uint32_t>(bytes), file_of(stream)));
}

int32_t stdioSeek(io_stream *stream, int32_t offset, int32_t whence)
{
    FILE *const file = file_of(stream);
    const bool query = whence == IO_FROM_CURRENT && offset == 0;
    const int64_t before = platform_tell(file);
    if (!query && !platform_seek(file, offset, whence))
        return IO_FAILED;
    const int64_t after = query ? before : platform_tell(file);
    if (after <= INT32_MAX)
        return static_cast<int32_t>(after);
    if (!query)
        platform_seek(file, before, IO_FROM_START);
    return IO_FAILED;
}
