/**
 * @file
 * Wide integers: 64-bit arithmetic on values of two 32-bit halves, and their text in any radix.
 *
 * An x_int is passed and returned by value, and so are all results: nothing here allocates, keeps
 * state or touches memory other than the text it is given, so all of it may run in any number of
 * threads, on texts of their own.
 *
 * The type has no sign of its own. Negative values are in two's complement, and each procedure says
 * whether it takes its operands as signed. Where it says nothing the bits are the same either way.
 *
 * Results are taken modulo 2 to the 64th. Overflow is not reported, and every procedure has a
 * result for all operands.
 */
#ifndef TESSEL_INTEGER_H
#define TESSEL_INTEGER_H

#include "tessel/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A 64-bit integer; the order of the halves is the same on every machine. */
typedef struct x_int {
    uint32_t low;  /**< bits 0 to 31 */
    uint32_t high; /**< bits 32 to 63; bit 63 is the sign of a signed value */
} x_int;

/** Flags of x_divide() and, X_UNSIGNED, of a text format. */
enum {
    X_REMAINDER = 0x2,  /**< x_divide: give the remainder instead of the quotient */
    X_UNSIGNED = 0x1000 /**< values are unsigned; without it they are signed */
};

/**
 * The format of a number text: the radix in the low byte, X_UNSIGNED and X_CAPITALS. All other bits
 * are ignored. For radixes from 2 to 36 one word serves x_string() and x_value().
 */
enum {
    X_RADIX_MASK = 0xff, /**< the radix */
    X_CAPITALS = 0x2000  /**< x_string: digits from 10 upward are capital letters */
};

/**
 * Makes a wide integer of two halves. The high one comes first, as in a written number.
 *
 * @param high  bits 32 to 63
 * @param low   bits 0 to 31
 * @return the value with these halves
 * @see x_short(), x_value()
 */
TESSEL_API x_int x_const(uint32_t high, uint32_t low);

/**
 * Widens a 32-bit number to an unsigned wide integer, so that -1 gives 0x00000000ffffffff.
 *
 * @param value  the number
 * @return the value with this low half and a high half of 0
 * @see x_const(), x_conv_x()
 */
TESSEL_API x_int x_short(uint32_t value);

/**
 * Narrows a wide integer to 32 bits; the high half is dropped.
 *
 * @param a  the value
 * @return the low half
 * @see x_short()
 */
TESSEL_API uint32_t x_conv_x(x_int a);

/**
 * Negates a wide integer: the result is the negation, not the sign.
 *
 * @param a  the value
 * @return -`a`; the most negative value gives itself
 * @see x_not(), x_sub()
 */
TESSEL_API x_int x_sign(x_int a);

/**
 * Adds two wide integers.
 *
 * @param a  a value
 * @param b  the value to add
 * @return `a` + `b`, modulo 2 to the 64th
 * @see x_add1(), x_sub()
 */
TESSEL_API x_int x_add(x_int a, x_int b);

/**
 * Adds 1 to a wide integer.
 *
 * @param a  the value
 * @return `a` + 1, modulo 2 to the 64th
 * @see x_add(), x_sub1()
 */
TESSEL_API x_int x_add1(x_int a);

/**
 * Subtracts one wide integer from another.
 *
 * @param a  a value
 * @param b  the value to subtract
 * @return `a` - `b`, modulo 2 to the 64th
 * @see x_sub1(), x_sign(), x_add()
 */
TESSEL_API x_int x_sub(x_int a, x_int b);

/**
 * Subtracts 1 from a wide integer.
 *
 * @param a  the value
 * @return `a` - 1, modulo 2 to the 64th
 * @see x_sub(), x_add1()
 */
TESSEL_API x_int x_sub1(x_int a);

/**
 * Multiplies two wide integers.
 *
 * @param a  a factor
 * @param b  the other factor
 * @return the low 64 bits of the product, the same for signed and unsigned factors
 * @see x_divide()
 */
TESSEL_API x_int x_mul(x_int a, x_int b);

/**
 * Divides wide integers, for the quotient or the remainder. A signed quotient is cut towards zero,
 * and a signed remainder has the sign of `a`.
 *
 * @param a      the dividend
 * @param b      the divisor; 0 gives quotient 0 and remainder `a`
 * @param flags  0, X_REMAINDER, X_UNSIGNED or both; other bits are ignored
 * @return the quotient or the remainder: `a` is always quotient times `b` plus remainder. The most
 *         negative value divided by -1 wraps to itself
 * @see x_mul(), x_shr(), x_ushr()
 */
TESSEL_API x_int x_divide(x_int a, x_int b, uint32_t flags);

/**
 * Joins two wide integers by a bitwise and.
 *
 * @param a  a value
 * @param b  the other value
 * @return the bits that are set in both
 * @see x_or(), x_xor(), x_not()
 */
TESSEL_API x_int x_and(x_int a, x_int b);

/**
 * Joins two wide integers by a bitwise or.
 *
 * @param a  a value
 * @param b  the other value
 * @return the bits that are set in one of them or in both
 * @see x_and(), x_xor(), x_not()
 */
TESSEL_API x_int x_or(x_int a, x_int b);

/**
 * Joins two wide integers by a bitwise exclusive or.
 *
 * @param a  a value
 * @param b  the other value
 * @return the bits that are set in just one of them
 * @see x_and(), x_or(), x_not()
 */
TESSEL_API x_int x_xor(x_int a, x_int b);

/**
 * Inverts every bit of a wide integer.
 *
 * @param a  the value
 * @return the bits that are clear in `a`
 * @see x_sign(), x_xor()
 */
TESSEL_API x_int x_not(x_int a);

/**
 * Shifts a wide integer right and fills it with its sign.
 *
 * @param a      the value, signed
 * @param shift  bits; 64 or more leave nothing but the sign
 * @return `a` divided by 2 to the power of `shift`, rounded down
 * @see x_ushr(), x_divide()
 */
TESSEL_API x_int x_shr(x_int a, uint32_t shift);

/**
 * Shifts a wide integer right and fills it with zeros.
 *
 * @param a      the value, unsigned
 * @param shift  bits; 64 or more give 0
 * @return `a` divided by 2 to the power of `shift`, rounded down
 * @see x_shr(), x_divide()
 */
TESSEL_API x_int x_ushr(x_int a, uint32_t shift);

/**
 * Tells whether a wide integer is 0.
 *
 * @param a  the value
 * @return 1 when `a` is 0, otherwise 0
 * @see x_nonzero(), x_eq()
 */
TESSEL_API int32_t x_zero(x_int a);

/**
 * Tells whether a wide integer differs from 0.
 *
 * @param a  the value
 * @return 1 when `a` is not 0, otherwise 0
 * @see x_zero(), x_ne()
 */
TESSEL_API int32_t x_nonzero(x_int a);

/**
 * Tells whether two wide integers are equal.
 *
 * @param a  a value
 * @param b  the other value
 * @return 1 when `a` equals `b`, otherwise 0
 * @see x_ne(), x_zero()
 */
TESSEL_API int32_t x_eq(x_int a, x_int b);

/**
 * Tells whether two wide integers differ.
 *
 * @param a  a value
 * @param b  the other value
 * @return 1 when `a` differs from `b`, otherwise 0
 * @see x_eq(), x_nonzero()
 */
TESSEL_API int32_t x_ne(x_int a, x_int b);

/**
 * Tells whether a signed wide integer is greater than another one.
 *
 * @param a  a value, signed
 * @param b  the value to compare it with, signed
 * @return 1 when `a` > `b`, otherwise 0
 * @see x_ugt(), x_ge(), x_le()
 */
TESSEL_API int32_t x_gt(x_int a, x_int b);

/**
 * Tells whether a signed wide integer is greater than another one or equal to it.
 *
 * @param a  a value, signed
 * @param b  the value to compare it with, signed
 * @return 1 when `a` >= `b`, otherwise 0
 * @see x_uge(), x_gt(), x_lt()
 */
TESSEL_API int32_t x_ge(x_int a, x_int b);

/**
 * Tells whether a signed wide integer is less than another one.
 *
 * @param a  a value, signed
 * @param b  the value to compare it with, signed
 * @return 1 when `a` < `b`, otherwise 0
 * @see x_ult(), x_le(), x_ge()
 */
TESSEL_API int32_t x_lt(x_int a, x_int b);

/**
 * Tells whether a signed wide integer is less than another one or equal to it.
 *
 * @param a  a value, signed
 * @param b  the value to compare it with, signed
 * @return 1 when `a` <= `b`, otherwise 0
 * @see x_ule(), x_lt(), x_gt()
 */
TESSEL_API int32_t x_le(x_int a, x_int b);

/**
 * Tells whether an unsigned wide integer is greater than another one.
 *
 * @param a  a value, unsigned
 * @param b  the value to compare it with, unsigned
 * @return 1 when `a` > `b`, otherwise 0
 * @see x_gt(), x_uge(), x_ule()
 */
TESSEL_API int32_t x_ugt(x_int a, x_int b);

/**
 * Tells whether an unsigned wide integer is greater than another one or equal to it.
 *
 * @param a  a value, unsigned
 * @param b  the value to compare it with, unsigned
 * @return 1 when `a` >= `b`, otherwise 0
 * @see x_ge(), x_ugt(), x_ult()
 */
TESSEL_API int32_t x_uge(x_int a, x_int b);

/**
 * Tells whether an unsigned wide integer is less than another one.
 *
 * @param a  a value, unsigned
 * @param b  the value to compare it with, unsigned
 * @return 1 when `a` < `b`, otherwise 0
 * @see x_lt(), x_ule(), x_uge()
 */
TESSEL_API int32_t x_ult(x_int a, x_int b);

/**
 * Tells whether an unsigned wide integer is less than another one or equal to it.
 *
 * @param a  a value, unsigned
 * @param b  the value to compare it with, unsigned
 * @return 1 when `a` <= `b`, otherwise 0
 * @see x_le(), x_ult(), x_ugt()
 */
TESSEL_API int32_t x_ule(x_int a, x_int b);

/**
 * Writes a wide integer as text in any radix. That is digits, in radix 10 behind a `-` when the
 * value is negative and the format does not say X_UNSIGNED. Any other radix takes the value as
 * unsigned. There is no prefix, no fill and no plus sign.
 *
 * @param value   the number
 * @param dest    where to write
 * @param size    room at `dest` in characters, the terminator included; 65 serves every radix
 * @param format  a radix of 2 or more, X_UNSIGNED, X_CAPITALS. Beyond radix 36 the digit characters
 *                run on behind `z` or `Z` in the character set, and x_value() does not read them.
 *                From radix 170 on a digit may be a NUL, from 215 on a `-`, which as the last digit
 *                comes first
 * @return the number of characters, the sign included and the terminator not; 0 for a text that
 *         does not fit: the `size` - 1 characters at `dest` are then the sign and the last digits,
 *         in reverse order and not terminated, and a `size` of 1 or less writes nothing. 0 also for
 *         a radix of 0 or 1, which with a `size` of 2 or more writes an empty text
 * @see x_value()
 */
TESSEL_API int32_t x_string(x_int value, char *dest, int32_t size, uint32_t format);

/**
 * Reads a wide integer from text in any radix. The text is white space (space, tab, carriage
 * return, line feed), one `+` or `-`, digits. The first character that is no digit of the radix
 * ends the number; what follows is not looked at.
 *
 * @param text   the text
 * @param radix  the radix, of which the low 8 bits count. With 0 the text decides: `0x` or `0X`
 *               stands in front of radix 16, another leading `0` means radix 8, and anything else
 *               radix 10. A radix that is given knows no prefix. Letters, small or capital, are the
 *               digits 10 to 35
 * @return the number, negated after a `-`; without digits 0, with too many the low 64 bits
 * @see x_string(), x_const()
 */
TESSEL_API x_int x_value(const char *text, uint32_t radix);

#ifdef __cplusplus
}
#endif

#endif
