// What the benchmarks share. A row of the table is a work, and its sides do the same work on the same
// input; the benchmark of one is named "work|side". The side of the library is "tessel". The answer
// of a side, a number made of its results, must be that of the others; one that can tell by itself
// answers whether it is right.
#ifndef TESSEL_BENCH_COMPARE_H
#define TESSEL_BENCH_COMPARE_H

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <malloc.h>
#include <time.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <type_traits>

namespace bench
{
// Each program adds the sides of its rows.
void add_sides();

inline double seconds_of(clockid_t clock)
{
    timespec now;
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// Processor time of this thread: others may use the machine too.
inline double thread_time()
{
    return seconds_of(CLOCK_THREAD_CPUTIME_ID);
}

inline double real_time()
{
    return seconds_of(CLOCK_MONOTONIC);
}

// Processor time with that of the system, of this process and of the commands that it has run.
inline double processor_time()
{
    double seconds = 0;
    for (const auto whose : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage used;
        getrusage(whose, &used);
        seconds += static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
                   1e-6 * static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec);
    }
    return seconds;
}

// For a task of which a part only is to be timed.
struct stopwatch {
    double (*now)();
    double seconds = 0;

    template <typename Action>
    void time(Action action)
    {
        const double start = now();
        action();
        seconds += now() - start;
    }
};

struct work {
    std::string name;
    size_t items = 1; // that a task deals with; the table has the time of one
    double (*clock)() = thread_time;
};

// What the first side answered.
inline std::optional<uint64_t> &answer_to(const std::string &work)
{
    static std::map<std::string, std::optional<uint64_t>> answers;
    return answers[work];
}

inline bool agrees(std::optional<uint64_t> &expected, uint64_t answer)
{
    if (!expected)
        expected = answer;
    return answer == *expected;
}

inline bool agrees(std::optional<uint64_t> &, bool right)
{
    return right;
}

// Adds a side. `prepare` gives the task, which does the work once and gives its answer: all of it is
// timed, or what it hands to the stopwatch that it takes.
template <typename Prepare>
void add(const work &row, const std::string &side, Prepare prepare)
{
    typedef std::invoke_result_t<Prepare &> task_type;
    constexpr bool has_stopwatch = std::is_invocable_v<task_type &, stopwatch &>;
    const auto run = [=](benchmark::State &state) {
        std::optional<uint64_t> &expected = answer_to(row.name);
        bool same = true;
        // No side finds the heap in the pieces that the one before left.
        malloc_trim(0);
        task_type task = prepare();
        for (auto _ : state) {
            if constexpr (has_stopwatch) {
                stopwatch watch = {row.clock};
                same = agrees(expected, task(watch)) && same;
                state.SetIterationTime(watch.seconds);
            } else {
                same = agrees(expected, task()) && same;
            }
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) *
                                static_cast<int64_t>(row.items));
        if (!same)
            state.SkipWithError("a wrong answer, or not that of the other sides");
    };
    auto *const added = benchmark::RegisterBenchmark((row.name + "|" + side).c_str(), run);
    if (has_stopwatch)
        added->UseManualTime();
}

struct footprint {
    double bytes;
    uint64_t answer;
};

// Adds a side to the table of memory. `measure` does the work once.
template <typename Measure>
void add_memory(const std::string &work, const std::string &side, Measure measure)
{
    const auto run = [=](benchmark::State &state) {
        footprint result = {};
        malloc_trim(0);
        for (auto _ : state)
            result = measure();
        state.counters["bytes"] = result.bytes;
        if (!agrees(answer_to(work), result.answer))
            state.SkipWithError("a wrong answer, or not that of the other sides");
    };
    benchmark::RegisterBenchmark((work + "|" + side).c_str(), run)->Iterations(1);
}

// 1,000,000 and not 1000000: the names of the works are for people.
inline std::string grouped(size_t number)
{
    const std::string digits = std::to_string(number);
    std::string text;
    for (size_t i = 0; i < digits.size(); i++) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            text += ',';
        text += digits[i];
    }
    return text;
}
} // namespace bench

#endif
