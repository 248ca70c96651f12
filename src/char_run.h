// Runs of ordinary characters: finding the first that is not, many characters at a time.
#ifndef TESSEL_SRC_CHAR_RUN_H
#define TESSEL_SRC_CHAR_RUN_H

#include "bytes.h"
#include "char_set.h"

typedef unsigned char char_block __attribute__((vector_size(16)));

inline constexpr int32_t char_block_size = sizeof(char_block);

// Characters that a search of blocks halts at: all up to `last`, and those of which one fills a
// block. The first three blocks always count; with their number known the search of an item is a
// straight line.
struct char_halts {
    char_block last;
    char_block others[16];
    int32_t count;
};

// What ends a run: the members of a set, line ends, and a few more characters. They are kept apart
// since a set that is not made for the call needs no preparation then. Characters are looked up one
// by one, but for those in front of a halt.
struct char_run {
    const char_set *set;
    uint32_t others[3];      // NUL where there are fewer
    const char_halts *halts; // every end is one; null when there are too many
};

inline bool is_line_end(char c)
{
    return c == '\n' || c == '\r';
}

inline bool char_run_ends_at_other(const char_run &run, char c)
{
    const uint32_t code = static_cast<unsigned char>(c);
    return code == run.others[0] || code == run.others[1] || code == run.others[2];
}

inline bool char_run_ends(const char_run &run, char c)
{
    return char_set_has(*run.set, c) || is_line_end(c) || char_run_ends_at_other(run, c);
}

// Index of the first byte of a block that is not zero, or the block's size. Every byte is 0 or
// 0xff.
inline int32_t first_hit(char_block block)
{
#ifdef __SSE2__
    // Without a branch on the half that the hit is in: words of about eight characters are common,
    // and each would be a coin tossed.
    typedef char signed_block __attribute__((vector_size(16)));
    const int hits = __builtin_ia32_pmovmskb128(reinterpret_cast<signed_block>(block));
    return __builtin_ctz(static_cast<unsigned>(hits) | 1u << char_block_size);
#else
    uint64_t halves[2];
    memcpy(halves, &block, sizeof halves);
    for (int32_t i = 0; i < 2; i++) {
        if (halves[i] == 0)
            continue;
        const bool little = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
        return 8 * i + (little ? __builtin_ctzll(halves[i]) : __builtin_clzll(halves[i])) / 8;
    }
    return char_block_size;
#endif
}

inline char_block block_of(uint32_t c)
{
    return char_block{} + static_cast<unsigned char>(c);
}

// Halts at line ends, NUL, other characters up to `last`, and three more. One that is not needed
// can be NUL.
inline void begin_halts(char_halts &halts, uint32_t last, uint32_t first, uint32_t second,
                        uint32_t third)
{
    halts.last = block_of(last);
    halts.others[0] = block_of(first);
    halts.others[1] = block_of(second);
    halts.others[2] = block_of(third);
    halts.count = 3;
}

// Adds a halt behind the carriage return. False when there are too many.
inline bool add_halt(char_halts &halts, char c)
{
    constexpr int32_t most = sizeof halts.others / sizeof *halts.others;
    if (static_cast<unsigned char>(c) <= '\r')
        return true;
    if (halts.count == most)
        return false;
    halts.others[halts.count++] = block_of(static_cast<unsigned char>(c));
    return true;
}

#if defined __GNUC__ && !defined __clang__ && __GNUC__ >= 12
// gcc's analyzer cannot tell that no more of the array is read than was filled.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wanalyzer-use-of-uninitialized-value"
#endif
// Number of characters in front of the first halt of a block.
inline int32_t halt_length(const char_halts &halts, char_block block)
{
    auto hits = (block <= halts.last) | (block == halts.others[0]) | (block == halts.others[1]) |
                (block == halts.others[2]);
    const char_block *const end = halts.others + halts.count;
    for (const char_block *other = halts.others + 3; other != end; other++)
        hits |= block == *other;
    return first_hit(reinterpret_cast<char_block>(hits));
}
#if defined __GNUC__ && !defined __clang__ && __GNUC__ >= 12
#pragma GCC diagnostic pop
#endif

// Number of characters in front of the first halt, or those of all whole blocks.
inline int32_t halt_length(const char_halts &halts, const char *from, int32_t length)
{
    int32_t done = 0;
    while (length - done >= char_block_size) {
        const int32_t step = halt_length(halts, load<char_block>(from + done));
        done += step;
        if (step < char_block_size)
            break;
    }
    return done;
}

// Number of blanks and tabs at the start, at most those of all whole blocks.
inline int32_t blank_length(const char *from, int32_t length)
{
    int32_t done = 0;
    while (length - done >= char_block_size) {
        const char_block block = load<char_block>(from + done);
        const auto others = (block != ' ') & (block != '\t');
        const int32_t step = first_hit(reinterpret_cast<char_block>(others));
        done += step;
        if (step < char_block_size)
            break;
    }
    return done;
}

// Number of characters in front of the first line end of a block.
inline int32_t line_length(char_block block)
{
    return first_hit((block == '\n') | (block == '\r'));
}

// Number of characters in front of the end of a run, at most `length`.
inline int32_t ordinary_length(const char_run &run, const char *from, int32_t length)
{
    int32_t done = 0;
    for (;;) {
        if (run.halts)
            done += halt_length(*run.halts, from + done, length - done);
        if (done == length || char_run_ends(run, from[done]))
            return done;
        done++;
    }
}

// Stores the first `length` characters of a block and leaves what lies behind them as it is, though
// the whole block must be the caller's to write. What is left may never have been written: with two
// masks, which the compiler cannot take for one and its complement, checkers of memory see that
// nothing comes of it.
inline void store_front(char *to, char_block block, int32_t length)
{
    constexpr int32_t size = char_block_size;
    static constexpr unsigned char masks[3 * size] = {
        0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
        0xff, 0xff, 0xff, 0xff, 0,    0,    0,    0,    0,    0,    0,    0,
        0,    0,    0,    0,    0,    0,    0,    0,    0xff, 0xff, 0xff, 0xff,
        0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    const char_block front = load<char_block>(masks + (size - length));
    const char_block rest = load<char_block>(masks + (2 * size - length));
    const char_block behind = load<char_block>(to);
    store(to, (block & front) | (behind & rest));
}

// Copies characters by blocks, which may overlap if they move to the front. What lies behind them in
// the last block is as with store_front().
inline void copy_front(char *to, const char *from, int32_t length)
{
    while (length >= char_block_size) {
        store(to, load<char_block>(from));
        to += char_block_size;
        from += char_block_size;
        length -= char_block_size;
    }
    store_front(to, load<char_block>(from), length);
}

// As ordinary_length(), copying the characters; nothing behind them is changed.
inline int32_t copy_ordinary(const char_run &run, char *to, const char *from, int32_t length)
{
    int32_t done = 0;
    for (;;) {
        while (run.halts && length - done >= char_block_size) {
            const char_block block = load<char_block>(from + done);
            const int32_t step = halt_length(*run.halts, block);
            store_front(to + done, block, step);
            done += step;
            if (step < char_block_size)
                break;
        }
        if (done == length || char_run_ends(run, from[done]))
            return done;
        to[done] = from[done];
        done++;
    }
}

// Copies characters up to the first line end, `length` at most, and gives their number. What lies
// behind them within `length` may be overwritten. With lines of 40 characters the blocks save a
// third of the time.
inline int32_t copy_line(char *to, const char *from, int32_t length)
{
    int32_t done = 0;
    while (length - done >= char_block_size) {
        const char_block block = load<char_block>(from + done);
        store(to + done, block);
        const int32_t step = line_length(block);
        done += step;
        if (step < char_block_size)
            return done;
    }
    for (; done < length && !is_line_end(from[done]); done++)
        to[done] = from[done];
    return done;
}

#endif
