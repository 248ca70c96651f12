/**
 * @file
 * Strings: building, finding and cutting them; paths; the text of printed numbers; and the options
 * of a command line.
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
 *
 * Paths are text alone, below 2 GiB; the file system is not looked at. A separator is a slash, a
 * backslash, or a colon, which ends a drive prefix.
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
 * Copies a string into a buffer or a new block.
 *
 * @param target  a buffer, or null for a new block
 * @param text    the string, or null
 * @param room    capacity of `target`, or extra bytes of the new block
 * @return `target` or the new block, to be released with memFree(); null, with nothing written, if
 *         `text` is null, `target` is too small, memory ran out, or a size is negative or does not
 *         fit 32 bits
 * @see strUnion(), strInsert(), strAppend(), memFree()
 */
TESSEL_API char *strCopy(char *target, const char *text, int32_t room);

/**
 * Joins two strings in a buffer or a new block.
 *
 * @param target  a buffer, or null for a new block; it may hold `left` at its start, but no part of
 *                `right`
 * @param left    the string that comes first; null counts as empty
 * @param right   the string behind it; null counts as empty
 * @param room    capacity of `target`, or extra bytes of the new block
 * @return `target` or the new block, to be released with memFree(); null, with nothing written, if
 *         both strings are null, `target` is too small, memory ran out, or a size is negative or
 *         does not fit 32 bits
 * @see strCopy(), strAppend(), strInsert()
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
 * @see strAppend(), strUnion(), strCopy()
 */
TESSEL_API char *strInsert(char *text, const char *insertion, int32_t position, int32_t capacity,
                           int32_t *roomRef);

/**
 * Appends one string to another, in place if that has the room. This is strInsert() at the end:
 * otherwise the string is replaced by a new block, if the caller allows it, and its old one is
 * released. It must then be a block of memAlloc() and must not hold `insertion`.
 *
 * @param text       the string, or null
 * @param insertion  the string to append, or null. If the buffer stays it may be `text` itself, or
 *                   an end of it
 * @param capacity   capacity of the buffer of `text`; negative if there is room in any case
 * @param roomRef    null if the buffer must not be replaced. Otherwise the address of a word that
 *                   holds the extra bytes wanted in a new one, 0 or more; the call sets it to 0 if
 *                   the buffer stays or the new capacity does not fit, and to the new capacity if
 *                   it is to be replaced
 * @return the string, to be used from now on instead of `text`. `text` as it is, if it or
 *         `insertion` is null. Null if there is no room and `roomRef` is null, if the new capacity
 *         does not fit a signed 32-bit number, or if memory ran out, and the word then holds the
 *         capacity that was not to be had; `text` stands unchanged in each case
 * @see strInsert(), strUnion()
 */
TESSEL_API char *strAppend(char *text, const char *insertion, int32_t capacity, int32_t *roomRef);

/**
 * Finds a string in a list of strings.
 *
 * @param list   strings one behind the other, each with its terminator, and an empty one as the
 *               end; not null
 * @param text   the string to look for, not null; the empty one is never found
 * @param flags  STR_NO_CASE
 * @return its index, from 0 on, or -1
 * @see listFindStr(), bintreeFindStr()
 */
TESSEL_API int32_t strFind(const char *list, const char *text, uint32_t flags);

/**
 * Splits off the first token of a string, or skips a leading run.
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
 *         member. Without STR_KEEP such a string comes back as it is: `text`, nothing written
 * @see strBackwardToken(), strTokenIndex(), strCountToken()
 */
TESSEL_API char *strToken(char *text, const char *set, uint32_t flags);

/**
 * Splits off the last token of a string, or trims a trailing run.
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
 * @see strToken(), strBackwardTokenIndex()
 */
TESSEL_API char *strBackwardToken(char *text, int32_t length, const char *set, uint32_t flags);

/**
 * Finds the index at which strToken() would cut a string. It is the position that strToken() with
 * STR_KEEP would find; nothing is written.
 *
 * @param text   the string, or null
 * @param set    the set, or null for white space
 * @param flags  STR_COMPLEMENT
 * @return the index; -1 for a null or empty `text`, without STR_COMPLEMENT where no character is a
 *         member, and with it where `text` does not begin with a member
 * @see strToken(), strBackwardTokenIndex()
 */
TESSEL_API int32_t strTokenIndex(const char *text, const char *set, uint32_t flags);

/**
 * Finds the index at which strBackwardToken() would cut a string. It is the position that
 * strBackwardToken() with STR_KEEP would find; nothing is written.
 *
 * @param text    the string, or null; with STR_FROM_END the address behind the stretch
 * @param length  size of the stretch; 0 means the whole string, up to 2 GiB, but not with
 *                STR_FROM_END. No byte before the stretch is read
 * @param set     the set, or null for white space
 * @param flags   STR_COMPLEMENT, STR_FROM_END
 * @return the index from the start of the stretch, which is `length` where the position is the byte
 *         behind it; -1 for a null `text`, a stretch of no characters or a negative length, and
 *         where nothing is found
 * @see strBackwardToken(), strTokenIndex()
 */
TESSEL_API int32_t strBackwardTokenIndex(const char *text, int32_t length, const char *set,
                                         uint32_t flags);

/**
 * Counts the characters of a string that are members of a set.
 *
 * @param text  the string, not null
 * @param set   the set, not null
 * @return how many; the terminator does not count
 * @see strReplaceToken(), strTokenIndex()
 */
TESSEL_API int32_t strCountToken(const char *text, const char *set);

/**
 * Replaces characters of a string in place. The i-th character of the set is replaced by the i-th
 * replacement, and the last replacement serves the rest of the set.
 *
 * @param text          the string; its length does not change
 * @param set           the characters to be replaced, not null; where one stands twice, the first
 *                      decides
 * @param replacements  their replacements, not null; empty replaces nothing
 * @param count         0: replace all. Above 0: stop after that many, from the start. Below 0: stop
 *                      after that many, from the end
 * @return `text`
 * @see strCountToken(), strToken()
 */
TESSEL_API char *strReplaceToken(char *text, const char *set, const char *replacements,
                                 int32_t count);

/* Paths */

/**
 * Brings a path into the form with backslashes, in place. Each slash becomes one. The form that
 * begins with two slashes, a drive character and one more character becomes drive, colon and
 * backslash: `//c/dir` gives `c:\dir`. A backslash in front of a space or of another backslash
 * becomes that character too, and both are passed over.
 *
 * @param path  the path; it is never longer afterwards. One of two slashes and less than two
 *              characters behind them has no drive form
 * @return `path`
 * @see strAbsolutePath(), strAppendDirectorySeparator()
 */
TESSEL_API char *strGetCompatiblePath(char *path);

/**
 * Makes sure that a path ends in a separator, so that a name can be appended. A path keeps the kind
 * of slash that it already uses, the last one counting; one without any gets a backslash.
 *
 * @param path  the path, in a buffer with room for one more character; an empty one stays empty
 * @return its length now; -1 for a path of 2 GiB or more, which is left as it is
 * @see strGetDirectorySeparator(), strSplitPath()
 */
TESSEL_API int32_t strAppendDirectorySeparator(char *path);

/**
 * Gives all path separators, as a set for the token procedures.
 *
 * @return colon, backslash and slash, as a constant text
 * @see strAppendDirectorySeparator(), strBackwardToken()
 */
TESSEL_API const char *strGetDirectorySeparator(void);

/**
 * Finds the extension in a file's path. It is the text behind the last dot, wherever that stands.
 *
 * @param path  the path, or null
 * @return the address in `path`, or null if there is no dot
 * @see strGetFileName(), strSplitPath()
 */
TESSEL_API const char *strGetFileExtension(const char *path);

/**
 * Finds the file's name in a path. It is the text behind the last separator.
 *
 * @param path  the path, or null
 * @return the address in `path`, which is `path` itself where there is no separator
 * @see strGetFileExtension(), strSplitPath()
 */
TESSEL_API const char *strGetFileName(const char *path);

/**
 * Cuts a path into its parts, in place. A NUL replaces the last dot, and then the last separator in
 * front of it. The parts live as long as the string; the path cannot be joined again from them.
 *
 * @param directoryRef  null, or where to store what precedes the separator; a constant empty text
 *                      where there is none
 * @param nameRef       null, or where to store what stands between separator and dot
 * @param extensionRef  null, or where to store what follows the dot; an empty text where there is
 *                      none
 * @param path          the path
 * @see strGetFileName(), strGetFileExtension(), strAppendDirectorySeparator()
 */
TESSEL_API void strSplitPath(const char **directoryRef, const char **nameRef,
                             const char **extensionRef, char *path);

/**
 * Tells whether a path is absolute. It then begins with a slash or backslash, or with any
 * character, a colon and a slash or backslash.
 *
 * @param path  the path
 * @return 1 or 0
 * @see strGetCompatiblePath(), strSplitPath()
 */
TESSEL_API int32_t strAbsolutePath(const char *path);

/* The text of printed numbers */

/** What strReduceZero() leaves: one mantissa style joined with one exponent style. */
enum {
    STR_POINT_DROP = 0,        /**< nothing behind the point takes the point along: 1.000, 1 */
    STR_POINT_KEEP = 1,        /**< the point stays alone: 1.000, 1. */
    STR_POINT_ZERO = 2,        /**< one zero stays behind the point: 1.000, 1.0; so do 3 to 255 */
    STR_POINT_MASK = 0xff,     /**< the field of the mantissa style */
    STR_EXPONENT_DROP = 0,     /**< an exponent of zero goes: 1.5e+000, 1.5 */
    STR_EXPONENT_ZERO = 0x100, /**< an exponent of zero stays as one character: 1.5e0 */
    STR_EXPONENT_KEEP = 0x200, /**< the exponent stays as it is, as for all higher values */
    STR_EXPONENT_MASK = 0xff00 /**< the field of the exponent style */
};

/**
 * Tidies a printed floating-point number in place. The zeros behind its last significant digit go,
 * as do the minus sign of `-0`, `-0.` and `-0.0` (but not that of `-00`) and the plus sign and
 * leading zeros of the exponent. So 1.500e+005 becomes 1.5e5. No value is computed: a text that is
 * no number is treated alike, and its last e or E splits it.
 *
 * @param text    the number. Its zeros stay where no point precedes them, or where the point is the
 *                first character
 * @param format  the styles; other bits are ignored. An exponent of no characters counts as zero
 *                and goes with its letter, except under STR_EXPONENT_KEEP
 * @return `text`, which is never longer than it was
 * @see x_string()
 */
TESSEL_API char *strReduceZero(char *text, uint32_t format);

/* Option parsing */

typedef struct str_option str_option;

/**
 * Flags of an option parser. The caller sets all but the last two; other bits are ignored and left
 * alone.
 */
enum {
    STROPT_CLUSTERS = 0x10,   /**< more short options may stand behind a short option, instead of
                                   its value */
    STROPT_PLAIN = 0x20,      /**< an argument without a prefix is parsed as an option too; with
                                   STROPT_DOUBLED as a short one */
    STROPT_PLAIN_ONCE = 0x40, /**< at the end of the next call that does not give STROPT_END clear
                                   this flag and STROPT_PLAIN: only the first argument needs no
                                   prefix */
    STROPT_DASH = 0x80,       /**< take "-" for the prefixes, whatever the call says */
    STROPT_EQUALS = 0x100,    /**< take "=" for the delimiters, whatever the call says */
    STROPT_DOUBLED = 0x200,   /**< long options need a doubled prefix; behind a single one there
                                   are short options alone */
    STROPT_LONE_OK = 0x400,   /**< a prefix with nothing behind it, or an empty argument that is
                                   parsed as an option, is STROPT_LONE, not an error */
    STROPT_FOLLOWING = 0x800, /**< a long option's value may stand in the arguments behind it */
    STROPT_SORTED = 0x1000,   /**< the table's names ascend, bytes compared as signed numbers:
                                   search it by halving, if there are delimiters. No name in it
                                   continues another one with a byte of 0x80 or above */
    STROPT_WANTS_VALUE = 0x2000, /**< the parser's own, and clear between calls */
    STROPT_IN_CLUSTER = 0x8000   /**< the parser's own: `value` holds the rest of a cluster, and the
                                      next call goes on there */
};

/**
 * Results of stroptGetOption(): a class in the top bits, its detail below. Any other result is the
 * character of a short option, as a signed 8-bit number: a character of 0x80 or above is negative,
 * as a short option and as a STROPT_VALUE.
 */
enum {
    STROPT_LONE = 0,           /**< a lone prefix or an empty option, with STROPT_LONE_OK; `value`
                                    is null */
    STROPT_ENTRY = 0x10000000, /**< with the index of a table entry; `value` is its value, or
                                    null */
    STROPT_BARE = 0x20000000,  /**< an argument that is no option, in `current`; `value` is
                                    null */
    STROPT_VALUE = 0x30000000, /**< with a value character; `value` is the rest of the argument,
                                    which may be empty */
    STROPT_END = 0x40000000,   /**< no argument is left; `value` is as it was */
    STROPT_ERROR = 0x50000000, /**< an unknown long name, which `value` holds as it was given,
                                    or a lone prefix or an empty option, with a null `value` */
    STROPT_CLASS_MASK = 0x70000000, /**< leaves the class, 0 for a short option of 7 bits and none
                                        of the classes above for one of 8 */
    STROPT_DETAIL_MASK = 0x0fffffff /**< leaves the index or the character */
};

/** In `pushback`: the arguments have run out, and `fetch` is not to be called again. */
#define STROPT_EXHAUSTED ((char *)UINTPTR_MAX)

/**
 * Gets a parser's next argument: stroptArgv(), stroptTable(), or one that promises the same.
 *
 * @param option  the record; its `cursor` is for this procedure
 * @return the argument, which the parser neither copies nor changes, or null when none is left. It
 *         is called again after null if the caller goes on, unless that has set `pushback` to
 *         STROPT_EXHAUSTED
 */
typedef char *(*stropt_fetch_proc)(str_option *option);

/**
 * An option parser. The caller sets `fetch`, `flags` and `cursor`, clears `value` and `pushback`,
 * and calls stroptGetOption() until it gives STROPT_END. Between calls the record is in one of
 * three states: in a cluster (STROPT_IN_CLUSTER is set), exhausted (`pushback` is
 * STROPT_EXHAUSTED), or else between arguments. `value` and `current` point into the arguments.
 */
struct str_option {
    stropt_fetch_proc fetch; /**< caller: gets the next argument */
    uint32_t flags;          /**< both: STROPT_CLUSTERS and so on */
    void *cursor;            /**< `fetch`: its place in the arguments */
    char *value;             /**< library: the text that belongs to the last result, or null; one
                                  that is not asked for is dropped by the next call. A caller that
                                  nulls it clears STROPT_IN_CLUSTER too */
    char *pushback; /**< library: an argument fetched too early, to be given out next; null;
                         or STROPT_EXHAUSTED, which a caller may set as well */
    char *current;  /**< library: the last argument fetched as an option, a bare argument or
                         by stroptGetString(); the parser does not read it */
};

/**
 * Parses the next option of a command line, consuming as many arguments as it takes.
 *
 * An argument that begins with a prefix is an option. It is looked up in the table as a long option
 * first, unless STROPT_DOUBLED asks for a second prefix of the same kind in front of a long name. A
 * name that is not in the table is an error with STROPT_DOUBLED; without it, the argument is taken
 * for a short option, as is everything behind a single prefix where there is no table. What stands
 * behind a short option is its value or, with STROPT_CLUSTERS, more short options.
 *
 * A table entry is a name alone, for an option that takes no attached value, or a list of
 * characters, one space and a name: each of those characters may part the name from its value if it
 * is a delimiter as well. "= name" accepts name and name=value. Names are compared by exact bytes
 * and never abbreviated.
 *
 * With STROPT_FOLLOWING such an entry also takes its value from the arguments that follow: behind
 * name= the next one, whatever it looks like; behind name the text behind a character of the list
 * in the next one, or, if there is no such text, the one after. An argument that begins with none
 * of the list is kept for the next call, so that stroptGetString() would give it as the value.
 *
 * @param option      the parser
 * @param prefixes    characters that open an option. Behind a space: value characters, which give
 *                    the rest of the argument as STROPT_VALUE. Null: every argument is parsed as
 *                    with STROPT_PLAIN and without STROPT_DOUBLED
 * @param delimiters  characters that may end a long name. An empty set allows none; null allows
 *                    all that an entry lists
 * @param table       the entries, or null. Of entries of one name the first is found, and with
 *                    STROPT_SORTED any of them
 * @param count       number of entries, below 2 to the 28th; 0 for a null table
 * @return a class or a character
 * @see stroptGetString(), stroptArgv(), stroptTable()
 */
TESSEL_API int32_t stroptGetOption(str_option *option, const char *prefixes, const char *delimiters,
                                   const char *const *table, uint32_t count);

/**
 * Gives the value of the option just parsed, wherever it stands. That is `value` if there is one,
 * which stays there, otherwise the next argument, whatever it looks like, which then is `current`.
 * It does not end a cluster: for an option whose value is the rest of a cluster the caller clears
 * STROPT_IN_CLUSTER.
 *
 * @param option  the parser
 * @return the value, or null when no argument is left
 * @see stroptGetOption()
 */
TESSEL_API char *stroptGetString(str_option *option);

/**
 * Fetches the next argument of an argument vector as main() gets it. `cursor`, set to the start of
 * an array of strings with a null element at its end, moves on, then its string is given. So the
 * first one, the program's name, is skipped.
 *
 * @param option  the parser, whose `fetch` this is
 * @return the argument, or null at the end, at every later call as well
 * @see stroptTable(), stroptGetOption()
 */
TESSEL_API char *stroptArgv(str_option *option);

/**
 * Fetches the next argument of a table of strings, from the first one on. The string at `cursor`,
 * set to the start of an array of strings with a null element at its end, is given, then `cursor`
 * moves on. So no string is skipped, unlike with stroptArgv().
 *
 * @param option  the parser, whose `fetch` this is
 * @return the argument, or null at the end, at every later call as well
 * @see stroptArgv(), stroptGetOption()
 */
TESSEL_API char *stroptTable(str_option *option);

#ifdef __cplusplus
}
#endif

#endif
