// Elements of four bytes through a 64 KiB buffer on a file, beside the unlocked calls of stdio.
#include "tessel.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <stdexcept>

namespace
{
constexpr int32_t buffer_size = 64 << 10;
constexpr uint32_t elements = 4 << 20;

// A file that has no name, filled by whichever benchmark runs first with the numbers from 0 on.
FILE *work_file()
{
    static FILE *const file = [] {
        FILE *const made = std::tmpfile();
        if (!made)
            throw std::runtime_error("no temporary file");
        for (uint32_t i = 0; i < elements; i++)
            std::fwrite(&i, sizeof i, 1, made);
        std::fflush(made);
        std::setvbuf(made, nullptr, _IOFBF, buffer_size);
        return made;
    }();
    std::rewind(file);
    return file;
}

io_stream work_stream()
{
    io_stream stream = {};
    stream.read = fileRead;
    stream.write = fileWrite;
    stream.seek = fileSeek;
    stream.handle = fileno(work_file());
    fileSeek(&stream, 0, IO_FROM_START);
    ioAllocBuffer(&stream, buffer_size);
    return stream;
}

uint64_t expected_sum()
{
    return uint64_t{elements} * (elements - 1) / 2;
}

void report(benchmark::State &state, bool right)
{
    if (!right)
        state.SkipWithError("wrong data");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * elements);
}

void read_tessel(benchmark::State &state)
{
    bool right = true;
    for (auto _ : state) {
        io_stream stream = work_stream();
        uint64_t sum = 0;
        for (uint32_t value; ioRead(&stream, &value, 1, sizeof value) == 1;)
            sum += value;
        right = right && sum == expected_sum();
        ioFreeBuffer(&stream);
    }
    report(state, right);
}
BENCHMARK(read_tessel)->Unit(benchmark::kMillisecond);

void read_stdio(benchmark::State &state)
{
    bool right = true;
    for (auto _ : state) {
        FILE *const file = work_file();
        uint64_t sum = 0;
        for (uint32_t value; fread_unlocked(&value, sizeof value, 1, file) == 1;)
            sum += value;
        right = right && sum == expected_sum();
    }
    report(state, right);
}
BENCHMARK(read_stdio)->Unit(benchmark::kMillisecond);

void write_tessel(benchmark::State &state)
{
    bool right = true;
    for (auto _ : state) {
        io_stream stream = work_stream();
        for (uint32_t value = 0; value < elements; value++)
            right = ioWrite(&stream, &value, 1, sizeof value) == 1 && right;
        right = ioFreeBuffer(&stream) && right;
    }
    report(state, right);
}
BENCHMARK(write_tessel)->Unit(benchmark::kMillisecond);

void write_stdio(benchmark::State &state)
{
    bool right = true;
    for (auto _ : state) {
        FILE *const file = work_file();
        for (uint32_t value = 0; value < elements; value++)
            right = fwrite_unlocked(&value, sizeof value, 1, file) == 1 && right;
        right = std::fflush(file) == 0 && right;
    }
    report(state, right);
}
BENCHMARK(write_stdio)->Unit(benchmark::kMillisecond);
} // namespace
