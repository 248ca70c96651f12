// Line ends of a text file of 64 MB changed from one style to the other, from file to file through
// buffers of 64 KiB, beside commands that do the same. Times are of the processor, with that of the
// system, and for commands with what it takes to start them.
#include "compare.h"
#include "work_files.h"

#include "tessel.h"

#include <random>

namespace
{
using namespace bench;

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

// The same text with line feeds and with pairs.
struct text_files : work_directory {
    std::string texts[2] = {make_text("\n"), make_text("\r\n")};
    std::string inputs[2] = {path / "feeds", path / "pairs"};
    std::string output = path / "output";

    text_files()
    {
        for (const bool pairs : {false, true})
            write_file(inputs[pairs], texts[pairs]);
    }
};

const text_files &files()
{
    static const text_files made;
    return made;
}

void convert(bool to_pairs)
{
    stream_file input(files().inputs[!to_pairs], FILE_READ);
    stream_file output(files().output, write_anew);
    iotextConvert(&output.stream, &input.stream, to_pairs ? IOTEXT_CRLF : IOTEXT_LF);
}

// A command finds the paths in its environment.
void run_command(bool to_pairs, const char *command)
{
    setenv("INPUT", files().inputs[!to_pairs].c_str(), 1);
    setenv("OUTPUT", files().output.c_str(), 1);
    if (std::system(command) != 0)
        throw std::runtime_error(std::string("failed, or is not installed: ") + command);
}

template <typename Convert>
void add_conversion(bool to_pairs, const std::string &side, Convert convert_file)
{
    const std::string name =
        std::string("Line ends of 64 MB, ") + (to_pairs ? "LF to CR LF" : "CR LF to LF");
    add({name, 1, processor_time}, side, [=] {
        return [=](stopwatch &watch) {
            files();
            watch.time(convert_file);
            return read_file(files().output) == files().texts[to_pairs];
        };
    });
}

void add_command(bool to_pairs, const std::string &side, const char *command)
{
    add_conversion(to_pairs, side, [=] { run_command(to_pairs, command); });
}
} // namespace

void bench::add_sides()
{
    for (const bool to_pairs : {true, false})
        add_conversion(to_pairs, "tessel", [=] { convert(to_pairs); });
    add_command(true, "unix2dos", R"(unix2dos -q -n "$INPUT" "$OUTPUT")");
    add_command(true, "sed", R"(sed 's/$/\r/' "$INPUT" >"$OUTPUT")");
    add_command(false, "dos2unix", R"(dos2unix -q -n "$INPUT" "$OUTPUT")");
    add_command(false, "sed", R"(sed 's/\r$//' "$INPUT" >"$OUTPUT")");
    // Every carriage return is dropped, whatever stands behind it.
    add_command(false, "tr", R"(tr -d '\r' <"$INPUT" >"$OUTPUT")");
}
