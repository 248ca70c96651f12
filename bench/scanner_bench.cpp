// Items of commented text per second: iotextRead over a memory source and over a buffered file,
// beside a flex scanner that does the same job on the same text, and beside getline with strtok_r,
// which knows no comments. Then quoted strings with escapes beside flex.
#include "commented_text.h"

#include "tessel.h"

#ifdef TESSEL_BENCH_FLEX
#include "items_flex.h"
#include "strings_flex.h"
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

// A text, and the same in a file that has no name.
struct input {
    std::string text;
    FILE *file = std::tmpfile();

    explicit input(std::string made) : text(std::move(made))
    {
        if (!file || std::fwrite(text.data(), 1, text.size(), file) != text.size() ||
            std::fflush(file) != 0)
            throw std::runtime_error("no temporary file");
    }
    FILE *from_start() const
    {
        std::rewind(file);
        return file;
    }
};

const input &items()
{
    static const input made(commented_text(text_size));
    return made;
}

const input &strings()
{
    static const input made(quoted_text(text_size));
    return made;
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

summary items_with_tessel(io_source source)
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
    while (iotextRead(&source, nullptr, item, sizeof item, 0, &text) > 0 || text.count > 0)
        result.add(item, text.count);
    result.lines = text.line;
    return result;
}

summary strings_with_tessel(io_source source)
{
    io_text text = {};
    summary result;
    char string[4096];
    while (iotextReadString(&source, string, sizeof string, '"', '"', 0, 0, &text) > 0)
        result.add(string, text.count);
    result.lines = text.line;
    return result;
}

template <const input &text(), summary scan(io_source)>
summary tessel_memory()
{
    io_memory memory = {static_cast<int32_t>(text().text.size()), 0,
                        const_cast<char *>(text().text.data())};
    return scan({&memory, ioLockMemory, ioUnlockMemory});
}

template <const input &text(), summary scan(io_source)>
summary tessel_file()
{
    io_stream stream = {};
    stream.read = fileRead;
    stream.seek = fileSeek;
    stream.handle = fileno(text().file);
    fileSeek(&stream, 0, IO_FROM_START);
    ioAllocBuffer(&stream, buffer_size);
    const summary result = scan({&stream, ioLockBuffer, ioUnlockBuffer});
    ioFreeBuffer(&stream);
    return result;
}

constexpr auto items_memory = tessel_memory<items, items_with_tessel>;
constexpr auto items_file = tessel_file<items, items_with_tessel>;
constexpr auto strings_memory = tessel_memory<strings, strings_with_tessel>;
constexpr auto strings_file = tessel_file<strings, strings_with_tessel>;

void run(benchmark::State &state, summary (*scan)(), summary (*reference)())
{
    const summary expected = reference();
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
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text_size));
}

// Words between white space, those of comments too: less work, so a result of its own.
summary strtok_file()
{
    summary result;
    FILE *const file = items().from_start();
    char *line = nullptr;
    size_t room = 0;
    while (getline(&line, &room, file) > 0) {
        result.lines++;
        char *rest;
        for (char *word = strtok_r(line, " \t\r\n", &rest); word;
             word = strtok_r(nullptr, " \t\r\n", &rest))
            result.add(word, static_cast<int64_t>(std::strlen(word)));
    }
    std::free(line);
    return result;
}

#ifdef TESSEL_BENCH_FLEX
summary items_with_flex()
{
    summary result;
    items_line = 0;
    while (items_lex() != 0)
        result.add(items_text, items_leng);
    result.lines = items_line;
    return result;
}

summary flex_items_memory()
{
    // flex wants two NUL characters behind the text and writes into it, so it has a copy.
    static std::string text = items().text + std::string(2, '\0');
    items_buffer buffer = items__scan_buffer(text.data(), text.size());
    const summary result = items_with_flex();
    items__delete_buffer(buffer);
    return result;
}

summary flex_items_file()
{
    items_buffer buffer = items__create_buffer(items().from_start(), buffer_size);
    items__switch_to_buffer(buffer);
    const summary result = items_with_flex();
    items__delete_buffer(buffer);
    return result;
}

summary strings_with_flex()
{
    summary result;
    strings_line = 0;
    while (strings_lex() > 0)
        result.add(strings_value, strings_length);
    result.lines = strings_line;
    return result;
}

summary flex_strings_memory()
{
    static std::string text = strings().text + std::string(2, '\0');
    strings_buffer buffer = strings__scan_buffer(text.data(), text.size());
    const summary result = strings_with_flex();
    strings__delete_buffer(buffer);
    return result;
}

summary flex_strings_file()
{
    strings_buffer buffer = strings__create_buffer(strings().from_start(), buffer_size);
    strings__switch_to_buffer(buffer);
    const summary result = strings_with_flex();
    strings__delete_buffer(buffer);
    return result;
}
#endif

BENCHMARK_CAPTURE(run, items_memory, items_memory, items_memory)->Unit(benchmark::kMillisecond);
#ifdef TESSEL_BENCH_FLEX
BENCHMARK_CAPTURE(run, flex_items_memory, flex_items_memory, items_memory)
    ->Unit(benchmark::kMillisecond);
#endif
BENCHMARK_CAPTURE(run, items_file, items_file, items_memory)->Unit(benchmark::kMillisecond);
#ifdef TESSEL_BENCH_FLEX
BENCHMARK_CAPTURE(run, flex_items_file, flex_items_file, items_memory)
    ->Unit(benchmark::kMillisecond);
#endif
BENCHMARK_CAPTURE(run, strtok_file, strtok_file, strtok_file)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(run, strings_memory, strings_memory, strings_memory)
    ->Unit(benchmark::kMillisecond);
#ifdef TESSEL_BENCH_FLEX
BENCHMARK_CAPTURE(run, flex_strings_memory, flex_strings_memory, strings_memory)
    ->Unit(benchmark::kMillisecond);
#endif
BENCHMARK_CAPTURE(run, strings_file, strings_file, strings_memory)->Unit(benchmark::kMillisecond);
#ifdef TESSEL_BENCH_FLEX
BENCHMARK_CAPTURE(run, flex_strings_file, flex_strings_file, strings_memory)
    ->Unit(benchmark::kMillisecond);
#endif
} // namespace
