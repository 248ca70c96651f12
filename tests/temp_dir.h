// A directory of a test's own, gone with its contents when the test ends.
#ifndef TESSEL_TESTS_TEMP_DIR_H
#define TESSEL_TESTS_TEMP_DIR_H

#include "tessel/file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

struct temp_dir {
    std::filesystem::path path = std::filesystem::path(testing::TempDir()) /
                                 ("tessel_" + std::to_string(std::random_device()()));

    temp_dir()
    {
        EXPECT_TRUE(std::filesystem::create_directory(path));
    }
    ~temp_dir()
    {
        std::filesystem::remove_all(path);
    }
    // Text of a path below, as the library takes it.
    std::string at(const std::string &name) const
    {
        return (path / name).generic_string();
    }
};

inline void write_file(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string read_file(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The lowest free descriptors, added up, which any one left open among them would raise.
inline intptr_t free_descriptor(const temp_dir &dir)
{
    io_stream streams[8] = {};
    intptr_t sum = 0;
    for (io_stream &stream : streams) {
        EXPECT_EQ(fileOpen(&stream, dir.at("probe").c_str(), FILE_WRITE | FILE_EXISTING), 1);
        sum += stream.handle;
    }
    for (io_stream &stream : streams)
        EXPECT_EQ(fileClose(&stream), 1);
    return sum;
}

#endif
