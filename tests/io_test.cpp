#include "scripted_stream.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>

using namespace std::string_literals; // for bytes that are NUL

namespace
{

// Each begins with a stream of so many bytes and capacity and goes on with calls: what is called,
// up to two numbers, the result, what it asks of the back end, whose calls end as the text says,
// and the buffer (size, count, position, mode) where it changes.
const char *const scenarios[] = {
    "stream 600 = 0; flush = 1; sync = 1; reset = 1; release = 1; alloc 100 = 1 [100 0 0 -1];"
    "read 40 = 40 {read 100 -> 100} [100 100 40 1]; alloc 99 = 1; alloc -100 = 1 [512 100 40 1];"
    "alloc -1000 = 1 [1000 100 40 1]; write 7 = 7 {seek -60 1 -> 40} [1000 0 7 2];"
    "reset = 1 [1000 0 0 -1]; release = 1 [none]; alloc -2147483648 = 1 [512 0 0 -1]",
    // A refill is for less than the capacity, and what it leaves over comes past the buffer.
    "stream 1000 512 = 0 [512 0 0 -1]; read 10 = 10 {read 512 -> 512} [512 512 10 1]; flush = 1;"
    "sync = 1 {seek -502 1 -> 10} [512 0 0 -1]; read 512 = 512 {read 512 -> 512} [512 0 0 1];"
    "seek 10 0 = 10 {seek 10 0 -> 10}; get 511 = 1 {read 512 -> 512} [512 512 511 1];"
    "read 21 = 21 {read 20 -> 20} [512 512 512 1];"
    "get 511 = 0 {read 512 -> 458, read 53 -> 0} [512 458 458 1];"
    "read 2147483647 = 0 {read 2147483647 -> 0}",
    "stream 20 4 = 0 [4 0 0 -1]; read 2 = 2 {read 4 -> 3} [4 3 2 1];"
    "read 3 = -1 {read 2 -> -1} [4 3 3 1]; read 0 = -1; read -1 = -1; get -1 = 0;"
    "read 1073741825 4 = -1; write 1073741825 4 = -1; write 0 = -1; write -1 = -1; put -1 = 0",
    "stream 0 512 = 0 [512 0 0 -1]; write 500 = 500 [512 0 500 2];"
    "write 20 = 20 {write 500 -> 500, write 20 -> 20} [512 0 0 2]; write 512 = 512 [512 0 512 2];"
    "write 1 = 1 {write 512 -> 512} [512 0 1 2]; flush = 1 {write 1 -> 1} [512 0 0 2];"
    "put 512 = 1 [512 0 512 2];"
    "write 512 = 512 {write 512 -> 512, write 512 -> 512} [512 0 0 2]; put 513 = 0 {write 513 -> "
    "512}",
    // A move counts from the stream's position, and the lowest number cannot be moved by.
    "stream 10 4 = 0 [4 0 0 -1]; read 3 = 3 {read 4 -> 4} [4 4 3 1];"
    "seek -2147483648 1 = -1; write 1 = -1 {seek -1 1 -> -1}; sync = 0 {seek -1 1 -> -1};"
    "seek 2 1 = 5 {seek 1 1 -> 5} [4 0 0 1]; seek 5 1 = -1 {seek 5 1 -> -1};"
    "skip 0 = 1; skip -1 = 0; seek 2147483647 0 = 2147483647 {seek 2147483647 0 -> 2147483647};"
    "write 1 = 1 [4 0 1 2]; seek 0 1 = -1 {seek 0 1 -> 2147483647}",
    // Streams that lack a procedure.
    "stream 1030 = 0; no_seek = 1; skip 513 = 1 {read 512 -> 512, read 1 -> 1};"
    "skip 512 = 1 {read 512 -> 512}; skip 600 = 0 {read 512 -> 5}; seek 0 1 = -1; no_write = 1;"
    "write 1 = -1; lock 34 1 = -1; lock 17 = 0 {read 512 -> 0} [512 0 0 1]; no_read = 1;"
    "read 1 = -1; lock 17 = -1",
    "stream 9 4 = 0 [4 0 0 -1]; no_seek = 1; read 3 = 3 {read 4 -> 4} [4 4 3 1];"
    "write 1 = -1; sync = 0; lock 18 = -1; read 1 = 1 [4 4 4 1]; sync = 1 [4 0 0 -1]",
    // Locks for reading: 17 what is there, 33 exactly, 65 at least.
    "stream 46 8 = 0 [8 0 0 -1]; read 5 = 5 {read 8 -> 8} [8 8 5 1]; lock 17 99 = 3; lock 65 3 = 3;"
    "lock 33 3 = 3; lock 65 4 = -1 {read 5 -> -1} [8 3 0 1]; lock 65 4 = 8 {read 5 -> 5} [8 8 0 1];"
    "unlock 6 = 1 [8 8 6 1]; lock 65 12 = 12 {read 10 -> 10} [12 12 0 1]; unlock 9 = 1 [12 12 9 1];"
    "lock 65 4 = 5 {read 9 -> 2} [12 5 0 1]; lock 65 6 = -1 {read 7 -> 0};"
    "lock 33 14 = -1 {read 9 -> 8} [14 13 0 1]; lock 33 14 = 14 {read 1 -> 1} [14 14 0 1]",
    // Locks for writing: 18 what is there, 34 exactly, 66 at least.
    "stream 0 8 = 0 [8 0 0 -1]; lock 18 99 = 8 [8 0 0 2]; unlock 8 = 1 [8 0 8 2];"
    "lock 18 = 8 {write 8 -> 8} [8 0 0 2]; unlock 5 = 1 [8 0 5 2]; lock 66 3 = 3; lock 34 3 = 3;"
    "lock 34 4 = -1 {write 5 -> 4}; lock 66 4 = 8 {write 5 -> 5} [8 0 0 2]; unlock 1 = 1 [8 0 1 2];"
    "lock 66 9 = 9 {write 1 -> 1} [9 0 0 2]; lock 34 10 = 10 [10 0 0 2]",
    "stream 600 = 0; lock 17 = 512 {read 512 -> 512} [512 512 0 1]; release = 1 [none];"
    "lock 33 700 = -1 {read 700 -> 88, read 612 -> 0} [700 88 0 1]; release = 1 [none];"
    "lock 34 100 = 100 [512 0 0 2]",
};

// The bytes visible, or the number asked for where the lock does not tell.
int32_t lock(scripted_stream &s, int32_t flags, int32_t number)
{
    int32_t visible = number;
    const intptr_t size = flags & IO_LOCK_EXACTLY ? number : reinterpret_cast<intptr_t>(&visible);
    const void *const view = ioLockBuffer(&s, size, static_cast<uint32_t>(flags));
    EXPECT_TRUE(!view || view == s.next());
    return view ? visible : IO_FAILED;
}

TEST(Streams, CallsOfTheBackEnd)
{
    using S = scripted_stream &;
    using N = int32_t;
    using U = uint32_t;
    unsigned char room[1024] = {};
    const std::map<std::string, std::function<N(S, N, N)>> procedures = {
        {"stream", [](S s, N n, N c) { return s.data.resize(U(n)), c && !ioAllocBuffer(&s, c); }},
        {"alloc", [](S s, N n, N) { return ioAllocBuffer(&s, n); }},
        {"release", [](S s, N, N) { return ioFreeBuffer(&s); }},
        {"reset", [](S s, N, N) { return ioResetBuffer(&s), 1; }},
        {"flush", [](S s, N, N) { return ioFlushBuffer(&s); }},
        {"sync", [](S s, N, N) { return ioSyncBuffer(&s); }},
        {"read", [&](S s, N n, N size) { return ioRead(&s, room, n, U(size)); }},
        {"write", [&](S s, N n, N size) { return ioWrite(&s, room, n, U(size)); }},
        {"get", [&](S s, N n, N size) { return ioFullRead(&s, room, n, U(size)); }},
        {"put", [&](S s, N n, N size) { return ioFullWrite(&s, room, n, U(size)); }},
        {"seek", [](S s, N offset, N whence) { return ioSeek(&s, offset, whence); }},
        {"skip", [](S s, N n, N) { return ioSkip(&s, n); }},
        {"lock", lock},
        {"unlock", [](S s, N used, N) { return ioUnlockBuffer(&s, s.next() + used), 1; }},
        {"no_read", [](S s, N, N) { return s.read = nullptr, 1; }},
        {"no_write", [](S s, N, N) { return s.write = nullptr, 1; }},
        {"no_seek", [](S s, N, N) { return s.seek = nullptr, 1; }},
    };
    for (const char *const scenario : scenarios) {
        scripted_stream s;
        std::istringstream calls(scenario);
        std::string buffer = "none", name;
        for (std::string expected; std::getline(calls >> std::ws, expected, ';');) {
            N first = 0, second = 0;
            std::istringstream(expected) >> name >> first >> second;
            s.play(expected);
            std::ostringstream actual, now;
            actual << expected.substr(0, expected.find(" ="));
            actual << " = " << procedures.at(name)(s, first, second);
            actual << (s.log.empty() ? "" : " {" + s.log + "}");
            if (const io_buffer *const b = s.buffer)
                now << b->size << ' ' << b->count << ' ' << b->position << ' ' << b->mode;
            if (std::exchange(buffer, s.buffer ? now.str() : "none") != buffer)
                actual << " [" << buffer << "]";
            EXPECT_EQ(actual.str(), expected) << scenario;
            EXPECT_EQ(s.reserved, 0xa5u);
        }
    }
}

// Behind a short count elements stay in the other order, and after a failure all do.
TEST(Streams, WriteGivesBackTheElementsItCounts)
{
    scripted_stream s;
    std::string elements = "abcdef";
    const uint32_t descriptor = 2 | (memByteOrder() ^ MEM_ORDER_OTHER);
    s.play("write 6 -> 3, write 6 -> -1");
    EXPECT_EQ(ioWrite(&s, elements.data(), 3, descriptor), 1);
    EXPECT_EQ(elements, "abdcfe");
    EXPECT_EQ(ioWrite(&s, elements.data(), 3, descriptor), IO_FAILED);
    EXPECT_EQ(elements, "bacdef");
}

TEST(Streams, LimitsOfStringRecords)
{
    const auto written = [](const char *string, int32_t length, uint32_t descriptor) {
        scripted_stream s;
        return ioWriteString(&s, string, length, descriptor) ? s.data : "none";
    };
    EXPECT_EQ(written("a\0b", 3, 1), "\3a\0b"s);
    EXPECT_EQ(written("ab", 0, 0x2004), "\0\0\0\2ab"s);
    EXPECT_EQ(written(nullptr, 7, 2), "\0\0"s);
    EXPECT_EQ(written("", 0, 4), "\0\0\0\0"s);
    EXPECT_EQ(written("abc", -1, 1), "none");

    scripted_stream s(std::string(256, '\xff')), huge(std::string(200, '\x80'));
    char *const longest = ioReadString(&s, nullptr, 0, 1), room[8] = "";
    EXPECT_EQ(std::string(255, '\xff'), longest);
    memFree(longest);
    EXPECT_FALSE(ioReadString(&huge, room, 8, 4) || ioReadString(&huge, nullptr, 8, 4));
    EXPECT_FALSE(ioReadString(&huge, room, 0, 1) || ioReadString(&huge, nullptr, -1, 1));
    s.play("");
    for (const uint32_t width : {3u, 5u, 8u}) {
        EXPECT_FALSE(ioWriteInt(&s, 1, width) || ioReadString(&s, room, 8, width));
        EXPECT_FALSE(ioWriteString(&s, "a", 0, width) || ioWriteString(&s, nullptr, 0, width));
    }
    EXPECT_EQ(s.log, "");
    // Cut anywhere.
    for (size_t length = 0; length < 4; length++)
        for (char *const dest : {room, static_cast<char *>(nullptr)}) {
            scripted_stream cut(std::string("\2\0ab", length));
            cut.seek = nullptr;
            EXPECT_FALSE(ioReadString(&cut, dest, 2, 2)) << length;
        }
}

} // namespace
