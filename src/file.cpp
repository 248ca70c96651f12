#include "tessel/file.h"

#include "tessel/list.h"
#include "tessel/string.h"

#include "bytes.h"
#include "compat_internal.h"
#include "platform.h"
#include "platform_path.h"
#include "stdio_stream.h"

#include <stddef.h>
#include <string.h>

static_assert(offsetof(file_positions, sourceOffset) == 4 &&
              offsetof(file_trace, name) == sizeof(char *));

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
    platform_path room;
    const char *const system_path = platform_read_path(path, &room);
    const int mode = open_mode(system_path, flags);
    if (mode == -1)
        return 0;
    const int descriptor = platform_open(system_path, mode);
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

// Copies

// Moves to a position of a copy: above 0 an offset from the start, below 0 the place that the last
// two arguments name. Gives where the stream is now.
static int32_t move_to(io_stream *stream, int32_t position, int32_t offset, int32_t whence)
{
    if (position == 0)
        return 0;
    return position > 0 ? fileSeek(stream, position, IO_FROM_START)
                        : fileSeek(stream, offset, whence);
}

int32_t fileCopy(const char *target, const char *source, int32_t targetPosition,
                 int32_t sourcePosition, int32_t count, void *buffer, int32_t size, uint32_t flags,
                 io_progress_proc progress, void *context)
{
    io_stream input = {};
    io_stream output = {};
    input.read = fileRead;
    output.write = fileWrite;
    if (!fileOpen(&input, source, FILE_READ))
        return FILE_NO_SOURCE;
    if (!fileOpen(&output, target, flags | FILE_WRITE)) {
        fileClose(&input);
        return FILE_NO_TARGET;
    }

    int32_t result = IO_FAILED;
    file_positions positions = {move_to(&output, targetPosition, 0, IO_FROM_END), IO_FAILED};
    if (positions.targetOffset >= 0)
        positions.sourceOffset =
            move_to(&input, sourcePosition, positions.targetOffset, IO_FROM_START);
    if (positions.sourceOffset >= 0) {
        if (flags & FILE_TELL_POSITIONS)
            *static_cast<file_positions *>(context) = positions;
        result = ioTransfer(&output, &input, count, buffer, size, progress, context);
    }
    fileClose(&output);
    fileClose(&input);
    return result;
}

// Walks

// An entry under examination, or a directory that is being walked. Its path goes on behind the
// record, in the same block, and stays there as long as its directory is walked.
struct trace_node {
    list_node head;
    compat_dir *parent;
    const char *parentPath;
};

struct trace_walk {
    list_node *stack;
    compat_dir *dir;  // is being listed
    const char *path; // of it
};

static trace_node *top_of(const trace_walk &walk)
{
    return reinterpret_cast<trace_node *>(walk.stack);
}

static char *full_path(trace_node *node)
{
    return reinterpret_cast<char *>(node) + sizeof(trace_node);
}

static trace_node *push_entry(trace_walk &walk, const char *name)
{
    const size_t path_size = strlen(walk.path) + 1;
    const size_t name_size = strlen(name) + 1;
    const size_t size = sizeof(trace_node) + path_size + name_size;
    if (size > INT32_MAX || !listPush(&walk.stack, static_cast<uint32_t>(size)))
        return nullptr;
    trace_node *const node = top_of(walk);
    node->parent = walk.dir;
    node->parentPath = walk.path;
    char *const path = full_path(node);
    memcpy(path, walk.path, path_size);
    memcpy(path + strAppendDirectorySeparator(path), name, name_size);
    return node;
}

static void return_to_parent(trace_walk &walk)
{
    walk.dir = top_of(walk)->parent;
    walk.path = top_of(walk)->parentPath;
    listPop(&walk.stack);
}

static void unwind(trace_walk &walk)
{
    while (walk.stack) {
        compat_closedir(top_of(walk)->parent);
        listPop(&walk.stack);
    }
}

// Links may lead back to a directory that is being walked, and so round and round.
static bool is_being_walked(const trace_walk &walk, const compat_dir *dir)
{
    for (const list_node *node = walk.stack; node; node = node->next) {
        if (compat_same_directory(reinterpret_cast<const trace_node *>(node)->parent, dir))
            return true;
    }
    return false;
}

static int32_t report_directory(const char *path, file_trace_proc callback, file_trace *record)
{
    if (record)
        record->kind = FILE_TRACE_IS_DIRECTORY;
    const int32_t result = callback(path, record);
    if (record && result == FILE_TRACE_GO_ON)
        record->kind = FILE_TRACE_IS_FILE;
    return result;
}

int32_t fileTrace(const char *path, file_trace_proc callback, file_trace *record, uint32_t flags)
{
    const char *const start = path ? path : ".";
    trace_walk walk = {nullptr, compat_opendir(start), start};
    if (!walk.dir)
        return 0;
    if (record)
        record->kind = FILE_TRACE_IS_FILE;
    for (;;) {
        const compat_dirent *const entry = compat_readdir(walk.dir);
        if (!entry) {
            compat_closedir(walk.dir);
            if (!walk.stack)
                return 1;
            return_to_parent(walk);
            continue;
        }
        if (entry->name[0] == '.')
            continue;
        trace_node *const node = push_entry(walk, entry->name);
        if (!node) {
            compat_closedir(walk.dir);
            unwind(walk);
            return 0;
        }
        if (record)
            record->name = entry->name;

        compat_dir *const child = compat_open_entry(walk.dir, full_path(node));
        int32_t result = FILE_TRACE_GO_ON;
        if (!child)
            result = callback(full_path(node), record);
        else if (flags & FILE_TRACE_DIRECTORIES)
            result = report_directory(full_path(node), callback, record);
        const bool going_on = result == FILE_TRACE_GO_ON;
        if (going_on && child && (flags & FILE_TRACE_ENTER) && !is_being_walked(walk, child)) {
            walk.dir = child;
            walk.path = full_path(node);
            continue;
        }
        compat_closedir(child);
        if (!going_on) {
            unwind(walk);
            return result;
        }
        return_to_parent(walk);
    }
}
