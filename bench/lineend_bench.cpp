// Line ends of a text file of 64 MB changed from one style to the other, from file to file through
// buffers of 64 KiB, beside commands that do the same. Every result is compared with the right one.
// Time is processor time, of the system for this process and its commands as well.
#include "tessel.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>

namespace
{
constexpr size_t text_size = 64 << 20;

// Lines of up to 80 characters.
std::string make_text(const char *line_end)
{
    std::mt19937 random(20260117);
    std::string text;
    text.reserve(text_size + text_size / 20);
    for (size_t size = 0; size < text_size;) {
        const size_t length = random() % 80;
        for (size_t i = 0; i < length; i++)
            text += static_cast<char>(random() % 8 ? 'a' + random() % 26 : ' ');
        text += line_end;
        size += length + 1;
    }
    return text;
}

// The same text with line feeds and with pairs, in files of a directory that goes with the process.
struct work_files {
    std::filesystem::path place;
    std::string texts[2] = {make_text("\n"), make_text("\r\n")};

    work_files()
    {
        std::string name = (std::filesystem::temp_directory_path() / "lineends.XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no temporary directory");
        place = name;
        for (const bool pairs : {false, true})
            std::ofstream(path(pairs), std::ios::binary) << texts[pairs];
    }
    ~work_files()
    {
        std::filesystem::remove_all(place);
    }
    std::string path(bool pairs) const
    {
        return place / (pairs ? "pairs" : "feeds");
    }
    std::string output() const
    {
        return place / "output";
    }
};

const work_files &files()
{
    static const work_files made;
    return made;
}

bool output_is(const std::string &text)
{
    std::ifstream file(files().output(), std::ios::binary);
    std::string output(text.size() + 1, '\0');
    file.read(output.data(), static_cast<std::streamsize>(output.size()));
    output.resize(static_cast<size_t>(file.gcount()));
    return output == text;
}

io_stream open_stream(const std::string &path, uint32_t flags)
{
    constexpr int32_t buffer_size = 64 << 10;
    io_stream stream = {};
    stream.read = fileRead;
    stream.write = fileWrite;
    stream.seek = fileSeek;
    if (!fileOpen(&stream, path.c_str(), flags) || !ioAllocBuffer(&stream, buffer_size))
        throw std::runtime_error("no file");
    return stream;
}

void close_stream(io_stream &stream)
{
    fileClose(&stream);
    ioFreeBuffer(&stream);
}

double processor_time(int whose)
{
    rusage used;
    getrusage(whose, &used);
    return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           1e-6 * static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec);
}

void tessel(benchmark::State &state, bool to_pairs)
{
    for (auto _ : state) {
        const double before = processor_time(RUSAGE_SELF);
        io_stream input = open_stream(files().path(!to_pairs), FILE_READ);
        io_stream output =
            open_stream(files().output(), FILE_WRITE | FILE_EXISTING | FILE_TRUNCATE);
        iotextConvert(&output, &input, to_pairs ? IOTEXT_CRLF : IOTEXT_LF);
        close_stream(output);
        close_stream(input);
        state.SetIterationTime(processor_time(RUSAGE_SELF) - before);
    }
    if (!output_is(files().texts[to_pairs]))
        state.SkipWithError("wrong text");
}

void command(benchmark::State &state, bool to_pairs, const char *text)
{
    setenv("INPUT", files().path(!to_pairs).c_str(), 1);
    setenv("OUTPUT", files().output().c_str(), 1);
    for (auto _ : state) {
        const double before = processor_time(RUSAGE_CHILDREN);
        if (std::system(text) != 0)
            return state.SkipWithError("failed, or is not installed");
        state.SetIterationTime(processor_time(RUSAGE_CHILDREN) - before);
    }
    if (!output_is(files().texts[to_pairs]))
        state.SkipWithError("wrong text");
}

void compare(const char *name, bool to_pairs, const char *text)
{
    const auto run = [=](benchmark::State &state) {
        text ? command(state, to_pairs, text) : tessel(state, to_pairs);
    };
    benchmark::RegisterBenchmark(name, run)->Unit(benchmark::kMillisecond)->UseManualTime();
}

const int registered = [] {
    compare("to_pairs/tessel", true, nullptr);
    compare("to_pairs/unix2dos", true, R"(unix2dos -q -n "$INPUT" "$OUTPUT")");
    compare("to_pairs/sed", true, R"(sed 's/$/\r/' "$INPUT" >"$OUTPUT")");
    compare("to_feeds/tessel", false, nullptr);
    compare("to_feeds/dos2unix", false, R"(dos2unix -q -n "$INPUT" "$OUTPUT")");
    compare("to_feeds/sed", false, R"(sed 's/\r$//' "$INPUT" >"$OUTPUT")");
    // Every carriage return is dropped, whatever stands behind it.
    compare("to_feeds/tr", false, R"(tr -d '\r' <"$INPUT" >"$OUTPUT")");
    return 0;
}();
} // namespace
