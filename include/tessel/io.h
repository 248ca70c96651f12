/**
 * @file
 * Streams: typed transfers, positions and direct views over interchangeable back ends.
 *
 * A stream is a record that the caller assembles: three back-end procedures, a word for them and an
 * optional buffer. There is nothing to open or close. file.h has back ends over memory and files; a
 * caller may write its own.
 *
 * Counts are in elements of the size that the descriptor names (see mem.h), and multi-byte elements
 * are brought from machine order into the stream's order and back. A descriptor of 0 means bytes.
 *
 * Between operations a buffer in read mode is ahead of the stream, by its unread bytes, and a
 * buffer in write mode behind it, by its pending bytes. The procedures that move data take care of
 * both, so reads, writes, moves and locks may follow each other in any order, as long as the back
 * end has a seek procedure.
 *
 * The bulk operations at the end work on a stream as a whole: they copy one into another, search a
 * table of records, and move the rows of a two-dimensional array. ioEnhance() goes with them: it
 * takes data of any length through a procedure that can only count to 16 bits.
 *
 * A back end's failure is exactly -1. It is passed on and nothing is stored about it: the next call
 * tries again. No procedure of the library calls a back end that is null.
 */
#ifndef TESSEL_IO_H
#define TESSEL_IO_H

#include "tessel/base.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct io_stream io_stream;
typedef struct io_buffer io_buffer;
typedef struct io_memory io_memory;
typedef struct io_source io_source;

/** The failure of transfers and moves. */
enum {
    IO_FAILED = -1 /**< the back end failed, or what was asked for cannot be done */
};

/** What else ioTransfer() can result in. */
enum {
    IO_COPIED = 0,       /**< everything was copied, or `progress` is content with less */
    IO_NO_MEMORY = -3,   /**< no memory for the work block */
    IO_NO_ROOM = -4,     /**< the work area would have no bytes */
    IO_CUT_SHORT = -1025 /**< the input fell short of the limit */
};

/** Where a move counts from. */
enum {
    IO_FROM_START = 0,   /**< the start of the data */
    IO_FROM_CURRENT = 1, /**< the current position */
    IO_FROM_END = 2      /**< the end of the data */
};

/** States of a buffer. */
enum {
    IO_MODE_NONE = -1, /**< holds nothing */
    IO_MODE_READ = 1,  /**< holds data of the back end */
    IO_MODE_WRITE = 2  /**< holds data for the back end */
};

/** Lock flags: a direction, and how many bytes must be visible. */
enum {
    IO_LOCK_READ = 0x1,     /**< reading; the default without IO_LOCK_WRITE */
    IO_LOCK_WRITE = 0x2,    /**< writing: the view is the buffer's free room */
    IO_LOCK_THERE = 0x10,   /**< whatever is there; the default without the two below */
    IO_LOCK_EXACTLY = 0x20, /**< `size` itself is the number that must be visible */
    IO_LOCK_AT_LEAST = 0x40 /**< `size` points to the number that must be visible */
};

/**
 * Reads bytes from a back end.
 *
 * @param stream  the stream whose back end this is
 * @param dest    where to store
 * @param bytes   how many at most, above 0
 * @return bytes stored, which may be fewer; 0 at the end of the data, -1 on failure
 */
typedef int32_t (*io_read_proc)(io_stream *stream, void *dest, int32_t bytes);

/**
 * Writes bytes to a back end.
 *
 * @param stream  the stream whose back end this is
 * @param source  the bytes
 * @param bytes   how many, above 0
 * @return bytes taken, which may be fewer; -1 on failure
 */
typedef int32_t (*io_write_proc)(io_stream *stream, const void *source, int32_t bytes);

/**
 * Moves a back end's position; an offset of 0 from the current one only asks for it.
 *
 * @param stream  the stream whose back end this is
 * @param offset  bytes
 * @param whence  IO_FROM_START, IO_FROM_CURRENT or IO_FROM_END
 * @return the new position, counted from the start, or -1
 */
typedef int32_t (*io_seek_proc)(io_stream *stream, int32_t offset, int32_t whence);

/**
 * A stream. The caller clears the record, sets the procedures it wants and the handle; a null
 * procedure means that the stream cannot go that way.
 */
struct io_stream {
    io_read_proc read;   /**< caller: the back end's read procedure, or null */
    io_write_proc write; /**< caller: the back end's write procedure, or null */
    io_seek_proc seek;   /**< caller: the back end's seek procedure, or null */
    intptr_t handle;     /**< caller: the back end's own word; only back ends read it */
    io_buffer *buffer;   /**< library: the buffer, or null for none */
    uint32_t reserved;   /**< nobody */
};

/**
 * A stream's buffer: this head and, directly behind it in the same block, `size` bytes of data. The
 * library makes it and writes all its fields; callers may read them.
 */
struct io_buffer {
    int32_t size;     /**< capacity in bytes */
    int32_t count;    /**< read mode: bytes of data that the back end gave; otherwise 0 */
    int32_t position; /**< read mode: index of the next unread byte; write mode: pending bytes */
    int32_t mode;     /**< IO_MODE_NONE, IO_MODE_READ or IO_MODE_WRITE */
};

/** A block of memory to read or write; the caller's, as is the block. */
struct io_memory {
    int32_t size;     /**< caller: length of the block in bytes */
    int32_t position; /**< both: offset of the next byte, from 0 to `size` */
    void *base;       /**< caller: the block; not null, though it be empty */
};

/**
 * Locks a view of a context: ioLockBuffer(), ioLockMemory(), or one that promises the same.
 *
 * @param context  the source's context: an io_stream, an io_memory, or what the procedure wants
 * @param size     with IO_LOCK_EXACTLY the number of bytes wanted. Otherwise the address of an
 *                 int32_t that receives the bytes visible and, with IO_LOCK_AT_LEAST, holds the
 *                 number wanted
 * @param flags    lock flags
 * @return the first byte of the view; null when it could not be given
 */
typedef void *(*io_lock_proc)(void *context, intptr_t size, uint32_t flags);

/**
 * Unlocks a view: ioUnlockBuffer(), ioUnlockMemory(), or one that promises the same.
 *
 * @param context  the source's context, which was locked
 * @param end      where to go on: in the latest view, or just behind it
 */
typedef void (*io_unlock_proc)(void *context, const void *end);

/** Direct access to a stream or a block, for readers that need not know which; the caller's. */
struct io_source {
    void *context;         /**< caller: an io_stream, an io_memory, or what the procedures want */
    io_lock_proc lock;     /**< caller: ioLockBuffer, ioLockMemory or its like */
    io_unlock_proc unlock; /**< caller: ioUnlockBuffer, ioUnlockMemory or its like */
};

/**
 * Makes sure that a stream has a buffer of some capacity. A buffer never shrinks, and one that
 * grows keeps its contents and its mode.
 *
 * @param stream  the stream, which owns the buffer until ioFreeBuffer()
 * @param size    capacity in bytes; 0 means 512, a negative number its magnitude, but at least 512,
 *                which the lowest number means as well
 * @return 1, or 0 when memory ran out; the stream and its old buffer then stand unchanged
 * @see ioFreeBuffer(), ioFlushBuffer(), ioLockBuffer()
 */
TESSEL_API int32_t ioAllocBuffer(io_stream *stream, int32_t size);

/**
 * Flushes and releases a stream's buffer.
 *
 * @param stream  the stream, which has no buffer afterwards; it may have none before
 * @return what ioFlushBuffer() gave, 1 or 0; the buffer is gone in either case, with its pending
 *         bytes
 * @see ioAllocBuffer(), ioFlushBuffer(), fileClose()
 */
TESSEL_API int32_t ioFreeBuffer(io_stream *stream);

/**
 * Drops the unread and pending bytes of a stream's buffer, without a call to the back end.
 *
 * @param stream  the stream; one without a buffer stays as it is
 * @see ioSyncBuffer(), ioFlushBuffer()
 */
TESSEL_API void ioResetBuffer(io_stream *stream);

/**
 * Hands the pending bytes of a stream's buffer to the back end, in one write.
 *
 * @param stream  the stream, with or without a buffer
 * @return 1, also when there was nothing to do; 0 when the back end did not take all of them or
 *         `write` is null, and then all still count as pending
 * @see ioSyncBuffer(), ioResetBuffer(), ioFreeBuffer()
 */
TESSEL_API int32_t ioFlushBuffer(io_stream *stream);

/**
 * Brings the back end's position in line with the stream's. It writes pending bytes, or seeks back
 * over unread ones and drops them.
 *
 * @param stream  the stream, with or without a buffer
 * @return 1, also when there was nothing to do; 0 when the write or the seek failed or there is no
 *         seek procedure, and then the buffer stands unchanged
 * @see ioFlushBuffer(), ioResetBuffer(), ioSeek()
 */
TESSEL_API int32_t ioSyncBuffer(io_stream *stream);

/**
 * Reads elements from a stream. A request smaller than the buffer's capacity refills an empty
 * buffer; a larger one, and one of just the capacity, goes straight into `dest`. The back end is
 * called twice at most, so fewer elements than asked for do not mean the end of the data.
 *
 * @param stream      the stream
 * @param dest        room for `count` elements, at any alignment
 * @param count       number of elements, above 0
 * @param descriptor  element size and order
 * @return elements read, 0 at the end of the data. The bytes of an incomplete last element stay in
 *         `dest` and are not counted. -1 when the back end failed, `read` is null, `count` is 0 or
 *         below, or the bytes do not fit a signed 32-bit number; bytes taken from the buffer before
 *         the back end failed are consumed
 * @see ioFullRead(), ioWrite(), ioLockBuffer(), ioReadString()
 */
TESSEL_API int32_t ioRead(io_stream *stream, void *dest, int32_t count, uint32_t descriptor);

/**
 * Writes elements to a stream. The buffer takes what fits its room; anything else goes past it,
 * behind the pending bytes.
 *
 * @param stream      the stream
 * @param source      `count` elements, at any alignment. They are brought into stream order in
 *                    place for the length of the call, and back unless the descriptor has
 *                    MEM_NO_RESTORE
 * @param count       number of elements, above 0
 * @param descriptor  element size, order, MEM_NO_RESTORE
 * @return elements written; those behind a short count stay in stream order. -1 when the back end
 *         failed, which leaves all elements in stream order, or when `write` is null, `count` is 0
 *         or below, or the bytes do not fit a signed 32-bit number
 * @see ioFullWrite(), ioRead(), ioWriteInt(), ioWriteString(), ioFlushBuffer()
 */
TESSEL_API int32_t ioWrite(io_stream *stream, void *source, int32_t count, uint32_t descriptor);

/**
 * Moves the stream's position, writing pending bytes and dropping unread ones. An offset of 0 from
 * the current position only asks for it and touches nothing.
 *
 * @param stream  the stream
 * @param offset  bytes
 * @param whence  IO_FROM_START, IO_FROM_CURRENT or IO_FROM_END
 * @return the new position from the start; -1 when `seek` is null, the pending bytes could not be
 *         written, the position does not fit a signed 32-bit number or the back end refused the
 *         move, which has then lost the unread bytes
 * @see ioSkip(), ioSyncBuffer()
 */
TESSEL_API int32_t ioSeek(io_stream *stream, int32_t offset, int32_t whence);

/**
 * Skips bytes of a stream. It uses ioSeek() where the stream has a `seek`, so that it depends on
 * the back end whether the end can be passed, otherwise it reads.
 *
 * @param stream  the stream
 * @param count   bytes, 0 or more
 * @return 1, or 0 when `count` is negative or the move or a read failed
 * @see ioSeek(), ioRead()
 */
TESSEL_API int32_t ioSkip(io_stream *stream, int32_t count);

/**
 * Reads elements from a stream and fails unless all of them come. It reads as ioRead() does.
 *
 * @param stream      the stream
 * @param dest        room for `count` elements, at any alignment
 * @param count       number of elements, above 0
 * @param descriptor  element size and order
 * @return 1 if exactly `count` elements came, otherwise 0, also for a `count` of 0 or below; what
 *         did come is consumed
 * @see ioRead(), ioFullWrite()
 */
TESSEL_API int32_t ioFullRead(io_stream *stream, void *dest, int32_t count, uint32_t descriptor);

/**
 * Writes elements to a stream and fails unless all of them go. It writes as ioWrite() does.
 *
 * @param stream      the stream
 * @param source      `count` elements, at any alignment. They are brought into stream order in
 *                    place for the length of the call, and back unless the descriptor has
 *                    MEM_NO_RESTORE; after a failure some or all may stay in stream order
 * @param count       number of elements, above 0
 * @param descriptor  element size, order, MEM_NO_RESTORE
 * @return 1 if exactly `count` elements went, otherwise 0, also for a `count` of 0 or below
 * @see ioWrite(), ioFullRead()
 */
TESSEL_API int32_t ioFullWrite(io_stream *stream, void *source, int32_t count, uint32_t descriptor);

/**
 * Writes the low bytes of an integer to a stream, as one element.
 *
 * @param stream      the stream
 * @param value       the integer
 * @param descriptor  element size 1 (or 0), 2 or 4, and order
 * @return 1, or 0 when the element did not go or has another size
 * @see ioWrite(), ioRead(), memReduceInt()
 */
TESSEL_API int32_t ioWriteInt(io_stream *stream, uint32_t value, uint32_t descriptor);

/**
 * Reads a string record from a stream. That is a length field of one element, then that many bytes.
 *
 * @param stream      the stream; it ends up behind the record, also when the string did not fit
 * @param dest        room for the string, or null for a new block
 * @param size        with `dest`: its room in bytes, terminator included; a longer string is cut.
 *                    Without: bytes wanted behind the terminator, 0 or more, left undefined
 * @param descriptor  the length field: element size 1 (or 0), 2 or 4, and order
 * @return `dest`, or the new block, to be released with memFree(); null when the data ended or
 *         failed within the record, there is no room or memory, `size` is negative without `dest`,
 *         the string has 2 to the 31st bytes or more, or the field has another size. The position
 *         within the record is then undefined
 * @see ioWriteString(), ioRead()
 */
TESSEL_API char *ioReadString(io_stream *stream, char *dest, int32_t size, uint32_t descriptor);

/**
 * Writes a string record to a stream. That is a length field of one element, then that many bytes.
 *
 * @param stream      the stream
 * @param string      the bytes, or null for an empty record
 * @param length      number of bytes; 0 means up to the terminator. The caller keeps it within what
 *                    the field can hold: a longer one is written narrowed, and then all the bytes
 * @param descriptor  the length field: element size 1 (or 0), 2 or 4, and order
 * @return 1, or 0 when not all of it went or the field has another size; for a negative `length`
 *         the field has gone then
 * @see ioReadString(), ioWrite(), iotextWriteString()
 */
TESSEL_API int32_t ioWriteString(io_stream *stream, const char *string, int32_t length,
                                 uint32_t descriptor);

/**
 * Gives a view of a stream's buffer instead of a copy. A lock consumes nothing and holds nothing;
 * the view stands until the next call that touches the stream.
 *
 * Without IO_LOCK_EXACTLY and IO_LOCK_AT_LEAST, an empty buffer is refilled with one read (or a
 * full one written out), and the view is all that the buffer then holds: perhaps less than the
 * source has. With one of them the unread bytes are moved, the buffer grown and read once more
 * where that is needed to make the number visible.
 *
 * @param stream  an io_stream; one without a buffer gets one of 512 bytes or more
 * @param size    with IO_LOCK_EXACTLY the number of bytes, below 2 GiB. Otherwise the address of an
 *                int32_t that receives the bytes visible and, with IO_LOCK_AT_LEAST, holds the
 *                number wanted
 * @param flags   lock flags
 * @return the next unread byte, or with IO_LOCK_WRITE the next free one; 0 bytes visible mean the
 *         end of the data. Null when the back end failed or lacks the procedure, memory ran out or
 *         the data ends before the number; unread bytes are then still there, and what `size`
 *         points to means nothing
 * @see ioUnlockBuffer(), ioLockMemory(), ioRead(), ioWrite()
 */
TESSEL_API void *ioLockBuffer(void *stream, intptr_t size, uint32_t flags);

/**
 * Consumes a view of a stream's buffer up to a point, without a call to the back end.
 *
 * @param stream  an io_stream that was locked
 * @param end     where to go on: in the latest view, or just behind it. In write mode all in front
 *                of it counts as pending
 * @see ioLockBuffer(), ioUnlockMemory(), ioFlushBuffer()
 */
TESSEL_API void ioUnlockBuffer(void *stream, const void *end);

/**
 * Gives a view of all the rest of a memory block, for reading or writing.
 *
 * @param memory  an io_memory
 * @param size    with IO_LOCK_EXACTLY the number of bytes wanted. Otherwise the address of an
 *                int32_t that receives the bytes visible and, with IO_LOCK_AT_LEAST, holds the
 *                number wanted
 * @param flags   lock flags
 * @return the byte at the position; null when fewer bytes are left than wanted (with
 *         IO_LOCK_AT_LEAST their number is stored all the same) or the position lies outside of the
 *         block
 * @see ioUnlockMemory(), ioLockBuffer(), memRead(), memWrite()
 */
TESSEL_API void *ioLockMemory(void *memory, intptr_t size, uint32_t flags);

/**
 * Consumes a view of a memory block up to a point.
 *
 * @param memory  an io_memory that was locked
 * @param end     an address in its block or just behind it, which becomes the position
 * @see ioLockMemory(), ioUnlockBuffer()
 */
TESSEL_API void ioUnlockMemory(void *memory, const void *end);

/**
 * Watches a copy. It must leave the input alone, whose buffer is put aside meanwhile.
 *
 * @param context  what the caller gave to ioTransfer()
 * @param bytes    0 before anything else is done, then the bytes of a chunk that has been written
 * @return 0 to go on; anything else ends the copy behind this chunk and is its result, unless the
 *         write of the chunk fell short
 */
typedef int32_t (*io_progress_proc)(void *context, int32_t bytes);

/**
 * Copies bytes from one stream into another, a chunk at a time. The chunks pass through the first
 * of these that there is:
 *
 * - the caller's memory
 * - the input's buffer, if its capacity is at least `size`: unread bytes go out from where they
 *   are, and then the capacity is the size of a chunk
 * - a block of `size` bytes, allocated for the length of the call
 *
 * Bytes in the input's buffer take part in the copy only if that buffer is used. Otherwise the copy
 * begins where the back end stands, and afterwards the buffer holds what it held before.
 *
 * @param output    the stream to write, not the same as `input`. It is not flushed: with a buffer,
 *                  the last bytes may be pending
 * @param input     the stream to read
 * @param count     bytes to copy. 0 or below means no limit; the copy then ends with the first read
 *                  that gives less than a chunk
 * @param buffer    memory to work in, or null
 * @param size      with `buffer`: its bytes, above 0. Without: the smallest size of a chunk that
 *                  the caller wants; any buffer of the input is enough for 0 or below
 * @param progress  told of the beginning and of each chunk, or null
 * @param context   passed on to `progress`
 * @return Before anything is copied: what `progress` gave first, unless 0; IO_NO_ROOM when `size`
 *         is 0 or below with a `buffer`, or with neither a `buffer` nor a buffer of the input;
 *         IO_NO_MEMORY; IO_FAILED when the buffer to be used has pending bytes and they could not
 *         be written. Then, by the last chunk, the first of these that fits: IO_FAILED when its
 *         read failed, or its write failed or fell short, whatever `progress` gave for it; what
 *         `progress` gave for it; IO_CUT_SHORT when the read of a limited copy gave less than the
 *         chunk; IO_COPIED. So a `progress` that gives 0 for a short last chunk makes a copy that
 *         was cut short result in IO_COPIED. What was written stays written, and what was read is
 *         consumed
 * @see fileCopy(), iotextConvert(), ioRead(), ioWrite()
 */
TESSEL_API int32_t ioTransfer(io_stream *output, io_stream *input, int32_t count, void *buffer,
                              int32_t size, io_progress_proc progress, void *context);

/**
 * Compares the record at which a stream stands with a key, reading as much of it as it needs.
 *
 * @param stream   the stream, at the start of a record
 * @param key      what the caller gave to the search: an address, or any word of that size
 * @param context  what the caller gave to the search
 * @param order    holds 0; receives a number below 0 if the record sought lies behind this one,
 *                 above 0 if it lies in front of it, 0 if this is the one
 * @return how many bytes the stream has moved forward, above 0; 0 or below ends the search
 */
typedef int32_t (*io_probe_proc)(io_stream *stream, const void *key, void *context, int32_t *order);

/**
 * Finds a record in a table of records of a stream, by halving. The table is in ascending order,
 * and this is binary search (Knuth, The Art of Computer Programming, volume 3, section 6.2.1,
 * algorithm B). Records are reached by moves from the current position, so the table may begin
 * anywhere in the stream. It must end below 2 GiB, which `count` times `size` must not exceed
 * either.
 *
 * @param stream     a stream with a seek procedure that stands at the first record. Afterwards it
 *                   stands where the last probe left it
 * @param count      number of records
 * @param size       bytes from the start of one record to the next, above 0
 * @param key        passed on to `probe`
 * @param probe      compares a record with `key`
 * @param context    passed on to `probe`
 * @param cache      reserved: accepted and not used
 * @param cacheSize  reserved: accepted and not used
 * @param index      where the index of the record goes, or null; left alone if none is found
 * @return 1, or 0 when there is no such record or a move or a probe failed: a record that cannot be
 *         reached counts as not found
 * @see memBinSearch(), ioSeek()
 */
TESSEL_API int32_t ioBinSearch(io_stream *stream, uint32_t count, uint32_t size, const void *key,
                               io_probe_proc probe, void *context, void *cache, uint32_t cacheSize,
                               uint32_t *index);

/**
 * Transfers a piece of data for ioEnhance().
 *
 * @param context  what the caller gave to ioEnhance()
 * @param data     the piece
 * @param count    its bytes, from 1 to 64000
 * @return bytes done; fewer than `count` end the transfer, IO_PIECE_FAILED fails it
 */
typedef uint16_t (*io_piece_proc)(void *context, void *data, uint16_t count);

/** The failure of an io_piece_proc. */
enum {
    IO_PIECE_FAILED = 0xffff /**< fails the transfer; above every `count` */
};

/**
 * Transfers data of any length with a procedure that counts to 16 bits.
 *
 * @param context  passed on to `proc`
 * @param data     the data
 * @param length   its bytes; for 0 and below `proc` is not called
 * @param proc     called for one piece after the other
 * @return bytes done, fewer than `length` if `proc` did less than it was given; -1 when it failed,
 *         whatever was done before
 * @see ioRead(), ioWrite(), ioTransfer()
 */
TESSEL_API int32_t ioEnhance(void *context, void *data, int32_t length, io_piece_proc proc);

/**
 * Reads the rows of a two-dimensional array from a stream, each with an ioFullRead(). Unlike in
 * mem.h the sizes of the rows count elements: `unit` times the numbers of the size lists, a product
 * that wraps at 32 bits.
 *
 * @param stream      the stream
 * @param table       row table
 * @param rows        number of rows
 * @param unit        elements, multiplied by the numbers of the lists
 * @param first       list of row dimensions, each 0 or more, or null for a factor of 1
 * @param second      a second list of row dimensions, or null for a factor of 1
 * @param flags       bytes of a number in the lists, 1, 2 or 4, with MEM_STEP_FIRST,
 *                    MEM_STEP_SECOND
 * @param descriptor  element size and order
 * @return 1, also for no rows; 0 at the first row that did not come whole, has no elements, or has
 *         2 to the 31st elements or bytes or more, and then the rows behind it are left alone
 * @see ioWrite2D(), ioFullRead(), memAlloc2D(), memAlloc2DExt()
 */
TESSEL_API int32_t ioRead2D(io_stream *stream, void *table, uint32_t rows, uint16_t unit,
                            const void *first, const void *second, uint16_t flags,
                            uint16_t descriptor);

/**
 * Writes the rows of a two-dimensional array to a stream, each with an ioFullWrite(). Unlike in
 * mem.h the sizes of the rows count elements: `unit` times the numbers of the size lists, a product
 * that wraps at 32 bits.
 *
 * @param stream      the stream
 * @param table       row table; the elements may be turned in place, as by ioWrite()
 * @param rows        number of rows
 * @param unit        elements, multiplied by the numbers of the lists
 * @param first       list of row dimensions, each 0 or more, or null for a factor of 1
 * @param second      a second list of row dimensions, or null for a factor of 1
 * @param flags       bytes of a number in the lists, 1, 2 or 4, with MEM_STEP_FIRST,
 *                    MEM_STEP_SECOND
 * @param descriptor  element size, order, MEM_NO_RESTORE
 * @return 1, also for no rows; 0 at the first row that did not go whole, has no elements, or has 2
 *         to the 31st elements or bytes or more, and then the rows behind it are not written
 * @see ioRead2D(), ioFullWrite(), memAlloc2D(), memAlloc2DExt()
 */
TESSEL_API int32_t ioWrite2D(io_stream *stream, void *table, uint32_t rows, uint16_t unit,
                             const void *first, const void *second, uint16_t flags,
                             uint16_t descriptor);

#ifdef __cplusplus
}
#endif

#endif
