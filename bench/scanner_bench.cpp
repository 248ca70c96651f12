// Items of commented text: iotextRead over a memory source and over a buffered file, beside a flex
// scanner that does the same job on the same text, and beside getline with strtok_r, which knows no
// comments. Then quoted strings with escapes beside flex, and how the cost of ours grows.
#include "commented_text.h"
#include "compare.h"
#include "work_files.h"

#include "tessel.h"

#ifdef TESSEL_BENCH_FLEX
#include "items_flex.h"
#include "strings_flex.h"
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace
{
using namespace bench;

constexpr size_t megabyte = 1 << 20;
constexpr size_t text_size = 16 * megabyte;
// A text, and the same in a file.
struct input : work_directory {
    std::string text;
    std::string file = path / "text";

    explicit input(std::string made) : text(std::move(made))
    {
        write_file(file, text);
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

// What a scan finds.
struct summary {
    uint64_t items = 0;
    uint64_t characters = 0;
    uint64_t hash = 0;
    int32_t lines = 0;

    void add(const char *item, int64_t length)
    {
        items++;
        characters += static_cast<uint64_t>(length);
        hash = hash * 31 + static_cast<unsigned char>(item[0]) * 7u +
               static_cast<unsigned char>(item[length - 1]);
    }
    uint64_t answer() const
    {
        return hash + items * 0x9e3779b97f4a7c15 + characters * 0xc2b2ae3d27d4eb4f +
               static_cast<uint64_t>(lines);
    }
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

summary from_memory(const std::string &text, summary scan(io_source))
{
    io_memory memory = {static_cast<int32_t>(text.size()), 0, const_cast<char *>(text.data())};
    return scan({&memory, ioLockMemory, ioUnlockMemory});
}

summary from_file(const input &text, summary scan(io_source))
{
    stream_file file(text.file, FILE_READ);
    return scan({&file.stream, ioLockBuffer, ioUnlockBuffer});
}

// Words between white space, those of comments too.
summary items_with_strtok()
{
    summary result;
    const stdio_file file(items().file, "rb");
    char *line = nullptr;
    size_t room = 0;
    while (getline(&line, &room, file.file) > 0) {
        result.lines++;
        char *rest;
        for (char *word = strtok_r(line, " \t\r\n", &rest); word;
             word = strtok_r(nullptr, " \t\r\n", &rest))
            result.add(word, static_cast<int64_t>(std::strlen(word)));
    }
    std::free(line);
    return result;
}

// The same with the means of the standard library.
uint64_t words_of_items()
{
    summary result;
    std::istringstream text(items().text);
    for (std::string word; text >> word;)
        result.add(word.data(), static_cast<int64_t>(word.size()));
    const std::string &all = items().text;
    result.lines = static_cast<int32_t>(std::count(all.begin(), all.end(), '\n'));
    return result.answer();
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

summary strings_with_flex()
{
    summary result;
    strings_line = 0;
    while (strings_lex() > 0)
        result.add(strings_value, strings_length);
    result.lines = strings_line;
    return result;
}

// flex wants two NUL characters behind the text and writes into it, so it has a copy.
std::string flex_copy(const input &text)
{
    return text.text + std::string(2, '\0');
}

summary flex_items_memory(std::string &text)
{
    items_buffer buffer = items__scan_buffer(text.data(), text.size());
    const summary result = items_with_flex();
    items__delete_buffer(buffer);
    return result;
}

summary flex_items_file()
{
    const stdio_file file(items().file, "rb");
    items_buffer buffer = items__create_buffer(file.file, buffer_size);
    items__switch_to_buffer(buffer);
    const summary result = items_with_flex();
    items__delete_buffer(buffer);
    return result;
}

summary flex_strings_memory(std::string &text)
{
    strings_buffer buffer = strings__scan_buffer(text.data(), text.size());
    const summary result = strings_with_flex();
    strings__delete_buffer(buffer);
    return result;
}

summary flex_strings_file()
{
    const stdio_file file(strings().file, "rb");
    strings_buffer buffer = strings__create_buffer(file.file, buffer_size);
    strings__switch_to_buffer(buffer);
    const summary result = strings_with_flex();
    strings__delete_buffer(buffer);
    return result;
}
#endif

const std::string items_memory = "Items of 16 MB of commented text, from memory";
const std::string items_file = "Items of 16 MB of commented text, file with a buffer of 64 KiB";
const std::string strings_memory = "Quoted strings with escapes, 16 MB, from memory";
const std::string strings_file = "Quoted strings with escapes, 16 MB, file with a buffer of 64 KiB";

void add_tessel(const std::string &memory, const std::string &file, const input &text(),
                summary scan(io_source))
{
    add({memory}, "tessel",
        [=] { return [=] { return from_memory(text().text, scan).answer(); }; });
    add({file}, "tessel", [=] { return [=] { return from_file(text(), scan).answer(); }; });
}

void add_strtok()
{
    add({items_file}, "getline and strtok_r, which see no comments", [] {
        static const uint64_t expected = words_of_items();
        return [] { return items_with_strtok().answer() == expected; };
    });
}

#ifdef TESSEL_BENCH_FLEX
void add_flex(const std::string &memory, const std::string &file, const input &text(),
              summary scan_memory(std::string &), summary scan_file())
{
    add({memory}, "flex", [=] {
        return [=, copy = flex_copy(text())]() mutable { return scan_memory(copy).answer(); };
    });
    add({file}, "flex", [=] {
        text();
        return [=] { return scan_file().answer(); };
    });
}
#endif

// Texts that stand from one repetition to the next.
const std::string &text_of(size_t megabytes)
{
    static std::map<size_t, std::string> texts;
    std::string &text = texts[megabytes];
    if (text.empty())
        text = commented_text(megabytes * megabyte);
    return text;
}

// Ours beside itself with a small text, and whether it has counted all lines.
void add_growth(size_t megabytes, const std::string &side, size_t size)
{
    const std::string name =
        "Items of " + std::to_string(megabytes) + " MB of commented text, a byte, growth";
    add({name, size * megabyte}, side, [=] {
        return [&text = text_of(size)] {
            const summary result = from_memory(text, items_with_tessel);
            return result.lines == std::count(text.begin(), text.end(), '\n');
        };
    });
}
} // namespace

void bench::add_sides()
{
    add_tessel(items_memory, items_file, items, items_with_tessel);
    add_tessel(strings_memory, strings_file, strings, strings_with_tessel);
#ifdef TESSEL_BENCH_FLEX
    add_flex(items_memory, items_file, items, flex_items_memory, flex_items_file);
    add_flex(strings_memory, strings_file, strings, flex_strings_memory, flex_strings_file);
#endif
    add_strtok();
    for (const size_t megabytes : {16u, 256u}) {
        add_growth(megabytes, "tessel", megabytes);
        add_growth(megabytes, "itself with 1 MB", 1);
    }
}
