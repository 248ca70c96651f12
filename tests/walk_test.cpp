#include "tessel.h"

#include "temp_dir.h"

#include <algorithm>
#include <set>
#include <string.h>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

using namespace std::string_literals;

namespace
{

namespace fs = std::filesystem;

// What a walk has reported: what the files hold and the names of directories, and all paths in order
// with their kinds.
struct report : file_trace {
    std::multiset<std::string> found;
    std::string lines;
    size_t stop_at = SIZE_MAX;
    int32_t stop_with = 0;
};

// Reaches each entry again by the path that it is reported with.
int32_t look_up(const char *path, file_trace *record)
{
    report &seen = *static_cast<report *>(record);
    char text[64] = "unreadable";
    if (seen.kind == FILE_TRACE_IS_DIRECTORY) {
        compat_dir *const dir = compat_opendir(path);
        EXPECT_TRUE(dir && compat_readdir(dir)) << path;
        compat_closedir(dir);
        strcpy(text, seen.name);
    } else {
        io_stream stream = {fileRead, nullptr, nullptr, 0, nullptr, 0};
        if (fileOpen(&stream, path, FILE_READ))
            text[fileRead(&stream, text, sizeof text - 1)] = '\0';
        fileClose(&stream);
    }
    seen.found.insert(text);
    seen.lines += std::string(path) + "=" + std::to_string(seen.kind) + " ";
    EXPECT_EQ(std::string(path).substr(strlen(path) - strlen(seen.name)), seen.name);
    return seen.found.size() == seen.stop_at ? seen.stop_with : FILE_TRACE_GO_ON;
}

// A tree with links, loops and names that are hard on walkers. A file holds its own path within it.
struct test_tree : temp_dir {
    fs::path root = path / "tree";
    std::multiset<std::string> expected[4]; // by flags

    void make(std::initializer_list<const char *> files)
    {
        for (const char *const file : files) {
            fs::create_directories((root / file).parent_path());
            write_file(root / file, file);
        }
    }
    // Files and directories that are found at the top, or where directories are entered.
    void expect(uint32_t entered, uint32_t kind, std::initializer_list<const char *> names)
    {
        for (uint32_t flags = 0; flags < 4; flags++)
            if ((flags & (entered | kind)) == (entered | kind))
                expected[flags].insert(names.begin(), names.end());
    }
    test_tree()
    {
        constexpr uint32_t top = 0, below = FILE_TRACE_ENTER;
        constexpr uint32_t files = 0, directories = FILE_TRACE_DIRECTORIES;
        make({"f", "a b", "\xc3\xbc", "d/f", "d/e/g", "d/.h", ".h/f"});
        fs::create_directory(root / "empty");
        expect(top, files, {"f", "a b", "\xc3\xbc"});
        expect(top, directories, {"d", "empty"});
        expect(below, files, {"d/f", "d/e/g"});
        expect(below, directories, {"e"});
#ifndef _WIN32
        make({"new\nline", "back\\slash", "d\\e/h"});
        fs::create_symlink("nowhere", root / "dangling");
        fs::create_symlink("f", root / "to_file");
        expect(top, files, {"new\nline", "back\\slash", "unreadable", "f"});
        // Two ways round: d/e/up is d, and to_dir is d/e. From d it ends at up, from to_dir at e.
        fs::create_symlink("..", root / "d/e/up");
        fs::create_symlink("d/e", root / "to_dir");
        expect(top, directories, {"d\\e", "to_dir"});
        expect(below, directories, {"up", "up", "e"});
        expect(below, files, {"d\\e/h", "d/e/g", "d/f"});
#endif
    }
};

TEST(Walk, ReportsAsTheFlagsSayUntilItIsStopped)
{
    const test_tree tree;
    const fs::path before = fs::current_path();
    fs::current_path(tree.root);
    const std::string slashed = tree.root.generic_string();
    for (const std::string &start : {""s, slashed, slashed + "/", "../tree"s, "..\\tree"s, ".\\"s})
        for (uint32_t flags = 0; flags < 4; flags++) {
            SCOPED_TRACE("from '" + start + "' with " + std::to_string(flags));
            report seen = {};
            seen.kind = -1;
            EXPECT_EQ(fileTrace(start.empty() ? nullptr : start.c_str(), look_up, &seen, flags), 1);
            EXPECT_EQ(seen.found, tree.expected[flags]);
            EXPECT_EQ(seen.kind, FILE_TRACE_IS_FILE);
        }
    const intptr_t descriptor = free_descriptor(tree);
    for (size_t stop = 1; stop <= tree.expected[3].size(); stop++) {
        report seen = {};
        seen.stop_at = stop;
        EXPECT_EQ(fileTrace(nullptr, look_up, &seen, 3), 0);
        EXPECT_EQ(seen.found.size(), stop);
    }
    for (const char *const none : {"f", "missing"})
        EXPECT_EQ(fileTrace(none, look_up, nullptr, 3), 0);
    const auto count = [](const char *, file_trace *record) { return record ? 0 : 1; };
    EXPECT_EQ(fileTrace(nullptr, count, nullptr, 3), 1);
    EXPECT_EQ(free_descriptor(tree), descriptor);

    // Depth first, with paths from the start on, and the kind of the entry at which it is stopped.
    fs::create_directories("one/b/c");
    write_file("one/b/c/f", "");
    report seen = {};
    EXPECT_EQ(fileTrace("one/b/", look_up, &seen, 3), 1);
    EXPECT_EQ(seen.lines, "one/b/c=2 one/b/c/f=0 ");
    seen = {};
    seen.stop_at = 1;
    seen.stop_with = 5;
    EXPECT_EQ(fileTrace("one\\b", look_up, &seen, 3), 5);
    EXPECT_EQ(seen.lines, "one\\b\\c=2 ");
    EXPECT_EQ(seen.kind, FILE_TRACE_IS_DIRECTORY);
    fs::current_path(before);
}

#ifndef _WIN32
TEST(Paths, AreReadWithBackslashesAsSlashes)
{
    temp_dir temp;
    const fs::path before = fs::current_path();
    fs::current_path(temp.path);
    for (const char *const directory : {"a/b", "w\\x/y", "d\\e", "d"})
        fs::create_directories(directory);
    for (const char *const file : {"a/f", "a/b\\g", "w\\x/y/h", "d\\e/k", "d/e", "d\\e\\l"})
        write_file(file, file);
    fs::create_symlink("nowhere", "a\\f");
    // What is opened by a path, and what can be made by one.
    const auto opened = [](const std::string &path, uint32_t flags) {
        io_stream stream = {};
        char text[16] = "nothing";
        if (fileOpen(&stream, path.c_str(), flags))
            text[std::max(fileRead(&stream, text, sizeof text - 1), 0)] = '\0';
        fileClose(&stream);
        return std::string(text);
    };
    const std::pair<const char *, const char *> rows[] = {
        {R"(a\b\g)", R"(a/b\g)"}, {R"(w\x\y\h)", R"(w\x/y/h)"}, {R"(w\x/y\h)", R"(w\x/y/h)"},
        {R"(d\e\k)", R"(d\e/k)"}, {R"(.\d\e)", "d/e"},          {R"(a\f)", "nothing"},
        {R"(a\b\f)", "nothing"},  {R"(d/e\l)", "nothing"}};
    for (const auto &[path, found] : rows)
        EXPECT_EQ(opened(path, FILE_READ), found) << path;
    std::string whole = temp.at("a/b\\g");
    std::replace(whole.begin(), whole.end(), '/', '\\');
    EXPECT_EQ(opened(whole, FILE_READ), "a/b\\g");
    EXPECT_EQ(opened("a\\new", FILE_WRITE) + opened("new", FILE_WRITE), "");
    EXPECT_TRUE(fs::exists("a/new") && fs::exists("new"));
    EXPECT_EQ(opened(std::string("a").append(4097, '\\'), FILE_WRITE), "nothing");

    // Two links make the number of readings grow with every backslash.
    fs::create_symlink(".", "z");
    fs::create_symlink(".", "z\\z");
    std::string path = "z";
    for (int i = 0; i < 100; i++)
        path += "\\z";
    EXPECT_EQ(opened(path + "\\none", FILE_READ), "nothing");

    // The directory that a program is in may be gone, and can still be opened.
    fs::current_path("d");
    fs::remove_all(temp.path / "d");
    compat_dir *const gone = compat_opendir(".");
    EXPECT_TRUE(gone && !compat_readdir(gone) && !compat_readdir(gone));
    compat_closedir(gone);
    fs::current_path(before);
}

// Paths that are joined with some of these name something else, or nothing, and in the end they are
// longer than the system takes.
TEST(Walk, IsNotLedAstrayByNames)
{
    temp_dir temp;
    const fs::path before = fs::current_path();
    fs::current_path(temp.path);
    const std::string names[] = {"\\", "c:", "x\\", "\\\\", "x", std::string(200, 'n')};
    std::multiset<std::string> expected;
    for (size_t level = 0; level < 300; level++) {
        const std::string &name = names[level % std::size(names)], file = "in " + name;
        fs::create_directory(name);
        write_file(file, "");
        fs::current_path(name);
        expected.insert({name, file});
    }
    fs::current_path(before);
    report seen = {};
    const auto take_name = [](const char *, file_trace *record) {
        static_cast<report *>(record)->found.insert(record->name);
        return int32_t{FILE_TRACE_GO_ON};
    };
    EXPECT_EQ(fileTrace(temp.path.c_str(), take_name, &seen, 3), 1);
    EXPECT_EQ(seen.found, expected);
}

// It is the mark of no file, even if the standard input is closed.
TEST(Descriptor, IsNever0)
{
    const temp_dir temp;
    const int input = dup(0);
    close(0);
    EXPECT_GT(free_descriptor(temp), 0);
    EXPECT_EQ(open(temp.path.c_str(), O_DIRECTORY), 0) << "left open";
    dup2(input, 0);
    close(input);
}

#ifdef __x86_64__
// Nearly all of the text is one block of a file over and over. On other processors, which may be
// emulated, its length takes too long to measure.
TEST(Texts, AreRefusedBeyondNumbers)
{
    const temp_dir dir;
    constexpr size_t size = size_t{1} << 31, block = size_t{1} << 20, end = 4096;
    write_file(dir.path / "block", std::string(block, 'x'));
    const int file = open(dir.at("block").c_str(), O_RDONLY);
    char *const text =
        static_cast<char *>(mmap(nullptr, size + end, PROT_READ | PROT_WRITE,
                                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
    for (char *at = text; at < text + size; at += block)
        ASSERT_EQ(mmap(at, block, PROT_READ, MAP_PRIVATE | MAP_FIXED, file, 0), at);
    close(file);
    io_stream stream = {};
    EXPECT_EQ(strUnion(nullptr, text, text, 0), nullptr);
    EXPECT_EQ(strBackwardToken(text, 0, "x", 0), nullptr);
    EXPECT_EQ(strAppendDirectorySeparator(text), -1);
    EXPECT_EQ(ioWriteString(&stream, text, 0, 4), 0);
    EXPECT_EQ(iotextWriteString(&stream, text), 0);
    munmap(text, size + end);
}
#endif
#endif

TEST(Directory, ListsAllNames)
{
    temp_dir temp;
    const intptr_t descriptor = free_descriptor(temp);
    write_file(temp.at("f"), "");
    for (const std::string &path : {temp.path.generic_string(), temp.at("")}) {
        compat_dir *const dir = compat_opendir(path.c_str());
        ASSERT_TRUE(dir);
        EXPECT_EQ(dir->pattern, temp.at("*.*"));
        EXPECT_EQ(free_descriptor(temp), descriptor) << "before the listing begins";
        std::set<std::string> names;
        while (compat_readdir(dir) == &dir->entry)
            names.insert(dir->entry.name);
        EXPECT_EQ(names, (std::set<std::string>{".", "..", "f", "probe"}));
        write_file(temp.at("later"), "");
        EXPECT_EQ(compat_readdir(dir), nullptr);
        EXPECT_EQ(dir->pattern, temp.at("*.*"));
        compat_closedir(dir);
        fs::remove(temp.at("later"));
    }
    EXPECT_EQ(compat_opendir(temp.at("f").c_str()), nullptr);
    EXPECT_EQ(compat_opendir(temp.at("missing").c_str()), nullptr);

    // One that is gone when the listing begins.
    fs::create_directory(temp.at("gone"));
    compat_dir *const gone = compat_opendir(temp.at("gone").c_str());
    fs::remove(temp.at("gone"));
    EXPECT_TRUE(gone && !compat_readdir(gone) && !compat_readdir(gone));
    compat_closedir(gone);
    compat_closedir(nullptr);
    EXPECT_EQ(free_descriptor(temp), descriptor);
}

} // namespace
