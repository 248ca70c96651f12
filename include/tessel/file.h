/**
 * @file
 * Back ends for streams, over memory blocks and over files; copies of files; and walks over trees
 * of directories.
 *
 * The procedures that read, write and seek go into the fields of those names in an io_stream; they
 * find their record or descriptor through its `handle` and know nothing of its buffer.
 *
 * compat.h says how paths are read.
 */
#ifndef TESSEL_FILE_H
#define TESSEL_FILE_H

#include "tessel/io.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Flags of fileOpen(). */
enum {
    FILE_READ = 0x1,       /**< open for reading */
    FILE_WRITE = 0x2,      /**< open for writing; a missing file is made */
    FILE_EXISTING = 0x100, /**< with FILE_WRITE: the file may exist already */
    FILE_TRUNCATE = 0x200  /**< with FILE_WRITE: cut an existing file to length 0 */
};

/**
 * Reads bytes from a memory block, as the back end of a stream.
 *
 * @param stream  a stream whose `handle` is the address of an io_memory
 * @param dest    where to store
 * @param bytes   how many at most
 * @return bytes read, 0 at the end of the block
 * @see memWrite(), memSeek(), fileRead(), ioRead()
 */
TESSEL_API int32_t memRead(io_stream *stream, void *dest, int32_t bytes);

/**
 * Writes bytes to a memory block, as the back end of a stream. The block does not grow.
 *
 * @param stream  a stream whose `handle` is the address of an io_memory
 * @param source  the bytes
 * @param bytes   how many
 * @return bytes written; fewer where the block ends, 0 when it is full
 * @see memRead(), memSeek(), fileWrite(), ioWrite()
 */
TESSEL_API int32_t memWrite(io_stream *stream, const void *source, int32_t bytes);

/**
 * Moves the position in a memory block, as the back end of a stream.
 *
 * @param stream  a stream whose `handle` is the address of an io_memory
 * @param offset  bytes
 * @param whence  IO_FROM_START, IO_FROM_END; any other value moves from the current position
 * @return the new position; -1 for one outside of 0 to the block's size, which moves nothing
 * @see memRead(), memWrite(), fileSeek(), ioSeek()
 */
TESSEL_API int32_t memSeek(io_stream *stream, int32_t offset, int32_t whence);

/**
 * Opens a file and stores its descriptor in a stream's `handle`. Nothing else of the stream is
 * filled in; a buffer that it has from an earlier use is emptied. The descriptor is not inherited
 * by programs that this one starts.
 *
 * @param stream  the stream
 * @param path    the file's path
 * @param flags   FILE_READ, FILE_WRITE or both. With FILE_READ alone the path must name something
 *                that exists and is no directory. With FILE_WRITE a path that exists is refused
 *                unless FILE_EXISTING is set, and a new file is made with read and write
 *                permission for its owner alone
 * @return 1, or 0 when the file could not be opened or the flags or the path were refused; `handle`
 *         is -1 when the system's open itself failed, and unchanged when the flags or the path were
 *         refused before it
 * @see fileClose(), fileRead(), fileWrite(), fileSeek()
 */
TESSEL_API int32_t fileOpen(io_stream *stream, const char *path, uint32_t flags);

/**
 * Flushes a stream's buffer and closes its file. The buffer stays, and `handle` keeps its value.
 *
 * @param stream  a stream; one whose `handle` is 0 has nothing to close
 * @return 1; 0 when the pending bytes could not be written, and then the file stays open, or when
 *         the system could not close it
 * @see fileOpen(), ioFlushBuffer(), ioFreeBuffer()
 */
TESSEL_API int32_t fileClose(io_stream *stream);

/**
 * Reads bytes from a file, as the back end of a stream.
 *
 * @param stream  a stream whose `handle` is a descriptor
 * @param dest    where to store
 * @param bytes   how many at most
 * @return bytes read, which may be fewer; 0 at the end of the file, -1 on failure
 * @see fileWrite(), fileSeek(), fileOpen(), memRead(), ioRead()
 */
TESSEL_API int32_t fileRead(io_stream *stream, void *dest, int32_t bytes);

/**
 * Writes bytes to a file, as the back end of a stream.
 *
 * @param stream  a stream whose `handle` is a descriptor
 * @param source  the bytes
 * @param bytes   how many
 * @return bytes written, which may be fewer; -1 on failure
 * @see fileRead(), fileSeek(), fileOpen(), memWrite(), ioWrite()
 */
TESSEL_API int32_t fileWrite(io_stream *stream, const void *source, int32_t bytes);

/**
 * Moves the position in a file, as the back end of a stream.
 *
 * @param stream  a stream whose `handle` is a descriptor
 * @param offset  bytes
 * @param whence  IO_FROM_START, IO_FROM_CURRENT or IO_FROM_END
 * @return the new position. -1 when the system refused the move or the position does not fit a
 *         signed 32-bit number; the position is then what it was. Reading and writing go on past
 *         2 GiB all the same
 * @see fileRead(), fileWrite(), memSeek(), ioSeek()
 */
TESSEL_API int32_t fileSeek(io_stream *stream, int32_t offset, int32_t whence);

typedef struct file_positions file_positions;

/** A flag of fileCopy() beside those of fileOpen(). */
enum {
    FILE_TELL_POSITIONS = 0x1000 /**< tell at `context` where the copy begins */
};

/** Results of fileCopy() beside those of ioTransfer(). */
enum {
    FILE_NO_SOURCE = -1035, /**< the source could not be opened */
    FILE_NO_TARGET = -1036  /**< the target could not be opened */
};

/** Where a copy begins; the caller's, which may have fields behind these. */
struct file_positions {
    int32_t targetOffset; /**< library: where writing begins in the target */
    int32_t sourceOffset; /**< library: where reading begins in the source */
};

/**
 * Copies a file, or a stretch of it, into another one. Both positions below 0 continue a copy that
 * broke off: what the target does not have yet is appended to it.
 *
 * @param target          path of the file to write
 * @param source          path of the file to read, another one
 * @param targetPosition  where writing begins: above 0 an offset, 0 the start, below 0 the end
 * @param sourcePosition  where reading begins: above 0 an offset, 0 the start, below 0 the offset
 *                        at which writing begins
 * @param count           bytes to copy; 0 or below means all
 * @param buffer          memory to work in, or null for a block of its own
 * @param size            bytes of the buffer or the block, above 0
 * @param flags           FILE_EXISTING, FILE_TRUNCATE and FILE_READ for the target, as in
 *                        fileOpen(); FILE_TELL_POSITIONS
 * @param progress        told of the beginning and of each chunk, as by ioTransfer(), or null
 * @param context         passed on to `progress`. With FILE_TELL_POSITIONS the address of a
 *                        file_positions, which is written before the first call of `progress`
 * @return what ioTransfer() gave, 0 for a full copy; FILE_NO_SOURCE; FILE_NO_TARGET; IO_FAILED when
 *         a position could not be reached. Nothing stays open, and the target keeps what was
 *         written. A failure to close is not reported
 * @see ioTransfer(), fileOpen(), fileTrace()
 */
TESSEL_API int32_t fileCopy(const char *target, const char *source, int32_t targetPosition,
                            int32_t sourcePosition, int32_t count, void *buffer, int32_t size,
                            uint32_t flags, io_progress_proc progress, void *context);

typedef struct file_trace file_trace;

/** What a walk tells of the entry that it reports; the caller's, who may have fields behind it. */
struct file_trace {
    int32_t kind;     /**< library: FILE_TRACE_IS_FILE or FILE_TRACE_IS_DIRECTORY */
    const char *name; /**< library: the entry's name, without a path; holds for the callback */
};

/** Kinds of entries. */
enum {
    FILE_TRACE_IS_FILE = 0,     /**< anything that is no directory, or cannot be examined */
    FILE_TRACE_IS_DIRECTORY = 2 /**< a directory, or a link to one */
};

/** Flags of fileTrace(). */
enum {
    FILE_TRACE_ENTER = 0x1,      /**< walk into directories */
    FILE_TRACE_DIRECTORIES = 0x2 /**< report directories as well, each before it is entered */
};

/** The result of a callback of fileTrace(). */
enum {
    FILE_TRACE_GO_ON = 1 /**< lets the walk go on; anything else ends it */
};

/**
 * Takes an entry of a walk.
 *
 * @param fullPath  the entry's path, from the start of the walk on; holds for the call
 * @param record    the walk's record
 * @return FILE_TRACE_GO_ON, or anything else to end the walk
 */
typedef int32_t (*file_trace_proc)(const char *fullPath, file_trace *record);

/**
 * Walks over the entries of a directory and, with FILE_TRACE_ENTER, of all those below it.
 * Entries come in the system's order, and a directory is walked as soon as it comes up. Names that
 * begin with a full stop are passed over, and the start itself is not reported.
 *
 * The paths that are reported are joined as by strAppendDirectorySeparator(): below a start without
 * any slash with backslashes, on all systems. They can be opened all the same, see compat.h, save
 * what such joining leaves without a separator or with two readings: below a directory whose name
 * ends in a colon or backslash, or begins with a backslash. The walk itself is not led astray.
 *
 * A link to a directory counts as a directory. One that leads to a directory which the walk is just
 * in is not entered again. The depth of the tree costs memory and one open directory for each
 * level, never call stack.
 *
 * @param path      where to start; null means the current directory, and paths then begin with "."
 * @param callback  gets each entry
 * @param record    null, or the record that the callback gets. Its `kind` is FILE_TRACE_IS_FILE
 *                  afterwards, unless the callback ended the walk at a directory
 * @param flags     FILE_TRACE_ENTER, FILE_TRACE_DIRECTORIES
 * @return 1 after the whole walk; otherwise what the callback gave, or 0 when the start could not
 *         be opened or memory for an entry ran out. A directory that cannot be examined, or for
 *         which memory ran out, is reported as a file; one that cannot be listed counts as empty,
 *         or as ending where the listing fails
 * @see compat_opendir(), fileCopy(), strAppendDirectorySeparator()
 */
TESSEL_API int32_t fileTrace(const char *path, file_trace_proc callback, file_trace *record,
                             uint32_t flags);

#ifdef __cplusplus
}
#endif

#endif
