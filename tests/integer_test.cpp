#include "tessel/integer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <random>
#include <string>
#include <vector>

namespace
{
uint64_t native(x_int a)
{
    return uint64_t{a.high} << 32 | a.low;
}

x_int halves(uint64_t value)
{
    return x_const(static_cast<uint32_t>(value >> 32), static_cast<uint32_t>(value));
}

int64_t as_signed(uint64_t value)
{
    return static_cast<int64_t>(value);
}

// All powers of two, their neighbours and negations, halves of all ones, and random numbers of
// every length.
std::vector<uint64_t> numbers()
{
    std::vector<uint64_t> values = {0, 0x00000000ffffffff, 0xffffffff00000000};
    std::mt19937_64 random(8);
    for (int bit = 0; bit < 64; bit++) {
        const uint64_t power = uint64_t{1} << bit;
        values.insert(values.end(), {power, power - 1, power + 1, 0 - power, random() >> bit});
    }
    return values;
}

TEST(Integer, OneOperand)
{
    EXPECT_EQ(x_const(1, 2).high, 1u);
    EXPECT_EQ(x_const(1, 2).low, 2u);
    for (const uint64_t a : numbers()) {
        SCOPED_TRACE(a);
        const x_int value = halves(a);
        EXPECT_EQ(x_conv_x(value), static_cast<uint32_t>(a));
        EXPECT_EQ(native(x_short(static_cast<uint32_t>(a))), a & 0xffffffff);
        EXPECT_EQ(native(x_sign(value)), 0 - a);
        EXPECT_EQ(native(x_add1(value)), a + 1);
        EXPECT_EQ(native(x_sub1(value)), a - 1);
        EXPECT_EQ(native(x_not(value)), ~a);
        EXPECT_EQ(x_zero(value), a ? 0 : 1);
        EXPECT_EQ(x_nonzero(value), a ? 1 : 0);
        for (uint32_t shift : {0u, 1u, 31u, 32u, 33u, 62u, 63u, 64u, 65u, 96u, UINT32_MAX}) {
            const uint32_t bits = std::min(shift, 63u);
            EXPECT_EQ(native(x_shr(value, shift)), static_cast<uint64_t>(as_signed(a) >> bits));
            EXPECT_EQ(native(x_ushr(value, shift)), bits == shift ? a >> bits : 0);
        }
    }
}

// Sums and products of 64 bits are the same with and without signs. The lowest number, whose quotient
// by -1 does not exist, gives itself as its negation does.
TEST(Integer, TwoOperands)
{
    struct {
        const char *name;
        x_int (*procedure)(x_int, x_int);
        uint64_t (*expected)(uint64_t a, uint64_t b);
    } const operations[] = {
        {"x_add", x_add, [](uint64_t a, uint64_t b) { return a + b; }},
        {"x_sub", x_sub, [](uint64_t a, uint64_t b) { return a - b; }},
        {"x_mul", x_mul, [](uint64_t a, uint64_t b) { return a * b; }},
        {"x_and", x_and, [](uint64_t a, uint64_t b) { return a & b; }},
        {"x_or", x_or, [](uint64_t a, uint64_t b) { return a | b; }},
        {"x_xor", x_xor, [](uint64_t a, uint64_t b) { return a ^ b; }},
        {"quotient", [](x_int a, x_int b) { return x_divide(a, b, 0); },
         [](uint64_t a, uint64_t b) {
             if (b == 0 || ~b == 0)
                 return b == 0 ? 0 : 0 - a;
             return static_cast<uint64_t>(as_signed(a) / as_signed(b));
         }},
        {"remainder", [](x_int a, x_int b) { return x_divide(a, b, X_REMAINDER | 0xc); },
         [](uint64_t a, uint64_t b) {
             if (b == 0 || ~b == 0)
                 return b == 0 ? a : 0;
             return static_cast<uint64_t>(as_signed(a) % as_signed(b));
         }},
        {"unsigned quotient", [](x_int a, x_int b) { return x_divide(a, b, X_UNSIGNED); },
         [](uint64_t a, uint64_t b) { return b ? a / b : 0; }},
        {"unsigned remainder",
         [](x_int a, x_int b) { return x_divide(a, b, X_UNSIGNED | X_REMAINDER | 0xffff0000); },
         [](uint64_t a, uint64_t b) { return b ? a % b : a; }},
    };
    struct {
        const char *name;
        int32_t (*procedure)(x_int, x_int);
        bool (*expected)(uint64_t a, uint64_t b);
    } const relations[] = {
        {"x_eq", x_eq, [](uint64_t a, uint64_t b) { return a == b; }},
        {"x_ne", x_ne, [](uint64_t a, uint64_t b) { return a != b; }},
        {"x_gt", x_gt, [](uint64_t a, uint64_t b) { return as_signed(a) > as_signed(b); }},
        {"x_ge", x_ge, [](uint64_t a, uint64_t b) { return as_signed(a) >= as_signed(b); }},
        {"x_lt", x_lt, [](uint64_t a, uint64_t b) { return as_signed(a) < as_signed(b); }},
        {"x_le", x_le, [](uint64_t a, uint64_t b) { return as_signed(a) <= as_signed(b); }},
        {"x_ugt", x_ugt, [](uint64_t a, uint64_t b) { return a > b; }},
        {"x_uge", x_uge, [](uint64_t a, uint64_t b) { return a >= b; }},
        {"x_ult", x_ult, [](uint64_t a, uint64_t b) { return a < b; }},
        {"x_ule", x_ule, [](uint64_t a, uint64_t b) { return a <= b; }},
    };
    const std::vector<uint64_t> values = numbers();
    for (const uint64_t a : values) {
        for (const uint64_t b : values) {
            for (const auto &[name, procedure, expected] : operations)
                ASSERT_EQ(native(procedure(halves(a), halves(b))), expected(a, b))
                    << name << " of " << a << " and " << b;
            for (const auto &[name, procedure, expected] : relations)
                ASSERT_EQ(procedure(halves(a), halves(b)), expected(a, b))
                    << name << " of " << a << " and " << b;
        }
    }
}

// Writes a number into every room from none to more than enough. What does not fit leaves its first
// digits in reverse order, and nothing is ever written outside the room.
void check_text(uint64_t value, uint32_t format, const std::string &expected)
{
    SCOPED_TRACE(expected + " in format " + std::to_string(format));
    const bool sign = expected[0] == '-';
    std::string reversed = expected;
    std::reverse(reversed.begin() + sign, reversed.end());
    const int32_t length = static_cast<int32_t>(expected.size());
    for (int32_t size = -1; size <= length + 2; size++) {
        std::string text(expected.size() + 3, '#');
        const bool fits = size > length;
        const size_t written = static_cast<size_t>(std::max(size - 1, 0));
        std::string wanted = fits ? expected + '\0' : reversed.substr(0, written);
        wanted.resize(text.size(), '#');
        ASSERT_EQ(x_string(halves(value), text.data(), size, format), fits ? length : 0) << size;
        ASSERT_EQ(text, wanted) << size;
    }
    if ((format & X_RADIX_MASK) <= 36) {
        ASSERT_EQ(native(x_value(expected.c_str(), format)), value);
    }
}

TEST(Integer, TextInEveryRadix)
{
    std::vector<uint64_t> values = numbers();
    for (uint64_t power = 1; power <= UINT64_MAX / 10; power *= 10)
        values.insert(values.end(), {power * 10 - 1, power * 10});
    for (const uint64_t value : values) {
        char text[65];
        for (int radix = 2; radix <= 36; radix++) {
            const uint32_t format = static_cast<uint32_t>(radix) | 0x40000000;
            std::string expected(text, std::to_chars(text, text + 65, value, radix).ptr);
            check_text(value, format | X_UNSIGNED, expected);
            for (char &c : expected)
                c = static_cast<char>(std::toupper(c));
            check_text(value, format | X_UNSIGNED | X_CAPITALS, expected);
            if (radix == 10)
                expected.assign(text,
                                std::to_chars(text, text + 65, static_cast<int64_t>(value)).ptr);
            check_text(value, format | X_CAPITALS, expected);
        }
    }
}

// All groups of four digits, in both halves of the words of eight that go to text at once.
TEST(Integer, DecimalGroups)
{
    char text[21];
    for (uint64_t group = 0; group < 10000; group++) {
        const std::string expected = std::to_string(group * 1000100010001);
        ASSERT_EQ(x_string(halves(group * 1000100010001), text, 21, 10),
                  static_cast<int32_t>(expected.size()));
        ASSERT_EQ(text, expected);
    }
}

TEST(Integer, TextBeyondTheLetters)
{
    check_text(61 * 64 + 36, 64, "\x94{");
    check_text(61 * 64 + 36, 64 | X_CAPITALS, "t[");
    // The character of digit 214 is that of the sign, and as the last digit it is taken for one.
    check_text(7 * 255 * 255 + 5 * 255 + 214, 255, "-75");
    char text[] = "##";
    for (const uint32_t radix : {0u, 1u}) {
        text[0] = '#';
        EXPECT_EQ(x_string(halves(7), text, 1, radix), 0);
        EXPECT_EQ(text[0], '#');
        EXPECT_EQ(x_string(halves(7), text, 2, radix), 0);
        EXPECT_STREQ(text, "");
    }
}

TEST(Integer, ValueOfText)
{
    struct {
        const char *text;
        uint32_t radix;
        int64_t expected;
    } const cases[] = {
        {" \n\r\t-42", 10, -42},
        {"+17", 10, 17},
        {"12/", 10, 12},
        {"12:", 10, 12},
        {"0x1F", 0, 31},
        {"-0X1f", 0, -31},
        {"017", 0, 15},
        {"19", 0, 19},
        {"fg", 16, 15},
        {"FF", 16, 255},
        {"f\xff", 16, 15},
        {"zZ", 36, 35 * 36 + 35},
        {"zz", 255, 35 * 255 + 35},
        {"42", 0x100a, 42},
        {"0x2a", 0xffffff00, 42},
        {"1012", 2, 5},
        {"18446744073709551615", 10, -1},
        {"18446744073709551618", 10, 2},
        {"-18446744073709551618", 10, -2},
        {"10000000000000000f", 16, 15},
    };
    for (const auto &[text, radix, expected] : cases)
        EXPECT_EQ(native(x_value(text, radix)), static_cast<uint64_t>(expected))
            << '"' << text << "\" in radix " << radix;

    struct {
        uint32_t radix;
        std::vector<const char *> texts;
    } const without_digits[] = {
        {0, {"", "-", "0x", "0xg", "09", "00x1"}},
        {1, {"1", "001"}},
        {10, {"", " \t\r\n", "+", "+-1", "- 4", "\v1", "a"}},
        {16, {"0x10", "@1", "`1", "g"}},
    };
    for (const auto &[radix, texts] : without_digits)
        for (const char *text : texts)
            EXPECT_EQ(native(x_value(text, radix)), 0u) << '"' << text << "\" in radix " << radix;
}
} // namespace
