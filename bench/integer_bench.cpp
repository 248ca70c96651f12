// Wide integers beside what the compiler and the standard library offer for 64 bits: arithmetic
// beside native integers behind a call, text beside the conversions of <charconv>, <cstdio> and
// <cstdlib>.
#include "behind_call.h"
#include "compare.h"

#include "tessel.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace
{
using namespace bench;

constexpr size_t count = 16384;
constexpr int32_t room = 80;

x_int halves(uint64_t value)
{
    return {static_cast<uint32_t>(value), static_cast<uint32_t>(value >> 32)};
}

uint64_t native(x_int value)
{
    return uint64_t{value.high} << 32 | value.low;
}

int64_t signed_of(uint64_t value)
{
    return static_cast<int64_t>(value);
}

template <typename Word>
struct operands {
    Word a, b;
};

// Dividends of 64 bits and divisors of every length, never 0.
template <typename Word>
std::vector<operands<Word>> pairs(Word convert(uint64_t))
{
    std::mt19937_64 random(2);
    std::vector<operands<Word>> values(count);
    for (operands<Word> &pair : values) {
        const int64_t divisor = static_cast<int64_t>(random()) >> random() % 63 | 1;
        pair = {convert(random()), convert(static_cast<uint64_t>(divisor))};
    }
    return values;
}

uint64_t number_in(x_int value)
{
    return native(value);
}

uint64_t number_in(int64_t value)
{
    return static_cast<uint64_t>(value);
}

uint64_t number_in(int32_t value)
{
    return static_cast<uint64_t>(value);
}

template <typename Word, typename Operation>
void add_arithmetic(const std::string &name, const std::string &side, Word convert(uint64_t),
                    Operation operation)
{
    add({name, count}, side, [=] {
        return [=, input = pairs(convert)] {
            uint64_t sum = 0;
            for (const operands<Word> &pair : input)
                sum += number_in(operation(pair.a, pair.b));
            return sum;
        };
    });
}

template <typename Ours, typename Theirs>
void compare_arithmetic(const std::string &name, Ours ours, Theirs theirs)
{
    add_arithmetic("Wide integers: " + name, "tessel", halves, ours);
    add_arithmetic("Wide integers: " + name, "native, behind a call", signed_of, theirs);
}

// Numbers of every length alike, and too many for a branch predictor to know them all.
std::vector<uint64_t> numbers()
{
    std::mt19937_64 random(1);
    std::vector<uint64_t> values(count);
    for (uint64_t &value : values)
        value = random() >> random() % 64;
    return values;
}

std::vector<std::string> texts(int radix)
{
    std::vector<std::string> made;
    for (const uint64_t value : numbers()) {
        char text[room];
        made.emplace_back(text, std::to_chars(text, text + room, value, radix).ptr);
    }
    return made;
}

// `write` gives the length of the text, which ends in a NUL.
template <typename Write>
void add_text(const std::string &name, const std::string &side, Write write)
{
    add({name, count}, side, [=] {
        return [=, input = numbers()] {
            uint64_t sum = 0;
            char text[room];
            for (const uint64_t value : input) {
                const auto length = static_cast<size_t>(write(value, text));
                sum = sum * 31 + length * 256 + static_cast<unsigned char>(text[length / 2]) +
                      static_cast<unsigned char>(text[length]);
            }
            return sum;
        };
    });
}

template <typename Parse>
void add_value(const std::string &name, const std::string &side, int radix, Parse parse)
{
    add({name, count}, side, [=] {
        return [=, input = texts(radix)] {
            uint64_t sum = 0;
            for (const std::string &text : input)
                sum = sum * 31 + parse(text);
            return sum;
        };
    });
}

// Radix 2 is new in C23 for snprintf(): where the C library does not know it the sides disagree.
void add_radix(int radix, const char *format)
{
    const auto unsigned_radix = static_cast<uint32_t>(radix);
    const std::string to_text = "Number to text, radix " + std::to_string(radix);
    add_text(to_text, "tessel", [=](uint64_t value, char *text) {
        return x_string(halves(value), text, room, unsigned_radix | X_UNSIGNED);
    });
    add_text(to_text, "std::to_chars", [=](uint64_t value, char *text) {
        char *const end = std::to_chars(text, text + room, value, radix).ptr;
        *end = '\0';
        return end - text;
    });
    add_text(to_text, "snprintf", [=](uint64_t value, char *text) {
        return std::snprintf(text, room, format, static_cast<unsigned long long>(value));
    });

    const std::string from_text = "Number from text, radix " + std::to_string(radix);
    add_value(from_text, "tessel", radix, [=](const std::string &text) {
        return native(x_value(text.c_str(), unsigned_radix));
    });
    // Is told where the text ends, which the other two have to find out.
    add_value(from_text, "std::from_chars", radix, [=](const std::string &text) {
        uint64_t value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value, radix);
        return value;
    });
    add_value(from_text, "strtoull", radix, [=](const std::string &text) {
        return uint64_t{std::strtoull(text.c_str(), nullptr, radix)};
    });
}
} // namespace

void bench::add_sides()
{
    compare_arithmetic("multiply", x_mul, native_mul);
    compare_arithmetic(
        "quotient", [](x_int a, x_int b) { return x_divide(a, b, 0); }, native_divide);
    compare_arithmetic(
        "remainder", [](x_int a, x_int b) { return x_divide(a, b, X_REMAINDER); },
        native_remainder);
    compare_arithmetic("less than", x_lt, native_less);
    compare_arithmetic("equal", x_eq, native_equal);
    add_radix(2, "%llb");
    add_radix(10, "%llu");
    add_radix(16, "%llx");
}
