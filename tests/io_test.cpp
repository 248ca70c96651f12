#include "scripted_stream.h"

#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <map>
#include <random>
#include <sstream>

namespace
{

// Each begins with a stream of so many bytes and capacity and goes on with calls: what is called,
// up to two numbers, the result, what it asks of the back end, whose calls end as the text says,
// and the buffer (size, count, position, mode) where it changes.
const char *const scenarios[] = {
    "stream 600 = 0; flush = 1; sync = 1; reset = 1; release = 1; alloc 100 = 1 [100 0 0 -1];"
    "read 40 = 40 {read 100 -> 100} [100 100 40 1]; alloc 99 = 1; alloc -100 = 1 [512 100 40 1];"
    "alloc -1000 = 1 [1000 100 40 1]; write 7 = 7 {seek -60 1 -> 40} [1000 0 7 2];"
    "alloc 1001 = 1 [1001 0 7 2]; reset = 1 [1001 0 0 -1]; release = 1 [none];"
    "alloc -2147483648 = 1 [512 0 0 -1]",
    // A refill is for less than the capacity, and what it leaves over comes past the buffer.
    "stream 1000 512 = 0 [512 0 0 -1]; read 10 = 10 {read 512 -> 512} [512 512 10 1]; flush = 1;"
    "seek 0 1 = 10 {seek 0 1 -> 512}; sync = 1 {seek -502 1 -> 10} [512 0 0 -1];"
    "read 512 = 512 {read 512 -> 512} [512 0 0 1]; seek 0 2 = 1000 {seek 0 2 -> 1000};"
    "seek 10 0 = 10 {seek 10 0 -> 10}; get 511 = 1 {read 512 -> 512} [512 512 511 1];"
    "read 21 = 21 {read 20 -> 20} [512 512 512 1];"
    "get 511 = 0 {read 512 -> 458, read 53 -> 0} [512 458 458 1];"
    "read 1 = 0 {read 512 -> 0, read 1 -> 0} [512 0 0 1];"
    "read 2147483647 = 0 {read 2147483647 -> 0}",
    "stream 20 4 = 0 [4 0 0 -1]; read 2 = -1 {read 4 -> -1}; read 2 = 2 {read 4 -> 3} [4 3 2 1];"
    "read 3 = -1 {read 2 -> -1} [4 3 3 1]; read 3 = 3 {read 4 -> 1, read 2 -> 2} [4 1 1 1];"
    "read 4 = 2 {read 4 -> 2}; read 0 = -1; read -1 = -1; get -1 = 0; read 1073741825 4 = -1",
    "stream 0 512 = 0 [512 0 0 -1]; write 500 = 500 [512 0 500 2];"
    "write 20 = 20 {write 500 -> 500, write 20 -> 20} [512 0 0 2]; put 500 = 1 [512 0 500 2];"
    "write 12 = 12 [512 0 512 2]; seek 0 1 = 1032 {seek 0 1 -> 520};"
    "write 1 = 1 {write 512 -> 512} [512 0 1 2]; flush = 1 {write 1 -> 1} [512 0 0 2];"
    "write 512 = 512 [512 0 512 2];"
    "write 512 = 512 {write 512 -> 512, write 512 -> 512} [512 0 0 2];"
    "put 513 = 0 {write 513 -> 512}",
    // Bytes that a write-out left behind in part are pending as before.
    "stream 9 4 = 0 [4 0 0 -1]; write 3 = 3 [4 0 3 2]; flush = 0 {write 3 -> 2};"
    "sync = 0 {write 3 -> -1}; seek 5 0 = -1 {write 3 -> -1}; seek 0 1 = -1 {seek 0 1 -> -1};"
    "read 1 = -1 {write 3 -> -1}; lock 17 = -1 {write 3 -> -1}; write 2 = -1 {write 3 -> 1};"
    "write 2 = -1 {write 3 -> 3, write 2 -> -1} [4 0 0 2]; write 4 = 4 [4 0 4 2];"
    "write 1 = -1 {write 4 -> 3}; lock 18 = -1 {write 4 -> -1};"
    "write 3 = 3 {write 4 -> 4} [4 0 3 2]; write 0 = -1; write -1 = -1; put -1 = 0;"
    "write 1073741825 4 = -1; release = 0 {write 3 -> -1} [none]",
    "stream 10 4 = 0 [4 0 0 -1]; read 3 = 3 {read 4 -> 4} [4 4 3 1];"
    "write 1 = -1 {seek -1 1 -> -1}; sync = 0 {seek -1 1 -> -1}; read 1 = 1 [4 4 4 1];"
    "write 1 = 1 [4 0 1 2]; read 1 = 1 {write 1 -> 1, read 4 -> 4} [4 4 1 1];"
    "seek 2 1 = 8 {seek -1 1 -> 8} [4 0 0 1]; read 1 = 1 {read 4 -> 2} [4 2 1 1];"
    "seek -2147483648 1 = -1; seek 5 1 = -1 {seek 4 1 -> -1} [4 0 0 1];"
    "skip 2 = 1 {seek 2 1 -> 12}; write 2 = 2 [4 0 2 2];"
    "seek -3 2 = 11 {write 2 -> 2, seek -3 2 -> 11} [4 0 0 2]; skip 2 = 0 {seek 2 1 -> -1};"
    "skip 0 = 1; skip -1 = 0; seek 2147483647 0 = 2147483647 {seek 2147483647 0 -> 2147483647};"
    "write 1 = 1 [4 0 1 2]; seek 0 1 = -1 {seek 0 1 -> 2147483647}",
    // Streams that lack a procedure.
    "stream 1030 = 0; no_seek = 1; skip 513 = 1 {read 512 -> 512, read 1 -> 1};"
    "skip 512 = 1 {read 512 -> 512}; skip 600 = 0 {read 512 -> 5}; seek 0 1 = -1; no_write = 1;"
    "write 1 = -1; lock 34 1 = -1; lock 17 = 0 {read 512 -> 0} [512 0 0 1]; no_read = 1;"
    "read 1 = -1; lock 17 = -1",
    "stream 9 = 0; no_seek = 1; alloc 4 = 1 [4 0 0 -1]; read 3 = 3 {read 4 -> 4} [4 4 3 1];"
    "write 1 = -1; sync = 0; lock 18 = -1; lock 34 1 = -1; read 1 = 1 [4 4 4 1];"
    "sync = 1 [4 0 0 -1]",
    // Locks for reading: 17 what is there, 33 exactly, 65 at least.
    "stream 46 8 = 0 [8 0 0 -1]; read 5 = 5 {read 8 -> 8} [8 8 5 1]; lock 17 99 = 3; lock 65 3 = 3;"
    "lock 33 3 = 3; lock 65 4 = -1 {read 5 -> -1} [8 3 0 1]; lock 65 4 = 8 {read 5 -> 5} [8 8 0 1];"
    "unlock 5 = 1 [8 8 5 1]; lock 33 4 = 4 {read 5 -> 5} [8 8 0 1]; unlock 6 = 1 [8 8 6 1];"
    "lock 65 12 = 12 {read 10 -> 10} [12 12 0 1]; unlock 9 = 1 [12 12 9 1];"
    "lock 65 4 = 5 {read 9 -> 2} [12 5 0 1]; lock 65 6 = -1 {read 7 -> 0};"
    "lock 33 14 = -1 {read 9 -> 8} [14 13 0 1]; read 13 = 13 [14 13 13 1];"
    "lock 17 = -1 {read 14 -> -1}; lock 33 6 = 6 {read 14 -> 2, read 12 -> 5} [14 7 0 1];"
    "unlock 7 = 1 [14 7 7 1]; lock 17 9 = 0 {read 14 -> 0} [14 0 0 1];"
    "lock 33 1 = -1 {read 14 -> 0, read 14 -> 0};"
    "lock 65 1 = -1 {read 14 -> 0, read 14 -> 0, read 14 -> 0}",
    // Locks for writing: 18 what is there, 34 exactly, 66 at least.
    "stream 0 8 = 0 [8 0 0 -1]; lock 18 99 = 8 [8 0 0 2]; unlock 8 = 1 [8 0 8 2];"
    "lock 18 = 8 {write 8 -> 8} [8 0 0 2]; unlock 5 = 1 [8 0 5 2]; lock 66 3 = 3; lock 34 3 = 3;"
    "lock 34 4 = -1 {write 5 -> 4}; lock 34 4 = 4 {write 5 -> 5} [8 0 0 2]; unlock 5 = 1 [8 0 5 2];"
    "lock 66 4 = 8 {write 5 -> 5} [8 0 0 2]; unlock 1 = 1 [8 0 1 2];"
    "lock 66 9 = 9 {write 1 -> 1} [9 0 0 2]; lock 34 10 = 10 [10 0 0 2]",
    "stream 600 = 0; lock 17 = 512 {read 512 -> 512} [512 512 0 1];"
    "lock 18 = 512 {seek -512 1 -> 0} [512 0 0 2]; release = 1 [none];"
    "lock 33 700 = -1 {read 700 -> 600, read 100 -> 0} [700 600 0 1]; release = 1 [none];"
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

// The bytes of elements in a stream, or the elements of its bytes.
byte_vector converted(byte_vector bytes, uint32_t descriptor)
{
    const uint32_t order = descriptor & MEM_ORDER_MASK, size = descriptor & MEM_SIZE_MASK;
    const bool big = std::endian::native == std::endian::big;
    if (size > 1 && order != MEM_ORDER_OTHER && (order == MEM_ORDER_BIG) != big)
        for (size_t i = 0; i + size <= bytes.size(); i += size)
            std::reverse(&bytes[i], &bytes[i] + size);
    return bytes;
}

// Random calls of a stream, held against what it is to its users: bytes and a position.
void random_turns(uint32_t seed, int32_t capacity)
{
    std::mt19937 random(seed);
    const auto below = [&](int32_t n) { return static_cast<int32_t>(random() % 65536) % n; };
    byte_vector model, bytes;
    scripted_stream s;
    int32_t at = 0;
    const auto fill = [&](int32_t n) {
        bytes.resize(static_cast<size_t>(n));
        std::generate(bytes.begin(), bytes.end(), [&] { return below(256); });
        return bytes;
    };
    const auto left = [&] { return static_cast<int32_t>(model.size()) - at; };
    const auto next = [&](int32_t n) {
        return byte_vector(model.begin() + at, model.begin() + at + n);
    };
    const auto store = [&] {
        model.resize(std::max(model.size(), static_cast<size_t>(at) + bytes.size()));
        std::copy(bytes.begin(), bytes.end(), model.begin() + at);
        at += static_cast<int32_t>(bytes.size());
    };
    for (int i = 0; i < 3000 && !testing::Test::HasFailure(); i++) {
        SCOPED_TRACE(std::to_string(capacity) + " bytes of buffer, turn " + std::to_string(i) +
                     " with seed " + std::to_string(seed));
        s.longest_read = 1 + below(below(2) ? 8 : 700);
        const uint32_t descriptor = random() & (MEM_ORDER_MASK | MEM_NO_RESTORE | 7);
        const int32_t size = std::max<int32_t>(descriptor & MEM_SIZE_MASK, 1);
        const int32_t count = 1 + below(below(4) ? 8 : 700 / size), number = count * size;
        const int32_t turn = i ? below(7) : 0, kind = below(3), flags = IO_LOCK_THERE << kind;
        const int32_t wanted = kind == 0 ? 0 : number; // That a lock asks for.
        if (turn == 0) {
            EXPECT_TRUE(ioSyncBuffer(&s) && s.back == at && s.data == model);
            EXPECT_TRUE(ioFreeBuffer(&s) && (!capacity || ioAllocBuffer(&s, capacity)));
        } else if (turn == 1) {
            EXPECT_TRUE(kind ? ioFlushBuffer(&s) : ioAllocBuffer(&s, number));
        } else if (turn == 2) {
            byte_vector elements = fill(number);
            bytes = converted(elements, descriptor);
            const byte_vector after = descriptor & MEM_NO_RESTORE ? bytes : elements;
            EXPECT_EQ(ioWrite(&s, elements.data(), count, descriptor), count);
            EXPECT_EQ(elements, after);
            store();
        } else if (turn == 3) {
            fill(number);
            const int32_t done = ioRead(&s, bytes.data(), count, descriptor);
            const int32_t moved = ioSeek(&s, 0, IO_FROM_CURRENT) - at;
            ASSERT_TRUE(done == moved / size && moved <= left() && moved >= std::min(left(), 1));
            bytes.resize(static_cast<size_t>(moved));
            EXPECT_EQ(bytes, converted(next(moved), descriptor));
            at += moved;
        } else if (turn == 4) {
            const int32_t target = below(std::min(at + left(), 2000) + 1);
            const int32_t bases[] = {0, at, at + left()};
            EXPECT_EQ(ioSeek(&s, target - bases[kind], kind), target);
            EXPECT_EQ(ioSkip(&s, number), 1);
            EXPECT_EQ(ioSeek(&s, -number, IO_FROM_CURRENT), at = target);
        } else if (turn == 5) {
            const int32_t visible = lock(s, flags | IO_LOCK_WRITE, wanted);
            ASSERT_GE(visible, std::max(wanted, 1));
            fill(below(visible + 1));
            std::copy(bytes.begin(), bytes.end(), s.next());
            ioUnlockBuffer(&s, s.next() + bytes.size());
            store();
        } else if (const int32_t visible = lock(s, flags, wanted); visible == IO_FAILED) {
            EXPECT_LT(s.buffer->count - s.buffer->position, wanted);
        } else {
            ASSERT_TRUE(visible >= std::max(wanted, std::min(left(), 1)) && visible <= left());
            EXPECT_EQ(byte_vector(s.next(), s.next() + visible), next(visible));
            const int32_t used = below(visible + 1);
            ioUnlockBuffer(&s, s.next() + used);
            at += used;
        }
        EXPECT_EQ(ioSeek(&s, 0, IO_FROM_CURRENT), at);
    }
}

TEST(Streams, RandomCallsAgreeWithBytesInMemory)
{
    for (const int32_t capacity : {0, 1, 2, 3, 5, 64, 512})
        for (uint32_t seed = 1; seed <= 5; seed++)
            random_turns(seed, capacity);
}

// Behind a short count elements stay in the other order, and after a failure all do.
TEST(Streams, WriteGivesBackTheElementsItCounts)
{
    scripted_stream s;
    byte_vector elements = {1, 2, 3, 4, 5, 6};
    const uint32_t descriptor = 2 | (memByteOrder() ^ MEM_ORDER_OTHER);
    s.play("write 6 -> 3, write 6 -> -1");
    EXPECT_EQ(ioWrite(&s, elements.data(), 3, descriptor), 1);
    EXPECT_EQ(elements, (byte_vector{1, 2, 4, 3, 6, 5}));
    EXPECT_EQ(ioWrite(&s, elements.data(), 3, descriptor), IO_FAILED);
    EXPECT_EQ(elements, (byte_vector{2, 1, 3, 4, 5, 6}));
}

TEST(Streams, StringRecords)
{
    // The length of "hello" in every form of a field.
    const std::map<uint32_t, byte_vector> fields = {
        {0, {5}},         {0x2001, {5}},          {2, {5, 0}},
        {0x2002, {0, 5}}, {0x1004, {5, 0, 0, 0}}, {0x2004, {0, 0, 0, 5}}};
    const std::string text = "hello";
    for (const auto &[descriptor, field] : fields) {
        scripted_stream number, string;
        const uint32_t value = field.size() == 4 ? 5 : field.size() == 2 ? 0xffff0005 : 0xffffff05;
        EXPECT_TRUE(ioWriteInt(&number, value, descriptor) && number.data == field);
        EXPECT_TRUE(ioWriteString(&string, "hello!", 5, descriptor));
        number.data.insert(number.data.end(), text.begin(), text.end());
        EXPECT_EQ(string.data, number.data);
        // Cut anywhere, into a block of any size (the characters behind it stay) or a new one.
        for (size_t length = 0; length <= field.size() + 5; length++)
            for (size_t size = 0; size < 9; size++)
                for (const bool fresh : {false, true}) {
                    const bool whole = length == field.size() + 5;
                    scripted_stream s({string.data.data(), string.data.data() + length});
                    s.seek = whole && size % 2 ? s.seek : nullptr;
                    char room[] = "#########";
                    char *const dest = fresh ? nullptr : room;
                    char *const got =
                        ioReadString(&s, dest, static_cast<int32_t>(size), descriptor);
                    ASSERT_EQ(got != nullptr, whole && (fresh || size > 0));
                    EXPECT_TRUE(!got || got == text.substr(0, fresh ? 5 : size - 1));
                    EXPECT_TRUE(!whole || s.left() == (got ? 0 : 5));
                    EXPECT_EQ(room[size], '#');
                    memset(got && fresh ? got + 6 : room, '#', size);
                    memFree(fresh ? got : nullptr);
                }
    }
}

TEST(Streams, LimitsOfStringRecords)
{
    const auto written = [](const char *string, int32_t length, uint32_t descriptor) {
        scripted_stream s;
        const int32_t done = ioWriteString(&s, string, length, descriptor);
        return done ? s.data : byte_vector{99};
    };
    EXPECT_EQ(written("a\0b", 3, 1), (byte_vector{3, 'a', 0, 'b'}));
    EXPECT_EQ(written("ab", 0, 1), (byte_vector{2, 'a', 'b'}));
    EXPECT_EQ(written(nullptr, 7, 2), byte_vector(2));
    EXPECT_EQ(written("", 0, 4), byte_vector(4));
    EXPECT_EQ(written("abc", -1, 1), byte_vector{99});

    scripted_stream s(byte_vector(256, 255)), huge(byte_vector(200, 128));
    char *const longest = ioReadString(&s, nullptr, 0, 1), room[8] = "";
    EXPECT_EQ(std::string(255, '\xff'), longest);
    memFree(longest);
    EXPECT_FALSE(ioReadString(&huge, room, 8, 4) || ioReadString(&huge, nullptr, 8, 4));
    EXPECT_FALSE(ioReadString(&huge, nullptr, -1, 1));
    s.play("");
    for (const uint32_t width : {3u, 5u, 8u}) {
        EXPECT_FALSE(ioWriteInt(&s, 1, width) || ioReadString(&s, room, 8, width));
        EXPECT_FALSE(ioWriteString(&s, "a", 0, width) || ioWriteString(&s, nullptr, 0, width));
    }
    EXPECT_EQ(s.log, "");
}

} // namespace
