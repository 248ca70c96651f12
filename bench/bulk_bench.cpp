// ioTransfer between two memory blocks, through each of its work areas, beside one memcpy of the
// whole. Through the areas every byte is copied twice.
#include "tessel.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace
{
constexpr int32_t total = 64 << 20;
constexpr int32_t chunk = 64 << 10;

struct blocks {
    std::vector<char> source = std::vector<char>(total);
    std::vector<char> target = std::vector<char>(total);

    blocks()
    {
        uint32_t seed = 1;
        for (char &byte : source) {
            seed = seed * 1664525 + 1013904223;
            byte = static_cast<char>(seed >> 24);
        }
    }
};

void report(benchmark::State &state, const blocks &data, bool right)
{
    if (!right || data.source != data.target)
        state.SkipWithError("wrong data");
    state.SetBytesProcessed(state.iterations() * int64_t{total});
}

void copy_memcpy(benchmark::State &state)
{
    blocks data;
    for (auto _ : state) {
        std::memcpy(data.target.data(), data.source.data(), total);
        benchmark::ClobberMemory();
    }
    report(state, data, true);
}
BENCHMARK(copy_memcpy)->Unit(benchmark::kMillisecond);

// With memory of the caller's, with the input's buffer, or with neither.
void copy_transfer(benchmark::State &state, bool memory, bool buffer)
{
    blocks data;
    std::vector<char> area(chunk);
    bool right = true;
    for (auto _ : state) {
        io_memory from = {total, 0, data.source.data()};
        io_memory to = {total, 0, data.target.data()};
        io_stream input = {};
        input.read = memRead;
        input.handle = reinterpret_cast<intptr_t>(&from);
        io_stream output = {};
        output.write = memWrite;
        output.handle = reinterpret_cast<intptr_t>(&to);
        if (buffer)
            ioAllocBuffer(&input, chunk);
        right = ioTransfer(&output, &input, 0, memory ? area.data() : nullptr, chunk, nullptr,
                           nullptr) == IO_COPIED &&
                right;
        ioFreeBuffer(&input);
    }
    report(state, data, right);
}
BENCHMARK_CAPTURE(copy_transfer, own_block, false, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(copy_transfer, callers_memory, true, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(copy_transfer, borrowed_buffer, false, true)->Unit(benchmark::kMillisecond);
} // namespace
