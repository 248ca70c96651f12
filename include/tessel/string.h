/**
 * @file
 * Strings: building, finding and cutting them.
 *
 * Lengths are counted in bytes without the terminator, capacities with it.
 *
 * The building procedures write into a buffer that the caller has or into a new block from
 * memAlloc(). One argument, `room`, serves both: with a target it is the target's capacity, without
 * one the extra bytes that the new block shall have beyond those that are needed, 0 or more.
 *
 * The token procedures cut and inspect a string by a set of characters. Each is one scan without
 * memory of the last one; all state is in the pointers that the caller holds. A scan settles on one
 * character of the string, its position, and that is the one character that it may overwrite, with
 * a NUL. None of them allocates. For the scans a null set means white space: space, tab, carriage
 * return and line feed. One that finds nothing gives null or -1, writes nothing, and is no failure.
 */
#ifndef TESSEL_STRING_H
#define TESSEL_STRING_H

#include "tessel/base.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct str_compare_class str_compare_class;

/** Flags of comparisons. Other bits are ignored. */
enum {
    STR_POINTER = 0x1000, /**< a node's field holds a pointer to the text, not the text itself; a
                               null pointer is equal to no text */
    STR_NO_CASE = 0x2000  /**< compare without regard to case; beyond ASCII as the system does */
};

/** What a search for a text field in the nodes of a list or a tree goes by. */
struct str_compare_class {
    const char *text; /**< caller: the text to look for, not null */
    uint32_t offset;  /**< caller: bytes from the start of a node to the field */
    uint32_t flags;   /**< caller: STR_POINTER, STR_NO_CASE */
    void *found;      /**< library: the node, written at a match */
};

/** Flags of the token scans. Other bits are ignored. */
enum {
    STR_COMPLEMENT = 0x1, /**< stop at the first character that is not in the set */
    STR_KEEP = 0x2,       /**< write no NUL; the index forms always have it */
    STR_FROM_END = 0x10   /**< backward scans: `text` is the end of the stretch, not its start */
};

/**
 * Copies a string.
 *
 * @param target  a buffer, or null for a new block
 * @param text    the string, or null
 * @param room    capacity of `target`, or extra bytes of the new block
 * @return `target` or the new block; null, with nothing written, if `text` is null, `target` is too
 *         small, memory ran out, or a size is negative or does not fit 32 bits
 */
TESSEL_API char *strCopy(char *target, const char *text, int32_t room);

/**
 * Joins two strings.
 *
 * @param target  a buffer, or null for a new block; it may hold `left` at its start, but no part of
 *                `right`
 * @param left    the string that comes first; null counts as empty
 * @param right   the string behind it; null counts as empty
 * @param room    capacity of `target`, or extra bytes of the new block
 * @return as strCopy(), null if both strings are null
 */
TESSEL_API char *strUnion(char *target, const char *left, const char *right, int32_t room);

/**
 * Inserts one string into another, in place if that has the room. Otherwise it is replaced by a new
 * block, if the caller allows it, and its old one is released: it must then be a block of
 * memAlloc() and must not hold `insertion`.
 *
 * @param text       the string, or null
 * @param insertion  the string to insert, or null. If the buffer stays it may be `text` itself, or
 *                   an end of it that begins at or before `position`
 * @param position   index in `text`; one that is negative or beyond the end means the end
 * @param capacity   capacity of the buffer of `text`; negative if there is room in any case
 * @param roomRef    null if the buffer must not be replaced. Otherwise the address of a word that
 *                   holds the extra bytes wanted in a new one, 0 or more; the call sets it to 0 if
 *                   the buffer stays or the new capacity does not fit, and to the new capacity if
 *                   it is to be replaced
 * @return the string, to be used from now on instead of `text`. `text` as it is, if it or
 *         `insertion` is null. Null if there is no room and `roomRef` is null, if the new capacity
 *         does not fit a signed 32-bit number, or if memory ran out, and the word then holds the
 *         capacity that was not to be had; `text` stands unchanged in each case
 */
TESSEL_API char *strInsert(char *text, const char *insertion, int32_t position, int32_t capacity,
                           int32_t *roomRef);

/** strInsert() at the end. */
TESSEL_API char *strAppend(char *text, const char *insertion, int32_t capacity, int32_t *roomRef);

/**
 * Finds a string in a list of strings.
 *
 * @param list   strings one behind the other, each with its terminator, and an empty one as the end;
 *               not null
 * @param text   the string to look for, not null; the empty one is never found
 * @param flags  STR_NO_CASE
 * @return its index, from 0 on, or -1
 */
TESSEL_API int32_t strFind(const char *list, const char *text, uint32_t flags);

/**
 * Splits off the first token, or skips a leading run.
 *
 * Without STR_COMPLEMENT the position is the first member of the set. With it, it is the last
 * character of the run of members that `text` begins with.
 *
 * @param text   the string, or null
 * @param set    the set, or null for white space
 * @param flags  STR_COMPLEMENT, STR_KEEP
 * @return null for a null or empty `text`, and, without STR_COMPLEMENT, where no character is a
 *         member. Otherwise without STR_KEEP the address behind the position, which now holds a
 *         NUL: the rest of the string. With STR_KEEP the position itself; with STR_COMPLEMENT that
 *         is the address one before `text`, not to be read, when `text` does not begin with a
 *         member. Without STR_KEEP such a string comes back as it is: `text`, nothing written.
 */
TESSEL_API char *strToken(char *text, const char *set, uint32_t flags);

/**
 * Splits off the last token, or trims a trailing run.
 *
 * Without STR_COMPLEMENT the position is the last member of the set in the stretch. With it, it is
 * the first character of the run of members that the stretch ends with; where there is no such run
 * the byte behind the stretch decides: if it is a NUL, as at the end of a string, nothing is found.
 *
 * @param text    the string, or null; with STR_FROM_END the address behind the stretch
 * @param length  size of the stretch; 0 means the whole string, up to 2 GiB, but not with
 *                STR_FROM_END. No byte before the stretch is read
 * @param set     the set, or null for white space
 * @param flags   STR_COMPLEMENT, STR_KEEP, STR_FROM_END
 * @return the address behind the position, with STR_KEEP as well; null for a null `text`, a stretch
 *         of no characters or a negative length, and where nothing is found
 */
TESSEL_API char *strBackwardToken(char *text, int32_t length, const char *set, uint32_t flags);

/** The position that strToken() with STR_KEEP would find, as an index, or -1. */
TESSEL_API int32_t strTokenIndex(const char *text, const char *set, uint32_t flags);

/**
 * The position that strBackwardToken() with STR_KEEP would find, as an index from the start of the
 * stretch, or -1.
 */
TESSEL_API int32_t strBackwardTokenIndex(const char *text, int32_t length, const char *set,
                                         uint32_t flags);

/** The number of characters of `text` that are members of `set`; neither may be null. */
TESSEL_API int32_t strCountToken(const char *text, const char *set);

/**
 * Replaces characters in place: the i-th character of the set by the i-th replacement, and the last
 * replacement serves the rest of the set.
 *
 * @param text          the string; its length does not change
 * @param set           the characters to be replaced, not null; where one stands twice, the first
 *                      decides
 * @param replacements  their replacements, not null; empty replaces nothing
 * @param count         0: replace all. Above 0: stop after that many, from the start. Below 0: stop
 *                      after that many, from the end
 * @return `text`
 */
TESSEL_API char *strReplaceToken(char *text, const char *set, const char *replacements,
                                 int32_t count);

#ifdef __cplusplus
}
#endif

#endif
