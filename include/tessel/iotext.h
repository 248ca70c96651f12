/**
 * @file
 * Text: a scanner that cuts commented, delimited text into items, quoted strings, and line ends.
 *
 * One call reads one item, in place, through an io_source: a stream's buffer or a memory block. On
 * the way the scanner skips leading white space, counts lines, passes over line comments and block
 * comments, folds every form of line end (line feed, carriage return, and either followed by the
 * other) into one line feed, copies the item, trims trailing white space and tells an optional
 * callback about each step. It allocates nothing and keeps nothing but the source's position and
 * the caller's io_text record, so scanning can go on after every result but -1.
 *
 * Characters are signed 8-bit values. The NUL character is a member of every set. A carriage return
 * in a set never matches, since every line end is tested as a line feed.
 *
 * A null record means a shared scratch record without comments and callback. Threads that scan at
 * the same time pass records of their own.
 *
 * The procedures for line ends stand beside the scanner and work on streams, with or without a
 * buffer. They call the back ends as ioRead() and ioFullWrite() of one character at a time would,
 * so without buffers each character costs a call.
 */
#ifndef TESSEL_IOTEXT_H
#define TESSEL_IOTEXT_H

#include "tessel/io.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct io_text io_text;

/** Results of the scanner and its front ends. */
enum {
    IOTEXT_STOPPED = 1,           /**< at a stop character, which `terminator` holds */
    IOTEXT_COMMENT = 2,           /**< a comment ended the scan; it is consumed */
    IOTEXT_END = 0,               /**< the input ended; there may be a last item */
    IOTEXT_FAILED = -1,           /**< the source failed */
    IOTEXT_TOO_LONG = -4,         /**< an item or string does not fit `dest` */
    IOTEXT_OTHER_TEXT = -100,     /**< other text came before the awaited character */
    IOTEXT_COMMENT_FAULT = -1025, /**< a block comment never closed, or closed but never opened */
    IOTEXT_CANCELLED = -1027,     /**< the callback stopped the scan */
    IOTEXT_STRING_FAULT = -1028   /**< a line end in a string, or the input ended inside it */
};

/** Mode bits of iotextRead(). Other bits are ignored. */
enum {
    IOTEXT_INVERTED = 0x01,    /**< stop in front of the first character not in `delimiters` */
    IOTEXT_CUT = 0x02,         /**< drop and count what does not fit, instead of failing */
    IOTEXT_NO_STOP = 0x04,     /**< stop at no character at all; wins over IOTEXT_INVERTED */
    IOTEXT_NO_COMMENTS = 0x08, /**< comment delimiters are ordinary text */
    IOTEXT_NO_SKIP = 0x10,     /**< do not skip leading white space */
    IOTEXT_SKIP_OTHERS = 0x20, /**< the leading skip spares the members of `delimiters` */
    IOTEXT_NO_TRIM = 0x40,     /**< do not trim trailing white space */
    IOTEXT_EACH_COMMENT = 0x80 /**< return IOTEXT_COMMENT for an empty item as well */
};

/** Events, as the callback receives them. The view of the source is held during the first four. */
enum {
    IOTEXT_ON_CHARACTER = 0,     /**< a character of an item or of the leading skip, or the line end
                                      of a line comment */
    IOTEXT_ON_STOP = 1,          /**< the stop character, consumed; never in an inverted scan */
    IOTEXT_ON_LINE_COMMENT = 2,  /**< a character of a line comment */
    IOTEXT_ON_BLOCK_COMMENT = 3, /**< a character of a block comment */
    IOTEXT_ON_LINE_OPEN = 4,     /**< a line comment opens; gets `line_comment` */
    IOTEXT_ON_LINE_CLOSE = 5,    /**< it has ended; gets a line feed, or null at the input's end */
    IOTEXT_ON_BLOCK_OPEN = 6,    /**< a block comment opens; gets `block_open` */
    IOTEXT_ON_BLOCK_CLOSE = 7    /**< it has closed; gets `block_close` */
};

/** Bits of `callback_flags`: which events are wanted. */
enum {
    IOTEXT_WANT_CHARACTERS = 0x01,     /**< IOTEXT_ON_CHARACTER */
    IOTEXT_WANT_STOPS = 0x02,          /**< IOTEXT_ON_STOP */
    IOTEXT_WANT_LINE_COMMENTS = 0x04,  /**< IOTEXT_ON_LINE_COMMENT */
    IOTEXT_WANT_BLOCK_COMMENTS = 0x08, /**< IOTEXT_ON_BLOCK_COMMENT */
    IOTEXT_WANT_LINE_BOUNDS = 0x10,    /**< IOTEXT_ON_LINE_OPEN and IOTEXT_ON_LINE_CLOSE */
    IOTEXT_WANT_BLOCK_BOUNDS = 0x20    /**< IOTEXT_ON_BLOCK_OPEN and IOTEXT_ON_BLOCK_CLOSE */
};

/** A result of the callback at IOTEXT_ON_CHARACTER. */
enum {
    IOTEXT_DROP = 2 /**< leave the character out of the item */
};

/** Flags of iotextReadString(). Other bits are ignored. */
enum {
    IOTEXT_KEEP_LINE_ESCAPES = 0x0001, /**< an escaped line end stays, instead of joining lines */
    IOTEXT_KEEP_ESCAPES = 0x0002,      /**< other escapes stay as they are written */
    IOTEXT_LINE_ENDS = 0x0004,         /**< line ends are legal and stored as line feeds */
    IOTEXT_SKIP_WHITE = 0x0008,        /**< skip white space before the string and each part */
    IOTEXT_TRIM_WHITE = 0x0010,        /**< trim white space behind each part and the string */
    IOTEXT_COMMENTS = 0x8000           /**< recognise comments inside the string */
};

/** Styles of line ends, as they are found and as iotextConvert() writes them. */
enum {
    IOTEXT_NO_STYLE = 0,   /**< as a result: failure */
    IOTEXT_LF = 1,         /**< line feed */
    IOTEXT_CR = 2,         /**< carriage return */
    IOTEXT_CRLF = 3,       /**< carriage return, line feed */
    IOTEXT_LF_FIRST = 4,   /**< a bit and no style of its own: the two characters change places */
    IOTEXT_LFCR = 7,       /**< line feed, carriage return */
    IOTEXT_NO_LINE_END = 8 /**< as a result: none seen; to be written: nothing */
};

/** A flag of iotextConvert(), beside the style. */
enum {
    IOTEXT_FROM_STRING = 0x10 /**< `input` is a string */
};

/**
 * Called for each wanted event. During the first four events it must leave the source alone.
 *
 * @param source     as given to the scan
 * @param text       the record in use; its `line` and `count` are not current during a scan, and
 *                   its delimiters must stay as they are. After the event `callback_flags` is read
 *                   again, but for a dropped character
 * @param event      which event
 * @param character  the character, or what the event says. At IOTEXT_ON_CHARACTER it may be changed
 *                   for the item; it is not tested again
 * @return IOTEXT_CANCELLED to stop the scan; IOTEXT_DROP at a character of an item; anything else
 *         goes on
 */
typedef int32_t (*io_text_proc)(const io_source *source, io_text *text, int32_t event,
                                char *character);

/**
 * The scanner's record. The caller clears it, gives it the delimiters it wants and passes the same
 * record for item after item. A delimiter is compared over its length and may hold NUL characters.
 */
struct io_text {
    int32_t line;                /**< both: line ends passed; the caller chooses the start */
    int32_t line_comment_length; /**< caller: 0 for no line comments */
    int32_t block_open_length;   /**< caller: 0 for no block comments */
    int32_t block_close_length;  /**< caller: 0 only without block comments */
    const char *line_comment;    /**< caller: opens a line comment */
    const char *block_open;      /**< caller: opens a block comment */
    const char *block_close;     /**< caller: closes a block comment */
    io_text_proc callback;       /**< caller: may be null while `callback_flags` is 0 */
    uintptr_t callback_data;     /**< caller: for the callback; the library leaves it alone */
    uint32_t callback_flags;     /**< caller and callback: the events wanted */
    int16_t terminator;          /**< scanner: the stop character, sign-extended; after any other
                                      result than IOTEXT_STOPPED it means nothing */
    int32_t error_line;          /**< scanner: line of the last comment fault */
    int32_t count;               /**< scanner: length of the last item */
};

/**
 * Reads one item of text.
 *
 * The item ends at a stop character, which is consumed (in an inverted scan it stays unread), at a
 * comment, which is consumed with its line end or close delimiter, or at the end of the input. A
 * comment delimiter wins over a stop character. A comment before any text is passed over.
 *
 * @param source      the input
 * @param delimiters  the stop set, or null for white space
 * @param dest        where the item goes, NUL-terminated and trimmed; null only counts it
 * @param size        room at `dest`, terminator included, at least 1; not looked at without `dest`
 * @param mode        mode bits, IOTEXT_INVERTED to IOTEXT_EACH_COMMENT
 * @param text        the record, or null for none
 * @return IOTEXT_STOPPED, IOTEXT_COMMENT or IOTEXT_END with the item in `dest` and its length in
 *         `count`, which with IOTEXT_CUT may exceed the room; the end of the input with a `count`
 *         of 0 means no item. IOTEXT_TOO_LONG with what fitted; the first character that did not
 *         is lost. IOTEXT_COMMENT_FAULT with the item before it; `error_line` is the line of a
 *         stray close delimiter, or the last line where a comment is open at the end.
 *         IOTEXT_CANCELLED with the item so far. All of these write `line` and `count`, a cancelled
 *         block comment without its own lines, and leave the source just behind what was consumed.
 *         IOTEXT_FAILED when the source failed or the callback stopped the leading skip: `dest` may
 *         lack its terminator and `count` its meaning. A stream that fails right behind the first
 *         characters of a delimiter, and fails once more when asked again (its read, or the growth
 *         of its buffer), counts as ended there; the next scan meets a failure that lasts
 * @see iotextSleep(), iotextWait(), iotextObserve(), iotextReadString(), ioLockBuffer(),
 *      ioLockMemory()
 */
TESSEL_API int32_t iotextRead(const io_source *source, const char *delimiters, char *dest,
                              int32_t size, uint32_t mode, io_text *text);

/**
 * Passes over text and comments up to and including the next stop character.
 *
 * @param source      the input
 * @param delimiters  the stop set, or null for white space
 * @param text        the record, or null for none
 * @return IOTEXT_STOPPED with the stop character in `terminator`, IOTEXT_END where there is none,
 *         or a failure of iotextRead(): IOTEXT_FAILED, IOTEXT_COMMENT_FAULT, IOTEXT_CANCELLED
 * @see iotextWait(), iotextObserve(), iotextRead()
 */
TESSEL_API int32_t iotextSleep(const io_source *source, const char *delimiters, io_text *text);

/**
 * Passes over white space and comments up to and including the next stop character. It demands
 * that nothing else comes before that.
 *
 * @param source      the input
 * @param delimiters  the stop set, or null for white space
 * @param text        the record, or null for none
 * @return IOTEXT_STOPPED with the stop character in `terminator`, IOTEXT_END where there is none,
 *         or IOTEXT_OTHER_TEXT, with that text consumed and what ended it; otherwise a failure of
 *         iotextRead(): IOTEXT_FAILED, IOTEXT_COMMENT_FAULT, IOTEXT_CANCELLED
 * @see iotextSleep(), iotextObserve(), iotextRead()
 */
TESSEL_API int32_t iotextWait(const io_source *source, const char *delimiters, io_text *text);

/**
 * Passes over white space, delimiters and comments, up to the first other character. White space
 * goes first, then members of `delimiters` and comments. The other character stays unread and lies
 * in `terminator`.
 *
 * @param source      the input
 * @param delimiters  the set to pass over, or null for white space
 * @param text        the record, or null for none
 * @return IOTEXT_STOPPED, IOTEXT_END where there is no other character, or a failure of
 *         iotextRead(): IOTEXT_FAILED, IOTEXT_COMMENT_FAULT, IOTEXT_CANCELLED
 * @see iotextSleep(), iotextWait(), iotextRead()
 */
TESSEL_API int32_t iotextObserve(const io_source *source, const char *delimiters, io_text *text);

/**
 * Reads a quoted string. The escapes are \\0, \\\\, \\n, \\r and \\t; before any other character a
 * backslash stands for that character, and before a line end it joins two lines.
 *
 * @param source  the input
 * @param dest    where the string goes, NUL-terminated; not null
 * @param size    room at `dest`, terminator included, at least 1
 * @param open    the opening quote, which may be preceded by white space and comments; 0 for none
 * @param close   the closing quote, which is consumed; it may equal `open`
 * @param last    a character that the caller has read already; if it equals `open`, the opening
 *                quote counts as consumed
 * @param flags   IOTEXT_KEEP_LINE_ESCAPES, IOTEXT_KEEP_ESCAPES, IOTEXT_LINE_ENDS,
 *                IOTEXT_SKIP_WHITE, IOTEXT_TRIM_WHITE, IOTEXT_COMMENTS
 * @param text    the record, or null for none
 * @return IOTEXT_STOPPED with the string in `dest` and its length in `count`. IOTEXT_END when the
 *         input ended before the opening quote or, with `open` 0, anywhere: `dest` then holds the
 *         whole text, `count` the length of its last part. IOTEXT_OTHER_TEXT from the wait for the
 *         opening quote. IOTEXT_STRING_FAULT for a line end in the string without IOTEXT_LINE_ENDS,
 *         or for the input's end inside a string with an `open`. IOTEXT_TOO_LONG, IOTEXT_FAILED
 *         (also where the input ends within two characters behind a backslash),
 *         IOTEXT_COMMENT_FAULT and IOTEXT_CANCELLED as from iotextRead(). `dest` keeps what was
 *         stored, terminated but for IOTEXT_FAILED; what ended the wait for the opening quote left
 *         it untouched. Nothing is undone, so the source stands where the failure was found, and
 *         just behind the backslash of an escape that did not fit. `count` is the string's length
 *         after IOTEXT_STOPPED alone, and `line` does not count escaped line ends
 * @see iotextRead(), iotextWait()
 */
TESSEL_API int32_t iotextReadString(const io_source *source, char *dest, int32_t size, char open,
                                    char close, char last, uint32_t flags, io_text *text);

/**
 * Tells the style of a stream's first line end. It reads up to the first line feed or carriage
 * return and one character more, if there is one, which may belong to the next line; a caller that
 * wants the text from its start seeks back.
 *
 * @param stream  the stream
 * @param length  receives the number of characters read; or null
 * @return IOTEXT_LF, IOTEXT_CR, IOTEXT_CRLF, IOTEXT_LFCR, or IOTEXT_NO_LINE_END at the end of a
 *         text that has none. IOTEXT_NO_STYLE when a read failed; `length` is written then if no
 *         line end had come yet. The stream stands where that read left it
 * @see iotextConvert()
 */
TESSEL_API int32_t iotextFormat(io_stream *stream, int32_t *length);

/**
 * Copies text and writes every line end in one style.
 *
 * The first character of a run of line feeds and carriage returns sets the pattern of the run: each
 * further one of the same kind is a line end, and the others are dropped as second halves. So two
 * carriage returns are two line ends, and a carriage return with two line feeds is one.
 *
 * @param out    the stream written to; a buffer is not flushed at the end
 * @param input  an io_stream, which is read to its end; or with IOTEXT_FROM_STRING a NUL-terminated
 *               string. In a stream a NUL is a character like others
 * @param flags  in the low three bits the style to write. 0 and 4 drop line ends, as
 *               IOTEXT_NO_LINE_END does, 5 is IOTEXT_CR and 6 IOTEXT_LF. IOTEXT_FROM_STRING for a
 *               string. Other bits are ignored
 * @return what the text has: IOTEXT_LF or IOTEXT_CR for one of the two characters alone;
 *         IOTEXT_CRLF or IOTEXT_LFCR for both, in pairs or apart, in the order in which they first
 *         appear; IOTEXT_NO_LINE_END for neither. IOTEXT_NO_STYLE when a read failed, with all text
 *         before it written, or when a write failed, which ends the copy at once
 * @see iotextWrite(), iotextFormat(), ioTransfer()
 */
TESSEL_API int32_t iotextConvert(io_stream *out, const void *input, uint32_t flags);

/**
 * Writes a string to a stream, with every line end in one style. It does as iotextConvert() does.
 *
 * @param out    the stream written to; a buffer is not flushed at the end
 * @param text   a NUL-terminated string
 * @param flags  in the low three bits the style to write, as for iotextConvert();
 *               IOTEXT_FROM_STRING is understood
 * @return 1, also for an empty string; 0 when a write failed, which ends the copy at once
 * @see iotextConvert(), iotextWriteString()
 */
TESSEL_API int32_t iotextWrite(io_stream *out, const char *text, uint32_t flags);

/**
 * Writes a string to a stream as it is, without its NUL.
 *
 * @param out   the stream written to; a buffer is not flushed at the end
 * @param text  a NUL-terminated string
 * @return 1; 0 when not all of it went, and for an empty string or one of 2 to the 31st characters
 *         or more, which are not written
 * @see iotextWrite(), ioWriteString()
 */
TESSEL_API int32_t iotextWriteString(io_stream *out, const char *text);

#ifdef __cplusplus
}
#endif

#endif
