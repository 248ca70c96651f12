// Says which line ends text files have, or changes them. `eol --help` lists its options.
#include "command_line.h"
#include "text_file.h"

#include <limits.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <initializer_list>

namespace
{
enum { exit_ok = 0, exit_failed = 1, exit_usage = 2 };

constexpr char usage[] =
    "Usage: eol [option | file]...\n"
    "Says which line ends text files have: lf, crlf, cr, lfcr, none, or, where they\n"
    "are not all alike, mixed and the first of them.\n"
    "\n"
    "  -t, --to STYLE  change all line ends to lf, crlf, cr or lfcr instead\n"
    "  -h, --help      write this\n"
    "  --              the options end here\n"
    "\n"
    "Of line feeds and carriage returns in a row, each that equals the first is a line\n"
    "end and the others belong to these: where styles meet, an empty line may be lost.\n"
    "A file that needs a change is written anew beside the old one, with its\n"
    "permissions, and takes its place when it is complete.\n"
    "Exit codes: 0 all is well, 1 some file failed, 2 wrong usage.\n";

// The options: places in the table, and in the row of short forms.
enum { option_help, option_to, option_count };
constexpr const char *long_options[option_count] = {"help", "= to"};
constexpr const char *style_names[] = {"", "lf", "cr", "crlf", "", "", "", "lfcr"};

constexpr char unreadable[] = "cannot be read, or there is not memory enough";

struct request {
    int32_t to; // a style, or IOTEXT_NO_STYLE
    bool help;
};

bool complain(const char *path, const char *what)
{
    fprintf(stderr, "eol: %s: %s\n", path, what);
    return false;
}

bool convert(io_stream &output, io_stream &input, int32_t style)
{
    return ioAllocBuffer(&output, buffer_size) &&
           iotextConvert(&output, &input, static_cast<uint32_t>(style)) != IOTEXT_NO_STYLE;
}

enum class finding { same, differs, failed };

// Where a converted text is held against the original.
struct comparison {
    io_stream original;
    finding found;
};

// A back end that writes nothing. It fails from the first difference on, which ends the conversion.
int32_t compare_bytes(io_stream *stream, const void *source, int32_t bytes)
{
    comparison &made = *reinterpret_cast<comparison *>(stream->handle);
    const char *const text = static_cast<const char *>(source);
    int32_t length;
    for (int32_t done = 0; done < bytes && made.found == finding::same; done += length) {
        int32_t visible = 0;
        const void *const view =
            ioLockBuffer(&made.original, reinterpret_cast<intptr_t>(&visible), IO_LOCK_READ);
        length = std::min(visible, bytes - done);
        if (!view)
            made.found = finding::failed;
        else if (length == 0 || memcmp(view, text + done, static_cast<size_t>(length)) != 0)
            made.found = finding::differs;
        else
            ioUnlockBuffer(&made.original, static_cast<const char *>(view) + length);
    }
    return made.found == finding::same ? bytes : IO_FAILED;
}

// Finds out whether all line ends of a file are of one style: then converting to it changes
// nothing.
finding compare_style(const char *path, io_stream &input, int32_t style)
{
    comparison made = {{}, finding::same};
    if (!open_to_read(made.original, path))
        return finding::failed;
    io_stream output = {};
    output.write = compare_bytes;
    output.handle = reinterpret_cast<intptr_t>(&made);
    const bool converted = convert(output, input, style);
    ioFreeBuffer(&output); // what it still holds is compared now
    if (made.found == finding::same) {
        char more; // than the converted text
        const int32_t got = converted ? ioRead(&made.original, &more, 1, 0) : IO_FAILED;
        if (got != 0)
            made.found = got == 1 ? finding::differs : finding::failed;
    }
    close_file(made.original);
    return made.found;
}

bool say(const char *path, io_stream &input)
{
    const int32_t first = iotextFormat(&input, nullptr);
    if (first == IOTEXT_NO_LINE_END) {
        printf("%s: none\n", path);
        return true;
    }
    if (first == IOTEXT_NO_STYLE || ioSeek(&input, 0, IO_FROM_START) != 0)
        return complain(path, unreadable);
    const finding found = compare_style(path, input, first);
    if (found == finding::failed)
        return complain(path, unreadable);
    printf(found == finding::same ? "%s: %s\n" : "%s: mixed, %s first\n", path, style_names[first]);
    return true;
}

// The new file while it is being written, or null. It goes with the program, whichever of the
// signals that main() catches ends that.
const char *volatile unfinished;

void remove_unfinished(int number)
{
    if (unfinished)
        unlink(unfinished);
    signal(number, SIG_DFL);
    raise(number);
}

// Makes the new file from a template of its name. A signal waits until the name is known.
int make_unfinished(char *name)
{
    sigset_t all, before;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, &before);
    const int descriptor = mkstemp(name);
    if (descriptor != -1)
        unfinished = name;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return descriptor;
}

// Writes a file anew, beside it, and puts the new file in its place.
bool replace(const char *path, mode_t mode, io_stream &input, int32_t style)
{
    constexpr mode_t permissions = 07777;
    char name[PATH_MAX];
    const int length = snprintf(name, sizeof name, "%s.XXXXXX", path);
    const int descriptor = length < PATH_MAX ? make_unfinished(name) : -1;
    if (descriptor == -1)
        return false;
    io_stream output = {};
    output.write = fileWrite;
    output.handle = descriptor;
    bool good = convert(output, input, style) && ioFlushBuffer(&output) &&
                fchmod(descriptor, mode & permissions) == 0 && fsync(descriptor) == 0;
    ioResetBuffer(&output); // or bytes that cannot be written would keep the file open
    good = close_file(output) && good && rename(name, path) == 0;
    if (!good)
        unlink(name);
    unfinished = nullptr;
    return good;
}

bool change(const char *path, mode_t mode, io_stream &input, int32_t style)
{
    const finding found = compare_style(path, input, style);
    if (found == finding::same)
        return true;
    if (found == finding::failed || ioSeek(&input, 0, IO_FROM_START) != 0)
        return complain(path, unreadable);
    char target[PATH_MAX]; // a link stays one
    if (realpath(path, target) && access(target, W_OK) == 0 && replace(target, mode, input, style))
        return true;
    return complain(path, "cannot be changed, and is as it was");
}

bool treat(const char *path, int32_t to)
{
    struct stat status;
    io_stream input;
    if (stat(path, &status) != 0 || !S_ISREG(status.st_mode) || !open_to_read(input, path))
        return complain(path, "no regular file that can be opened");
    const bool good =
        to == IOTEXT_NO_STYLE ? say(path, input) : change(path, status.st_mode, input, to);
    close_file(input);
    return good;
}

bool take_option(void *context, str_option &option, int32_t index)
{
    request &wanted = *static_cast<request *>(context);
    if (index == option_help) {
        wanted.help = true;
        return true;
    }
    const char *const name = option_value(option, "eol", "a style");
    for (const int32_t style : {IOTEXT_LF, IOTEXT_CRLF, IOTEXT_CR, IOTEXT_LFCR}) {
        if (name && strcmp(name, style_names[style]) == 0) {
            wanted.to = style;
            return true;
        }
    }
    return name && complain(name, "not a style; these are lf, crlf, cr and lfcr");
}
} // namespace

int main(int, char **argv)
{
    request wanted = {};
    command_line line = {"eol", long_options, "ht", option_count, take_option};
    if (!read_command_line(line, argv, &wanted))
        return exit_usage;
    if (wanted.help) {
        fputs(usage, stdout);
        line.count = 0;
    } else if (line.count == 0) {
        fputs("eol: no file given; eol --help tells more\n", stderr);
        return exit_usage;
    }
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXFSZ}) {
        if (signal(number, remove_unfinished) == SIG_IGN)
            signal(number, SIG_IGN);
    }
    bool good = true;
    for (int i = 0; i < line.count; i++)
        good = treat(line.others[i], wanted.to) && good;
    return output_written("eol") && good ? exit_ok : exit_failed;
}
