// Items of commented text per second: iotextRead over a memory source and over a buffered file,
// beside a flex scanner that does the same job on the same text.
#include "commented_text.h"

#include "tessel.h"

#ifdef TESSEL_BENCH_FLEX
#include "items_flex.h"
#endif

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace
{
constexpr size_t text_size = 16 << 20;
constexpr int32_t buffer_size = 64 << 10;

const std::string &input()
{
    static const std::string text = commented_text(text_size);
    return text;
}

// The same text in a file that has no name.
FILE *input_file()
{
    static FILE *const file = [] {
        FILE *const made = std::tmpfile();
        if (!made || std::fwrite(input().data(), 1, input().size(), made) != input().size() ||
            std::fflush(made) != 0)
            throw std::runtime_error("no temporary file");
        return made;
    }();
    std::rewind(file);
    return file;
}

// What both sides must agree on.
struct summary {
    int64_t items = 0;
    int64_t characters = 0;
    uint64_t hash = 0;
    int32_t lines = 0;

    void add(const char *item, int64_t length)
    {
        items++;
        characters += length;
        hash = hash * 31 + static_cast<unsigned char>(item[0]) * 7u +
               static_cast<unsigned char>(item[length - 1]);
    }
    bool operator==(const summary &) const = default;
};

summary scan_with_tessel(io_source source)
{
    io_text text = {};
    text.line_comment = "#";
    text.line_comment_length = 1;
    text.block_open = "/*";
    text.block_open_length = 2;
    text.block_close = "*/";
    text.block_close_length = 2;
    summary result;
    char item[256];
    int32_t code;
    while ((code = iotextRead(&source, nullptr, item, sizeof item, 0, &text)) > 0 || text.count > 0)
        result.add(item, text.count);
    result.lines = text.line;
    return result;
}

summary tessel_memory()
{
    io_memory memory = {static_cast<int32_t>(input().size()), 0,
                        const_cast<char *>(input().data())};
    return scan_with_tessel({&memory, ioLockMemory, ioUnlockMemory});
}

summary tessel_file()
{
    io_stream stream = {};
    stream.read = fileRead;
    stream.seek = fileSeek;
    stream.handle = fileno(input_file());
    fileSeek(&stream, 0, IO_FROM_START);
    ioAllocBuffer(&stream, buffer_size);
    const summary result = scan_with_tessel({&stream, ioLockBuffer, ioUnlockBuffer});
    ioFreeBuffer(&stream);
    return result;
}

void run(benchmark::State &state, summary (*scan)())
{
    const summary expected = tessel_memory();
    int64_t items = 0;
    for (auto _ : state) {
        const summary result = scan();
        if (!(result == expected)) {
            state.SkipWithError("the sides disagree");
            break;
        }
        items += result.items;
    }
    state.SetItemsProcessed(items);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * input().size()));
}

BENCHMARK_CAPTURE(run, tessel_memory, tessel_memory)->Unit(benchmark::kMillisecond);

#ifdef TESSEL_BENCH_FLEX
summary scan_with_flex()
{
    summary result;
    items_line = 0;
    while (items_lex() != 0)
        result.add(items_text, items_leng);
    result.lines = items_line;
    return result;
}

summary flex_memory()
{
    // flex wants two NUL characters behind the text and writes into it, so it has a copy.
    static std::string text = input() + std::string(2, '\0');
    items_buffer buffer = items__scan_buffer(text.data(), text.size());
    const summary result = scan_with_flex();
    items__delete_buffer(buffer);
    return result;
}

summary flex_file()
{
    items_buffer buffer = items__create_buffer(input_file(), buffer_size);
    items__switch_to_buffer(buffer);
    const summary result = scan_with_flex();
    items__delete_buffer(buffer);
    return result;
}

BENCHMARK_CAPTURE(run, flex_memory, flex_memory)->Unit(benchmark::kMillisecond);
#endif

BENCHMARK_CAPTURE(run, tessel_file, tessel_file)->Unit(benchmark::kMillisecond);
#ifdef TESSEL_BENCH_FLEX
BENCHMARK_CAPTURE(run, flex_file, flex_file)->Unit(benchmark::kMillisecond);
#endif
} // namespace
