#include "tessel/compat.h"
#include "tessel/file.h"

#include "temp_dir.h"

#include <set>
#include <string.h>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace
{

namespace fs = std::filesystem;

// What a walk has reported: what the files hold, and the names of directories.
struct report : file_trace {
    std::multiset<std::string> found;
    size_t stop_at = SIZE_MAX;
    int32_t stop_with = 7;
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
    EXPECT_EQ(std::string(path).substr(strlen(path) - strlen(seen.name)), seen.name);
    return seen.found.size() == seen.stop_at ? seen.stop_with : FILE_TRACE_GO_ON;
}

// A tree with links, loops and names that are hard on walkers. A file holds its own path within it.
struct test_tree : temp_dir {
    fs::path root = path / "tree";
    std::multiset<std::string> expected[4]; // by flags

    void make(const std::string &file)
    {
        fs::create_directories((root / file).parent_path());
        write_file(root / file, file);
    }
    void expect(int32_t level, int32_t kind, const std::string &found)
    {
        for (uint32_t flags = 0; flags < 4; flags++)
            if ((kind == FILE_TRACE_IS_FILE || (flags & FILE_TRACE_DIRECTORIES)) &&
                (level == 0 || (flags & FILE_TRACE_ENTER)))
                expected[flags].insert(found);
    }
    test_tree()
    {
        for (const char *const file : {"f", "a b", "\xc3\xbc", "d/f", "d/e/g", "d/.h", ".h/f"})
            make(file);
        fs::create_directory(root / "empty");
        const char *const top[] = {"f", "a b", "\xc3\xbc"};
        for (const char *const file : top)
            expect(0, FILE_TRACE_IS_FILE, file);
        for (const char *const file : {"d/f", "d/e/g"})
            expect(1, FILE_TRACE_IS_FILE, file);
        for (const char *const directory : {"d", "empty"})
            expect(0, FILE_TRACE_IS_DIRECTORY, directory);
        expect(1, FILE_TRACE_IS_DIRECTORY, "e");
#ifndef _WIN32
        make("new\nline");
        make("back\\slash");
        make("d\\e/h");
        for (const char *const file : {"new\nline", "back\\slash"})
            expect(0, FILE_TRACE_IS_FILE, file);
        expect(0, FILE_TRACE_IS_DIRECTORY, "d\\e");
        expect(1, FILE_TRACE_IS_FILE, "d\\e/h");

        fs::create_symlink("nowhere", root / "dangling");
        fs::create_symlink("f", root / "to_file");
        expect(0, FILE_TRACE_IS_FILE, "unreadable");
        expect(0, FILE_TRACE_IS_FILE, "f");
        // Two ways round: d/e/up is d, and to_dir is d/e.
        fs::create_symlink("..", root / "d/e/up");
        fs::create_symlink("d/e", root / "to_dir");
        expect(1, FILE_TRACE_IS_DIRECTORY, "up"); // of d/e, which d leads to
        expect(0, FILE_TRACE_IS_DIRECTORY, "to_dir");
        expect(1, FILE_TRACE_IS_FILE, "d/e/g");
        expect(1, FILE_TRACE_IS_DIRECTORY, "up"); // of to_dir, which does not
        expect(1, FILE_TRACE_IS_FILE, "d/f");
        expect(1, FILE_TRACE_IS_DIRECTORY, "e");
#endif
    }
};

TEST(Walk, ReportsAsTheFlagsSayPathsThatServe)
{
    const test_tree tree;
    const fs::path before = fs::current_path();
    fs::current_path(tree.root);
    const std::string slashed = tree.root.generic_string();
    const std::string starts[] = {"", slashed, slashed + "/", "../tree", "..\\tree", ".\\"};
    for (const std::string &start : starts)
        for (uint32_t flags = 0; flags < 4; flags++) {
            SCOPED_TRACE("from '" + start + "' with " + std::to_string(flags));
            report seen = {};
            EXPECT_EQ(fileTrace(start.empty() ? nullptr : start.c_str(), look_up, &seen, flags), 1);
            EXPECT_EQ(seen.found, tree.expected[flags]);
            EXPECT_EQ(seen.kind, FILE_TRACE_IS_FILE);
        }
    fs::current_path(before);
}

// Depth first, with paths from the start on, and the kind of the entry at which it is stopped.
TEST(Walk, ReportsADirectoryBeforeWhatIsInIt)
{
    temp_dir temp;
    fs::create_directories(temp.path / "b/c");
    write_file(temp.path / "b/c/f", "");
    struct ordered : file_trace {
        std::string lines;
        std::string stop;
    };
    const auto note = [](const char *path, file_trace *record) -> int32_t {
        ordered &seen = *static_cast<ordered *>(record);
        seen.lines += std::string(path) + "=" + std::to_string(seen.kind) + " ";
        return seen.name == seen.stop ? 5 : FILE_TRACE_GO_ON;
    };
    const fs::path before = fs::current_path();
    fs::current_path(temp.path);
    ordered seen = {};
    EXPECT_EQ(fileTrace("b/", note, &seen, 3), 1);
    EXPECT_EQ(seen.lines, "b/c=2 b/c/f=0 ");
    seen = {};
    seen.stop = "c";
    EXPECT_EQ(fileTrace(nullptr, note, &seen, 3), 5);
    EXPECT_EQ(seen.lines, ".\\b=2 .\\b\\c=2 ");
    EXPECT_EQ(seen.kind, FILE_TRACE_IS_DIRECTORY);
    fs::current_path(before);
}

TEST(Walk, ClosesEverythingWhereverItIsStopped)
{
    const test_tree tree;
    const intptr_t descriptor = free_descriptor(tree);
    const std::string start = tree.root.generic_string();
    const size_t entries = tree.expected[3].size();
    for (size_t stop = 1; stop <= entries; stop++) {
        report seen = {};
        seen.stop_at = stop;
        seen.stop_with = stop % 2 ? 0 : -1;
        EXPECT_EQ(fileTrace(start.c_str(), look_up, &seen, 3), seen.stop_with);
        EXPECT_EQ(seen.found.size(), stop);
    }
    EXPECT_EQ(fileTrace((start + "/f").c_str(), look_up, nullptr, 3), 0);
    EXPECT_EQ(fileTrace((start + "/missing").c_str(), look_up, nullptr, 3), 0);
    const auto count = [](const char *, file_trace *record) { return record ? 0 : 1; };
    EXPECT_EQ(fileTrace(start.c_str(), count, nullptr, 3), 1);
    EXPECT_EQ(free_descriptor(tree), descriptor);
}

#ifndef _WIN32
// What is reached by a path with backslashes, and what is made by one.
TEST(Paths, AreReadWithBackslashesAsSlashes)
{
    temp_dir temp;
    const fs::path before = fs::current_path();
    fs::current_path(temp.path);
    for (const char *const directory : {"a", "a/b", "w\\x", "w\\x/y", "d\\e", "d"})
        fs::create_directory(directory);
    for (const char *const file : {"a/f", "a/b\\g", "w\\x/y/h", "d\\e/k", "d/e"})
        write_file(file, file);
    fs::create_symlink("nowhere", "a\\f");
    const std::pair<const char *, const char *> rows[] = {
        {"a\\b\\g", "a/b\\g"}, {"w\\x\\y\\h", "w\\x/y/h"}, {"w\\x/y\\h", "w\\x/y/h"},
        {"d\\e\\k", "d\\e/k"}, {".\\d\\e", "d/e"},         {"a\\f", nullptr},
        {"a\\b\\f", nullptr}};
    for (const auto &[path, found] : rows) {
        io_stream stream = {};
        EXPECT_EQ(fileOpen(&stream, path, FILE_READ), found != nullptr) << path;
        char text[16] = {};
        fileRead(&stream, text, sizeof text - 1);
        EXPECT_STREQ(text, found ? found : "");
        fileClose(&stream);
    }
    const std::pair<std::string, const char *> made[] = {
        {"a\\new", "a/new"}, {"new", "new"}, {"a\\" + std::string(4096, '\\'), nullptr}};
    for (const auto &[path, file] : made) {
        io_stream stream = {};
        EXPECT_EQ(fileOpen(&stream, path.c_str(), FILE_WRITE), file != nullptr);
        fileClose(&stream);
        EXPECT_TRUE(!file || fs::exists(file)) << path;
    }

    // Two links make the number of readings grow with every backslash.
    fs::create_symlink(".", "z");
    fs::create_symlink(".", "z\\z");
    std::string path = "z";
    for (int i = 0; i < 100; i++)
        path += "\\z";
    io_stream stream = {};
    EXPECT_EQ(fileOpen(&stream, (path + "\\none").c_str(), FILE_READ), 0);
    fs::current_path(before);
}

int32_t take_name(const char *, file_trace *record)
{
    static_cast<report *>(record)->found.insert(record->name);
    return FILE_TRACE_GO_ON;
}

// Paths that are joined with these name something else, or nothing.
TEST(Walk, IsNotLedAstrayByNames)
{
    temp_dir temp;
    const std::string names[] = {"\\", "c:", "x\\", "\\\\", "x"};
    std::multiset<std::string> expected;
    for (const std::string &name : names) {
        fs::create_directory(temp.path / name);
        write_file(temp.path / name / ("in " + name), "");
        expected.insert(name);
        expected.insert("in " + name);
    }
    report seen = {};
    EXPECT_EQ(fileTrace(temp.path.c_str(), take_name, &seen, 3), 1);
    EXPECT_EQ(seen.found, expected);
}

TEST(Walk, GoesBeyondTheLimitOnPaths)
{
    temp_dir temp;
    constexpr size_t levels = 300;
    const std::string name = "a name of twenty chars";
    int at = open(temp.path.c_str(), O_DIRECTORY);
    for (size_t i = 0; i < levels; i++) {
        ASSERT_EQ(mkdirat(at, name.c_str(), 0700), 0);
        const int next = openat(at, name.c_str(), O_DIRECTORY);
        close(at);
        at = next;
    }
    close(openat(at, "bottom", O_CREAT | O_WRONLY, 0600));
    close(at);
    report seen = {};
    EXPECT_EQ(fileTrace(temp.path.c_str(), take_name, &seen, 3), 1);
    EXPECT_EQ(seen.found.count(name), levels);
    EXPECT_EQ(seen.found.count("bottom"), 1u);
}
#endif

TEST(Directory, ListsAllNames)
{
    temp_dir temp;
    const intptr_t descriptor = free_descriptor(temp);
    write_file(temp.at("f"), "");
    for (const char *const end : {"", "/"}) {
        const std::string path = temp.path.generic_string() + end;
        compat_dir *const dir = compat_opendir(path.c_str());
        ASSERT_TRUE(dir);
        EXPECT_EQ(dir->pattern, temp.at("*.*"));
        EXPECT_EQ(free_descriptor(temp), descriptor) << "before the listing begins";
        std::set<std::string> names;
        const compat_dirent *entry;
        while ((entry = compat_readdir(dir))) {
            EXPECT_EQ(entry, &dir->entry);
            names.insert(entry->name);
        }
        EXPECT_EQ(names, (std::set<std::string>{".", "..", "f", "probe"}));
        write_file(temp.at("later"), "");
        EXPECT_EQ(compat_readdir(dir), nullptr);
        EXPECT_EQ(dir->pattern, temp.at("*.*"));
        compat_closedir(dir);
        fs::remove(temp.at("later"));
    }
    EXPECT_EQ(compat_opendir(temp.at("f").c_str()), nullptr);
    EXPECT_EQ(compat_opendir(temp.at("missing").c_str()), nullptr);

    // A directory that is gone when the listing begins.
    fs::create_directory(temp.at("gone"));
    compat_dir *const gone = compat_opendir(temp.at("gone").c_str());
    ASSERT_TRUE(gone);
    fs::remove(temp.at("gone"));
    EXPECT_EQ(compat_readdir(gone), nullptr);
    EXPECT_EQ(compat_readdir(gone), nullptr);
    compat_closedir(gone);
    compat_closedir(nullptr);
    EXPECT_EQ(free_descriptor(temp), descriptor);
}

} // namespace
