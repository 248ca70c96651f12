#include "tessel/iotext.h"

#include "tessel/string.h"

#include "bytes.h"
#include "char_run.h"
#include "char_set.h"
#include "io_internal.h"
#include "iotext_internal.h"

#include <stddef.h>
#include <string.h>

static_assert(offsetof(io_text, line_comment_length) == 4 &&
              offsetof(io_text, block_open_length) == 8 &&
              offsetof(io_text, block_close_length) == 12);
static_assert(offsetof(io_text, line_comment) == 16 &&
              offsetof(io_text, block_open) == 16 + pointer_size &&
              offsetof(io_text, block_close) == 16 + 2 * pointer_size &&
              offsetof(io_text, callback) == 16 + 3 * pointer_size &&
              offsetof(io_text, callback_data) == 16 + 4 * pointer_size &&
              offsetof(io_text, callback_flags) == 16 + 5 * pointer_size);
static_assert(offsetof(io_text, terminator) == 20 + 5 * pointer_size &&
              offsetof(io_text, error_line) == 24 + 5 * pointer_size &&
              offsetof(io_text, count) == 28 + 5 * pointer_size &&
              sizeof(io_text) == 32 + 5 * pointer_size);

// Scratch for all scans without a record; it never gets delimiters or a callback.
static io_text io_text_default;

// A scan that ends at once: the source failed, and neither the item nor the record is completed.
static constexpr int32_t scan_broken = INT32_MIN;

// A step that does not end the scan.
static constexpr int32_t scan_on = INT32_MAX;

static constexpr char_set no_characters = {};

// One scan. A view of the source is held while `cursor` is not null.
struct text_scan {
    const io_source *source; // the caller's record, for the callback
    io_source access;        // its procedures, as they were at the start
    io_text *text;
    const char *cursor; // the next character of the view
    int32_t available;  // characters of the view from the cursor on
    int32_t line;       // line ends passed
    uint32_t events;    // the events that the callback wants
    uint32_t mode;      // mode bits
    char_run run;       // ends at stops, which a line end is as a line feed, and at delimiters
    char_halts halts;   // of the run, when they are found
    char *dest;         // the item's room, or null
    int64_t capacity;   // characters that fit
    int64_t count;      // characters of the item so far
};

// Views

static void release_view(text_scan &scan)
{
    if (scan.cursor)
        scan.access.unlock(scan.access.context, scan.cursor);
    scan.cursor = nullptr;
    scan.available = 0;
}

// Moves on to the next view; one of no characters means the end of the input.
static bool next_view(text_scan &scan)
{
    release_view(scan);
    void *const view =
        scan.access.lock(scan.access.context, reinterpret_cast<intptr_t>(&scan.available),
                         IO_LOCK_READ | IO_LOCK_THERE);
    scan.cursor = static_cast<const char *>(view);
    return view != nullptr;
}

static void advance(text_scan &scan, int32_t characters)
{
    scan.cursor += characters;
    scan.available -= characters;
}

enum class lookahead { enough, ended, broken };

// Opens a view of at least `minimum` characters in place of this one. None when the source failed, the
// input ended, or it is slow in coming.
static bool widen_view(text_scan &scan, int32_t minimum)
{
    scan.access.unlock(scan.access.context, scan.cursor);
    int32_t visible = minimum;
    void *const view = scan.access.lock(scan.access.context, reinterpret_cast<intptr_t>(&visible),
                                        IO_LOCK_READ | IO_LOCK_AT_LEAST);
    scan.cursor = static_cast<const char *>(view);
    scan.available = view ? visible : 0;
    return view != nullptr;
}

// Makes at least `minimum` characters visible.
static lookahead look_ahead(text_scan &scan, int32_t minimum)
{
    for (;;) {
        const int32_t before = scan.available;
        if (widen_view(scan, minimum))
            return lookahead::enough;
        if (!next_view(scan) || scan.available == 0)
            return lookahead::broken;
        if (scan.available > before)
            continue;
        // A buffer that still holds some looks alike behind a failure and at the end. But where more
        // comes after all, the input had not ended.
        if (widen_view(scan, before + 1)) {
            release_view(scan);
            return lookahead::broken;
        }
        return next_view(scan) && scan.available > 0 ? lookahead::ended : lookahead::broken;
    }
}

// Events

static uint32_t wanted_events(const io_text *text)
{
    return text->callback ? text->callback_flags : 0;
}

static int32_t raise(text_scan &scan, int32_t event, uint32_t wanted, const char *character)
{
    if (!(scan.events & wanted))
        return 0;
    // Delimiters are handed over as they are; the callback has no business changing them.
    const int32_t answer =
        scan.text->callback(scan.source, scan.text, event, const_cast<char *>(character));
    if (event != IOTEXT_ON_CHARACTER || answer != IOTEXT_DROP)
        scan.events = wanted_events(scan.text);
    return answer;
}

// Line ends

const char *io_text_skip_lineend(const io_source *source, const char *cursor, int32_t *available)
{
    const char first = cursor[-1];
    int32_t visible = *available;
    if (visible == 0) {
        source->unlock(source->context, cursor);
        void *const view = source->lock(source->context, reinterpret_cast<intptr_t>(&visible),
                                        IO_LOCK_READ | IO_LOCK_THERE);
        cursor = static_cast<const char *>(view);
        if (!view || visible == 0)
            return cursor;
    }
    const bool pair = is_line_end(*cursor) && *cursor != first;
    *available = pair ? visible - 1 : visible;
    return pair ? cursor + 1 : cursor;
}

// Consumes a line end in whichever form it comes. False when the source failed.
static bool pass_line_end(text_scan &scan)
{
    advance(scan, 1);
    scan.cursor = io_text_skip_lineend(&scan.access, scan.cursor, &scan.available);
    return scan.cursor != nullptr;
}

// Comments

// The first character of a delimiter, or NUL where there is none.
static uint32_t first_of(const char *delimiter, int32_t length)
{
    return delimiter && length > 0 ? static_cast<unsigned char>(*delimiter) : 0;
}

// A run inside a comment, with its halts: up to a line end or one more character.
static char_run comment_run(char_halts &halts, uint32_t other)
{
    begin_halts(halts, '\r', other, 0, 0);
    return {&no_characters, {other, 0, 0}, &halts};
}

// Brings the next character of a comment to the cursor: one that ends its runs, or any where the
// callback wants them.
static lookahead next_in_comment(text_scan &scan, const char_run &run, uint32_t wanted)
{
    for (;;) {
        if (scan.available == 0 && !next_view(scan))
            return lookahead::broken;
        if (scan.available == 0)
            return lookahead::ended;
        if (scan.events & wanted)
            return lookahead::enough;
        advance(scan, ordinary_length(run, scan.cursor, scan.available));
        if (scan.available > 0)
            return lookahead::enough;
    }
}

[[gnu::noinline]] static int32_t scan_line_comment(text_scan &scan)
{
    io_text *const text = scan.text;
    if (raise(scan, IOTEXT_ON_LINE_OPEN, IOTEXT_WANT_LINE_BOUNDS, text->line_comment) ==
        IOTEXT_CANCELLED)
        return IOTEXT_CANCELLED;

    char_halts halts;
    const char_run run = comment_run(halts, 0);
    char line_feed[] = "\n";
    const char *closed_by = nullptr;
    while (!closed_by) {
        const lookahead next = next_in_comment(scan, run, IOTEXT_WANT_LINE_COMMENTS);
        if (next == lookahead::broken)
            return scan_broken;
        if (next == lookahead::ended)
            break;
        char ch = *scan.cursor;
        if (!is_line_end(ch)) {
            advance(scan, 1);
            if (raise(scan, IOTEXT_ON_LINE_COMMENT, IOTEXT_WANT_LINE_COMMENTS, &ch) ==
                IOTEXT_CANCELLED)
                return IOTEXT_CANCELLED;
            continue;
        }
        ch = '\n';
        if (raise(scan, IOTEXT_ON_CHARACTER, IOTEXT_WANT_CHARACTERS, &ch) == IOTEXT_CANCELLED) {
            advance(scan, 1);
            return IOTEXT_CANCELLED;
        }
        scan.line = wrap_add(scan.line, 1);
        if (!pass_line_end(scan))
            return IOTEXT_FAILED;
        closed_by = line_feed;
    }
    release_view(scan);
    if (raise(scan, IOTEXT_ON_LINE_CLOSE, IOTEXT_WANT_LINE_BOUNDS, closed_by) == IOTEXT_CANCELLED)
        return IOTEXT_CANCELLED;
    return IOTEXT_COMMENT;
}

enum class match { yes, no, ended, broken };

// Compares a delimiter with the input at the cursor and consumes it where it stands there. Only
// behind a first character that is the same the rest is looked at.
static match pass_delimiter(text_scan &scan, const char *delimiter, int32_t length)
{
    if (!delimiter || length <= 0 || *delimiter != *scan.cursor)
        return match::no;
    if (scan.available < length) {
        const lookahead outcome = look_ahead(scan, length);
        if (outcome != lookahead::enough)
            return outcome == lookahead::ended ? match::ended : match::broken;
    }
    for (int32_t i = 1; i < length; i++) {
        if (scan.cursor[i] != delimiter[i])
            return match::no;
    }
    advance(scan, length);
    release_view(scan);
    return match::yes;
}

static int32_t comment_fault(text_scan &scan)
{
    scan.text->error_line = scan.line;
    return IOTEXT_COMMENT_FAULT;
}

// The lines of a block comment count only when it ends, so `pending` holds them until then.
[[gnu::noinline]] static int32_t scan_block_comment(text_scan &scan)
{
    io_text *const text = scan.text;
    if (raise(scan, IOTEXT_ON_BLOCK_OPEN, IOTEXT_WANT_BLOCK_BOUNDS, text->block_open) ==
        IOTEXT_CANCELLED)
        return IOTEXT_CANCELLED;

    char_halts halts;
    const char_run run = comment_run(halts, first_of(text->block_close, text->block_close_length));
    int32_t pending = 0;
    for (;;) {
        const lookahead next = next_in_comment(scan, run, IOTEXT_WANT_BLOCK_COMMENTS);
        if (next == lookahead::broken)
            return scan_broken;
        if (next == lookahead::ended)
            break;
        char ch = *scan.cursor;
        if (is_line_end(ch)) {
            pending = wrap_add(pending, 1);
            if (!pass_line_end(scan))
                return IOTEXT_FAILED;
            ch = '\n';
        } else {
            const match outcome = pass_delimiter(scan, text->block_close, text->block_close_length);
            if (outcome == match::broken)
                return scan_broken;
            if (outcome == match::ended)
                break;
            if (outcome == match::yes) {
                scan.line = wrap_add(scan.line, pending);
                const int32_t answer =
                    raise(scan, IOTEXT_ON_BLOCK_CLOSE, IOTEXT_WANT_BLOCK_BOUNDS, text->block_close);
                return answer == IOTEXT_CANCELLED ? IOTEXT_CANCELLED : IOTEXT_COMMENT;
            }
            advance(scan, 1);
        }
        if (raise(scan, IOTEXT_ON_BLOCK_COMMENT, IOTEXT_WANT_BLOCK_COMMENTS, &ch) ==
            IOTEXT_CANCELLED)
            return IOTEXT_CANCELLED;
    }
    scan.line = wrap_add(scan.line, pending);
    return comment_fault(scan);
}

// Text

// Sign-extended, whatever plain char is here.
static void set_terminator(io_text *text, char ch)
{
    const auto character = static_cast<signed char>(ch);
    text->terminator = character; // NOLINT(bugprone-signed-char-misuse,cert-str34-c)
}

// Tries the three delimiters at the cursor. Where one stands there, the result is that of what it
// opens; otherwise the scan goes on, perhaps in another view.
[[gnu::noinline]] static int32_t scan_delimiter(text_scan &scan)
{
    if (scan.mode & IOTEXT_NO_COMMENTS)
        return scan_on;
    const io_text *const text = scan.text;
    const struct {
        const char *delimiter;
        int32_t length;
        int32_t (*scan)(text_scan &);
    } known[] = {{text->line_comment, text->line_comment_length, scan_line_comment},
                 {text->block_open, text->block_open_length, scan_block_comment},
                 {text->block_close, text->block_close_length, comment_fault}};
    for (const auto &[delimiter, length, scan_behind] : known) {
        const match outcome = pass_delimiter(scan, delimiter, length);
        if (outcome == match::yes)
            return scan_behind(scan);
        if (outcome == match::broken)
            return scan_broken;
        if (outcome == match::ended)
            return scan_on;
    }
    return scan_on;
}

// Where an item may end: at stops and at `others`, which begin delimiters. False when there are too
// many places.
static bool find_halts(char_halts &halts, const char *delimiters, const uint32_t *others)
{
    begin_halts(halts, delimiters ? '\r' : ' ', others[0], others[1], others[2]);
    if (!delimiters)
        return true;
    while (*delimiters && add_halt(halts, *delimiters))
        delimiters++;
    return *delimiters == '\0';
}

// Moves the ordinary characters at the cursor at once. A full room ends the run, and the character
// that does not fit is left for the step that knows what to do with it.
static void take_run(text_scan &scan)
{
    const bool counted_only = !scan.dest || (scan.mode & IOTEXT_CUT && scan.count >= scan.capacity);
    int32_t run;
    if (counted_only) {
        run = ordinary_length(scan.run, scan.cursor, scan.available);
    } else {
        const int64_t room = scan.capacity - scan.count;
        const int32_t limit = room < scan.available ? static_cast<int32_t>(room) : scan.available;
        run = copy_ordinary(scan.run, scan.dest + scan.count, scan.cursor, limit);
    }
    scan.count += run;
    advance(scan, run);
}

// Adds one character to the item. False when it does not fit and may not be dropped.
static bool take_character(text_scan &scan, char ch)
{
    if (scan.dest) {
        if (scan.count < scan.capacity)
            scan.dest[scan.count] = ch;
        else if (!(scan.mode & IOTEXT_CUT))
            return false;
    }
    scan.count++;
    return true;
}

// Takes the character at the cursor, whatever it is.
static int32_t scan_character(text_scan &scan)
{
    char ch = *scan.cursor;
    if (char_run_ends_at_other(scan.run, ch)) {
        const int32_t result = scan_delimiter(scan);
        if (result != scan_on)
            return result;
    }

    // The stop is known before the character is consumed, so that an inverted scan has nothing to
    // put back: a line end could not be, once its view is gone.
    const bool line_end = is_line_end(ch);
    if (line_end)
        ch = '\n';
    const bool stop = char_set_has(*scan.run.set, ch);
    if (stop && scan.mode & IOTEXT_INVERTED) {
        set_terminator(scan.text, ch);
        return IOTEXT_STOPPED;
    }
    if (line_end) {
        scan.line = wrap_add(scan.line, 1);
        if (!pass_line_end(scan))
            return IOTEXT_FAILED;
    } else {
        advance(scan, 1);
    }
    if (stop) {
        set_terminator(scan.text, ch);
        const int32_t answer = raise(scan, IOTEXT_ON_STOP, IOTEXT_WANT_STOPS, &ch);
        return answer == IOTEXT_CANCELLED ? IOTEXT_CANCELLED : IOTEXT_STOPPED;
    }

    const int32_t answer = raise(scan, IOTEXT_ON_CHARACTER, IOTEXT_WANT_CHARACTERS, &ch);
    if (answer == IOTEXT_CANCELLED)
        return IOTEXT_CANCELLED;
    if (answer != IOTEXT_DROP && !take_character(scan, ch))
        return IOTEXT_TOO_LONG;
    return scan_on;
}

// Goes on from a view that was just opened; one of no characters is the end of the input. The first
// character comes before the first run: where a comment begins, no run is taken at all.
static int32_t scan_text(text_scan &scan)
{
    while (scan.available > 0) {
        const int32_t result = scan_character(scan);
        if (result != scan_on)
            return result;
        if (scan.available > 0 && !(scan.events & IOTEXT_WANT_CHARACTERS))
            take_run(scan);
        if (scan.available == 0 && !next_view(scan))
            return scan_broken;
    }
    return IOTEXT_END;
}

// The arguments of a scan.
struct text_call {
    const io_source *source;
    const char *delimiters;
    char *dest;
    int32_t size;
    uint32_t mode;
    io_text *text;
};

// Terminates and trims an item. The result is the number of characters that are left.
static int32_t end_item(char *dest, int32_t stored, uint32_t mode)
{
    char *const end = dest + stored;
    *end = '\0';
    if (mode & IOTEXT_NO_TRIM || stored == 0 || !char_set_has(white_set, end[-1]))
        return stored;
    const int32_t kept =
        strBackwardTokenIndex(end, stored, str_white_char, STR_COMPLEMENT | STR_FROM_END);
    if (kept < 0)
        return stored;
    dest[kept] = '\0';
    return kept;
}

// Plain items

// White space at the start of a view.
struct white_run {
    int32_t length;
    int32_t count; // of characters, each line end as one
    int32_t lines;
};

// The white space that leads up to a character in the same view, or a part of it.
static white_run find_white(const char *view, int32_t available)
{
    white_run white = {0, 0, 0};
    for (;;) {
        const int32_t blanks = blank_length(view + white.length, available - white.length);
        white.length += blanks;
        white.count += blanks;
        if (available - white.length < 2 || !is_line_end(view[white.length]))
            return white;
        const char first = view[white.length++];
        white.length += is_line_end(view[white.length]) && view[white.length] != first;
        white.count++;
        white.lines++;
    }
}

static bool is_stop(const char *delimiters, char c)
{
    if (!delimiters)
        return char_set_has(white_set, c);
    while (*delimiters && *delimiters != c)
        delimiters++;
    return *delimiters == c;
}

static bool has_white(const char *delimiters)
{
    for (const char *c = str_white_char; *c; c++) {
        if (is_stop(delimiters, *c))
            return true;
    }
    return false;
}

static void find_others(uint32_t *others, const io_text *text, uint32_t mode)
{
    others[0] = others[1] = others[2] = 0;
    if (mode & IOTEXT_NO_COMMENTS)
        return;
    others[0] = first_of(text->line_comment, text->line_comment_length);
    others[1] = first_of(text->block_open, text->block_open_length);
    others[2] = first_of(text->block_close, text->block_close_length);
}

// An item that lies in the view as a whole, with white space in front of it, the stop behind it and
// one character more.
struct plain_item {
    white_run white;
    const char *text;
    int32_t length;
    int32_t available; // characters of the view from the text on
    const char *end;   // behind the stop
    char stop;
    bool line_end;
};

static bool delimiter_begins(const char *delimiter, int32_t length, const char *at, int32_t visible)
{
    if (!delimiter || length <= 0 || *delimiter != *at)
        return false;
    return length > visible || memcmp(delimiter, at, static_cast<uint32_t>(length)) == 0;
}

// Whether a comment opens or closes here, or may do so behind the view.
static bool comment_begins(const io_text &text, const char *at, int32_t visible)
{
    return delimiter_begins(text.line_comment, text.line_comment_length, at, visible) ||
           delimiter_begins(text.block_open, text.block_open_length, at, visible) ||
           delimiter_begins(text.block_close, text.block_close_length, at, visible);
}

// Finds the first character that ends the item. False where a comment may begin before, or where the
// item does not fit the view or the room.
static bool find_item_end(plain_item &item, const text_call &call, const char_halts &halts,
                          const uint32_t *others)
{
    // No further than it takes to see that an item does not fit: what is left is read again.
    int32_t limit = item.available;
    if (call.dest && call.size < limit - char_block_size)
        limit = call.size + char_block_size;
    item.length = 0;
    for (;; item.length++) {
        item.length += halt_length(halts, item.text + item.length, limit - item.length);
        if (item.length >= item.available - 1 || (call.dest && item.length >= call.size))
            return false;
        const char *const at = item.text + item.length;
        const uint32_t code = static_cast<unsigned char>(*at);
        if (code != others[0] && code != others[1] && code != others[2])
            return true;
        if (comment_begins(*call.text, at, item.available - item.length))
            return false;
        if (is_line_end(*at) || is_stop(call.delimiters, *at))
            return true;
    }
}

static bool find_plain_item(plain_item &item, const text_call &call, const char *view,
                            int32_t available)
{
    if (call.mode & (IOTEXT_INVERTED | IOTEXT_NO_STOP) ||
        wanted_events(call.text) & (IOTEXT_WANT_CHARACTERS | IOTEXT_WANT_STOPS))
        return false;
    uint32_t others[3];
    char_halts halts;
    find_others(others, call.text, call.mode);
    if (!find_halts(halts, call.delimiters, others))
        return false;

    item.white = {0, 0, 0};
    const bool skip = !(call.mode & IOTEXT_NO_SKIP);
    if (skip && available > 0 && char_set_has(white_set, *view)) {
        if (call.mode & IOTEXT_SKIP_OTHERS && has_white(call.delimiters))
            return false;
        item.white = find_white(view, available);
    }
    item.text = view + item.white.length;
    item.available = available - item.white.length;
    // The skip may not have come to its end.
    if (skip && item.available > 0 && char_set_has(white_set, *item.text))
        return false;
    if (!find_item_end(item, call, halts, others))
        return false;

    const char c = item.text[item.length];
    item.end = item.text + item.length + 1;
    item.line_end = is_line_end(c);
    if (item.line_end)
        item.end += is_line_end(*item.end) && *item.end != c;
    item.stop = item.line_end ? '\n' : c;
    return is_stop(call.delimiters, item.stop);
}

static void take_plain_item(const plain_item &item, const text_call &call, const io_source &access)
{
    io_text *const text = call.text;
    if (!(call.mode & IOTEXT_NO_SKIP)) {
        text->line = wrap_add(text->line, item.white.lines);
        text->count = item.white.count;
    }
    set_terminator(text, item.stop);
    if (call.dest) {
        // The block that the item ends in is mostly the view's and the room's as a whole.
        const int32_t last = item.length | (char_block_size - 1);
        if (last < item.available && last < call.size)
            copy_front(call.dest, item.text, item.length);
        else
            memmove(call.dest, item.text, static_cast<uint32_t>(item.length));
    }
    access.unlock(access.context, item.end);
    text->count = item.length;
    if (call.dest) {
        // Where white space stops the scan, none is left to trim.
        const uint32_t mode = call.delimiters ? call.mode : call.mode | IOTEXT_NO_TRIM;
        text->count = end_item(call.dest, item.length, mode);
    }
    if (item.line_end)
        text->line = wrap_add(text->line, 1);
}

// Reads a plain item. Most are plain, and they need no record of where the scan is, which makes
// this twice as fast. False when this one is not; nothing is changed then.
static bool read_plain_item(const text_call &call, const io_source &access, const char *view,
                            int32_t available)
{
    plain_item item;
    if (!find_plain_item(item, call, view, available))
        return false;
    take_plain_item(item, call, access);
    return true;
}

// All items

static void start_scan(text_scan &scan, const char_set &stops, uint32_t mode)
{
    scan.line = scan.text->line;
    scan.events = wanted_events(scan.text);
    scan.mode = mode;
    scan.run.set = &stops;
    scan.run.halts = nullptr;
    scan.run.others[0] = scan.run.others[1] = scan.run.others[2] = 0;
    scan.dest = nullptr;
    scan.capacity = 0;
    scan.count = 0;
}

// Completes the item and the record.
static void finish_scan(text_scan &scan)
{
    release_view(scan);
    if (scan.dest) {
        const int64_t stored = scan.count < scan.capacity ? scan.count : scan.capacity;
        const auto length = static_cast<int32_t>(stored);
        scan.count -= length - end_item(scan.dest, length, scan.mode);
    }
    scan.text->line = scan.line;
    scan.text->count = static_cast<int32_t>(scan.count);
}

static constexpr char_set white_skip_stops = char_set_complement(white_set);

// The leading skip is a scan of its own, without an item: up to the first character that is not
// white space or that is spared. The view that it stops in stays held for the scan that follows.
[[gnu::noinline]] static bool skip_scan(text_scan &scan, const char_set &stops)
{
    start_scan(scan, stops, IOTEXT_INVERTED | IOTEXT_NO_COMMENTS | IOTEXT_NO_SKIP);
    const int32_t result = scan_text(scan);
    if (result == scan_broken)
        return false;
    if (result < 0)
        release_view(scan);
    scan.text->line = scan.line;
    scan.text->count = static_cast<int32_t>(scan.count);
    return result >= 0 && (scan.available > 0 || next_view(scan));
}

static bool skip_white(text_scan &scan)
{
    // The white space mostly ends in the view, and nobody listens.
    const white_run white = find_white(scan.cursor, scan.available);
    const bool heard = white.length > 0 && wanted_events(scan.text) & IOTEXT_WANT_CHARACTERS;
    if (heard || white.length >= scan.available ||
        char_set_has(white_set, scan.cursor[white.length]))
        return skip_scan(scan, white_skip_stops);
    advance(scan, white.length);
    set_terminator(scan.text, *scan.cursor);
    scan.text->line = wrap_add(scan.text->line, white.lines);
    scan.text->count = white.count;
    return true;
}

static bool skip_others(text_scan &scan, const char *delimiters)
{
    const char_set spared = char_set_or_white(delimiters);
    char_set stops = white_skip_stops;
    for (const char *c = str_white_char; *c; c++) {
        if (char_set_has(spared, *c))
            char_set_add(stops, *c);
    }
    return skip_scan(scan, stops);
}

// The stops of a scan. A set is only made where there is none at hand.
static const char_set &find_stops(char_set &own, const char *delimiters, uint32_t mode)
{
    if (mode & IOTEXT_NO_STOP)
        return no_characters;
    if (!delimiters)
        return mode & IOTEXT_INVERTED ? white_skip_stops : white_set;
    own = char_set_of(delimiters);
    if (mode & IOTEXT_INVERTED)
        own = char_set_complement(own);
    return own;
}

// Reads any item, from a view that was just opened.
static int32_t read_any_item(const text_call &call, const io_source &access, const char *view,
                             int32_t available)
{
    text_scan scan;
    scan.source = call.source;
    scan.access = access;
    scan.text = call.text;
    scan.cursor = view;
    scan.available = available;
    const uint32_t mode = call.mode;
    if (!(mode & IOTEXT_NO_SKIP) &&
        !(mode & IOTEXT_SKIP_OTHERS ? skip_others(scan, call.delimiters) : skip_white(scan)))
        return IOTEXT_FAILED;

    char_set own;
    start_scan(scan, find_stops(own, call.delimiters, mode), mode);
    find_others(scan.run.others, scan.text, mode);
    const char *const stops = mode & IOTEXT_NO_STOP ? "" : call.delimiters;
    if ((mode & IOTEXT_NO_STOP || !(mode & IOTEXT_INVERTED)) &&
        find_halts(scan.halts, stops, scan.run.others))
        scan.run.halts = &scan.halts;
    scan.dest = call.dest;
    scan.capacity = int64_t{call.size} - 1;
    const int32_t result = scan_text(scan);
    if (result == scan_broken)
        return IOTEXT_FAILED;
    finish_scan(scan);
    return result;
}

static const char *first_view(const io_source &access, int32_t *available)
{
    *available = 0;
    void *const view = access.lock(access.context, reinterpret_cast<intptr_t>(available),
                                   IO_LOCK_READ | IO_LOCK_THERE);
    return static_cast<const char *>(view);
}

// One scan: every comment ends it with IOTEXT_COMMENT.
static int32_t io_text_read(const text_call &call)
{
    const io_source access = *call.source;
    int32_t available;
    const char *const view = first_view(access, &available);
    if (!view)
        return IOTEXT_FAILED;
    if (read_plain_item(call, access, view, available))
        return IOTEXT_STOPPED;
    return read_any_item(call, access, view, available);
}

// Reads an item that is not plain, and passes over the comments in front of it.
[[gnu::noinline]] static int32_t read_on(const text_call &call, const io_source &access,
                                         const char *view, int32_t available)
{
    int32_t result = read_any_item(call, access, view, available);
    // A scan without a record never ends at a comment.
    while (result == IOTEXT_COMMENT && !(call.mode & IOTEXT_EACH_COMMENT) && call.text->count <= 0)
        result = io_text_read(call);
    return result;
}

// Front ends

// A short item is as long as its calls: with all of a plain one in one body it takes four fifths of
// the time.
[[gnu::flatten]] int32_t iotextRead(const io_source *source, const char *delimiters, char *dest,
                                    int32_t size, uint32_t mode, io_text *text)
{
    if (dest && size < 1)
        return IOTEXT_TOO_LONG;
    if (!text) {
        text = &io_text_default;
        mode |= IOTEXT_NO_COMMENTS;
    }
    const text_call call = {source, delimiters, dest, size, mode, text};
    const io_source access = *source;
    int32_t available;
    const char *const view = first_view(access, &available);
    if (!view)
        return IOTEXT_FAILED;
    if (read_plain_item(call, access, view, available))
        return IOTEXT_STOPPED;
    // With a copy made for this call alone, the plain path keeps the arguments in registers.
    return read_on(text_call(call), io_source(access), view, available);
}

int32_t iotextSleep(const io_source *source, const char *delimiters, io_text *text)
{
    int32_t result;
    do {
        result = iotextRead(source, delimiters, nullptr, 0, IOTEXT_NO_SKIP, text);
    } while (result == IOTEXT_COMMENT);
    return result;
}

int32_t iotextWait(const io_source *source, const char *delimiters, io_text *text)
{
    io_text own = {};
    if (!text)
        text = &own;
    const int32_t result = iotextRead(source, delimiters, nullptr, 0, IOTEXT_SKIP_OTHERS, text);
    if (result < 0)
        return result;
    return text->count > 0 ? static_cast<int32_t>(IOTEXT_OTHER_TEXT) : result;
}

int32_t iotextObserve(const io_source *source, const char *delimiters, io_text *text)
{
    int32_t result;
    do {
        result =
            iotextRead(source, delimiters, nullptr, 0, IOTEXT_INVERTED | IOTEXT_SKIP_OTHERS, text);
    } while (result == IOTEXT_COMMENT);
    return result;
}

// Quoted strings

// Where a string goes: `end` is the next free place, `room` what is left there with the terminator.
struct text_string {
    char *end;
    int32_t room;
    int32_t total; // characters stored
};

static bool has_room(const text_string &string, int32_t characters)
{
    return string.room > characters;
}

static void extend(text_string &string, int32_t characters)
{
    string.end += characters;
    string.room -= characters;
    string.total += characters;
}

static void append(text_string &string, char c)
{
    // A string has room, unlike an item that is only counted, which the analyzer takes it for.
    *string.end = c; // NOLINT(clang-analyzer-core.NullDereference)
    extend(string, 1);
}

static char translate_escape(char escaped)
{
    switch (escaped) {
    case '0':
        return '\0';
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return escaped;
    }
}

// Reads what stands behind a backslash. The result is IOTEXT_STOPPED, or a failure that leaves the
// source just behind the backslash.
static int32_t read_escape(const io_source *source, uint32_t flags, text_string &string)
{
    // The escaped character, and the one behind it: perhaps the other half of its line end.
    const char *const view =
        static_cast<const char *>(source->lock(source->context, 2, IO_LOCK_READ | IO_LOCK_EXACTLY));
    if (!view)
        return IOTEXT_FAILED;
    const char escaped = view[0];
    const bool line_end = is_line_end(escaped);
    int32_t consumed = 1;
    if (line_end && !(flags & IOTEXT_KEEP_LINE_ESCAPES)) {
        if (is_line_end(view[1]) && view[1] != escaped)
            consumed = 2;
    } else if (line_end || flags & IOTEXT_KEEP_ESCAPES) {
        if (!has_room(string, 2))
            return IOTEXT_TOO_LONG;
        append(string, '\\');
        append(string, escaped);
    } else {
        if (!has_room(string, 1))
            return IOTEXT_TOO_LONG;
        append(string, translate_escape(escaped));
    }
    source->unlock(source->context, view + consumed);
    return IOTEXT_STOPPED;
}

static uint32_t string_scan_mode(uint32_t flags)
{
    uint32_t mode = 0;
    if (!(flags & IOTEXT_COMMENTS))
        mode |= IOTEXT_NO_COMMENTS;
    if (!(flags & IOTEXT_SKIP_WHITE))
        mode |= IOTEXT_NO_SKIP;
    if (!(flags & IOTEXT_TRIM_WHITE))
        mode |= IOTEXT_NO_TRIM;
    return mode;
}

// Completes a string at its closing quote.
static void close_string(const text_string &string, uint32_t flags, io_text *text)
{
    text->count = string.total;
    if (!(flags & IOTEXT_TRIM_WHITE))
        return;
    const char *const behind =
        strBackwardToken(string.end, string.total, str_white_char, STR_COMPLEMENT | STR_FROM_END);
    if (behind)
        text->count = static_cast<int32_t>(behind - 1 - (string.end - string.total));
}

int32_t iotextReadString(const io_source *source, char *dest, int32_t size, char open, char close,
                         char last, uint32_t flags, io_text *text)
{
    if (size < 1)
        return IOTEXT_TOO_LONG;
    if (!text)
        text = &io_text_default;
    if (open != '\0' && open != last) {
        const char awaited[] = {open, '\0'};
        const int32_t result = iotextWait(source, awaited, text);
        if (result <= 0)
            return result;
    }
    if (flags & IOTEXT_SKIP_WHITE)
        iotextObserve(source, nullptr, text);

    const char stops[] = {'\n', '\r', '\\', close, '\0'};
    const uint32_t mode = string_scan_mode(flags);
    text_string string = {dest, size, 0};
    for (;;) {
        const int32_t result = iotextRead(source, stops, string.end, string.room, mode, text);
        if (result == IOTEXT_END && open != '\0')
            return IOTEXT_STRING_FAULT;
        if (result <= 0)
            return result;
        // The next part goes over the terminator and any white space that was trimmed.
        extend(string, text->count);
        if (result == IOTEXT_COMMENT)
            continue;

        const char stop = static_cast<char>(text->terminator);
        if (stop == close) {
            close_string(string, flags, text);
            return IOTEXT_STOPPED;
        }
        if (stop == '\n') {
            if (!(flags & IOTEXT_LINE_ENDS))
                return IOTEXT_STRING_FAULT;
            if (!has_room(string, 1))
                return IOTEXT_TOO_LONG;
            append(string, '\n');
        } else if (stop == '\\') {
            const int32_t escape = read_escape(source, flags, string);
            if (escape < 0)
                return escape;
        }
        // Anything else is a NUL of the input, which stops every scan and is dropped.
    }
}

// Line ends

int32_t iotextFormat(io_stream *stream, int32_t *length)
{
    char c;
    int32_t count = 0;
    do {
        const int32_t got = ioRead(stream, &c, 1, 0);
        if (got != 1) {
            if (length)
                *length = count;
            return got == IO_FAILED ? IOTEXT_NO_STYLE : IOTEXT_NO_LINE_END;
        }
        count = wrap_add(count, 1);
    } while (!is_line_end(c));

    char behind = '\0';
    const int32_t got = ioRead(stream, &behind, 1, 0);
    if (got == IO_FAILED)
        return IOTEXT_NO_STYLE;
    if (length)
        *length = wrap_add(count, got);
    if (c == '\n')
        return behind == '\r' ? IOTEXT_LFCR : IOTEXT_LF;
    return behind == '\n' ? IOTEXT_CRLF : IOTEXT_CR;
}

// The line ends of one text: what takes their place, and what has been seen.
struct line_ends {
    char output[2];
    int32_t output_length;
    uint32_t seen; // IOTEXT_LF and IOTEXT_CR
    char first;    // of all line-end characters
    char pattern;  // the one that began this run of line-end characters, 0 outside of a run
};

static line_ends line_ends_wanted(uint32_t flags)
{
    const bool lf_first = flags & IOTEXT_LF_FIRST;
    line_ends ends = {};
    if (flags & IOTEXT_CR)
        ends.output[ends.output_length++] = lf_first ? '\n' : '\r';
    if (flags & IOTEXT_LF)
        ends.output[ends.output_length++] = lf_first ? '\r' : '\n';
    return ends;
}

// Takes a line-end character. The result says whether it is a line end, or the second half of one.
static bool begins_line_end(line_ends &ends, char c)
{
    if (ends.seen == 0)
        ends.first = c;
    ends.seen |= c == '\n' ? IOTEXT_LF : IOTEXT_CR;
    if (ends.pattern == '\0')
        ends.pattern = c;
    return ends.pattern == c;
}

static int32_t style_seen(const line_ends &ends)
{
    if (ends.seen == 0)
        return IOTEXT_NO_LINE_END;
    if (ends.seen == IOTEXT_CRLF && ends.first == '\n')
        return IOTEXT_LFCR;
    return static_cast<int32_t>(ends.seen);
}

// The text to convert: a stream, or what is left of a string.
struct line_input {
    bool is_string;
    io_stream *stream;
    const char *text;
};

static int32_t read_char(line_input &input, char *c)
{
    if (!input.is_string)
        return ioRead(input.stream, c, 1, 0);
    *c = *input.text;
    if (*c == '\0')
        return 0;
    input.text++;
    return 1;
}

static bool write_char(io_stream *out, line_ends &ends, char c)
{
    if (!is_line_end(c)) {
        ends.pattern = '\0';
        return ioFullWrite(out, &c, 1, 0);
    }
    if (!begins_line_end(ends, c))
        return true;
    for (int32_t i = 0; i < ends.output_length; i++) {
        if (!ioFullWrite(out, &ends.output[i], 1, 0))
            return false;
    }
    return true;
}

// Converts characters from `from` on until `end` is reached or the output might not fit.
static void convert_view(line_ends &ends, const char *&from, const char *end, char *&to,
                         const char *limit)
{
    constexpr ptrdiff_t longest_output = sizeof ends.output;
    while (from < end && limit - to >= longest_output) {
        if (is_line_end(*from)) {
            if (begins_line_end(ends, *from)) {
                // Both places, though fewer may count: one store.
                memcpy(to, ends.output, sizeof ends.output);
                to += ends.output_length;
            }
            from++;
            continue;
        }
        ends.pattern = '\0';
        const ptrdiff_t length = end - from < limit - to ? end - from : limit - to;
        const int32_t step = copy_line(to, from, static_cast<int32_t>(length));
        from += step;
        to += step;
    }
}

// Converts what is at hand: unread bytes of the input's buffer, or a string, into the room of the
// output's buffer. Character by character, that would not call a back end either, so what the back
// ends see is the same.
static void convert_at_hand(io_stream *out, line_input &input, line_ends &ends)
{
    io_buffer *const to = out->buffer;
    if (!to || to->mode != IO_MODE_WRITE || !out->write)
        return;
    const int32_t room = to->size - to->position;
    char *const start = io_current(to);
    char *next = start;
    if (!input.is_string) {
        io_buffer *const from = input.stream->buffer;
        if (!from || from->mode != IO_MODE_READ || !input.stream->read)
            return;
        const char *const unread = io_current(from);
        const char *rest = unread;
        convert_view(ends, rest, unread + (from->count - from->position), next, start + room);
        from->position += static_cast<int32_t>(rest - unread);
    } else {
        const size_t length = strnlen(input.text, static_cast<size_t>(room));
        convert_view(ends, input.text, input.text + length, next, start + room);
    }
    to->position += static_cast<int32_t>(next - start);
}

int32_t iotextConvert(io_stream *out, const void *input, uint32_t flags)
{
    line_input from = {};
    if (flags & IOTEXT_FROM_STRING)
        from = {true, nullptr, static_cast<const char *>(input)};
    else
        from = {false, static_cast<io_stream *>(const_cast<void *>(input)), nullptr};
    line_ends ends = line_ends_wanted(flags);
    for (;;) {
        convert_at_hand(out, from, ends);
        char c;
        const int32_t got = read_char(from, &c);
        if (got == IO_FAILED)
            return IOTEXT_NO_STYLE;
        if (got != 1)
            return style_seen(ends);
        if (!write_char(out, ends, c))
            return IOTEXT_NO_STYLE;
    }
}

int32_t iotextWrite(io_stream *out, const char *text, uint32_t flags)
{
    return iotextConvert(out, text, flags | IOTEXT_FROM_STRING) != IOTEXT_NO_STYLE;
}

int32_t iotextWriteString(io_stream *out, const char *text)
{
    const size_t length = strlen(text);
    if (length > INT32_MAX)
        return 0;
    // The bytes are written from where they are and never changed.
    return ioFullWrite(out, const_cast<char *>(text), static_cast<int32_t>(length), 0);
}
