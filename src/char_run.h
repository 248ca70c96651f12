// Runs of ordinary characters: finding the first that is not, many characters at a time.
#ifndef TESSEL_SRC_CHAR_RUN_H
#define TESSEL_SRC_CHAR_RUN_H

#include "bytes.h"
#include "char_set.h"

// What ends a run: the members of a set, line ends, and a few more characters. They are kept apart
// since a set that is not made for the call needs no preparation then: writing a set and reading it
// back at once costs more than a scan of a short item does otherwise.
//
// Text is mostly made of word characters: letters, digits and everything beyond ASCII. Where none
// of them ends a run, which is nearly always, a block of text is tested for them at once, with no
// branch that depends on where the word ends; other characters are looked up.
struct char_run {
    const char_set *set;
    char others[3]; // line feeds where there are fewer
    bool words;     // word characters are ordinary
};

typedef unsigned char char_block __attribute__((vector_size(16)));

inline constexpr int32_t char_block_size = sizeof(char_block);

constexpr char_set make_word_set()
{
    char_set set = char_set_of("0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ");
    char_set_remove(set, '\0');
    set.words[2] = set.words[3] = ~uint64_t{0};
    return set;
}

inline constexpr char_set word_set = make_word_set();

inline bool is_line_end(char c)
{
    return c == '\n' || c == '\r';
}

inline bool char_run_ends_at_other(const char_run &run, char c)
{
    return c == run.others[0] || c == run.others[1] || c == run.others[2];
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

// Number of word characters that a block begins with.
inline int32_t word_length(char_block block)
{
    const char_block letter = (block | 0x20) - 'a';
    const char_block digit = block - '0';
    return first_hit((letter > 'z' - 'a') & (digit > 9) & (block < 0x80));
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
        while (run.words && length - done >= char_block_size) {
            const int32_t step = word_length(load<char_block>(from + done));
            done += step;
            if (step < char_block_size)
                break;
        }
        if (done == length || char_run_ends(run, from[done]))
            return done;
        done++;
    }
}

// Stores the first `length` characters of a block and leaves what lies behind them as it is, though
// the whole block must be the caller's to write.
inline void store_front(char *to, char_block block, int32_t length)
{
    constexpr int32_t size = char_block_size;
    static constexpr unsigned char masks[2 * size] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
                                                      0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
                                                      0xff, 0xff, 0xff, 0xff};
    const char_block mask = load<char_block>(masks + size - length);
    const char_block behind = load<char_block>(to);
    store(to, (block & mask) | (behind & ~mask));
}

// As ordinary_length(), copying the characters; nothing behind them is changed.
inline int32_t copy_ordinary(const char_run &run, char *to, const char *from, int32_t length)
{
    int32_t done = 0;
    for (;;) {
        while (run.words && length - done >= char_block_size) {
            const char_block block = load<char_block>(from + done);
            const int32_t step = word_length(block);
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
