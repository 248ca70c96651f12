#include "temp_dir.h"

#include <vector>

namespace
{

// What a copy tells, behind where it begins.
struct copy_record : file_positions {
    std::vector<int32_t> steps;
    size_t cancels_at = SIZE_MAX;
};

int32_t take_step(void *context, int32_t bytes)
{
    copy_record &record = *static_cast<copy_record *>(context);
    record.steps.push_back(bytes);
    return record.steps.size() == record.cancels_at ? 5 : 0;
}

struct FileCopy : testing::Test {
    temp_dir temp;
    std::string target = temp.at("target"), source = temp.at("source");
    copy_record record = {{-9, -9}, {}};

    int32_t copy(int32_t to, int32_t from, int32_t count, int32_t size, uint32_t flags)
    {
        return fileCopy(target.c_str(), source.c_str(), to, from, count, nullptr, size, flags,
                        flags ? take_step : nullptr, &record);
    }
};

// Every combination of positions, against the same done with strings.
TEST_F(FileCopy, CopiesBetweenAnyPositions)
{
    std::string text;
    for (int i = 0; i < 250; i++)
        text += static_cast<char>('a' + i % 23);
    write_file(source, text);
    const auto before = [](int32_t position, size_t otherwise) {
        return position < 0 ? otherwise : static_cast<size_t>(position);
    };
    const intptr_t descriptor = free_descriptor(temp);
    for (const int32_t to : {-1, 0, 50, 120})
        for (const int32_t from : {-1, 0, 50, 300})
            for (const size_t count : {0u, 30u, 300u})
                for (const uint32_t flags : {0x0u, 0x301u, 0x1100u}) {
                    SCOPED_TRACE(testing::Message() << " to " << to << " from " << from << " count "
                                                    << count << " flags " << flags);
                    std::string expected(flags & FILE_EXISTING ? 100 : 0, '.');
                    std::filesystem::remove(target);
                    if (flags & FILE_EXISTING)
                        write_file(target, expected);
                    record = {{-9, -9}, {}};
                    const int32_t result = copy(to, from, static_cast<int32_t>(count), 64, flags);

                    if (flags & FILE_TRUNCATE)
                        expected.clear();
                    const size_t begin = before(to, expected.size()), first = before(from, begin);
                    std::string moved = first < text.size() ? text.substr(first) : "";
                    const bool cut_short = moved.size() < count;
                    if (count > 0)
                        moved.resize(std::min(moved.size(), count));
                    if (!moved.empty())
                        expected.resize(std::max(expected.size(), begin + moved.size()));
                    expected.replace(std::min(begin, expected.size()), moved.size(), moved);
                    EXPECT_EQ(read_file(target), expected);
                    const bool tells = flags & FILE_TELL_POSITIONS;
                    const bool content = flags && !moved.empty(); // as the last step was
                    EXPECT_EQ(result, cut_short && !content ? IO_CUT_SHORT : 0);
                    EXPECT_EQ(record.targetOffset, tells ? static_cast<int32_t>(begin) : -9);
                    EXPECT_EQ(record.sourceOffset, tells ? static_cast<int32_t>(first) : -9);
                }
    EXPECT_EQ(free_descriptor(temp), descriptor);
}

TEST_F(FileCopy, SaysWhatFailed)
{
    EXPECT_EQ(copy(0, 0, 0, 10, 0x1000), FILE_NO_SOURCE);
    std::filesystem::create_directory(source);
    EXPECT_EQ(copy(0, 0, 0, 10, 0x1000), FILE_NO_SOURCE);
    EXPECT_FALSE(std::filesystem::exists(target));
    std::filesystem::remove(source);
    write_file(source, std::string(100, 's'));
    write_file(target, "old");
    EXPECT_EQ(copy(0, 0, 0, 10, 0x1000), FILE_NO_TARGET);
    EXPECT_EQ(read_file(target), "old");
    EXPECT_TRUE(record.steps.empty());

    EXPECT_EQ(copy(0, 0, 0, 0, 0x1100), IO_NO_ROOM);
    EXPECT_EQ(record.steps, std::vector<int32_t>{0});
    record.cancels_at = 4;
    EXPECT_EQ(copy(0, 0, 0, 40, 0x1100), 5);
    EXPECT_EQ(record.steps, (std::vector<int32_t>{0, 0, 40, 40}));
    EXPECT_EQ(read_file(target), std::string(80, 's'));
#ifdef __linux__
    target = "/dev/full";
    EXPECT_EQ(copy(0, 0, 0, 40, 0x100), IO_FAILED);
#endif
}

#ifndef _WIN32
// Positions are counted to 2 GiB; what is copied is not.
TEST_F(FileCopy, CopiesBeyondWhatPositionsCount)
{
    constexpr uint64_t size = (uint64_t{1} << 31) + 100;
    write_file(source, "");
    std::filesystem::resize_file(source, size - 4);
    std::ofstream(source, std::ios::app) << "tail";
    EXPECT_EQ(copy(0, INT32_MAX, 0, 64, 0), 0);
    EXPECT_EQ(read_file(target), std::string(size - 4 - INT32_MAX, '\0').append("tail"));
    // An end that no position counts.
    target.swap(source);
    EXPECT_EQ(copy(-1, 0, 0, 64, 0x1100), IO_FAILED);
    EXPECT_TRUE(record.steps.empty());
}
#endif

} // namespace
