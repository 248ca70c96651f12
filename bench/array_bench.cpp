// Arrays, each beside what a program would otherwise use: bsearch, std::count, a loop of byte swaps
// that the compiler vectorises, memcpy.
#include "compare.h"

#include "tessel.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace
{
using namespace bench;

int32_t compare_numbers(const void *a, const void *b)
{
    const int32_t left = *static_cast<const int32_t *>(a);
    const int32_t right = *static_cast<const int32_t *>(b);
    return (left > right) - (left < right);
}

constexpr size_t searches = 4096;

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
    std::vector<int32_t> keys(searches);
    uint32_t seed = 1;
    for (int32_t &key : keys) {
        seed = seed * 1664525 + 1013904223;
        key = static_cast<int32_t>((seed >> 8) % (2 * count));
    }
    return keys;
}

template <typename Find>
void add_search(const std::string &side, size_t count, Find find)
{
    add({std::string("Search among ") + grouped(count) + " sorted numbers", searches}, side, [=] {
        return [=, numbers = sorted_numbers(count), keys = scattered_keys(count)] {
            uint64_t sum = 0;
            for (const int32_t &key : keys) {
                const void *const found = find(numbers, &key);
                sum += found ? static_cast<uint64_t>(*static_cast<const int32_t *>(found)) : 1;
            }
            return sum;
        };
    });
}

void add_searches(size_t count)
{
    typedef std::vector<int32_t> vector;
    add_search("tessel", count, [](const vector &numbers, const int32_t *key) -> const void * {
        return memBinSearch(numbers.data(), static_cast<uint32_t>(numbers.size()), sizeof *key, key,
                            compare_numbers, nullptr);
    });
    // Called through a pointer that nobody knows: the C library's header has it inline as well, and
    // then the comparison with it.
    auto *volatile unknown = &std::bsearch;
    auto *const call = unknown;
    add_search("bsearch", count, [call](const vector &numbers, const int32_t *key) -> const void * {
        return call(key, numbers.data(), numbers.size(), sizeof *key, compare_numbers);
    });
    add_search(
        "bsearch, inlined", count, [](const vector &numbers, const int32_t *key) -> const void * {
            return std::bsearch(key, numbers.data(), numbers.size(), sizeof *key, compare_numbers);
        });
}

constexpr size_t block_bytes = 16 << 10;

template <typename Word>
std::vector<Word> numbered_words()
{
    std::vector<Word> words(block_bytes / sizeof(Word));
    for (size_t i = 0; i < words.size(); i++)
        words[i] = static_cast<Word>(i * 0x0123456789abcdef);
    return words;
}

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

// Twice, which leaves the words as they were; what stood there between shows in the answer.
template <typename Word, typename Invert>
void add_invert(const std::string &side, Invert invert)
{
    const std::string name =
        "Reverse the bytes of elements of " + std::to_string(sizeof(Word)) + " bytes, 16 KiB";
    add({name, 2}, side, [=] {
        return [=, words = numbered_words<Word>()]() mutable {
            invert(words);
            benchmark::DoNotOptimize(words.data());
            const uint64_t answer = words[1] + uint64_t{words.back()};
            benchmark::ClobberMemory();
            invert(words);
            benchmark::DoNotOptimize(words.data());
            return answer + words[1];
        };
    });
}

template <typename Word>
std::vector<Word> repeating_words()
{
    std::vector<Word> words(block_bytes / sizeof(Word));
    for (size_t i = 0; i < words.size(); i++)
        words[i] = static_cast<Word>(i % 7);
    return words;
}

template <typename Word, typename Count>
void add_count(const std::string &side, Count count)
{
    const std::string name = std::string("Count equal elements of ") +
                             std::to_string(sizeof(Word)) +
                             (sizeof(Word) == 1 ? " byte, 16 KiB" : " bytes, 16 KiB");
    add({name}, side, [=] {
        return [=, words = repeating_words<Word>()] {
            benchmark::DoNotOptimize(words.data());
            return static_cast<uint64_t>(count(words));
        };
    });
}

template <typename Word>
void add_inversions()
{
    typedef std::vector<Word> vector;
    add_invert<Word>("tessel", [](vector &words) {
        memInvertB(words.data(), static_cast<uint32_t>(words.size()), sizeof(Word));
    });
    add_invert<Word>("vectorised loop, inlined", [](vector &words) {
        for (Word &word : words)
            word = swapped(word);
    });
}

template <typename Word>
void add_counts()
{
    typedef std::vector<Word> vector;
    add_count<Word>("tessel", [](const vector &words) {
        return memCountIdentity(words.data(), static_cast<uint32_t>(words.size()), sizeof(Word), 3);
    });
    add_count<Word>("std::count, inlined", [](const vector &words) {
        return std::count(words.begin(), words.end(), Word{3});
    });
}

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

template <typename Copy>
void add_copy(const std::string &side, uint32_t row_bytes, Copy copy)
{
    add({std::string("Copy rows of ") + grouped(row_bytes) + " bytes, 64 KiB"}, side, [=] {
        return [=, work = std::make_unique<rect>(row_bytes)] {
            copy(*work);
            const auto *const *const rows = static_cast<unsigned char **>(work->target);
            return uint64_t{rows[0][0]} + rows[work->rows - 1][row_bytes - 1];
        };
    });
}

void add_copies(uint32_t row_bytes)
{
    add_copy("tessel", row_bytes, [](const rect &work) {
        memCopy2D(work.target, work.source, work.rows, 1, &work.row_bytes, nullptr,
                  sizeof work.row_bytes);
    });
    add_copy("memcpy", row_bytes, [](const rect &work) {
        void **const target = static_cast<void **>(work.target);
        void **const source = static_cast<void **>(work.source);
        for (uint32_t row = 0; row < work.rows; row++)
            std::memcpy(target[row], source[row], work.row_bytes);
    });
}
} // namespace

void bench::add_sides()
{
    for (const size_t count : {100u, 10000u, 1000000u})
        add_searches(count);
    add_inversions<uint16_t>();
    add_inversions<uint32_t>();
    add_inversions<uint64_t>();
    add_counts<uint8_t>();
    add_counts<uint16_t>();
    add_counts<uint32_t>();
    for (const uint32_t row_bytes : {16u, 256u, 4096u})
        add_copies(row_bytes);
}
