#include "tessel/io.h"

#include "tessel/mem.h"

#include "array.h"
#include "bytes.h"
#include "element.h"
#include "io_internal.h"

#include <stddef.h>
#include <string.h>

static_assert(offsetof(io_stream, write) == pointer_size &&
              offsetof(io_stream, seek) == 2 * pointer_size &&
              offsetof(io_stream, handle) == 3 * pointer_size &&
              offsetof(io_stream, buffer) == 4 * pointer_size &&
              offsetof(io_stream, reserved) == 5 * pointer_size &&
              sizeof(io_stream) == 6 * pointer_size);
static_assert(offsetof(io_buffer, count) == 4 && offsetof(io_buffer, position) == 8 &&
              offsetof(io_buffer, mode) == 12 && sizeof(io_buffer) == 16);
static_assert(offsetof(io_memory, position) == 4 && offsetof(io_memory, base) == 8 &&
              sizeof(io_memory) == 8 + pointer_size);
static_assert(offsetof(io_source, lock) == pointer_size &&
              offsetof(io_source, unlock) == 2 * pointer_size &&
              sizeof(io_source) == 3 * pointer_size);

// Buffers

static int32_t wanted_capacity(int32_t size)
{
    if (size > 0)
        return size;
    // The lowest number has no magnitude.
    const int32_t magnitude = size == INT32_MIN ? 0 : -size;
    return magnitude > io_default_capacity ? magnitude : io_default_capacity;
}

int32_t ioAllocBuffer(io_stream *stream, int32_t size)
{
    const int32_t capacity = wanted_capacity(size);
    io_buffer *const old = stream->buffer;
    if (old && old->size >= capacity)
        return 1;
    const uint32_t bytes =
        static_cast<uint32_t>(sizeof(io_buffer)) + static_cast<uint32_t>(capacity);
    io_buffer *const buffer = static_cast<io_buffer *>(memResize(old, bytes));
    if (!buffer)
        return 0;
    buffer->size = capacity;
    if (!old)
        io_reset_buffer(buffer);
    stream->buffer = buffer;
    return 1;
}

int32_t ioFreeBuffer(io_stream *stream)
{
    const int32_t flushed = ioFlushBuffer(stream);
    memReset(&stream->buffer);
    return flushed;
}

void io_reset_buffer(io_buffer *buffer)
{
    buffer->count = 0;
    buffer->position = 0;
    buffer->mode = IO_MODE_NONE;
}

void ioResetBuffer(io_stream *stream)
{
    if (stream->buffer)
        io_reset_buffer(stream->buffer);
}

int32_t ioFlushBuffer(io_stream *stream)
{
    io_buffer *const buffer = stream->buffer;
    if (!buffer || buffer->mode != IO_MODE_WRITE || buffer->position == 0)
        return 1;
    if (!stream->write ||
        stream->write(stream, io_data(buffer), buffer->position) != buffer->position)
        return 0;
    buffer->position = 0;
    return 1;
}

int32_t ioSyncBuffer(io_stream *stream)
{
    io_buffer *const buffer = stream->buffer;
    if (!buffer || buffer->mode == IO_MODE_NONE)
        return 1;
    if (buffer->mode == IO_MODE_WRITE)
        return ioFlushBuffer(stream);
    const int32_t unread = buffer->count - buffer->position;
    if (unread != 0) {
        if (!stream->seek || stream->seek(stream, -unread, IO_FROM_CURRENT) == IO_FAILED)
            return 0;
    }
    io_reset_buffer(buffer);
    return 1;
}

int32_t io_ready_rmode(io_stream *stream, int32_t threshold)
{
    io_buffer *const buffer = stream->buffer;
    if (buffer->mode == IO_MODE_WRITE && !ioFlushBuffer(stream))
        return IO_FAILED;
    int32_t unread = buffer->count - buffer->position;
    if (unread == 0 && threshold <= buffer->size) {
        unread = stream->read ? stream->read(stream, io_data(buffer), buffer->size) : IO_FAILED;
        if (unread == IO_FAILED)
            return IO_FAILED;
        buffer->count = unread;
        buffer->position = 0;
    }
    buffer->mode = IO_MODE_READ;
    return unread;
}

int32_t io_ready_wmode(io_stream *stream, int32_t threshold)
{
    io_buffer *const buffer = stream->buffer;
    if (buffer->mode == IO_MODE_READ && !ioSyncBuffer(stream))
        return IO_FAILED;
    buffer->mode = IO_MODE_WRITE;
    const bool full = buffer->position == buffer->size;
    if (full && threshold <= buffer->size && !ioFlushBuffer(stream))
        return IO_FAILED;
    return buffer->size - buffer->position;
}

// Transfers

// Bytes of `count` elements; 0 for none, and for more than a back end can be asked for.
static int32_t request_bytes(int32_t count, uint32_t descriptor)
{
    if (count <= 0)
        return 0;
    const int64_t bytes = int64_t{count} * element_size(descriptor);
    return bytes <= INT32_MAX ? static_cast<int32_t>(bytes) : 0;
}

// One above the request: only a request that is smaller than the capacity refills an empty buffer
// or writes out a full one. A sum rather than a choice: with a path of its own for the largest
// request, gcc for 32-bit systems warns of copies that take up more than all memory.
static int32_t request_threshold(int32_t request)
{
    return request + (request < INT32_MAX);
}

// Elements that `bytes` hold whole. Most transfers move all that was asked for, which spares them
// the division.
static int32_t whole_elements(int32_t bytes, int32_t request, int32_t count, uint32_t descriptor)
{
    return bytes == request ? count : bytes / static_cast<int32_t>(element_size(descriptor));
}

static int32_t read_bytes(io_stream *stream, void *dest, int32_t request)
{
    io_buffer *const buffer = stream->buffer;
    if (!buffer)
        return stream->read(stream, dest, request);
    const int32_t unread = io_ready_rmode(stream, request_threshold(request));
    if (unread >= request) {
        copy_bytes(dest, io_current(buffer), static_cast<uint32_t>(request));
        buffer->position += request;
        return request;
    }
    if (unread == IO_FAILED)
        return IO_FAILED;
    // The rest comes straight from the back end, however little it is.
    copy_bytes(dest, io_current(buffer), static_cast<uint32_t>(unread));
    buffer->position += unread;
    const int32_t rest = stream->read(stream, static_cast<char *>(dest) + unread, request - unread);
    return rest == IO_FAILED ? IO_FAILED : unread + rest;
}

// Whether a request is for as few bytes, in the machine's order, as one load and one store move.
static bool is_small(int32_t request, uint32_t descriptor)
{
    return (request == 1 || request == 2 || request == 4) &&
           element_conversion(descriptor) == MEM_CONVERT_NONE;
}

[[gnu::noinline]] static int32_t read_elements(io_stream *stream, void *dest, int32_t count,
                                               uint32_t descriptor)
{
    const int32_t request = request_bytes(count, descriptor);
    if (!stream->read || request == 0)
        return IO_FAILED;
    const int32_t bytes = read_bytes(stream, dest, request);
    if (bytes == IO_FAILED)
        return IO_FAILED;
    const int32_t elements = whole_elements(bytes, request, count, descriptor);
    if (element_conversion(descriptor) != MEM_CONVERT_NONE)
        memReorder(dest, static_cast<uint32_t>(elements), descriptor);
    return elements;
}

// A few bytes that lie in the buffer are the most frequent of all transfers. Without a call on their
// way no registers are saved, which takes a third off their time.
int32_t ioRead(io_stream *stream, void *dest, int32_t count, uint32_t descriptor)
{
    io_buffer *const buffer = stream->buffer;
    const int32_t request = request_bytes(count, descriptor);
    if (!buffer || !stream->read || !is_small(request, descriptor) ||
        buffer->count - buffer->position < request)
        return read_elements(stream, dest, count, descriptor);
    copy_bytes(dest, io_current(buffer), static_cast<uint32_t>(request));
    buffer->position += request;
    return count;
}

static int32_t write_bytes(io_stream *stream, const void *source, int32_t request)
{
    io_buffer *const buffer = stream->buffer;
    if (!buffer)
        return stream->write(stream, source, request);
    const int32_t room = io_ready_wmode(stream, request_threshold(request));
    if (room >= request) {
        copy_bytes(io_current(buffer), source, static_cast<uint32_t>(request));
        buffer->position += request;
        return request;
    }
    if (room == IO_FAILED || !ioFlushBuffer(stream))
        return IO_FAILED;
    return stream->write(stream, source, request);
}

[[gnu::noinline]] static int32_t write_elements(io_stream *stream, void *source, int32_t count,
                                                uint32_t descriptor)
{
    const int32_t request = request_bytes(count, descriptor);
    if (!stream->write || request == 0)
        return IO_FAILED;
    // Only elements that were really inverted are inverted back.
    const bool inverted = element_conversion(descriptor) == MEM_CONVERT_INVERT;
    if (inverted)
        memInvertB(source, static_cast<uint32_t>(count), element_size(descriptor));
    const int32_t bytes = write_bytes(stream, source, request);
    if (bytes == IO_FAILED)
        return IO_FAILED;
    const int32_t elements = whole_elements(bytes, request, count, descriptor);
    if (inverted && !(descriptor & MEM_NO_RESTORE))
        memInvertB(source, static_cast<uint32_t>(elements), element_size(descriptor));
    return elements;
}

int32_t ioWrite(io_stream *stream, void *source, int32_t count, uint32_t descriptor)
{
    io_buffer *const buffer = stream->buffer;
    const int32_t request = request_bytes(count, descriptor);
    if (!buffer || !stream->write || !is_small(request, descriptor) ||
        buffer->mode != IO_MODE_WRITE || buffer->size - buffer->position < request)
        return write_elements(stream, source, count, descriptor);
    copy_bytes(io_current(buffer), source, static_cast<uint32_t>(request));
    buffer->position += request;
    return count;
}

int32_t ioFullRead(io_stream *stream, void *dest, int32_t count, uint32_t descriptor)
{
    return count > 0 && ioRead(stream, dest, count, descriptor) == count;
}

int32_t ioFullWrite(io_stream *stream, void *source, int32_t count, uint32_t descriptor)
{
    return count > 0 && ioWrite(stream, source, count, descriptor) == count;
}

// Positions

// The stream's position, from that of the back end: behind it by the unread bytes, or ahead of it
// by the pending ones.
static int32_t logical_position(io_stream *stream)
{
    const io_buffer *const buffer = stream->buffer;
    const int32_t position = stream->seek(stream, 0, IO_FROM_CURRENT);
    if (position == IO_FAILED)
        return IO_FAILED;
    const int64_t logical = int64_t{position} + buffer->position - buffer->count;
    return logical <= INT32_MAX ? static_cast<int32_t>(logical) : IO_FAILED;
}

int32_t ioSeek(io_stream *stream, int32_t offset, int32_t whence)
{
    if (!stream->seek)
        return IO_FAILED;
    io_buffer *const buffer = stream->buffer;
    if (!buffer)
        return stream->seek(stream, offset, whence);
    if (whence == IO_FROM_CURRENT && offset == 0)
        return logical_position(stream);

    int64_t distance = offset;
    if (whence == IO_FROM_CURRENT && buffer->mode == IO_MODE_READ)
        distance -= buffer->count - buffer->position;
    if (distance < INT32_MIN)
        return IO_FAILED;
    if (buffer->mode == IO_MODE_WRITE) {
        if (!ioFlushBuffer(stream))
            return IO_FAILED;
    } else {
        buffer->position = 0;
        buffer->count = 0;
    }
    return stream->seek(stream, static_cast<int32_t>(distance), whence);
}

int32_t ioSkip(io_stream *stream, int32_t count)
{
    if (count <= 0)
        return count == 0;
    if (stream->seek)
        return ioSeek(stream, count, IO_FROM_CURRENT) != IO_FAILED;
    char scratch[512];
    constexpr int32_t step = sizeof scratch;
    for (; count > step; count -= step) {
        if (!ioFullRead(stream, scratch, step, 0))
            return 0;
    }
    return ioFullRead(stream, scratch, count, 0);
}

// Integers and strings

// The width of an integer in a stream: 1, 2 or 4, or 0 for a descriptor that has no integer's size.
static uint32_t integer_width(uint32_t descriptor)
{
    const uint32_t size = element_size(descriptor);
    return size == 1 || size == 2 || size == 4 ? size : 0;
}

int32_t ioWriteInt(io_stream *stream, uint32_t value, uint32_t descriptor)
{
    const uint32_t width = integer_width(descriptor);
    if (width == 0)
        return 0;
    memReduceInt(&value, width);
    return ioFullWrite(stream, &value, 1, descriptor);
}

// Reads `length` bytes into `dest`, skips `excess` more and terminates the string.
static bool read_text(io_stream *stream, char *dest, int32_t length, int32_t excess)
{
    if (length != 0 && !ioFullRead(stream, dest, length, 0))
        return false;
    if (excess != 0 && !ioSkip(stream, excess))
        return false;
    dest[length] = '\0';
    return true;
}

char *ioReadString(io_stream *stream, char *dest, int32_t size, uint32_t descriptor)
{
    const uint32_t width = integer_width(descriptor);
    uint32_t field = 0;
    if (width == 0 || !ioFullRead(stream, &field, 1, descriptor))
        return nullptr;
    const uint32_t stored = memRestoreInt(&field, width);
    if (stored > INT32_MAX)
        return nullptr;
    const int32_t length = static_cast<int32_t>(stored);

    if (dest) {
        if (size < 1)
            return nullptr;
        const int32_t kept = length < size ? length : size - 1;
        return read_text(stream, dest, kept, length - kept) ? dest : nullptr;
    }
    if (size < 0)
        return nullptr;
    char *block = static_cast<char *>(memAlloc(stored + static_cast<uint32_t>(size) + 1));
    if (block && !read_text(stream, block, length, 0))
        memReset(&block);
    return block;
}

int32_t ioWriteString(io_stream *stream, const char *string, int32_t length, uint32_t descriptor)
{
    if (!string)
        return ioWriteInt(stream, 0, descriptor);
    if (length == 0) {
        const size_t measured = strlen(string);
        if (measured > INT32_MAX)
            return 0;
        length = static_cast<int32_t>(measured);
    }
    if (!ioWriteInt(stream, static_cast<uint32_t>(length), descriptor))
        return 0;
    // Plain bytes are written from where they are and never changed.
    return length == 0 || ioFullWrite(stream, const_cast<char *>(string), length, 0);
}

// Direct access

static int32_t ready_any(io_stream *stream, uint32_t flags)
{
    return flags & IO_LOCK_WRITE ? io_ready_wmode(stream, 0) : io_ready_rmode(stream, 0);
}

// A view of exactly the room that a writer wants, with the pending bytes out of its way.
static char *lock_room(io_stream *stream, int32_t wanted)
{
    const int32_t room = io_ready_wmode(stream, 0);
    if (room == IO_FAILED || (room < wanted && !ioFlushBuffer(stream)))
        return nullptr;
    return io_current(stream->buffer);
}

// A view of `wanted` unread bytes: those in the buffer are moved to its start and one read fills
// the space behind them. `minimum` bytes are enough; the number visible goes to `visible` then.
static char *lock_unread(io_stream *stream, int32_t wanted, int32_t minimum, int32_t *visible)
{
    const int32_t unread = io_ready_rmode(stream, 0);
    if (unread == IO_FAILED)
        return nullptr;
    io_buffer *const buffer = stream->buffer;
    if (unread >= wanted)
        return io_current(buffer);

    char *const data = io_data(buffer);
    memmove(data, io_current(buffer), static_cast<uint32_t>(unread));
    buffer->count = unread;
    buffer->position = 0;
    const int32_t more = stream->read(stream, data + unread, buffer->size - unread);
    if (more == IO_FAILED)
        return nullptr;
    buffer->count += more;
    if (buffer->count < minimum)
        return nullptr;
    if (buffer->count < wanted)
        *visible = buffer->count;
    return data;
}

void *ioLockBuffer(void *context, intptr_t size, uint32_t flags)
{
    io_stream *const stream = static_cast<io_stream *>(context);
    if (flags & IO_LOCK_WRITE ? !stream->write : !stream->read)
        return nullptr;
    const bool exactly = flags & IO_LOCK_EXACTLY;
    const int32_t number = exactly ? static_cast<int32_t>(size) : 0;
    if (exactly && number != size)
        return nullptr;
    if (!stream->buffer && !ioAllocBuffer(stream, wrap_negate(number)))
        return nullptr;

    int32_t wanted = number;
    int32_t minimum = number;
    int32_t *const visible = exactly ? nullptr : reinterpret_cast<int32_t *>(size);
    if (!exactly) {
        const int32_t available = ready_any(stream, flags);
        if (available == IO_FAILED)
            return nullptr;
        minimum = flags & IO_LOCK_AT_LEAST ? *visible : 0;
        if (!(flags & IO_LOCK_AT_LEAST) || available >= minimum) {
            *visible = available;
            return io_current(stream->buffer);
        }
        wanted = minimum > stream->buffer->size ? minimum : stream->buffer->size;
        *visible = wanted;
    }
    if (stream->buffer->size < wanted && !ioAllocBuffer(stream, wanted))
        return nullptr;
    return flags & IO_LOCK_WRITE ? lock_room(stream, wanted)
                                 : lock_unread(stream, wanted, minimum, visible);
}

void ioUnlockBuffer(void *context, const void *end)
{
    io_buffer *const buffer = static_cast<io_stream *>(context)->buffer;
    buffer->position = static_cast<int32_t>(static_cast<const char *>(end) - io_data(buffer));
}

void *ioLockMemory(void *context, intptr_t size, uint32_t flags)
{
    const io_memory *const memory = static_cast<io_memory *>(context);
    if (memory->position < 0 || memory->position > memory->size)
        return nullptr;
    const int32_t left = memory->size - memory->position;
    if (flags & IO_LOCK_AT_LEAST) {
        int32_t *const visible = reinterpret_cast<int32_t *>(size);
        const int32_t minimum = *visible;
        *visible = left;
        if (left < minimum)
            return nullptr;
    } else if (flags & IO_LOCK_EXACTLY) {
        if (left < size)
            return nullptr;
    } else {
        *reinterpret_cast<int32_t *>(size) = left;
    }
    return static_cast<char *>(memory->base) + memory->position;
}

void ioUnlockMemory(void *context, const void *end)
{
    io_memory *const memory = static_cast<io_memory *>(context);
    memory->position =
        static_cast<int32_t>(static_cast<const char *>(end) - static_cast<char *>(memory->base));
}

// Copies

// One copy, from pass to pass. It spares what it can: unread bytes go out from where they are in
// the input's buffer, and the space of that buffer then takes what is read.
struct stream_copy {
    io_stream *output;
    io_stream *input;
    int32_t left;  // bytes still wanted, above 0 to the end; 0 or below without a limit
    char *area;    // the bytes of a pass
    int32_t chunk; // how many a pass has at most
    bool viewed;   // the area is a view of the input's unread bytes
    void *block;   // made for the copy, or null
    int32_t result;
};

static int32_t borrow_buffer(stream_copy &copy)
{
    io_stream *const input = copy.input;
    // Without a refill: what is still to be read goes into the same space, without a view.
    const int32_t unread = io_ready_rmode(input, INT32_MAX);
    if (unread == IO_FAILED)
        return IO_FAILED;
    copy.area = io_data(input->buffer);
    copy.chunk = input->buffer->size;
    if (unread == 0)
        return IO_COPIED;

    // As a lock of what is there would give it.
    copy.area = io_current(input->buffer);
    copy.chunk = unread;
    copy.viewed = true;
    return IO_COPIED;
}

static int32_t choose_area(stream_copy &copy, void *memory, int32_t size)
{
    copy.area = static_cast<char *>(memory);
    copy.chunk = size;
    if (memory)
        return size > 0 ? IO_COPIED : IO_NO_ROOM;
    const io_buffer *const buffer = copy.input->buffer;
    if (buffer && buffer->size >= size)
        return borrow_buffer(copy);
    if (size <= 0)
        return IO_NO_ROOM;
    copy.block = memAlloc(static_cast<uint32_t>(size));
    copy.area = static_cast<char *>(copy.block);
    return copy.block ? IO_COPIED : IO_NO_MEMORY;
}

// Fetches the bytes of a pass. Those of a view are consumed now, whatever becomes of the write.
static int32_t take_chunk(stream_copy &copy)
{
    if (!copy.viewed)
        return ioRead(copy.input, copy.area, copy.chunk, 0);
    ioUnlockBuffer(copy.input, copy.area + copy.chunk);
    return copy.chunk;
}

// Behind the view, the passes read into the buffer's space and past its counters.
static void leave_view(stream_copy &copy)
{
    io_buffer *const buffer = copy.input->buffer;
    copy.viewed = false;
    copy.area = io_data(buffer);
    copy.chunk = buffer->size;
    copy.input->buffer = nullptr;
}

// One pass; gives whether another one follows. What sets the result later in a pass wins.
static bool copy_chunk(stream_copy &copy, io_progress_proc progress, void *context)
{
    const bool limited = copy.left > 0;
    bool last = limited && copy.left <= copy.chunk;
    if (last)
        copy.chunk = copy.left;
    else if (limited)
        copy.left -= copy.chunk;

    const int32_t taken = take_chunk(copy);
    if (taken < copy.chunk) {
        if (taken < 0)
            copy.result = taken;
        else if (limited)
            copy.result = IO_CUT_SHORT;
        if (taken <= 0)
            return false;
        last = true;
    }
    const int32_t written = ioWrite(copy.output, copy.area, taken, 0);
    if (copy.viewed)
        leave_view(copy);
    if (written > 0 && progress) {
        copy.result = progress(context, written);
        last = last || copy.result != 0;
    }
    if (written < taken) {
        copy.result = IO_FAILED;
        return false;
    }
    return !last;
}

int32_t ioTransfer(io_stream *output, io_stream *input, int32_t count, void *buffer, int32_t size,
                   io_progress_proc progress, void *context)
{
    const int32_t cancelled = progress ? progress(context, 0) : 0;
    if (cancelled != 0)
        return cancelled;
    stream_copy copy = {};
    copy.output = output;
    copy.input = input;
    copy.left = count;
    copy.result = IO_COPIED;
    const int32_t chosen = choose_area(copy, buffer, size);
    if (chosen != IO_COPIED)
        return chosen;

    // Without its buffer, a read of the input is one call of the back end, into the area.
    io_buffer *const detached = input->buffer;
    if (!copy.viewed)
        input->buffer = nullptr;
    while (copy_chunk(copy, progress, context)) {
    }
    input->buffer = detached;
    memFree(copy.block);
    return copy.result;
}

// Search

// Nothing reads a cache, so none is made.
int32_t ioBinSearch(io_stream *stream, uint32_t count, uint32_t size, const void *key,
                    io_probe_proc probe, void *context, void * /*cache*/, uint32_t /*cacheSize*/,
                    uint32_t *index)
{
    // What is left begins at `low` and has `count` records, so that no bound can wrap.
    uint32_t low = 0;
    uint32_t offset = 0; // of the stream, from the first record
    while (count > 0) {
        const uint32_t before = (count - 1) / 2;
        const uint32_t middle = low + before;
        const uint32_t target = middle * size;
        if (ioSeek(stream, static_cast<int32_t>(target - offset), IO_FROM_CURRENT) == IO_FAILED)
            return 0;
        int32_t order = 0;
        const int32_t moved = probe(stream, key, context, &order);
        if (moved <= 0)
            return 0;
        offset = target + static_cast<uint32_t>(moved);
        if (order == 0) {
            if (index)
                *index = middle;
            return 1;
        }
        if (order < 0) {
            low = middle + 1;
            count /= 2;
        } else {
            count = before;
        }
    }
    return 0;
}

// Long runs

// Far enough below the 16 bits of a count that no number of bytes looks like the failure.
constexpr uint32_t longest_piece = 64000;

int32_t ioEnhance(void *context, void *data, int32_t length, io_piece_proc proc)
{
    int32_t total = 0;
    uintptr_t next = 0;
    while (length > 0) {
        char *const piece = static_cast<char *>(data) + next;
        const uint16_t count = mem_long_iter(&next, &length, longest_piece);
        const uint16_t done = proc(context, piece, count);
        if (done == IO_PIECE_FAILED)
            return IO_FAILED;
        total = wrap_add(total, done);
        if (done < count)
            break;
    }
    return total;
}

// Two-dimensional arrays

using transfer_proc = int32_t (*)(io_stream *stream, void *elements, int32_t count,
                                  uint32_t descriptor);

static int32_t io_progress_2d(io_stream *stream, const void *table, uint32_t rows, uint32_t unit,
                              const void *first, const void *second, uint32_t flags,
                              uint32_t descriptor, transfer_proc transfer)
{
    for (uint32_t row = 0; row < rows; row++) {
        const uint32_t count = mem_iterate_2d(unit, &first, &second, flags);
        if (!transfer(stream, row_at(table, row), static_cast<int32_t>(count), descriptor))
            return 0;
    }
    return 1;
}

int32_t ioRead2D(io_stream *stream, void *table, uint32_t rows, uint16_t unit, const void *first,
                 const void *second, uint16_t flags, uint16_t descriptor)
{
    return io_progress_2d(stream, table, rows, unit, first, second, flags, descriptor, ioFullRead);
}

int32_t ioWrite2D(io_stream *stream, void *table, uint32_t rows, uint16_t unit, const void *first,
                  const void *second, uint16_t flags, uint16_t descriptor)
{
    return io_progress_2d(stream, table, rows, unit, first, second, flags, descriptor, ioFullWrite);
}
