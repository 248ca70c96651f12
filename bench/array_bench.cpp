// Arrays, each beside what a program would otherwise use: bsearch, std::count, a loop of byte swaps
// that the compiler vectorises, memcpy.
#include "tessel.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <vector>

namespace
{
int32_t compare_numbers(const void *a, const void *b)
{
    const int32_t left = *static_cast<const int32_t *>(a);
    const int32_t right = *static_cast<const int32_t *>(b);
    return (left > right) - (left < right);
}

// Even numbers, so that every second key is missing.
std::vector<int32_t> sorted_numbers(size_t count)
{
    std::vector<int32_t> numbers(count);
    for (size_t i = 0; i < count; i++)
        numbers[i] = static_cast<int32_t>(2 * i);
    return numbers;
}

std::vector<int32_t> scattered_keys(size_t count)
{
    std::vector<int32_t> keys(4096);
    uint32_t seed = 1;
    for (int32_t &key : keys) {
        seed = seed * 1664525 + 1013904223;
        key = static_cast<int32_t>((seed >> 8) % (2 * count));
    }
    return keys;
}

template <typename Find>
void search(benchmark::State &state, Find find)
{
    const auto count = static_cast<size_t>(state.range(0));
    const std::vector<int32_t> numbers = sorted_numbers(count);
    const std::vector<int32_t> keys = scattered_keys(count);
    const auto even = std::count_if(keys.begin(), keys.end(), [](int32_t k) { return k % 2 == 0; });
    for (auto _ : state) {
        ptrdiff_t found = 0;
        for (const int32_t &key : keys)
            found += find(numbers, &key) != nullptr;
        if (found != even)
            state.SkipWithError("wrong result");
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(keys.size()));
}

void search_tessel(benchmark::State &state)
{
    search(state, [](const std::vector<int32_t> &numbers, const int32_t *key) {
        return memBinSearch(numbers.data(), static_cast<uint32_t>(numbers.size()), sizeof *key, key,
                            compare_numbers, nullptr);
    });
}
BENCHMARK(search_tessel)->Arg(100)->Arg(10000)->Arg(1000000);

// Called through a pointer that nobody knows, as from another language or an unoptimised program.
// The C library's header has bsearch inline as well; search_inlined has that and the comparison
// with it.
void search_bsearch(benchmark::State &state)
{
    auto *volatile standard = &std::bsearch;
    auto *const call = standard;
    search(state, [call](const std::vector<int32_t> &numbers, const int32_t *key) {
        return call(key, numbers.data(), numbers.size(), sizeof *key, compare_numbers);
    });
}
BENCHMARK(search_bsearch)->Arg(100)->Arg(10000)->Arg(1000000);

void search_inlined(benchmark::State &state)
{
    search(state, [](const std::vector<int32_t> &numbers, const int32_t *key) {
        return std::bsearch(key, numbers.data(), numbers.size(), sizeof *key, compare_numbers);
    });
}
BENCHMARK(search_inlined)->Arg(100)->Arg(10000)->Arg(1000000);

constexpr size_t block_bytes = 16 << 10;

std::vector<unsigned char> numbered_bytes()
{
    std::vector<unsigned char> bytes(block_bytes);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
}

void report_bytes(benchmark::State &state)
{
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(block_bytes));
}

template <typename Word>
void invert_tessel(benchmark::State &state)
{
    std::vector<unsigned char> bytes = numbered_bytes();
    for (auto _ : state) {
        memInvertB(bytes.data(), block_bytes / sizeof(Word), sizeof(Word));
        benchmark::ClobberMemory();
    }
    report_bytes(state);
}
BENCHMARK(invert_tessel<uint16_t>);
BENCHMARK(invert_tessel<uint32_t>);
BENCHMARK(invert_tessel<uint64_t>);

uint16_t swapped(uint16_t word)
{
    return __builtin_bswap16(word);
}

uint32_t swapped(uint32_t word)
{
    return __builtin_bswap32(word);
}

uint64_t swapped(uint64_t word)
{
    return __builtin_bswap64(word);
}

template <typename Word>
void invert_loop(benchmark::State &state)
{
    std::vector<Word> words(block_bytes / sizeof(Word));
    const std::vector<unsigned char> bytes = numbered_bytes();
    std::memcpy(words.data(), bytes.data(), block_bytes);
    for (auto _ : state) {
        for (Word &word : words)
            word = swapped(word);
        benchmark::ClobberMemory();
    }
    report_bytes(state);
}
BENCHMARK(invert_loop<uint16_t>);
BENCHMARK(invert_loop<uint32_t>);
BENCHMARK(invert_loop<uint64_t>);

template <typename Word>
std::vector<Word> counted_words()
{
    std::vector<Word> words(block_bytes / sizeof(Word));
    for (size_t i = 0; i < words.size(); i++)
        words[i] = static_cast<Word>(i % 7);
    return words;
}

template <typename Word>
void count_tessel(benchmark::State &state)
{
    const std::vector<Word> words = counted_words<Word>();
    for (auto _ : state)
        benchmark::DoNotOptimize(
            memCountIdentity(words.data(), static_cast<uint32_t>(words.size()), sizeof(Word), 3));
    report_bytes(state);
}
BENCHMARK(count_tessel<uint8_t>);
BENCHMARK(count_tessel<uint16_t>);
BENCHMARK(count_tessel<uint32_t>);

template <typename Word>
void count_std(benchmark::State &state)
{
    const std::vector<Word> words = counted_words<Word>();
    for (auto _ : state) {
        benchmark::DoNotOptimize(words.data());
        benchmark::DoNotOptimize(std::count(words.begin(), words.end(), Word{3}));
    }
    report_bytes(state);
}
BENCHMARK(count_std<uint8_t>);
BENCHMARK(count_std<uint16_t>);
BENCHMARK(count_std<uint32_t>);

// A rectangle of 64 KiB in rows of several lengths; memcpy is given the same rows one by one.
constexpr uint32_t rect_bytes = 64 << 10;

struct rect {
    explicit rect(uint32_t row)
        : row_bytes(row), rows(rect_bytes / row), target(memAllocRect(rows, row)),
          source(memAllocRect(rows, row))
    {
        memSet2D(target, 0, rows, row_bytes, nullptr, nullptr, 0);
        memSet2D(source, 1, rows, row_bytes, nullptr, nullptr, 0);
    }
    ~rect()
    {
        memFree(target);
        memFree(source);
    }
    rect(const rect &) = delete;
    rect &operator=(const rect &) = delete;

    uint32_t row_bytes;
    uint32_t rows;
    void *target;
    void *source;
};

void copy_tessel(benchmark::State &state)
{
    const rect work(static_cast<uint32_t>(state.range(0)));
    for (auto _ : state) {
        memCopy2D(work.target, work.source, work.rows, 1, &work.row_bytes, nullptr,
                  sizeof work.row_bytes);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * int64_t{rect_bytes});
}
BENCHMARK(copy_tessel)->Arg(16)->Arg(256)->Arg(4096);

void copy_memcpy(benchmark::State &state)
{
    const rect work(static_cast<uint32_t>(state.range(0)));
    void **const target = static_cast<void **>(work.target);
    void **const source = static_cast<void **>(work.source);
    for (auto _ : state) {
        for (uint32_t row = 0; row < work.rows; row++)
            std::memcpy(target[row], source[row], work.row_bytes);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * int64_t{rect_bytes});
}
BENCHMARK(copy_memcpy)->Arg(16)->Arg(256)->Arg(4096);
} // namespace
