// Lists a directory and all below it as a tree, and counts files and directories. `tree --help`
// lists its options.
#include "command_line.h"

namespace
{
enum { exit_ok = 0, exit_failed = 1, exit_usage = 2 };

constexpr char usage[] =
    "Usage: tree [option]... [DIRECTORY]\n"
    "Lists all below DIRECTORY, or below the current one, and counts it. Names that\n"
    "begin with a full stop are left out.\n"
    "\n"
    "  -d, --directories   list directories alone\n"
    "  -n, --name PATTERN  only names that match: * stands for any characters, ? for\n"
    "                      one; directories are listed where something in them is\n"
    "  -h, --help          write this\n";

enum { option_directories, option_help, option_name, option_count };
constexpr const char *long_options[option_count] = {"directories", "help", "= name"};
constexpr char letters[] = "dhn";

// A directory on the way to the current entry. Its name goes on behind the record, in the same
// block, and behind that its path, as the paths of its entries begin.
struct level {
    list_node head;
    bool listed;
};

// What is wanted, and how far the walk has come. The walk's own record is the first part of it.
struct listing {
    file_trace trace;
    bool directories_alone;
    bool help;
    const char *pattern;
    list_node *levels; // the innermost first
    unsigned long files;
    unsigned long directories;
    bool no_memory;
};

const char *name_of(const list_node *node)
{
    return reinterpret_cast<const char *>(node) + sizeof(level);
}

const char *path_of(const list_node *node)
{
    const char *const name = name_of(node);
    return name + strlen(name) + 1;
}

bool matches(const char *name, const char *pattern)
{
    // Where to go on when a guess at the length of the last * turns out wrong.
    const char *star = nullptr;
    const char *guess = nullptr;
    while (*name) {
        if (*pattern == '*') {
            star = pattern++;
            guess = name;
        } else if (*pattern == '?' || *pattern == *name) {
            pattern++;
            name++;
        } else if (star) {
            pattern = star + 1;
            name = ++guess;
        } else {
            return false;
        }
    }
    while (*pattern == '*')
        pattern++;
    return *pattern == '\0';
}

void print(int32_t depth, const char *name, const char *mark)
{
    for (int32_t i = 0; i < depth; i++)
        fputs("    ", stdout);
    printf("%s%s\n", name, mark);
}

// Lists the directories on the way that have not been listed yet, the outermost first.
void list_way(listing &list)
{
    const int32_t depth = listCount(list.levels);
    for (int32_t i = 0; i < depth; i++) {
        level *const there = reinterpret_cast<level *>(listNode(list.levels, depth - 1 - i));
        if (!there->listed)
            print(i, name_of(&there->head), "/");
        list.directories += !there->listed;
        there->listed = true;
    }
}

bool enter(listing &list, const char *path)
{
    const size_t name_size = strlen(list.trace.name) + 1;
    const size_t path_size = strlen(path) + 1;
    const size_t size = sizeof(level) + name_size + path_size + 1; // and a separator
    if (!listPush(&list.levels, static_cast<uint32_t>(size)))
        return false;
    reinterpret_cast<level *>(list.levels)->listed = false;
    char *const text = reinterpret_cast<char *>(list.levels) + sizeof(level);
    memcpy(text, list.trace.name, name_size);
    memcpy(text + name_size, path, path_size);
    strAppendDirectorySeparator(text + name_size);
    return true;
}

// Whether an entry is in this very directory: its path goes on with the name alone.
bool is_in(const char *path, const char *name, const list_node *directory)
{
    const char *const start = path_of(directory);
    const size_t length = strlen(start);
    return strncmp(path, start, length) == 0 && strcmp(path + length, name) == 0;
}

int32_t take_entry(const char *path, file_trace *record)
{
    listing &list = *reinterpret_cast<listing *>(record);
    while (list.levels && !is_in(path, record->name, list.levels))
        listPop(&list.levels);

    const bool wanted = !list.pattern || matches(record->name, list.pattern);
    if (record->kind == FILE_TRACE_IS_DIRECTORY) {
        list.no_memory = !enter(list, path);
        if (list.no_memory)
            return 0;
        if (wanted)
            list_way(list);
    } else if (wanted && !list.directories_alone) {
        list_way(list);
        print(listCount(list.levels), record->name, "");
        list.files++;
    }
    return FILE_TRACE_GO_ON;
}

bool take_option(void *context, str_option &option, int32_t index)
{
    listing &list = *static_cast<listing *>(context);
    switch (index) {
    case option_directories:
        list.directories_alone = true;
        return true;
    case option_name:
        list.pattern = option_value(option, "tree", "a pattern");
        return list.pattern != nullptr;
    default:
        list.help = true;
        return true;
    }
}
} // namespace

int main(int, char **argv)
{
    listing list = {};
    command_line line = {"tree", long_options, letters, option_count, take_option};
    if (!read_command_line(line, argv, &list))
        return exit_usage;
    if (list.help) {
        fputs(usage, stdout);
        return output_written(line.program) ? exit_ok : exit_failed;
    }
    if (line.count > 1) {
        fprintf(stderr, "tree: %s: one directory at a time\n", line.others[1]);
        return exit_usage;
    }
    const char *const start = line.count > 0 ? line.others[0] : ".";
    puts(start);
    const int32_t result =
        fileTrace(start, take_entry, &list.trace, FILE_TRACE_ENTER | FILE_TRACE_DIRECTORIES);
    listClear(&list.levels);
    if (list.no_memory)
        fprintf(stderr, "tree: out of memory\n");
    else if (result != 1)
        fprintf(stderr, "tree: %s: not a directory that can be read\n", start);
    else if (list.directories_alone)
        printf("directories: %lu\n", list.directories);
    else
        printf("directories: %lu, files: %lu\n", list.directories, list.files);
    return output_written(line.program) && result == 1 ? exit_ok : exit_failed;
}
