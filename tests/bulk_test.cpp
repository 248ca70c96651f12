#include "scripted_stream.h"

#include <gtest/gtest.h>

#include <numeric>
#include <sstream>

namespace
{

std::string numbers_from(char first, size_t count)
{
    std::string numbers(count, ' ');
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

// What both back ends are asked for; stream_fuzz looks at what arrives. Each begins with the streams
// that are not empty: bytes, capacity, and how many bytes were read
// or, below 0, written before. Then come count, work area, size and result, the calls of the input's
// back end (<), the output's (>) and the progress procedure (@), which end as the text says, and
// the input's buffer (size, count, position, mode).
const char *const copies[] = {
    "in 6 0 0: 0 own 4 = 0 {<read 4 -> 4, >write 4 -> 4, <read 4 -> 2, >write 2 -> 2}",
    "in 4 0 0: -1 memory 4 = 0 {@0 -> 0, <read 4 -> 4, >write 4 -> 4, @4 -> 0, <read 4 -> 0}",
    // Cut short or failed, and what comes later in that pass.
    "in 7 0 0: 10 own 6 = -1025 {<read 6 -> 6, >write 6 -> 6, <read 4 -> 1, >write 1 -> 1}",
    "in 6 0 0: 10 own 6 = -1025 {@0 -> 0, <read 6 -> 6, >write 6 -> 6, @6 -> 0, <read 4 -> 0}",
    "in 9 0 0: 10 own 10 = 0 {@0 -> 0, <read 10 -> 9, >write 9 -> 9, @9 -> 0}",
    "in 9 0 0: 0 own 4 = -1 {@0 -> 0, <read 4 -> 4, >write 4 -> 3, @3 -> 7}",
    "in 9 0 0: 0 own 4 = -1 {@0 -> 0, <read 4 -> 4, >write 4 -> 0}",
    "in 9 0 0: 0 own 4 = -7 {@0 -> 0, <read 4 -> 4, >write 4 -> 4, @4 -> -7}",
    // Sizes that are none, looked at behind the first call.
    "in 9 0 0: 0 memory 0 = 7 {@0 -> 7}",
    "in 9 8 0: 0 memory 0 = -4 {} [8 0 0 -1]",
    "in 9 0 0: 0 own 0 = -4 {}",
    // Past the input's buffer, whose bytes stay for later.
    "in 20 8 5: 4 memory 4 = 0 {@0 -> 0, <read 4 -> 4, >write 4 -> 4, @4 -> 0} [8 8 5 1]",
    "in 20 8 -3: 0 own 9 = -1 {<read 9 -> -1} [8 0 3 2]",
    // Through the input's buffer: its unread bytes, then its space.
    "in 20 8 5: 0 borrowed 8 = 0 {@0 -> 0, >write 3 -> 3, @3 -> 0, <read 8 -> 8,"
    " >write 8 -> 8, @8 -> 0, <read 8 -> 4, >write 4 -> 4, @4 -> 0} [8 8 8 1]",
    "in 20 8 5: 2 borrowed 1 = -1 {@0 -> 0, >write 2 -> 1, @1 -> 5} [8 8 7 1]",
    "in 10 8 -3: 0 borrowed 5 = 0 {<write 3 -> 3, <read 8 -> 7, >write 7 -> 7} [8 0 0 1]",
    // Into a buffer, which is not flushed.
    "in 10 8 7 out 20 8 2: 5 borrowed 4 = 0 {@0 -> 0, >seek -6 1 -> 2, @1 -> 0,"
    " <read 4 -> 2, @2 -> 0} [8 8 8 1]",
};

void prepare(scripted_stream &s, std::istream &words)
{
    unsigned char room[20] = {};
    int32_t bytes, capacity, before;
    words >> bytes >> capacity >> before;
    s.data = numbers_from(1, static_cast<size_t>(bytes));
    EXPECT_TRUE(!capacity || ioAllocBuffer(&s, capacity));
    EXPECT_TRUE(before <= 0 || ioRead(&s, room, before, 0) == before);
    EXPECT_TRUE(before >= 0 || ioWrite(&s, room, -before, 0) == -before);
}

// The input has no buffer while anything is told of the copy but its beginning.
int32_t watch(void *context, int32_t bytes)
{
    auto &watcher = *static_cast<scripted_stream *>(context);
    EXPECT_TRUE(bytes == 0 || !watcher.leader->buffer);
    return watcher.finish("", bytes, INT32_MAX);
}

void check_copy(const std::string &expected)
{
    scripted_stream in, out, watcher;
    std::istringstream words(expected);
    std::string word, area;
    int32_t count, size;
    while (words >> word && word != ":")
        prepare(word == "in" ? in : out, words);
    words >> count >> area >> size;
    out.leader = watcher.leader = &in;
    in.name = '<', out.name = '>', watcher.name = '@';
    const io_buffer *const buffer = in.buffer;
    unsigned char room[20], *const memory = area == "memory" ? room : nullptr;
    in.play(expected);
    const io_progress_proc progress = expected.find('@') < expected.size() ? watch : nullptr;
    const int32_t result = ioTransfer(&out, &in, count, memory, size, progress, &watcher);
    std::ostringstream actual;
    actual << expected.substr(0, expected.find('=')) << "= " << result << " {" << in.log << "}";
    EXPECT_EQ(in.buffer, buffer);
    const io_buffer b = buffer ? *buffer : io_buffer{8, 0, 0, IO_MODE_NONE};
    if (expected.back() == ']')
        actual << " [" << b.size << ' ' << b.count << ' ' << b.position << ' ' << b.mode << "]";
    EXPECT_EQ(actual.str(), expected);
}

TEST(Transfer, CallsOfTheBackEnds)
{
    for (const char *const copy : copies)
        check_copy(copy);
}

// A record begins with its number; the key is an address that stands for one. The context has how
// much of a record is read. A record that is not there would match.
int32_t probe(io_stream *stream, const void *key, void *context, int32_t *order)
{
    const auto number = static_cast<int32_t>(reinterpret_cast<intptr_t>(key));
    unsigned char record[6] = {static_cast<unsigned char>(number)};
    const int32_t moved = ioRead(stream, record, *static_cast<int32_t *>(context), 0);
    *order += record[0] - number;
    return moved > 0 ? moved : number % 2 ? IO_FAILED : 0; // either ends the search
}

int32_t search(io_stream *stream, uint32_t count, uint32_t number, int32_t bytes, uint32_t *index)
{
    const uint32_t cache_size = number % 4 * 50; // none, or enough for some of the spans
    return ioBinSearch(stream, count, 6, reinterpret_cast<void *>(uintptr_t{number}), probe, &bytes,
                       nullptr, cache_size, index);
}

// A table of 40 records with the numbers 6, 12 and so on, behind 5 other bytes.
TEST(BinSearch, FindsEachRecord)
{
    scripted_stream s(numbers_from(1, 5 + 40 * 6));
    for (const int32_t capacity : {0, 4, 64}) {
        EXPECT_TRUE(capacity == 0 || ioAllocBuffer(&s, capacity));
        for (uint32_t count = 0; count <= 40; count++)
            for (uint32_t number = 0; number <= 246; number += 3) {
                const uint32_t place = number % 6 ? 0 : number / 6;
                const bool there = place > 0 && place <= count;
                const int32_t bytes = number % 5 ? 1 : 6;
                uint32_t index = 99;
                ioSeek(&s, 5, IO_FROM_START);
                EXPECT_EQ(search(&s, count, number, bytes, &index), there) << number;
                EXPECT_EQ(index, there ? place - 1 : 99) << number << " among " << count;
                const auto after = static_cast<int32_t>(number) - 1 + bytes;
                EXPECT_EQ(there ? ioSeek(&s, 0, IO_FROM_CURRENT) : after, after);
            }
    }
    // Halves, by relative moves.
    s.log.clear();
    ioFreeBuffer(&s);
    ioSeek(&s, 5, IO_FROM_START);
    EXPECT_EQ(search(&s, 4, 12, 6, nullptr), 1);
    EXPECT_EQ(search(&s, 2, 20, 1, nullptr), 0);
    EXPECT_EQ(s.log, "seek 5 0 -> 5, seek 6 1 -> 11, read 6 -> 6, "
                     "seek 0 1 -> 17, read 1 -> 1, seek 5 1 -> 23, read 1 -> 1");
    for (const uint32_t number : {245u, 246u}) { // behind the end
        ioSeek(&s, 5, IO_FROM_START);
        EXPECT_EQ(search(&s, 90, number, 1, nullptr), 0);
    }
    s.seek = nullptr;
    EXPECT_EQ(search(&s, 1, 24, 1, nullptr), 0);
}

TEST(Enhance, Pieces)
{
    const std::tuple<int32_t, int32_t, std::string> runs[] = {
        {-1, 0, ""},
        {0, 0, ""},
        {64000, 64000, "64000 -> 64000"},
        {64001, 64001, "64000 -> 64000, 1 -> 1"},
        {200000, 200000, "64000 -> 64000, 64000 -> 64000, 64000 -> 64000, 8000 -> 8000"},
        {200000, 64100, "64000 -> 64000, 64000 -> 100"},
        {65000, -1, "64000 -> 64000, 1000 -> 65535"},
        {128000, 129534, "64000 -> 65534, 64000 -> 64000"},
    };
    scripted_stream s(std::string(200000, ' '));
    const io_piece_proc proc = [](void *context, void *piece, uint16_t count) {
        auto &counter = *static_cast<scripted_stream *>(context);
        EXPECT_EQ(piece, counter.data.data() + counter.back);
        counter.back += count;
        return static_cast<uint16_t>(counter.finish("", count, INT32_MAX));
    };
    for (const auto &[length, total, calls] : runs) {
        s.play(calls);
        s.back = 0;
        EXPECT_EQ(ioEnhance(&s, s.data.data(), length, proc), total);
        EXPECT_EQ(s.log, calls);
    }
}

// Rows of two elements of one byte, times the numbers of two lists.
TEST(Rows, OneTransferForEach)
{
    const uint8_t first[] = {2, 3, 1}, second[] = {1, 2, 4};
    const std::tuple<uint16_t, int32_t, std::string> transfers[] = {
        {1 | MEM_STEP_FIRST, 1, "read 4 -> 4, read 6 -> 6, read 2 -> 2"},
        {1 | MEM_STEP_FIRST, 0, "read 4 -> 4, read 6 -> 5"},
        {1 | MEM_STEP_SECOND, 1, "write 4 -> 4, write 8 -> 8, write 16 -> 16"},
        {1 | MEM_STEP_FIRST | MEM_STEP_SECOND, 0, "write 4 -> 4, write 12 -> -1"},
    };
    for (const auto &[flags, result, calls] : transfers) {
        scripted_stream s(numbers_from(1, 60));
        std::string row = numbers_from(101, 16);
        void *table[] = {row.data(), row.data(), row.data()};
        s.play(calls);
        const auto transfer = calls[0] == 'r' ? ioRead2D : ioWrite2D;
        EXPECT_EQ(transfer(&s, table, 3, 2, first, second, flags, 1), result);
        EXPECT_EQ(s.log, calls);
        EXPECT_EQ(transfer(&s, nullptr, 0, 2, first, second, flags, 1), 1);
        EXPECT_EQ(transfer(&s, table, 1, 0, first, second, flags, 1), 0);
    }
}

} // namespace
