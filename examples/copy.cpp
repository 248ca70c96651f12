// Copies a file, shows how far it has come, and can go on with a copy that broke off. `copy --help`
// lists its options.
#include "command_line.h"
#include "text_file.h"

#include <filesystem>
#include <stdint.h>
#include <system_error>

#ifdef _WIN32
#include <io.h>
#define isatty _isatty
#define fileno _fileno
#else
#include <unistd.h>
#endif

namespace
{
enum { exit_ok = 0, exit_failed = 1, exit_usage = 2 };

constexpr char usage[] =
    "Usage: copy [option]... SOURCE TARGET\n"
    "Copies a file. On a terminal a bar shows how far the copy has come.\n"
    "\n"
    "  -c, --continue  go on with a copy that broke off: append what TARGET lacks\n"
    "  -f, --force     overwrite TARGET if it is there\n"
    "  -q, --quiet     no bar\n"
    "  -h, --help      write this\n";

enum { option_continue, option_force, option_help, option_quiet, option_count };
constexpr const char *long_options[option_count] = {"continue", "force", "help", "quiet"};
constexpr char letters[] = "cfhq";

constexpr int32_t work_size = 1 << 20;
constexpr int bar_width = 50;

// What is wanted, and how far the copy has come. The positions are the copy's to write.
struct copying {
    file_positions positions;
    bool goes_on;
    bool force;
    bool quiet;
    bool help;
    int64_t total; // -1 if not known
    int64_t done;
    bool begun;
    int shown; // width of the bar on the terminal
};

// Size of a file, or -1 for one that is beyond 2 GiB or cannot be measured.
int64_t size_of(const char *path)
{
    io_stream stream = {};
    if (!fileOpen(&stream, path, FILE_READ))
        return -1;
    const int32_t size = fileSeek(&stream, 0, IO_FROM_END);
    fileClose(&stream);
    return size;
}

void show(copying &copy)
{
    if (copy.quiet)
        return;
    if (copy.total <= 0 || copy.done > copy.total) {
        fprintf(stderr, "\r%lld MiB", static_cast<long long>(copy.done >> 20));
        return;
    }
    const int width = static_cast<int>(copy.done * bar_width / copy.total);
    if (width == copy.shown)
        return;
    copy.shown = width;
    fprintf(stderr, "\r[%.*s%*s] %3d %%", width,
            "==================================================", bar_width - width, "",
            static_cast<int>(copy.done * 100 / copy.total));
}

int32_t take_progress(void *context, int32_t bytes)
{
    copying &copy = *static_cast<copying *>(context);
    copy.begun = true;
    copy.done = bytes > 0 ? copy.done + bytes : copy.positions.sourceOffset;
    show(copy);
    return 0;
}

const char *failure_text(int32_t result, const copying &copy)
{
    switch (result) {
    case FILE_NO_SOURCE:
        return "the source cannot be opened, or is no file";
    case FILE_NO_TARGET:
        return "the target cannot be opened, or is there already; --force overwrites it";
    case IO_NO_MEMORY:
        return "out of memory";
    default:
        return copy.begun ? "the copy broke off; --continue goes on with it"
                          : "the target's end cannot be reached, or is beyond 2 GiB";
    }
}

bool take_option(void *context, str_option &, int32_t index)
{
    copying &copy = *static_cast<copying *>(context);
    bool *const flags[option_count] = {&copy.goes_on, &copy.force, &copy.help, &copy.quiet};
    *flags[index] = true;
    return true;
}
} // namespace

int main(int, char **argv)
{
    copying copy = {};
    command_line line = {"copy", long_options, letters, option_count, take_option};
    if (!read_command_line(line, argv, &copy))
        return exit_usage;
    if (copy.help) {
        fputs(usage, stdout);
        return output_written(line.program) ? exit_ok : exit_failed;
    }
    if (line.count != 2 || (copy.goes_on && copy.force)) {
        fprintf(stderr, "copy: %s\n",
                line.count != 2 ? "one source and one target are needed"
                                : "--continue keeps what --force overwrites");
        return exit_usage;
    }
    const char *const source = line.others[0];
    const char *const target = line.others[1];
    std::error_code ignored;
    if (std::filesystem::equivalent(read_path(source), read_path(target), ignored)) {
        fprintf(stderr, "copy: %s and %s are the same file\n", source, target);
        return exit_usage;
    }
    copy.quiet = copy.quiet || !isatty(fileno(stderr));
    copy.total = size_of(source);
    copy.shown = -1;

    uint32_t flags = FILE_TELL_POSITIONS;
    if (copy.force)
        flags |= FILE_EXISTING | FILE_TRUNCATE;
    if (copy.goes_on)
        flags |= FILE_EXISTING;
    const int32_t begin = copy.goes_on ? -1 : 0;
    const int32_t result =
        fileCopy(target, source, begin, begin, 0, nullptr, work_size, flags, take_progress, &copy);
    if (!copy.quiet && copy.begun)
        fputc('\n', stderr);
    if (result != 0) {
        fprintf(stderr, "copy: %s to %s: %s\n", source, target, failure_text(result, copy));
        return exit_failed;
    }
    if (copy.goes_on && copy.total >= 0 && copy.positions.targetOffset > copy.total) {
        fprintf(stderr, "copy: %s is longer than %s already\n", target, source);
        return exit_failed;
    }
    return exit_ok;
}
