// Walks over 50,000 files and copies of 1 GiB, beside what the system and the standard library have
// for them.
#include "tessel.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <fts.h>
#include <ftw.h>
#include <random>
#include <stdlib.h>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;

constexpr size_t directories = 500;
constexpr size_t files = 100; // in each

struct scratch {
    fs::path path =
        fs::temp_directory_path() / ("tessel_bench_" + std::to_string(std::random_device()()));

    scratch()
    {
        fs::create_directory(path);
    }
    ~scratch()
    {
        fs::remove_all(path);
    }
};

// One below the other in chains of five, as source trees are.
struct walked_tree : scratch {
    walked_tree()
    {
        fs::path at;
        for (size_t i = 0; i < directories; i++) {
            at = i % 5 == 0 ? path / std::to_string(i) : at / ("below" + std::to_string(i));
            fs::create_directory(at);
            for (size_t j = 0; j < files; j++)
                std::ofstream(at / ("file" + std::to_string(j) + ".txt"));
        }
    }
};

const walked_tree &the_tree()
{
    static const walked_tree tree;
    return tree;
}

void expect_all(benchmark::State &state, size_t counted)
{
    if (counted != directories * files)
        state.SkipWithError("files were missed");
}

struct count_record : file_trace {
    size_t count;
};

void walk_ours(benchmark::State &state)
{
    const fs::path &path = the_tree().path;
    for (auto _ : state) {
        count_record record = {};
        const auto count = [](const char *, file_trace *trace) -> int32_t {
            static_cast<count_record *>(trace)->count++;
            return FILE_TRACE_GO_ON;
        };
        fileTrace(path.c_str(), count, &record, FILE_TRACE_ENTER);
        expect_all(state, record.count);
    }
}
BENCHMARK(walk_ours);

size_t ftw_count;

void walk_nftw(benchmark::State &state)
{
    const fs::path &path = the_tree().path;
    for (auto _ : state) {
        ftw_count = 0;
        const auto count = [](const char *, const struct stat *, int type, struct FTW *) {
            ftw_count += type == FTW_F;
            return 0;
        };
        nftw(path.c_str(), count, 20, FTW_PHYS);
        expect_all(state, ftw_count);
    }
}
BENCHMARK(walk_nftw);

void walk_fts(benchmark::State &state)
{
    std::string path = the_tree().path;
    for (auto _ : state) {
        char *const paths[] = {path.data(), nullptr};
        FTS *const walk = fts_open(paths, FTS_PHYSICAL | FTS_NOSTAT | FTS_NOCHDIR, nullptr);
        size_t count = 0;
        while (const FTSENT *const entry = fts_read(walk))
            count += entry->fts_info == FTS_F || entry->fts_info == FTS_NSOK;
        fts_close(walk);
        expect_all(state, count);
    }
}
BENCHMARK(walk_fts);

void walk_standard(benchmark::State &state)
{
    const fs::path &path = the_tree().path;
    for (auto _ : state) {
        size_t count = 0;
        for (const fs::directory_entry &entry : fs::recursive_directory_iterator(path))
            count += !entry.is_directory();
        expect_all(state, count);
    }
}
BENCHMARK(walk_standard);

struct copied_file : scratch {
    fs::path source = path / "source";
    fs::path target = path / "target";

    copied_file()
    {
        constexpr size_t size = size_t{1} << 30;
        std::vector<char> block(1 << 20);
        std::ofstream file(source, std::ios::binary);
        for (size_t done = 0; done < size; done += block.size()) {
            for (size_t i = 0; i < block.size(); i += 64)
                block[i] = static_cast<char>(done >> 20 ^ i >> 6);
            file.write(block.data(), static_cast<std::streamsize>(block.size()));
        }
    }
};

copied_file &the_file()
{
    static copied_file file;
    return file;
}

// Each copy makes its target anew, as a user's would.
template <typename Copy>
void copy_all(benchmark::State &state, Copy copy)
{
    copied_file &file = the_file();
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove(file.target);
        state.ResumeTiming();
        copy(file.source.string(), file.target.string());
        if (fs::file_size(file.target) != fs::file_size(file.source))
            state.SkipWithError("the copy is not whole");
    }
}

void copy_ours(benchmark::State &state)
{
    copy_all(state, [](const std::string &source, const std::string &target) {
        fileCopy(target.c_str(), source.c_str(), 0, 0, 0, nullptr, 1 << 20, 0, nullptr, nullptr);
    });
}
BENCHMARK(copy_ours)->UseRealTime()->Unit(benchmark::kMillisecond);

void copy_cp(benchmark::State &state)
{
    copy_all(state, [](const std::string &source, const std::string &target) {
        if (system(("cp " + source + " " + target).c_str()) != 0)
            abort();
    });
}
BENCHMARK(copy_cp)->UseRealTime()->Unit(benchmark::kMillisecond);

void copy_standard(benchmark::State &state)
{
    copy_all(state, [](const std::string &source, const std::string &target) {
        fs::copy_file(source, target);
    });
}
BENCHMARK(copy_standard)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
