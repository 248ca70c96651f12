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

/** The value with these halves. The high one comes first, as in a written number. */
TESSEL_API x_int x_const(uint32_t high, uint32_t low);

/** The value with this low half and a high half of 0, so that -1 gives 0x00000000ffffffff. */
TESSEL_API x_int x_short(uint32_t value);

/** The low half; the high one is dropped. */
TESSEL_API uint32_t x_conv_x(x_int a);

/** The negation of `a`, not its sign; the most negative value gives itself. */
TESSEL_API x_int x_sign(x_int a);

/** `a` + `b`. */
TESSEL_API x_int x_add(x_int a, x_int b);

/** `a` + 1. */
TESSEL_API x_int x_add1(x_int a);

/** `a` - `b`. */
TESSEL_API x_int x_sub(x_int a, x_int b);

/** `a` - 1. */
TESSEL_API x_int x_sub1(x_int a);

/** `a` times `b`: the low 64 bits of the product. */
TESSEL_API x_int x_mul(x_int a, x_int b);

/**
 * Divides. A signed quotient is cut towards zero, and a signed remainder has the sign of `a`.
 *
 * @param a      the dividend
 * @param b      the divisor; 0 gives quotient 0 and remainder `a`
 * @param flags  0, X_REMAINDER, X_UNSIGNED or both; other bits are ignored
 * @return the quotient or the remainder: `a` is always quotient times `b` plus remainder. The most
 *         negative value divided by -1 wraps to itself
 */
TESSEL_API x_int x_divide(x_int a, x_int b, uint32_t flags);

/** Bitwise and. */
TESSEL_API x_int x_and(x_int a, x_int b);

/** Bitwise or. */
TESSEL_API x_int x_or(x_int a, x_int b);

/** Bitwise exclusive or. */
TESSEL_API x_int x_xor(x_int a, x_int b);

/** Every bit inverted. */
TESSEL_API x_int x_not(x_int a);

/** `a` shifted right, filled with its sign; a `shift` of 64 or more leaves nothing but the sign. */
TESSEL_API x_int x_shr(x_int a, uint32_t shift);

/** `a` shifted right, filled with zeros; a `shift` of 64 or more gives 0. */
TESSEL_API x_int x_ushr(x_int a, uint32_t shift);

/** 1 when `a` is 0, otherwise 0. */
TESSEL_API int32_t x_zero(x_int a);

/** 1 when `a` is not 0, otherwise 0. */
TESSEL_API int32_t x_nonzero(x_int a);

/** 1 when `a` equals `b`, otherwise 0. */
TESSEL_API int32_t x_eq(x_int a, x_int b);

/** 1 when `a` differs from `b`, otherwise 0. */
TESSEL_API int32_t x_ne(x_int a, x_int b);

/** 1 when `a` > `b`, both signed, otherwise 0. */
TESSEL_API int32_t x_gt(x_int a, x_int b);

/** 1 when `a` >= `b`, both signed, otherwise 0. */
TESSEL_API int32_t x_ge(x_int a, x_int b);

/** 1 when `a` < `b`, both signed, otherwise 0. */
TESSEL_API int32_t x_lt(x_int a, x_int b);

/** 1 when `a` <= `b`, both signed, otherwise 0. */
TESSEL_API int32_t x_le(x_int a, x_int b);

/** 1 when `a` > `b`, both unsigned, otherwise 0. */
TESSEL_API int32_t x_ugt(x_int a, x_int b);

/** 1 when `a` >= `b`, both unsigned, otherwise 0. */
TESSEL_API int32_t x_uge(x_int a, x_int b);

/** 1 when `a` < `b`, both unsigned, otherwise 0. */
TESSEL_API int32_t x_ult(x_int a, x_int b);

/** 1 when `a` <= `b`, both unsigned, otherwise 0. */
TESSEL_API int32_t x_ule(x_int a, x_int b);

/**
 * Writes a number as text: digits, in radix 10 behind a `-` when the value is negative and the
 * format does not say X_UNSIGNED. Any other radix takes the value as unsigned. There is no prefix,
 * no fill and no plus sign.
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
 */
TESSEL_API int32_t x_string(x_int value, char *dest, int32_t size, uint32_t format);

/**
 * Reads a number: white space (space, tab, carriage return, line feed), one `+` or `-`, digits. The
 * first character that is no digit of the radix ends the number; what follows is not looked at.
 *
 * @param text   the text
 * @param radix  the radix, of which the low 8 bits count. With 0 the text decides: `0x` or `0X`
 *               stands in front of radix 16, another leading `0` means radix 8, and anything else
 *               radix 10. A radix that is given knows no prefix. Letters, small or capital, are the
 *               digits 10 to 35
 * @return the number, negated after a `-`; without digits 0, with too many the low 64 bits
 */
TESSEL_API x_int x_value(const char *text, uint32_t radix);

#ifdef __cplusplus
}
#endif

#endif
