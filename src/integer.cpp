#include "tessel/integer.h"

#include "tessel/mem.h"

#include "bytes.h"
#include "element.h"

#include <stddef.h>

static_assert(sizeof(x_int) == 8 && offsetof(x_int, low) == 0 && offsetof(x_int, high) == 4);

// The halves are only the form at the interface. Inside, a value is one native integer, which costs
// nothing where both halves travel in one register and is halves again on a machine without 64-bit
// registers.
static uint64_t unsigned_of(x_int a)
{
    return uint64_t{a.high} << 32 | a.low;
}

static int64_t signed_of(x_int a)
{
    return static_cast<int64_t>(unsigned_of(a));
}

static x_int halves(uint64_t value)
{
    return {static_cast<uint32_t>(value), static_cast<uint32_t>(value >> 32)};
}

static x_int halves(int64_t value)
{
    return halves(static_cast<uint64_t>(value));
}

x_int x_const(uint32_t high, uint32_t low)
{
    return {low, high};
}

x_int x_short(uint32_t value)
{
    return {value, 0};
}

uint32_t x_conv_x(x_int a)
{
    return a.low;
}

x_int x_sign(x_int a)
{
    return halves(0 - unsigned_of(a));
}

x_int x_add(x_int a, x_int b)
{
    return halves(unsigned_of(a) + unsigned_of(b));
}

x_int x_add1(x_int a)
{
    return halves(unsigned_of(a) + 1);
}

x_int x_sub(x_int a, x_int b)
{
    return halves(unsigned_of(a) - unsigned_of(b));
}

x_int x_sub1(x_int a)
{
    return halves(unsigned_of(a) - 1);
}

x_int x_mul(x_int a, x_int b)
{
    return halves(unsigned_of(a) * unsigned_of(b));
}

static uint64_t divide(uint64_t a, uint64_t b, uint32_t flags)
{
    if (flags & X_UNSIGNED)
        return b == 0 ? 0 : a / b;
    // The lowest value by -1 is the one quotient that does not fit. Negation wraps.
    if (b == 0 || b == UINT64_MAX)
        return b == 0 ? 0 : 0 - a;
    return static_cast<uint64_t>(static_cast<int64_t>(a) / static_cast<int64_t>(b));
}

x_int x_divide(x_int a, x_int b, uint32_t flags)
{
    uint64_t result = divide(unsigned_of(a), unsigned_of(b), flags);
    // Measured: a jump on the quotient's way costs it a seventh of its time.
    if (flags & X_REMAINDER) [[unlikely]]
        result = unsigned_of(a) - result * unsigned_of(b);
    return halves(result);
}

x_int x_and(x_int a, x_int b)
{
    return halves(unsigned_of(a) & unsigned_of(b));
}

x_int x_or(x_int a, x_int b)
{
    return halves(unsigned_of(a) | unsigned_of(b));
}

x_int x_xor(x_int a, x_int b)
{
    return halves(unsigned_of(a) ^ unsigned_of(b));
}

x_int x_not(x_int a)
{
    return halves(~unsigned_of(a));
}

x_int x_shr(x_int a, uint32_t shift)
{
    return halves(signed_of(a) >> (shift < 63 ? shift : 63));
}

x_int x_ushr(x_int a, uint32_t shift)
{
    return halves(shift < 64 ? unsigned_of(a) >> shift : 0);
}

int32_t x_zero(x_int a)
{
    return unsigned_of(a) == 0;
}

int32_t x_nonzero(x_int a)
{
    return unsigned_of(a) != 0;
}

int32_t x_eq(x_int a, x_int b)
{
    return unsigned_of(a) == unsigned_of(b);
}

int32_t x_ne(x_int a, x_int b)
{
    return unsigned_of(a) != unsigned_of(b);
}

int32_t x_gt(x_int a, x_int b)
{
    return signed_of(a) > signed_of(b);
}

int32_t x_ge(x_int a, x_int b)
{
    return signed_of(a) >= signed_of(b);
}

int32_t x_lt(x_int a, x_int b)
{
    return signed_of(a) < signed_of(b);
}

int32_t x_le(x_int a, x_int b)
{
    return signed_of(a) <= signed_of(b);
}

int32_t x_ugt(x_int a, x_int b)
{
    return unsigned_of(a) > unsigned_of(b);
}

int32_t x_uge(x_int a, x_int b)
{
    return unsigned_of(a) >= unsigned_of(b);
}

int32_t x_ult(x_int a, x_int b)
{
    return unsigned_of(a) < unsigned_of(b);
}

int32_t x_ule(x_int a, x_int b)
{
    return unsigned_of(a) <= unsigned_of(b);
}

// What makes a letter of a digit from 10 upward.
static uint64_t letter_offset(uint32_t format)
{
    const char first = format & X_CAPITALS ? 'A' : 'a';
    return static_cast<uint8_t>(first) - 10u;
}

// The character of a digit. Beyond radix 36 they run on behind the letters, whatever comes there.
static char digit_character(uint64_t digit, uint32_t format)
{
    // By arithmetic: a jump that depends on a digit cannot be foreseen.
    return static_cast<char>('0' + digit + (digit >= 10) * (letter_offset(format) - '0'));
}

// Any radix, digit by digit behind the `written` characters that are there already, the least
// significant one first. A text that does not fit is left as far as it came.
// This and the two other ways to write stay out of line: in one body each of them would save all
// the registers that any of them needs, a fifth of the time of a decimal number.
[[gnu::noinline]] static int32_t write_digits(char *dest, uint32_t written, uint32_t room,
                                              uint64_t value, uint32_t format)
{
    const uint32_t radix = format & X_RADIX_MASK;
    do {
        if (written == room)
            return 0;
        dest[written++] = digit_character(value % radix, format);
        value /= radix;
    } while (value != 0);
    dest[written] = '\0';
    // The sign is told by its character, which a digit beyond radix 36 may have as well: such a
    // digit keeps its place.
    const uint32_t sign = dest[0] == '-';
    memInvert(dest + sign, written - sign);
    return static_cast<int32_t>(written);
}

static uint32_t count_bits(uint64_t value)
{
    return 64 - static_cast<uint32_t>(__builtin_clzll(value | 1));
}

struct power_table {
    uint64_t power[20];
};

static constexpr power_table powers_of_ten = [] {
    power_table table = {};
    uint64_t power = 1;
    for (uint64_t &entry : table.power) {
        entry = power;
        power *= 10;
    }
    return table;
}();

static uint32_t count_decimal_digits(uint64_t value)
{
    // 1233 / 4096 is the decimal logarithm of 2, near enough for 64 bits: one digit too low at
    // most.
    const uint32_t digits = count_bits(value) * 1233 >> 12;
    return digits + ((value | 1) >= powers_of_ten.power[digits]);
}

static constexpr uint64_t every_byte = 0x0101010101010101;

// A word of characters holds the first one in its lowest byte.
template <typename Word>
static void store_characters(char *dest, Word characters)
{
    store(dest, characters);
    if (conversion_code(MEM_ORDER_LITTLE) == MEM_CONVERT_INVERT)
        memInvert(dest, sizeof characters); // GCOVR_EXCL_LINE: only where the order is another
}

// The last `count` of eight characters, 1 to 8, in stores that overlap instead of a loop whose end
// cannot be foreseen.
static void store_last_characters(char *dest, uint32_t count, uint64_t characters)
{
    if (count >= 4) {
        store_characters(dest, static_cast<uint32_t>(characters >> 8 * (8 - count)));
        store_characters(dest + count - 4, static_cast<uint32_t>(characters >> 32));
    } else if (count >= 2) {
        store_characters(dest, static_cast<uint16_t>(characters >> 8 * (8 - count)));
        store_characters(dest + count - 2, static_cast<uint16_t>(characters >> 48));
    } else {
        *dest = static_cast<char>(characters >> 56);
    }
}

// The characters of the eight lowest digits of `digit_bits` each, all at once: the run of digits is
// cut in half three times, the upper half going to the lower bytes, until each has a byte.
template <uint32_t digit_bits>
static uint64_t binary_characters(uint64_t value, uint32_t format)
{
    constexpr uint64_t four = (uint64_t{1} << 4 * digit_bits) - 1;
    constexpr uint64_t two = ((uint64_t{1} << 2 * digit_bits) - 1) * 0x0000000100000001;
    constexpr uint64_t one = ((uint64_t{1} << digit_bits) - 1) * 0x0001000100010001;
    value = (value >> 4 * digit_bits & four) | (value & four) << 32;
    value = (value >> 2 * digit_bits & two) | (value & two) << 16;
    value = (value >> digit_bits & one) | (value & one) << 8;
    if (digit_bits <= 3)
        return value + every_byte * '0';
    const uint64_t letters = (value + every_byte * (0x80 - 10)) >> 7 & every_byte;
    return value + every_byte * '0' + letters * (letter_offset(format) - '0');
}

// The characters of the eight digits of a number below 100000000, all at once: cut in half until
// each digit has a byte, the upper half going to the lower bytes. The divisions by 100 and 10 are
// multiplications that are exact for what a lane can hold.
static uint64_t decimal_characters(uint32_t value)
{
    uint64_t digits = value / 10000 | uint64_t{value % 10000} << 32;
    uint64_t upper = digits * 10486 >> 20 & 0x0000007f0000007f;
    digits = upper | (digits - upper * 100) << 16;
    upper = digits * 103 >> 10 & 0x000f000f000f000f;
    digits = upper | (digits - upper * 10) << 8;
    return digits + every_byte * '0';
}

// The last `count` of eight characters, 1 to 8, and behind them the first of the next.
static uint64_t join_characters(uint32_t count, uint64_t characters, uint64_t next)
{
    return characters >> 8 * (8 - count) | next << 4 * count << 4 * count;
}

[[gnu::noinline]] static int32_t write_decimal(char *dest, uint32_t room, uint64_t value,
                                               uint32_t format)
{
    constexpr uint32_t eight_digits = 100000000;
    uint32_t sign = 0;
    if (!(format & X_UNSIGNED) && value >> 63) {
        value = 0 - value;
        dest[sign++] = '-';
    }
    const uint32_t count = count_decimal_digits(value);
    if (count > room - sign)
        return write_digits(dest, sign, room, value, format);

    char *const start = dest + sign;
    char *const end = start + count;
    *end = '\0';
    const uint64_t lower = decimal_characters(static_cast<uint32_t>(value % eight_digits));
    if (count <= 8) {
        store_last_characters(start, count, lower);
        return static_cast<int32_t>(sign + count);
    }
    store_characters(end - 8, lower);
    value /= eight_digits;
    const uint64_t middle = decimal_characters(static_cast<uint32_t>(value % eight_digits));
    if (count <= 16) {
        store_characters(start, join_characters(count - 8, middle, lower));
        return static_cast<int32_t>(sign + count);
    }
    store_characters(end - 16, middle);
    const uint64_t upper = decimal_characters(static_cast<uint32_t>(value / eight_digits));
    store_characters(start, join_characters(count - 16, upper, middle));
    return static_cast<int32_t>(sign + count);
}

// A radix that is a power of two, eight digits at a time. Digit by digit takes up to twice as long
// in radix 2.
template <uint32_t digit_bits>
[[gnu::noinline]] static int32_t write_binary(char *dest, uint32_t room, uint64_t value,
                                              uint32_t format)
{
    const uint32_t length = (count_bits(value) + digit_bits - 1) / digit_bits;
    if (length > room)
        return write_digits(dest, 0, room, value, format);

    char *end = dest + length;
    *end = '\0';
    if (length < 8) {
        store_last_characters(dest, length, binary_characters<digit_bits>(value, format));
        return static_cast<int32_t>(length);
    }
    // The leading eight first; where the length is no multiple of eight the next ones overlap.
    const uint64_t leading = value >> (length - 8) * digit_bits;
    store_characters(dest, binary_characters<digit_bits>(leading, format));
    while (end - dest > 8) {
        end -= 8;
        store_characters(end, binary_characters<digit_bits>(value, format));
        value >>= 8 * digit_bits;
    }
    return static_cast<int32_t>(length);
}

int32_t x_string(x_int value, char *dest, int32_t size, uint32_t format)
{
    if (size <= 1)
        return 0;
    const uint32_t room = static_cast<uint32_t>(size) - 1;
    switch (format & X_RADIX_MASK) {
    case 0:
    case 1:
        *dest = '\0';
        return 0;
    case 2:
        return write_binary<1>(dest, room, unsigned_of(value), format);
    case 4:
        return write_binary<2>(dest, room, unsigned_of(value), format);
    case 8:
        return write_binary<3>(dest, room, unsigned_of(value), format);
    case 10:
        return write_decimal(dest, room, unsigned_of(value), format);
    case 16:
        return write_binary<4>(dest, room, unsigned_of(value), format);
    case 32:
        return write_binary<5>(dest, room, unsigned_of(value), format);
    default:
        return write_digits(dest, 0, room, unsigned_of(value), format);
    }
}

static bool is_white(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Values of the digit characters; that of all others is below no radix.
struct digit_table {
    uint8_t value[256];
};

static constexpr digit_table digit_values = [] {
    digit_table table = {};
    for (uint8_t &entry : table.value)
        entry = X_RADIX_MASK;
    for (uint8_t i = 0; i < 10; i++)
        table.value['0' + i] = i;
    for (uint8_t i = 0; i < 26; i++)
        table.value['a' + i] = table.value['A' + i] = static_cast<uint8_t>(10 + i);
    return table;
}();

// The value of a digit character, or one that is not below the radix. Decimal digits do without the
// table, whose load delays the end of a number.
static inline uint32_t digit_value(char c, uint32_t radix)
{
    const uint8_t character = static_cast<uint8_t>(c);
    return radix <= 10 ? uint32_t{character} - '0' : digit_values.value[character];
}

// Four digits in each round: for numbers of different lengths the end of an unrolled loop is
// foreseen better, which takes up to half of the time off.
static inline uint64_t read_digits(const char *text, uint32_t radix)
{
    uint64_t value = 0;
    for (;; text += 4) {
        uint64_t digits = 0;
        uint64_t scale = 1;
        for (int i = 0; i < 4; i++) {
            const uint32_t digit = digit_value(text[i], radix);
            if (digit >= radix)
                return value * scale + digits;
            digits = digits * radix + digit;
            scale *= radix;
        }
        value = value * scale + digits;
    }
}

// The usual radices are given as constants, so that a multiplication becomes a shift or two.
static uint64_t read_number(const char *text, uint32_t radix)
{
    switch (radix) {
    case 2:
        return read_digits(text, 2);
    case 10:
        return read_digits(text, 10);
    case 16:
        return read_digits(text, 16);
    default:
        return read_digits(text, radix);
    }
}

x_int x_value(const char *text, uint32_t radix)
{
    while (is_white(*text))
        text++;
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+')
        text++;
    radix &= X_RADIX_MASK;
    if (radix == 0) {
        radix = 10;
        if (*text == '0') {
            text++;
            radix = 8;
            if (*text == 'x' || *text == 'X') {
                text++;
                radix = 16;
            }
        }
    }
    const uint64_t magnitude = read_number(text, radix);
    return halves(negative ? 0 - magnitude : magnitude);
}
