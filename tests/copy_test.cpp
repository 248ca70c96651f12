#include "tessel/file.h"

#include "temp_dir.h"

#include <vector>

namespace
{

// The caller's record: what the copy writes, and what is kept behind it.
struct copy_record : file_positions {
    std::vector<int32_t> steps;
    uint64_t bytes;
    int32_t answer;
    size_t answer_at;
};

int32_t take_step(void *context, int32_t bytes)
{
    copy_record &record = *static_cast<copy_record *>(context);
    record.bytes += static_cast<uint32_t>(bytes);
    record.steps.push_back(bytes);
    return record.steps.size() == record.answer_at + 1 ? record.answer : 0;
}

int32_t start_of(int32_t position, int32_t otherwise)
{
    return position < 0 ? otherwise : position;
}

// Every combination of positions, against the same done with strings.
TEST(FileCopy, CopiesBetweenAnyPositions)
{
    temp_dir temp;
    const std::string target = temp.at("target");
    const std::string source = temp.at("source");
    char memory[64];
    const intptr_t descriptor = free_descriptor(temp);
    for (const int32_t there : {-1, 100})
        for (const int32_t length : {100, 250})
            for (const int32_t to : {-1, 0, 50, 120})
                for (const int32_t from : {-1, 0, 50, 300})
                    for (const int32_t count : {-1, 0, 30, 300})
                        for (const uint32_t flags : {0x0u, 0x301u, 0x1102u}) {
                            SCOPED_TRACE(testing::Message()
                                         << there << ' ' << length << " to " << to << " from "
                                         << from << " count " << count << " flags " << flags);
                            std::string text;
                            for (int32_t i = 0; i < length; i++)
                                text += static_cast<char>('a' + i % 23);
                            std::string old(static_cast<size_t>(there < 0 ? 0 : there), '.');
                            write_file(source, text);
                            std::filesystem::remove(target);
                            if (there >= 0)
                                write_file(target, old);

                            copy_record record = {{-9, -9}, {}, 0, 0, SIZE_MAX};
                            const bool tells = flags & FILE_TELL_POSITIONS;
                            const int32_t result = fileCopy(
                                target.c_str(), source.c_str(), to, from, count,
                                flags & FILE_EXISTING ? memory : nullptr, sizeof memory, flags,
                                tells ? take_step : nullptr, tells ? &record : nullptr);
                            if (there >= 0 && !(flags & FILE_EXISTING)) {
                                EXPECT_EQ(result, FILE_NO_TARGET);
                                EXPECT_EQ(read_file(target), old);
                                continue;
                            }
                            if (flags & FILE_TRUNCATE)
                                old.clear();
                            const auto begin =
                                static_cast<size_t>(start_of(to, static_cast<int32_t>(old.size())));
                            const auto first =
                                static_cast<size_t>(start_of(from, static_cast<int32_t>(begin)));
                            std::string moved = first < text.size() ? text.substr(first) : "";
                            const auto limit = static_cast<size_t>(count);
                            const bool short_of = count > 0 && moved.size() < limit;
                            if (count > 0 && !short_of)
                                moved.resize(limit);
                            if (!moved.empty()) {
                                old.resize(std::max(old.size(), begin + moved.size()));
                                old.replace(begin, moved.size(), moved);
                            }
                            EXPECT_EQ(read_file(target), old);
                            const bool told = tells && !moved.empty();
                            EXPECT_EQ(result, short_of && !told ? IO_CUT_SHORT : 0);
                            EXPECT_EQ(record.bytes, tells ? moved.size() : 0);
                            if (tells) {
                                EXPECT_EQ(record.targetOffset, static_cast<int32_t>(begin));
                                EXPECT_EQ(record.sourceOffset, static_cast<int32_t>(first));
                            }
                        }
    EXPECT_EQ(free_descriptor(temp), descriptor);
}

TEST(FileCopy, SaysWhatFailed)
{
    temp_dir temp;
    const std::string target = temp.at("target");
    const std::string source = temp.at("source");
    write_file(source, std::string(100, 's'));
    const auto copy = [&](const std::string &from, int32_t size, copy_record &record) {
        return fileCopy(target.c_str(), from.c_str(), 0, 0, 0, nullptr, size, 0x1100, take_step,
                        &record);
    };
    copy_record record = {};
    EXPECT_EQ(copy(temp.at("missing"), 10, record), FILE_NO_SOURCE);
    EXPECT_EQ(copy(temp.path.generic_string(), 10, record), FILE_NO_SOURCE);
    EXPECT_FALSE(std::filesystem::exists(target));
    EXPECT_TRUE(record.steps.empty());

    record = {};
    record.answer_at = SIZE_MAX;
    EXPECT_EQ(copy(source, 0, record), IO_NO_ROOM);
    EXPECT_EQ(record.steps, std::vector<int32_t>{0});
    record = {{}, {}, 0, 5, 0};
    EXPECT_EQ(copy(source, 0, record), 5);
    EXPECT_EQ(read_file(target), "");
    record = {{}, {}, 0, 6, 2};
    EXPECT_EQ(copy(source, 40, record), 6);
    EXPECT_EQ(read_file(target), std::string(80, 's'));
    record = {};
    EXPECT_EQ(
        fileCopy(target.c_str(), source.c_str(), -1, -1, 0, nullptr, 40, 0x100, nullptr, nullptr),
        0);
    EXPECT_EQ(read_file(target), std::string(100, 's'));

#ifdef __linux__
    EXPECT_EQ(fileCopy("/dev/full", source.c_str(), 0, 0, 0, nullptr, 40, 0x100, nullptr, nullptr),
              IO_FAILED);
#endif
}

#ifndef _WIN32
// Positions are counted to 2 GiB; what is copied is not.
TEST(FileCopy, CopiesMoreThanPositionsCount)
{
    temp_dir temp;
    const std::string source = temp.at("source");
    const std::string target = temp.at("target");
    constexpr uint64_t size = (uint64_t{1} << 31) + 100;
    write_file(source, "");
    std::filesystem::resize_file(source, size - 4);
    std::ofstream(source, std::ios::app) << "tail";
    copy_record record = {{}, {}, 0, 0, SIZE_MAX};
    EXPECT_EQ(fileCopy("/dev/null", source.c_str(), 0, 0, 0, nullptr, 1 << 20, 0x1100, take_step,
                       &record),
              0);
    EXPECT_EQ(record.bytes, size);
    EXPECT_EQ(
        fileCopy(target.c_str(), source.c_str(), 0, INT32_MAX, 0, nullptr, 64, 0, nullptr, nullptr),
        0);
    // An end that no position counts.
    EXPECT_EQ(
        fileCopy(source.c_str(), target.c_str(), -1, 0, 0, nullptr, 64, 0x100, nullptr, nullptr),
        IO_FAILED);
    EXPECT_EQ(read_file(target), std::string(size - 4 - INT32_MAX, '\0').append("tail"));
}
#endif

} // namespace
