// Walks over 50,000 files and copies of 1 GiB, beside what the system and the standard library have
// for them.
#include "compare.h"
#include "work_files.h"

#include "tessel.h"

#include <fts.h>
#include <ftw.h>

namespace
{
using namespace bench;

const std::string &tree_path()
{
    static const walked_tree tree;
    static const std::string path = tree.path;
    return path;
}

struct count_record : file_trace {
    uint64_t count;
};

uint64_t walk_tessel()
{
    count_record record = {};
    const auto count = [](const char *, file_trace *trace) -> int32_t {
        static_cast<count_record *>(trace)->count++;
        return FILE_TRACE_GO_ON;
    };
    fileTrace(tree_path().c_str(), count, &record, FILE_TRACE_ENTER);
    return record.count;
}

uint64_t walk_nftw()
{
    static uint64_t files;
    files = 0;
    const auto count = [](const char *, const struct stat *, int type, struct FTW *) {
        files += type == FTW_F;
        return 0;
    };
    nftw(tree_path().c_str(), count, 20, FTW_PHYS);
    return files;
}

uint64_t walk_fts()
{
    std::string path = tree_path();
    char *const paths[] = {path.data(), nullptr};
    FTS *const walk = fts_open(paths, FTS_PHYSICAL | FTS_NOSTAT | FTS_NOCHDIR, nullptr);
    uint64_t files = 0;
    while (const FTSENT *const entry = fts_read(walk))
        files += entry->fts_info == FTS_F || entry->fts_info == FTS_NSOK;
    fts_close(walk);
    return files;
}

uint64_t walk_standard()
{
    uint64_t files = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(tree_path()))
        files += !entry.is_directory();
    return files;
}

void add_walk(const std::string &side, uint64_t walk())
{
    add({"Walk over 50,000 files"}, side, [=] {
        tree_path();
        return walk;
    });
}

// With as much at a time as cp has. Where a virtual machine gets its memory as it touches it, blocks of
// 1 MiB may take ten times as long: the system wants large pages for them, which are new to it.
void copy_tessel(const copied_file &file)
{
    fileCopy(file.target.c_str(), file.source.c_str(), 0, 0, 0, nullptr, 128 << 10, 0, nullptr,
             nullptr);
}

void copy_cp(const copied_file &file)
{
    if (std::system(("cp " + file.source + " " + file.target).c_str()) != 0)
        throw std::runtime_error("cp has failed");
}

void copy_standard(const copied_file &file)
{
    std::filesystem::copy_file(file.source, file.target);
}

constexpr size_t one_gigabyte = size_t{1} << 30;

// Each copy makes its target anew, as a user's would.
void add_copy(const std::string &side, void copy(const copied_file &))
{
    add({"Copy a file of 1 GiB, work area of 128 KiB", 1, real_time}, side, [=] {
        return [=](stopwatch &watch) {
            static const copied_file file(one_gigabyte);
            std::filesystem::remove(file.target);
            watch.time([&] { copy(file); });
            return file.is_copied();
        };
    });
}
} // namespace

void bench::add_sides()
{
    add_walk("tessel", walk_tessel);
    add_walk("nftw", walk_nftw);
    add_walk("fts, without stat", walk_fts);
    add_walk("std::filesystem::recursive_directory_iterator", walk_standard);
    add_copy("tessel", copy_tessel);
    add_copy("cp", copy_cp);
    add_copy("std::filesystem::copy_file", copy_standard);
}
