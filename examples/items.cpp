// Reads commented text files item by item and prints each item with its line and with what ended
// it. An item is a word, or a string in double quotes. Comments start with # or stand between /*
// and */.
#include "text_file.h"

#include <cstdio>

namespace
{
enum { exit_ok = 0, exit_failed = 1 };

const char *end_of_item(int32_t result, int32_t terminator)
{
    if (result == IOTEXT_COMMENT)
        return "comment";
    if (result == IOTEXT_END)
        return "end of file";
    return terminator == '\n' ? "end of line" : "white space";
}

bool report(const text_file &file, int32_t line, int32_t result)
{
    std::fprintf(stderr, "items: %s:%d: %s\n", file.path, static_cast<int>(line),
                 text_failure(result));
    return false;
}

bool print_items(text_file &file)
{
    io_text &text = file.text;
    char item[4096];
    for (;;) {
        // To the next item's first character, over white space and comments.
        const int32_t ahead = iotextObserve(&file.source, nullptr, &text);
        if (ahead == IOTEXT_END)
            return true;
        const int32_t line = ahead == IOTEXT_COMMENT_FAULT ? text.error_line : text.line;
        if (ahead < 0)
            return report(file, line, ahead);

        const bool quoted = text.terminator == '"';
        const int32_t result = quoted
                                   ? iotextReadString(&file.source, item, sizeof item, '"', '"', 0,
                                                      IOTEXT_LINE_ENDS, &text)
                                   : iotextRead(&file.source, nullptr, item, sizeof item, 0, &text);
        if (result < 0)
            return report(file, line, result);
        std::printf("%5d  %-40s %s\n", static_cast<int>(line), item,
                    quoted ? "closing quote" : end_of_item(result, text.terminator));
    }
}
} // namespace

int main(int argc, char **argv)
{
    const char *standard[] = {TESSEL_EXAMPLE_DATA "/sample.conf"};
    const char *const *paths = argc > 1 ? argv + 1 : standard;
    const int count = argc > 1 ? argc - 1 : 1;
    for (int i = 0; i < count; i++) {
        text_file file;
        if (!open_text_file(file, paths[i])) {
            std::fprintf(stderr, "items: %s: cannot be opened\n", paths[i]);
            return exit_failed;
        }
        std::printf("%s\n", paths[i]);
        const bool good = print_items(file);
        close_file(file.stream);
        if (!good)
            return exit_failed;
    }
    return exit_ok;
}
