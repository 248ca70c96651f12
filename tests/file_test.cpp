#include "temp_dir.h"

#include <fcntl.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#endif

using namespace std::string_literals;

namespace
{

#ifdef _WIN32
// Any file can be read.
constexpr int owner_only = 0666;

// Whether a child process gets the descriptor, or -1 for one that is not open.
int inherited(int descriptor)
{
    const intptr_t handle = _get_osfhandle(descriptor);
    DWORD flags = 0;
    if (handle == -1 || !GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags))
        return -1;
    return (flags & HANDLE_FLAG_INHERIT) != 0;
}
#else
constexpr int owner_only = 0600;

int inherited(int descriptor)
{
    const int flags = fcntl(descriptor, F_GETFD);
    return flags == -1 ? -1 : (flags & FD_CLOEXEC) == 0;
}
#endif

struct Files : testing::Test {
    temp_dir dir;
    std::string path = dir.at("file");
    io_stream stream = {fileRead, fileWrite, fileSeek, 4321, nullptr, 0};

    Files()
    {
        EXPECT_TRUE(ioAllocBuffer(&stream, 9));
    }
    ~Files() override
    {
        ioResetBuffer(&stream);
        ioFreeBuffer(&stream);
    }
    int descriptor() const
    {
        return static_cast<int>(stream.handle);
    }
};

TEST_F(Files, OpensAsTheFlagsSay)
{
    // The flags that open a path with nothing (n) or a file (f) there. A directory (d) gets as far
    // as the system with some; everything else is refused before.
    const std::map<std::string, std::vector<uint32_t>> rows = {
        {"", {0, 0x100, 0x200, 0x300}},
        {"f", {0x1, 0x101, 0x201}},
        {"n", {0x2, 0x3, 0x202, 0x203}},
        {"nf", {0x102, 0x103, 0x302, 0x303}}};
    const auto before = umask(0);
    for (const auto &[opening, words] : rows)
        for (const uint32_t flags : words)
            for (const char there : {'n', 'f', 'd'}) {
                SCOPED_TRACE(std::to_string(flags) + " at " + there);
                std::filesystem::remove_all(path);
                if (there == 'd')
                    std::filesystem::create_directory(path);
                else if (there == 'f')
                    write_file(path, "hello");
                stream.handle = 4321;
                ASSERT_EQ(ioWrite(&stream, path.data(), 1, 0), 1);
                const bool opened = opening.find(there) != std::string::npos;
                EXPECT_EQ(fileOpen(&stream, path.c_str(), flags), opened);
                EXPECT_EQ(stream.buffer->position, !opened);
                EXPECT_EQ(stream.buffer->mode, opened ? IO_MODE_NONE : IO_MODE_WRITE);
                ioResetBuffer(&stream);
                struct stat status = {};
                EXPECT_EQ(stat(path.c_str(), &status) == 0, opened || there != 'n');
                const bool emptied = opened && (flags & FILE_WRITE) && (flags & FILE_TRUNCATE);
                EXPECT_TRUE(there != 'f' || status.st_size == (emptied ? 0 : 5));
                EXPECT_TRUE(there != 'n' || !opened || (status.st_mode & 0777) == owner_only);
                const bool asked = there == 'd' && opening.size() > 1;
                EXPECT_TRUE(opened || stream.handle == (asked ? -1 : 4321));
                char byte = 0;
                const bool reads = opened && (flags & FILE_READ);
                const bool writes = opened && (flags & FILE_WRITE);
                EXPECT_EQ(fileRead(&stream, &byte, 1) != -1, reads);
                EXPECT_EQ(fileWrite(&stream, &byte, 1) != -1, writes);
                EXPECT_EQ(inherited(descriptor()), opened ? 0 : -1);
                EXPECT_EQ(fileClose(&stream), opened);
            }
    umask(before);
}

TEST_F(Files, CloseWritesPendingBytesOrStaysOpen)
{
    char text[] = "\r\n\n\x1a."; // other bytes in a file of lines
    io_stream cleared = {};
    EXPECT_EQ(fileClose(&cleared), 1);
    EXPECT_NE(inherited(0), -1); // which stays open
    ASSERT_TRUE(fileOpen(&stream, path.c_str(), FILE_WRITE));
    EXPECT_TRUE(ioWrite(&stream, text, 5, 0) == 5 && fileClose(&stream));
    ASSERT_TRUE(fileOpen(&stream, path.c_str(), FILE_READ));
    EXPECT_TRUE(ioRead(&stream, text, 5, 0) == 5 && ioRead(&stream, text, 1, 0) == 0);

    // A descriptor that only reads refuses the pending byte.
    ASSERT_EQ(ioWrite(&stream, text, 1, 0), 1);
    EXPECT_EQ(fileClose(&stream), 0);
    EXPECT_EQ(stream.buffer->position, 1);
    EXPECT_NE(inherited(descriptor()), -1);
    ioResetBuffer(&stream);
    EXPECT_EQ(fileClose(&stream), 1);
    EXPECT_EQ(inherited(descriptor()), -1);
    EXPECT_TRUE(stream.buffer && stream.handle > 0);
    EXPECT_TRUE(fileClose(&stream) == 0 && fileRead(&stream, text, 1) == -1);
}

TEST_F(Files, PositionsBeyondTheResultAreRefused)
{
    constexpr int64_t gigabyte = 1 << 30;
    write_file(path, "");
    std::filesystem::resize_file(path, 3 * gigabyte);
    ASSERT_TRUE(fileOpen(&stream, path.c_str(), FILE_READ | FILE_WRITE | FILE_EXISTING));
    const auto check = [&](int64_t before, int32_t offset, int32_t whence, int64_t result) {
        lseek(descriptor(), before, SEEK_SET);
        EXPECT_EQ(fileSeek(&stream, offset, whence), result);
        EXPECT_EQ(lseek(descriptor(), 0, SEEK_CUR), result < 0 ? before : result) << offset;
    };
    check(7, -1, IO_FROM_START, -1);
    check(7, -8, IO_FROM_CURRENT, -1);
    check(7, 0, IO_FROM_END, -1);
    check(7, -INT32_MAX, IO_FROM_END, gigabyte + 1);
    check(7, 0, 9, -1);
    check(INT32_MAX, 1, IO_FROM_CURRENT, -1);
    check(INT32_MAX, 0, IO_FROM_CURRENT, INT32_MAX);
    check(2 * gigabyte, 0, IO_FROM_CURRENT, -1);
    check(2 * gigabyte, -1, IO_FROM_CURRENT, INT32_MAX);
    lseek(descriptor(), 3 * gigabyte - 1, SEEK_SET);
    EXPECT_TRUE(fileWrite(&stream, "x", 1) == 1 && fileRead(&stream, path.data(), 1) == 0);
    EXPECT_EQ(fileClose(&stream), 1);
}

// A block of ten bytes, at every position.
TEST(MemoryBackEnd, MovesReadsWritesAndLocksWhatIsLeft)
{
    std::string block = "abcdefghij", dest(10, '.');
    io_memory memory = {10, 0, block.data()};
    io_stream stream = {};
    stream.handle = reinterpret_cast<intptr_t>(&memory);
    const auto moves = [&](int32_t before, int32_t offset, int32_t whence, int64_t target) {
        const bool inside = target >= 0 && target <= memory.size;
        memory.position = before;
        EXPECT_EQ(memSeek(&stream, offset, whence), inside ? target : -1) << offset;
        EXPECT_EQ(memory.position, inside ? target : before);
    };
    for (int32_t at = 0; at <= 10; at++)
        for (int32_t bytes = 1; bytes < 12; bytes++) {
            const int32_t left = 10 - at, moved = std::min(bytes, left);
            for (const int32_t offset : {bytes, -bytes}) {
                moves(at, offset, IO_FROM_START, offset);
                moves(at, offset, IO_FROM_END, 10 + offset);
                moves(at, offset, IO_FROM_CURRENT, at + offset);
                moves(at, offset, -1, at + offset);
            }
            memory.position = at;
            EXPECT_EQ(memRead(&stream, dest.data() + at, bytes), moved);
            EXPECT_EQ(dest.substr(0, size_t(at + moved)), block.substr(0, size_t(at + moved)));
            EXPECT_EQ(std::exchange(memory.position, at), at + moved);
            EXPECT_EQ(memWrite(&stream, "ABCDEFGHIJK", bytes), moved);
            EXPECT_EQ(block.substr(size_t(at), size_t(moved)),
                      "ABCDEFGHIJ"s.substr(0, size_t(moved)));
            EXPECT_EQ(std::exchange(memory.position, at), at + moved);

            char *const view = block.data() + at, *const enough = bytes <= left ? view : nullptr;
            int32_t there = bytes, wanted = bytes;
            EXPECT_EQ(ioLockMemory(&memory, reinterpret_cast<intptr_t>(&there), 0x11), view);
            EXPECT_EQ(ioLockMemory(&memory, bytes, 0x21), enough);
            EXPECT_EQ(ioLockMemory(&memory, reinterpret_cast<intptr_t>(&wanted), 0x61), enough);
            EXPECT_TRUE(there == left && wanted == left);
            ioUnlockMemory(&memory, view + moved);
            EXPECT_EQ(memory.position, at + moved);
            memory.position = 11;
            EXPECT_EQ(ioLockMemory(&memory, reinterpret_cast<intptr_t>(&there), 0x11), nullptr);
        }
    memory.size = INT32_MAX;
    moves(INT32_MAX, INT32_MAX, IO_FROM_CURRENT, 2 * int64_t{INT32_MAX});
    moves(4, INT32_MIN, IO_FROM_CURRENT, 4 + int64_t{INT32_MIN});
}

} // namespace
