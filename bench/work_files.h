// Files for benchmarks to work on, gone when the program ends.
#ifndef TESSEL_BENCH_WORK_FILES_H
#define TESSEL_BENCH_WORK_FILES_H

#include "tessel.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench
{
struct work_directory {
    std::filesystem::path path;

    work_directory()
    {
        std::string name = std::filesystem::temp_directory_path() / "tessel_bench.XXXXXX";
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no temporary directory");
        path = name;
    }
    ~work_directory()
    {
        std::filesystem::remove_all(path);
    }
    work_directory(const work_directory &) = delete;
    work_directory &operator=(const work_directory &) = delete;
};

inline void write_file(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream file(path, std::ios::binary);
    if (!file.write(text.data(), static_cast<std::streamsize>(text.size())).flush())
        throw std::runtime_error("no room for files");
}

inline std::string read_file(const std::filesystem::path &path)
{
    std::string text(std::filesystem::file_size(path), '\0');
    std::ifstream(path, std::ios::binary)
        .read(text.data(), static_cast<std::streamsize>(text.size()));
    return text;
}

constexpr size_t buffer_size = 64 << 10;

// A file of stdio with a buffer of that size, which setvbuf() does not make itself.
struct stdio_file {
    std::vector<char> buffer = std::vector<char>(buffer_size);
    FILE *file;

    stdio_file(const std::string &path, const char *mode) : file(std::fopen(path.c_str(), mode))
    {
        if (!file || std::setvbuf(file, buffer.data(), _IOFBF, buffer.size()) != 0)
            throw std::runtime_error("no file");
    }
    ~stdio_file()
    {
        std::fclose(file);
    }
    stdio_file(const stdio_file &) = delete;
    stdio_file &operator=(const stdio_file &) = delete;
};

// A stream of the library on a file, with the same.
struct stream_file {
    io_stream stream = {};

    stream_file(const std::string &path, uint32_t flags)
    {
        stream.read = fileRead;
        stream.write = fileWrite;
        stream.seek = fileSeek;
        if (!fileOpen(&stream, path.c_str(), flags) || !ioAllocBuffer(&stream, buffer_size))
            throw std::runtime_error("no file");
    }
    ~stream_file()
    {
        fileClose(&stream);
        ioFreeBuffer(&stream);
    }
    stream_file(const stream_file &) = delete;
    stream_file &operator=(const stream_file &) = delete;
};

constexpr uint32_t write_anew = FILE_WRITE | FILE_EXISTING | FILE_TRUNCATE;

// 500 directories with 100 files each, one below the other in chains of five, as source trees are.
struct walked_tree : work_directory {
    walked_tree()
    {
        std::filesystem::path at;
        for (size_t i = 0; i < 500; i++) {
            at = i % 5 == 0 ? path / std::to_string(i) : at / ("below" + std::to_string(i));
            std::filesystem::create_directory(at);
            for (size_t j = 0; j < 100; j++)
                std::ofstream(at / ("file" + std::to_string(j) + ".txt"));
        }
    }
};

// A file to copy, and where to.
struct copied_file : work_directory {
    std::string source = path / "source";
    std::string target = path / "target";

    explicit copied_file(size_t size)
    {
        std::vector<char> block(1 << 20);
        std::ofstream file(source, std::ios::binary);
        for (size_t done = 0; done < size; done += block.size()) {
            for (size_t i = 0; i < block.size(); i += 64)
                block[i] = static_cast<char>(done >> 20 ^ i >> 6);
            file.write(block.data(), static_cast<std::streamsize>(block.size()));
        }
        if (!file.flush())
            throw std::runtime_error("no room for files");
        // What stands before the disk now would slow the first copies down.
        sync();
    }
    // Whether the copy is whole; a sample of its bytes speaks for all of them.
    bool is_copied() const
    {
        std::ifstream files[2] = {std::ifstream(source, std::ios::binary),
                                  std::ifstream(target, std::ios::binary)};
        const auto size = static_cast<int64_t>(std::filesystem::file_size(source));
        if (static_cast<int64_t>(std::filesystem::file_size(target)) != size)
            return false;
        for (int64_t at = 0; at < size; at += (1 << 20) - 64) {
            for (std::ifstream &file : files)
                file.seekg(at);
            const int byte = files[0].get();
            if (byte == EOF || byte != files[1].get())
                return false;
        }
        return true;
    }
};
} // namespace bench

#endif
