/**
 * @file
 * Strings: tokens, cut and inspected by a set of characters.
 *
 * Each procedure is one scan without memory of the last one; all state is in the pointers that the
 * caller holds. A scan settles on one character of the string, its position, and that is the one
 * character that it may overwrite, with a NUL. Nothing here allocates.
 *
 * For the scans a null set means white space: space, tab, carriage return and line feed. One that
 * finds nothing gives null or -1, writes nothing, and is no failure.
 */
#ifndef TESSEL_STRING_H
#define TESSEL_STRING_H

#include "tessel/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Flags of the token scans. Other bits are ignored. */
enum {
    STR_COMPLEMENT = 0x1, /**< stop at the first character that is not in the set */
    STR_KEEP = 0x2,       /**< write no NUL; the index forms always have it */
    STR_FROM_END = 0x10   /**< backward scans: `text` is the end of the stretch, not its start */
};

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
