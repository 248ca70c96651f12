#include "tessel/integer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <random>
#include <string>
#include <utility>
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

// All powers of two, their neighbours and negations, halves of all ones, two more distances of
// shifts, and random numbers of every length.
std::vector<uint64_t> numbers()
{
    std::vector<uint64_t> values = {0, 0x00000000ffffffff, 0xffffffff00000000, 62, 96};
    std::mt19937_64 random(8);
    for (int bit = 0; bit < 64; bit++) {
        const uint64_t power = uint64_t{1} << bit;
        values.insert(values.end(), {power, power - 1, power + 1, 0 - power, random() >> bit});
    }
    return values;
}

// Sums and products of 64 bits are the same with and without signs. Divided by 0 all is remainder;
// the lowest number, whose quotient by -1 does not exist, gives itself as its negation does.
TEST(Integer, ArithmeticAndRelations)
{
    EXPECT_EQ(x_conv_x(x_const(1, 2)), 2u);
    const std::vector<uint64_t> values = numbers();
    for (const uint64_t a : values) {
        for (const uint64_t b : values) {
            const x_int x = halves(a), y = halves(b);
            const int64_t i = static_cast<int64_t>(a), j = static_cast<int64_t>(b);
            const uint32_t low = static_cast<uint32_t>(b), bits = std::min(low, 63u);
            const uint64_t whole = b ? a / b : 0, minus = b ? 0 - a : 0;
            const uint64_t quotient = j == 0 || j == -1 ? minus : static_cast<uint64_t>(i / j);
            const std::pair<x_int, uint64_t> operations[] = {
                {x_add(x, y), a + b},
                {x_sub(x, y), a - b},
                {x_mul(x, y), a * b},
                {x_and(x, y), a & b},
                {x_or(x, y), a | b},
                {x_xor(x, y), a ^ b},
                {x_not(x), ~a},
                {x_sign(x), 0 - a},
                {x_add1(x), a + 1},
                {x_sub1(x), a - 1},
                {x_short(low), low},
                {x_shr(x, low), static_cast<uint64_t>(i >> bits)},
                {x_ushr(x, low), low == bits ? a >> bits : 0},
                {x_divide(x, y, 0), quotient},
                {x_divide(x, y, X_REMAINDER | 0xc), a - quotient * b},
                {x_divide(x, y, X_UNSIGNED), whole},
                {x_divide(x, y, X_UNSIGNED | X_REMAINDER | 0xffff0000), a - whole * b}};
            for (const auto &each : operations)
                ASSERT_EQ(native(each.first), each.second)
                    << a << ' ' << b << ' ' << &each - operations;
            const std::pair<int32_t, bool> relations[] = {
                {x_eq(x, y), a == b},  {x_ne(x, y), a != b},  {x_gt(x, y), i > j},
                {x_ge(x, y), i >= j},  {x_lt(x, y), i < j},   {x_le(x, y), i <= j},
                {x_ugt(x, y), a > b},  {x_uge(x, y), a >= b}, {x_ult(x, y), a < b},
                {x_ule(x, y), a <= b}, {x_zero(x), a == 0},   {x_nonzero(x), a != 0}};
            for (const auto &each : relations)
                ASSERT_EQ(each.first, each.second) << a << ' ' << b << ' ' << &each - relations;
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
    ASSERT_TRUE((format & X_RADIX_MASK) > 36 || native(x_value(expected.c_str(), format)) == value);
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
    // All groups of four digits, in both halves of the words of eight that go to text at once.
    for (uint64_t group = 0; group < 10000; group++)
        check_text(group * 1000100010001, 10, std::to_string(group * 1000100010001));
}

TEST(Integer, TextBeyondTheLetters)
{
    check_text(61 * 64 + 36, 64, "\x94{");
    check_text(61 * 64 + 36, 64 | X_CAPITALS, "t[");
    // The character of digit 214 is that of the sign, and as the last digit it is taken for one.
    check_text(7 * 255 * 255 + 5 * 255 + 214, 255, "-75");
    for (const uint32_t radix : {0u, 1u})
        for (const int32_t size : {1, 2}) {
            char text[] = "##";
            EXPECT_EQ(x_string(halves(7), text, size, radix), 0);
            EXPECT_EQ(text[0], size > 1 ? '\0' : '#');
        }
}

TEST(Integer, ValueOfText)
{
    const struct {
        uint32_t radix;
        int64_t expected;
        std::vector<const char *> texts;
    } cases[] = {
        {10, -42, {" \n\r\t-42", "-42x"}},
        {10, 12, {"+12", "12/", "12:"}},
        {10, -2, {"-18446744073709551618"}},
        {10, 0, {"", " \t\r\n", "+", "+-1", "- 4", "\v1", "a"}},
        {0, 31, {"0x1F", "31", "037", "0X1f"}},
        {0, 19, {"19", "023", "0x13"}},
        {0, 0, {"", "-", "0x", "0xg", "09", "00x1"}},
        {0x1000, 42, {"0x2a", "42"}},
        {1, 0, {"1", "001"}},
        {16, 15, {"fg", "f\xff", "F", "10000000000000000f"}},
        {16, 0, {"0x10", "@1", "`1", "g"}},
        {255, 35 * 255 + 35, {"zz{"}},
    };
    for (const auto &[radix, expected, texts] : cases)
        for (const char *const text : texts)
            EXPECT_EQ(native(x_value(text, radix)), static_cast<uint64_t>(expected)) << text;
}
} // namespace
