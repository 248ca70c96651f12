// Wide integers beside what the compiler and the standard library offer for 64 bits: arithmetic
// beside native integers behind a call, text beside the conversions of <charconv>, <cstdio> and
// <cstdlib>. The argument of the text benchmarks is the radix.
#include "tessel.h"

#include "native_integer.h"

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace
{
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

// Numbers of every length alike, and too many for a branch predictor to know them all.
const std::vector<uint64_t> &numbers()
{
    static const std::vector<uint64_t> made = [] {
        std::mt19937_64 random(1);
        std::vector<uint64_t> values(count);
        for (uint64_t &value : values)
            value = random() >> random() % 64;
        return values;
    }();
    return made;
}

template <typename Word>
struct operands {
    Word a, b;
};

// Dividends of 64 bits and divisors of every length, never 0.
template <typename Word>
const std::vector<operands<Word>> &pairs(Word convert(uint64_t))
{
    static const std::vector<operands<Word>> made = [convert] {
        std::mt19937_64 random(2);
        std::vector<operands<Word>> values(count);
        for (operands<Word> &pair : values) {
            const int64_t divisor = static_cast<int64_t>(random()) >> random() % 63 | 1;
            pair = {convert(random()), convert(static_cast<uint64_t>(divisor))};
        }
        return values;
    }();
    return made;
}

const std::vector<std::string> &texts(int radix)
{
    static std::vector<std::string> made[37];
    if (made[radix].empty()) {
        for (const uint64_t value : numbers()) {
            char text[room];
            made[radix].emplace_back(text, std::to_chars(text, text + room, value, radix).ptr);
        }
    }
    return made[radix];
}

void items(benchmark::State &state)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * count));
}

int64_t signed_of(uint64_t value)
{
    return static_cast<int64_t>(value);
}

void mul_tessel(benchmark::State &state)
{
    for (auto _ : state)
        for (const operands<x_int> &pair : pairs(halves))
            benchmark::DoNotOptimize(native(x_mul(pair.a, pair.b)));
    items(state);
}
BENCHMARK(mul_tessel);

void mul_native(benchmark::State &state)
{
    for (auto _ : state)
        for (const operands<int64_t> &pair : pairs(signed_of))
            benchmark::DoNotOptimize(native_mul(pair.a, pair.b));
    items(state);
}
BENCHMARK(mul_native);

void divide_tessel(benchmark::State &state)
{
    for (auto _ : state)
        for (const operands<x_int> &pair : pairs(halves))
            benchmark::DoNotOptimize(native(x_divide(pair.a, pair.b, 0)));
    items(state);
}
BENCHMARK(divide_tessel);

void divide_native(benchmark::State &state)
{
    for (auto _ : state)
        for (const operands<int64_t> &pair : pairs(signed_of))
            benchmark::DoNotOptimize(native_divide(pair.a, pair.b));
    items(state);
}
BENCHMARK(divide_native);

void remainder_tessel(benchmark::State &state)
{
    for (auto _ : state)
        for (const operands<x_int> &pair : pairs(halves))
            benchmark::DoNotOptimize(native(x_divide(pair.a, pair.b, X_REMAINDER)));
    items(state);
}
BENCHMARK(remainder_tessel);

void remainder_native(benchmark::State &state)
{
    for (auto _ : state)
        for (const operands<int64_t> &pair : pairs(signed_of))
            benchmark::DoNotOptimize(native_remainder(pair.a, pair.b));
    items(state);
}
BENCHMARK(remainder_native);

// The text that each of them writes last is held against the expected one.
void check(benchmark::State &state, const char *text, int radix)
{
    if (texts(radix).back() != text)
        state.SkipWithError("wrong text");
    items(state);
}

void string_tessel(benchmark::State &state)
{
    const int radix = static_cast<int>(state.range(0));
    const uint32_t format = static_cast<uint32_t>(radix) | X_UNSIGNED;
    char text[room];
    for (auto _ : state) {
        for (const uint64_t value : numbers())
            benchmark::DoNotOptimize(x_string(halves(value), text, room, format));
        benchmark::ClobberMemory();
    }
    check(state, text, radix);
}

void string_to_chars(benchmark::State &state)
{
    const int radix = static_cast<int>(state.range(0));
    char text[room];
    for (auto _ : state) {
        for (const uint64_t value : numbers()) {
            const auto end = std::to_chars(text, text + room, value, radix).ptr;
            *end = '\0';
            benchmark::DoNotOptimize(end);
        }
        benchmark::ClobberMemory();
    }
    check(state, text, radix);
}

void string_snprintf(benchmark::State &state)
{
    const int radix = static_cast<int>(state.range(0));
    // Radix 2 is new in C23: where the C library does not know it the text is wrong and says so.
    const char *const format = radix == 2 ? "%llb" : radix == 10 ? "%llu" : "%llx";
    char text[room];
    for (auto _ : state) {
        for (const uint64_t value : numbers())
            benchmark::DoNotOptimize(
                std::snprintf(text, room, format, static_cast<unsigned long long>(value)));
        benchmark::ClobberMemory();
    }
    check(state, text, radix);
}

BENCHMARK(string_tessel)->Arg(2)->Arg(10)->Arg(16);
BENCHMARK(string_to_chars)->Arg(2)->Arg(10)->Arg(16);
BENCHMARK(string_snprintf)->Arg(2)->Arg(10)->Arg(16);

void check(benchmark::State &state, uint64_t value)
{
    if (numbers().back() != value)
        state.SkipWithError("wrong value");
    items(state);
}

void value_tessel(benchmark::State &state)
{
    const std::vector<std::string> &input = texts(static_cast<int>(state.range(0)));
    const uint32_t radix = static_cast<uint32_t>(state.range(0));
    uint64_t value = 0;
    for (auto _ : state)
        for (const std::string &text : input)
            benchmark::DoNotOptimize(value = native(x_value(text.c_str(), radix)));
    check(state, value);
}

// Is told where the text ends, which the other two have to find out.
void value_from_chars(benchmark::State &state)
{
    const std::vector<std::string> &input = texts(static_cast<int>(state.range(0)));
    const int radix = static_cast<int>(state.range(0));
    uint64_t value = 0;
    for (auto _ : state) {
        for (const std::string &text : input) {
            std::from_chars(text.data(), text.data() + text.size(), value, radix);
            benchmark::DoNotOptimize(value);
        }
    }
    check(state, value);
}

void value_strtoull(benchmark::State &state)
{
    const std::vector<std::string> &input = texts(static_cast<int>(state.range(0)));
    const int radix = static_cast<int>(state.range(0));
    uint64_t value = 0;
    for (auto _ : state)
        for (const std::string &text : input)
            benchmark::DoNotOptimize(value = std::strtoull(text.c_str(), nullptr, radix));
    check(state, value);
}

BENCHMARK(value_tessel)->Arg(2)->Arg(10)->Arg(16);
BENCHMARK(value_from_chars)->Arg(2)->Arg(10)->Arg(16);
BENCHMARK(value_strtoull)->Arg(2)->Arg(10)->Arg(16);
} // namespace
