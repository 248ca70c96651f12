// What trees and buffers take, counted by the heap's own account and for one node or buffer, and the
// peak of memory in a process that walks or copies.
#include "compare.h"
#include "trees.h"
#include "work_files.h"

#include "tessel.h"

#include <sys/wait.h>

#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <numeric>

namespace
{
using namespace bench;

double heap_in_use()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

// Measures in a child, which finds the heap as the program has begun with it and keeps nothing.
template <typename Measure>
footprint in_child(Measure measure)
{
    int result_pipe[2];
    if (pipe(result_pipe) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = fork();
    if (child == 0) {
        const footprint result = measure();
        const bool told = write(result_pipe[1], &result, sizeof result) == sizeof result;
        _exit(told ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    close(result_pipe[1]);
    footprint result;
    const bool told = read(result_pipe[0], &result, sizeof result) == sizeof result;
    close(result_pipe[0]);
    if (child < 0 || waitpid(child, nullptr, 0) != child || !told)
        throw std::runtime_error("no child");
    return result;
}

constexpr size_t nodes = 100000;

template <typename Tree>
footprint tree_footprint()
{
    std::vector<uint32_t> keys(nodes);
    std::iota(keys.begin(), keys.end(), 0u);
    return in_child([&]() -> footprint {
        const double before = heap_in_use();
        Tree tree(keys);
        fill(tree, keys);
        return {(heap_in_use() - before) / nodes, tree.sum()};
    });
}

auto tree_in(const std::string &where)
{
    return [=](auto kind, const char *side) {
        typedef typename decltype(kind)::template type<uint32_t> tree;
        add_memory("A tree node with a key of 4 bytes, " + where, side, tree_footprint<tree>);
    };
}

const std::string &small_file()
{
    static const work_directory directory;
    static const std::string path = directory.path / "file";
    write_file(path, "content");
    return path;
}

// An open file with a buffer of 64 KiB from which a character has been read. Its record counts,
// which a caller has wherever it likes.
template <typename File, typename Get>
footprint file_footprint(Get get)
{
    small_file();
    return in_child([&]() -> footprint {
        const double before = heap_in_use();
        const auto file = std::make_unique<File>();
        const uint64_t answer = get(*file);
        return {heap_in_use() - before, answer};
    });
}

struct open_stream : stream_file {
    open_stream() : stream_file(small_file(), FILE_READ)
    {
    }
};

struct open_stdio : stdio_file {
    open_stdio() : stdio_file(small_file(), "rb")
    {
    }
};

struct open_standard {
    std::vector<char> buffer = std::vector<char>(buffer_size);
    std::ifstream file;

    open_standard()
    {
        file.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        file.open(small_file(), std::ios::binary);
    }
};

void add_buffers()
{
    const std::string name = "An open file with a buffer of 64 KiB";
    add_memory(name, "tessel", [] {
        return file_footprint<open_stream>([](open_stream &open) -> uint64_t {
            char c = 0;
            ioRead(&open.stream, &c, 1, 1);
            return static_cast<uint64_t>(c);
        });
    });
    add_memory(name, "FILE", [] {
        return file_footprint<open_stdio>(
            [](open_stdio &open) { return static_cast<uint64_t>(std::fgetc(open.file)); });
    });
    add_memory(name, "std::ifstream", [] {
        return file_footprint<open_standard>(
            [](open_standard &open) { return static_cast<uint64_t>(open.file.get()); });
    });
}

// The program `peak` does a job in a process and prints that process's peak, in bytes, and the
// answer of the job.
footprint peak_of(const std::string &job)
{
    FILE *const output = popen((std::string(TESSEL_BENCH_PEAK) + " " + job).c_str(), "r");
    unsigned long long bytes = 0, answer = 0;
    if (!output || std::fscanf(output, "%llu %llu", &bytes, &answer) != 2 || pclose(output) != 0)
        throw std::runtime_error("failed: " + job);
    return {static_cast<double>(bytes), answer};
}

void add_walk(const std::string &side, const std::string &job)
{
    add_memory("Peak of a walk over 50,000 files", side, [=] {
        static const walked_tree tree;
        return peak_of(job + " " + tree.path.string());
    });
}

void add_copy(const std::string &side, const std::string &job)
{
    add_memory("Peak of a copy of 64 MiB, work area of 64 KiB", side, [=] {
        static const copied_file file(64 << 20);
        std::filesystem::remove(file.target);
        const footprint result = peak_of(job + " " + file.source + " " + file.target);
        return footprint{result.bytes, file.is_copied()};
    });
}
} // namespace

void bench::add_sides()
{
    each_tree_in_blocks(tree_in("in blocks"));
    each_tree_in_array(tree_in("in an array"));
    add_buffers();
    add_walk("tessel", "walk");
    add_walk("nftw", "nftw");
    add_walk("fts", "fts");
    add_copy("tessel", "copy");
    add_copy("cp", "run cp");
}
