/**
 * @file
 * Memory: heap blocks, elements in the byte order of a stream, two-dimensional arrays, and searches
 * in plain ones.
 *
 * A block is held as one pointer and is the same thing as a block of the C library's allocator.
 * An exhausted heap shows as a null result and as nothing else. No procedure here keeps state, so
 * all of them may run in any number of threads, on different data.
 *
 * A two-dimensional array is reached through its row table, an array of row pointers, and its rows
 * need not have the same size. In one block the table stands first and the rows follow it without a
 * gap, aligned as the sizes in front of them leave them; separate rows are blocks of their own.
 * Every procedure over such an array is given the sizes of the rows anew, in the same four
 * arguments: `unit`, the base size in bytes; `first` and `second`, two lists of row dimensions, 0
 * or more, either or both of them null; and `flags`, MEM_STEP_FIRST and MEM_STEP_SECOND joined with
 * the width of the numbers in both lists. A row takes `unit` times its number in each list that is
 * not null. For rows of 1, 2 and 3 doubles: 8, an array of the 16-bit numbers 1, 2 and 3, null, and
 * 2 | MEM_STEP_FIRST.
 */
#ifndef TESSEL_MEM_H
#define TESSEL_MEM_H

#include "tessel/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The element descriptor, one word that goes with every typed stream transfer: the low byte is the
 * element size in bytes, where 0 and 1 both mean plain bytes, and these bits join it. All others
 * are ignored.
 */
enum {
    MEM_SIZE_MASK = 0xff,      /**< the element size */
    MEM_NO_RESTORE = 0x100,    /**< the caller's elements may stay in stream order after a write */
    MEM_ORDER_LITTLE = 0x1000, /**< stream order: least significant byte first; 0 counts as this */
    MEM_ORDER_BIG = 0x2000,    /**< stream order: most significant byte first */
    MEM_ORDER_OTHER = 0x3000,  /**< stream order: neither of the two; no byte is moved for it */
    MEM_ORDER_MASK = 0x3000    /**< the field that holds the order */
};

/** Conversion codes, the results of memByteOrderHint(). */
enum {
    MEM_CONVERT_NONE = 0,         /**< stream and machine agree */
    MEM_CONVERT_INVERT = 1,       /**< reverse the bytes of each element */
    MEM_CONVERT_LITTLE_OTHER = 2, /**< between little-endian and the third order */
    MEM_CONVERT_BIG_OTHER = 3     /**< between big-endian and the third order */
};

/**
 * Converts one element for memConvCopy().
 *
 * @param first   the element's address in the first run
 * @param second  the element's address in the second run; which of the two is read and which is
 *                written is the procedure's own business
 */
typedef void (*mem_convert_proc)(void *first, void *second);

/**
 * Allocates a block of memory with undefined contents.
 *
 * @param size  bytes; 0 gives what malloc(0) gives
 * @return the block, to be released with memFree(), or null when memory ran out
 * @see memCAlloc(), memAllocExtra(), memResize(), memFree()
 */
TESSEL_API void *memAlloc(uint32_t size);

/**
 * Changes the size of a block of memory, keeping its contents up to the smaller of both sizes.
 *
 * @param block  a block, or null to allocate one
 * @param size   bytes, above 0; what 0 does is the C library's choice, and it may release the block
 *               and give null
 * @return the block, possibly moved, or null when memory ran out; the old block then still stands
 * @see memAlloc(), memFree()
 */
TESSEL_API void *memResize(void *block, uint32_t size);

/**
 * Allocates a block of memory with all bytes zero.
 *
 * @param size  bytes; 0 gives what malloc(0) gives
 * @return the block, to be released with memFree(), or null when memory ran out
 * @see memAlloc(), memFree()
 */
TESSEL_API void *memCAlloc(uint32_t size);

/**
 * Releases a block of memory.
 *
 * @param block  a block, or null, which does nothing
 * @see memReset(), memAlloc(), memFreeExtra()
 */
TESSEL_API void memFree(void *block);

/**
 * Releases the block that a pointer variable holds and sets the variable to null.
 *
 * @param blockRef  address of the variable, whatever type of object it points to; the variable may
 *                  hold null
 * @see memFree()
 */
TESSEL_API void memReset(void *blockRef);

/**
 * Allocates a body with room for a header in front of it, in one block.
 *
 * @param size   bytes of the body
 * @param extra  bytes of the header; nothing records it, so memExtra() and memFreeExtra() must be
 *               given the same number
 * @return the body, to be released with memFreeExtra(), or null when memory ran out or the sum does
 *         not fit 32 bits
 * @see memExtra(), memFreeExtra(), memAlloc()
 */
TESSEL_API void *memAllocExtra(uint32_t size, uint32_t extra);

/**
 * Releases a body that has room for a header in front of it, and the header with it.
 *
 * @param body   the body from memAllocExtra(), or null, which does nothing
 * @param extra  bytes of the header, as it was allocated
 * @see memAllocExtra(), memFree()
 */
TESSEL_API void memFreeExtra(void *body, uint32_t extra);

/**
 * Gives the address of the header in front of a body.
 *
 * @param body   the body from memAllocExtra()
 * @param extra  bytes of the header, as it was allocated
 * @return `body` minus `extra`, computed for a null `body` as well
 * @see memAllocExtra()
 */
TESSEL_API void *memExtra(void *body, uint32_t extra);

/**
 * Rounds a number up to a multiple of another. The result is `value` plus `unit` - 1, divided by
 * `unit` towards zero, times `unit`.
 *
 * @param value  0 or more for the usual meaning; a negative one goes through the same three steps,
 *               so that -8 by 4 gives -4
 * @param unit   above 0 for the usual meaning; 0 gives `value`
 * @return the multiple; every step wraps at 32 bits
 * @see memAlloc2D(), memAllocExtra()
 */
TESSEL_API int32_t memAlign(int32_t value, int32_t unit);

/**
 * Finds the machine's own byte order, at run time.
 *
 * @return one of the MEM_ORDER values
 * @see memByteOrderHint()
 */
TESSEL_API uint32_t memByteOrder(void);

/**
 * Tells what has to be done to elements of a byte order on this machine.
 *
 * @param order  compared as a whole word with MEM_ORDER_BIG and MEM_ORDER_OTHER; any other value
 *               counts as little-endian
 * @return a conversion code: MEM_CONVERT_NONE, MEM_CONVERT_INVERT, MEM_CONVERT_LITTLE_OTHER or
 *         MEM_CONVERT_BIG_OTHER
 * @see memByteOrder(), memReorder()
 */
TESSEL_API int32_t memByteOrderHint(uint32_t order);

/**
 * Brings elements from machine order into a stream's order or back, in place.
 *
 * @param data        the first element, at any alignment
 * @param count       number of elements
 * @param descriptor  element descriptor: element size and order; other bits are ignored
 * @return 0 when nothing had to be done; otherwise 1, for the third order as well, whose elements
 *         stay as they are
 * @see memByteOrderHint(), memInvertB(), ioRead(), ioWrite()
 */
TESSEL_API int32_t memReorder(void *data, uint32_t count, uint32_t descriptor);

/**
 * Reverses a run of bytes in place.
 *
 * @param data    the first byte
 * @param length  number of bytes; below 2 nothing happens
 * @see memInvertB(), memInvertA()
 */
TESSEL_API void memInvert(void *data, uint32_t length);

/**
 * Reverses the bytes inside each of several elements, in place. The elements' order stays. Applied
 * twice it restores the data.
 *
 * @param data   the first element, at any alignment
 * @param count  number of elements
 * @param size   bytes of one element
 * @see memInvert(), memInvertA(), memReorder()
 */
TESSEL_API void memInvertB(void *data, uint32_t count, uint32_t size);

/**
 * Reverses the order of elements and leaves the bytes inside each alone.
 *
 * @param data     the first element
 * @param scratch  room for one element outside of `data`; undefined afterwards, untouched when
 *                 there is nothing to exchange
 * @param count    number of elements; below 2 nothing happens
 * @param size     bytes of one element
 * @see memInvert(), memInvertB()
 */
TESSEL_API void memInvertA(void *data, void *scratch, int32_t count, uint32_t size);

/**
 * Calls a procedure with pairs of addresses, walking two runs of elements in step.
 *
 * @param first       where the first run starts
 * @param second      where the second run starts
 * @param convert     called with both addresses
 * @param count       number of calls; 0 or below makes none
 * @param firstStep   bytes from one element of the first run to the next, also 0 or negative
 * @param secondStep  bytes from one element of the second run to the next, also 0 or negative
 * @see memReorder(), memCopy2D()
 */
TESSEL_API void memConvCopy(void *first, void *second, mem_convert_proc convert, int32_t count,
                            int32_t firstStep, int32_t secondStep);

/**
 * Narrows a 32-bit integer in place. Its low `width` bytes come to stand at its own address, in
 * machine order.
 *
 * @param address  a 32-bit integer in machine order, at any alignment
 * @param width    1 or 2; any other width does nothing
 * @see memRestoreInt(), ioWriteInt()
 */
TESSEL_API void memReduceInt(void *address, uint32_t width);

/**
 * Reads a stored integer in machine order, at any alignment.
 *
 * @param address  the integer
 * @param width    1 or 2 bytes, zero-extended; any other width reads four bytes
 * @return the integer
 * @see memReduceInt(), memCountIdentity()
 */
TESSEL_API uint32_t memRestoreInt(const void *address, uint32_t width);

/** How the size lists of a two-dimensional array are read. Other bits are ignored. */
enum {
    MEM_WIDTH_MASK = 0xff,   /**< bytes of a number: 1 and 2 are signed, 4 is 32 bits; with any
                                  other width the numbers are of 2 bytes and that far apart */
    MEM_STEP_FIRST = 0x4000, /**< each row has its own number in `first`; otherwise all share one */
    MEM_STEP_SECOND = 0x8000 /**< the same for `second` */
};

/**
 * Gives the bytes that a two-dimensional array takes in one block. They are those of the row table
 * and of all rows.
 *
 * @param rows    number of rows
 * @param unit    base size of a row in bytes
 * @param first   list of row dimensions, each 0 or more, or null for a factor of 1
 * @param second  a second list of row dimensions, or null for a factor of 1
 * @param flags   bytes of a number in the lists, 1, 2 or 4, with MEM_STEP_FIRST, MEM_STEP_SECOND
 * @return the sum, which wraps at 32 bits; memAlloc2D() is the one that notices
 * @see memAlloc2D(), memInit2D()
 */
TESSEL_API uint32_t memSize2D(uint32_t rows, uint32_t unit, const void *first, const void *second,
                              uint32_t flags);

/**
 * Fills in the row table of a two-dimensional array and leaves the rows alone.
 *
 * @param table   room for `rows` pointers
 * @param data    where the first row begins, or null: directly behind the table
 * @param rows    number of rows
 * @param unit    base size of a row in bytes
 * @param first   list of row dimensions, each 0 or more, or null for a factor of 1
 * @param second  a second list of row dimensions, or null for a factor of 1
 * @param flags   bytes of a number in the lists, 1, 2 or 4, with MEM_STEP_FIRST, MEM_STEP_SECOND
 * @see memInitRect(), memSize2D(), memAlloc2D()
 */
TESSEL_API void memInit2D(void *table, void *data, uint32_t rows, uint32_t unit, const void *first,
                          const void *second, uint32_t flags);

/**
 * Allocates a two-dimensional array in one block. Its row table is filled in and its rows are
 * undefined.
 *
 * @param rows    number of rows; 0 gives what memAlloc(0) gives
 * @param unit    base size of a row in bytes
 * @param first   list of row dimensions, each 0 or more, or null for a factor of 1
 * @param second  a second list of row dimensions, or null for a factor of 1
 * @param flags   bytes of a number in the lists, 1, 2 or 4, with MEM_STEP_FIRST, MEM_STEP_SECOND
 * @return the row table, to be released with one memFree(), or null when memory ran out or the
 *         block would take more than 32 bits can tell
 * @see memAllocRect(), memAlloc2DExt(), memCopy2D(), memSet2D(), memFree()
 */
TESSEL_API void *memAlloc2D(uint32_t rows, uint32_t unit, const void *first, const void *second,
                            uint32_t flags);

/**
 * Copies each row of a two-dimensional array to the same row of another. It does so whatever kinds
 * of array they are. The rows must not overlap.
 *
 * @param target  row table of the array that is written
 * @param source  row table of the array that is read
 * @param rows    number of rows
 * @param unit    base size of a row in bytes, of both arrays
 * @param first   list of row dimensions, each 0 or more, or null for a factor of 1
 * @param second  a second list of row dimensions, or null for a factor of 1
 * @param flags   bytes of a number in the lists, 1, 2 or 4, with MEM_STEP_FIRST, MEM_STEP_SECOND
 * @see memSet2D(), memAlloc2D(), memAlloc2DExt()
 */
TESSEL_API void memCopy2D(void *target, const void *source, uint32_t rows, uint32_t unit,
                          const void *first, const void *second, uint32_t flags);

/**
 * Fills each row of a two-dimensional array with a byte.
 *
 * @param table   row table
 * @param byte    its low 8 bits are stored in every byte
 * @param rows    number of rows
 * @param unit    base size of a row in bytes
 * @param first   list of row dimensions, each 0 or more, or null for a factor of 1
 * @param second  a second list of row dimensions, or null for a factor of 1
 * @param flags   bytes of a number in the lists, 1, 2 or 4, with MEM_STEP_FIRST, MEM_STEP_SECOND
 * @see memCopy2D(), memAlloc2D(), memAlloc2DExt()
 */
TESSEL_API void memSet2D(void *table, int32_t byte, uint32_t rows, uint32_t unit, const void *first,
                         const void *second, uint32_t flags);

/**
 * Fills in the row table of a two-dimensional array with rows of equal size.
 *
 * @param table     room for `rows` pointers
 * @param data      where the first row begins, or null: directly behind the table
 * @param rows      number of rows
 * @param rowBytes  bytes of each row
 * @see memInit2D(), memAllocRect()
 */
TESSEL_API void memInitRect(void *table, void *data, uint32_t rows, uint32_t rowBytes);

/**
 * Allocates a two-dimensional array with rows of equal size in one block. Its row table is filled
 * in and its rows are undefined.
 *
 * @param rows      number of rows; 0 gives what memAlloc(0) gives
 * @param rowBytes  bytes of each row
 * @return the row table, to be released with one memFree(), or null when memory ran out or the
 *         block would take more than 32 bits can tell
 * @see memAlloc2D(), memInitRect(), memFree()
 */
TESSEL_API void *memAllocRect(uint32_t rows, uint32_t rowBytes);

/**
 * Allocates a two-dimensional array whose row table and rows are blocks of their own. The rows are
 * undefined.
 *
 * @param rows    number of rows; 0 allocates the table alone
 * @param unit    base size of a row in bytes
 * @param first   list of row dimensions, each 0 or more, or null for a factor of 1
 * @param second  a second list of row dimensions, or null for a factor of 1
 * @param flags   bytes of a number in the lists, 1, 2 or 4, with MEM_STEP_FIRST, MEM_STEP_SECOND
 * @return the row table, to be released with memFree2DExt(), or null when memory ran out, a row or
 *         the table would take more than 32 bits can tell, or `rows` is negative; no block then
 *         remains. A row of no bytes fails where memAlloc(0) gives null
 * @see memFree2DExt(), memAlloc2D()
 */
TESSEL_API void *memAlloc2DExt(int32_t rows, uint32_t unit, const void *first, const void *second,
                               uint32_t flags);

/**
 * Releases a two-dimensional array of separate rows.
 *
 * @param table  row table from memAlloc2DExt(), or null, which does nothing
 * @param rows   number of rows, as it was allocated
 * @see memAlloc2DExt()
 */
TESSEL_API void memFree2DExt(void *table, int32_t rows);

/**
 * Compares for the searches and counts below, which say for themselves which of the two arguments
 * is the key and which the element's address. The key is passed through unread: a number in the
 * guise of an address will do.
 *
 * @param first   the key or the element's address, as the procedure that calls this one says
 * @param second  the other of the two
 * @return 0 for a match
 */
typedef int32_t (*mem_compare_proc)(const void *first, const void *second);

/**
 * Finds the first matching element of an array in any order. This is sequential search (Knuth, The
 * Art of Computer Programming, volume 3, section 6.1, algorithm S).
 *
 * @param base     the array
 * @param count    number of elements
 * @param size     bytes of one element
 * @param key      goes to `compare`
 * @param compare  called with the key and an element's address; anything but 0 is no match
 * @param index    where the index of the element goes, or null; left alone if none is found
 * @return the element's address, or null
 * @see memBinSearch(), memCountIdentityExt()
 */
TESSEL_API void *memLinSearch(const void *base, uint32_t count, uint32_t size, const void *key,
                              mem_compare_proc compare, uint32_t *index);

/**
 * Finds a matching element of an array in ascending order, by halving. This is binary search
 * (Knuth, The Art of Computer Programming, volume 3, section 6.2.1, algorithm B). Among several
 * matches it finds the one that the halving meets first. In an array without order it may miss a
 * match, but ends as soon.
 *
 * @param base     the array
 * @param count    number of elements
 * @param size     bytes of one element
 * @param key      goes to `compare`
 * @param compare  called with an element's address and the key; a result below 0 says that the
 *                 element lies before the key, above 0 that it lies after it
 * @param index    where the index of the element goes, or null; left alone if none is found
 * @return the element's address, or null
 * @see memLinSearch(), ioBinSearch()
 */
TESSEL_API void *memBinSearch(const void *base, uint32_t count, uint32_t size, const void *key,
                              mem_compare_proc compare, uint32_t *index);

/**
 * Counts the elements of an integer array that equal a number.
 *
 * @param base    the array, at any alignment
 * @param count   number of elements
 * @param width   bytes of one element: 1, 2 or 4; read as memRestoreInt() reads them, so that 1 and
 *                2 are zero-extended and never equal a negative number. Any other width reads four
 *                bytes at steps of `width`
 * @param number  compared as a whole 32-bit word
 * @return how many
 * @see memCountIdentityExt(), memRestoreInt()
 */
TESSEL_API uint32_t memCountIdentity(const void *base, uint32_t count, uint32_t width,
                                     uint32_t number);

/**
 * Counts the elements of an array that match a key.
 *
 * @param key      goes to `compare`
 * @param base     the array
 * @param count    number of elements
 * @param size     bytes of one element
 * @param compare  called with the key and an element's address; anything but 0 is no match
 * @return how many
 * @see memCountIdentity(), memLinSearch()
 */
TESSEL_API uint32_t memCountIdentityExt(const void *key, const void *base, uint32_t count,
                                        uint32_t size, mem_compare_proc compare);

#ifdef __cplusplus
}
#endif

#endif
