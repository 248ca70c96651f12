// Calls of a stream, held against what it is to its users: bytes and a position. Its back end may
// give and take fewer bytes than it is asked for.
#include "fuzz_input.h"

#include "../tests/scripted_stream.h"

#include <bit>

namespace
{

constexpr int32_t no_limit = INT32_MAX;

// Elements of the machine as a stream has them, and the other way round.
std::string in_order(std::string bytes, uint32_t descriptor)
{
    const uint32_t order = descriptor & MEM_ORDER_MASK, size = descriptor & MEM_SIZE_MASK;
    const bool big = std::endian::native == std::endian::big;
    if (size > 1 && order != MEM_ORDER_OTHER && (order == MEM_ORDER_BIG) != big)
        for (size_t i = 0; i + size <= bytes.size(); i += size)
            std::reverse(&bytes[i], &bytes[i] + size);
    return bytes;
}

struct stream_model {
    fuzz_input input;
    std::string model = {};
    int32_t at = 0;
    scripted_stream s = scripted_stream();
    uint32_t bits = 0, descriptor = 0; // of this turn
    int32_t count = 0, size = 0;
    std::string pending = {}; // when it began

    int32_t left() const
    {
        return static_cast<int32_t>(model.size()) - at;
    }
    int32_t where()
    {
        return ioSeek(&s, 0, IO_FROM_CURRENT);
    }
    std::string some_bytes(size_t length)
    {
        std::string bytes(length, '.');
        std::generate(bytes.begin(), bytes.end(), [c = input.byte()]() mutable { return c += 7; });
        return bytes;
    }
    void store(const std::string &bytes)
    {
        model.resize(std::max(model.size(), at + bytes.size()));
        model.replace(at, bytes.size(), bytes);
        at += bytes.size();
    }
    // After an operation that stores bytes. If the back end took too few, the stream has what the
    // back end and the buffer hold: what was pending and some of the bytes, behind what the back end
    // took of pending bytes, of which all still count as pending.
    void stored(bool well, const std::string &bytes, bool keeps = true)
    {
        if (well)
            return store(bytes);
        expect(s.longest_write < no_limit);
        const size_t start = at - pending.size();
        const std::string all = pending + bytes;
        expect(model.compare(0, start, s.data, 0, start) == 0);
        model = s.data;
        at = s.back - s.unread();
        store(s.pending());
        const std::string now = model.substr(start, at - start);
        bool known = false;
        for (size_t taken = 0; taken + (keeps ? pending.size() : 0) <= now.size(); taken++)
            known |= all.compare(0, taken, now, 0, taken) == 0 &&
                     all.compare(0, now.size() - taken, now, taken) == 0;
        expect(known);
    }
    // After an operation that got fewer bytes than it wanted, or could not write pending ones.
    void not_read(bool excused)
    {
        if (!s.pending().empty())
            return stored(false, "");
        expect(excused || s.longest_read < no_limit);
        at = where();
    }
    void write()
    {
        const std::string elements = some_bytes(count * size),
                          bytes = in_order(elements, descriptor);
        const block source = exactly(elements);
        const int32_t done = ioWrite(&s, source.get(), count, descriptor), start = at;
        stored(done == count, bytes);
        const std::string after(source.get(), elements.size());
        expect(done == IO_FAILED || done == (at - start) / size);
        expect(done < count || after == (descriptor & MEM_NO_RESTORE ? bytes : elements));
    }
    void read()
    {
        const block dest(new char[count * size]);
        const int32_t done = ioRead(&s, dest.get(), count, descriptor);
        if (done == IO_FAILED)
            return not_read(false);
        const int32_t moved = where() - at;
        expect(done == moved / size && moved <= left() && moved >= std::min(left(), 1));
        expect(s.longest_read < no_limit || moved == std::min(left(), count * size));
        expect(in_order(model.substr(at, moved), descriptor) == std::string(dest.get(), moved));
        at += moved;
    }
    void move()
    {
        const int32_t target = input.number() % (model.size() + 1), whence = bits % 3;
        const int32_t bases[] = {0, at, static_cast<int32_t>(model.size())};
        // A move to the current position only asks, and leaves the writing of pending bytes to the skip.
        if (ioSeek(&s, target - bases[whence], whence) == IO_FAILED || !ioSkip(&s, count))
            return stored(false, "");
        expect(ioSeek(&s, -count, IO_FROM_CURRENT) == target);
        at = target;
    }
    void write_view()
    {
        const bool exact = bits & 4;
        int32_t visible = count;
        const intptr_t wanted = exact ? count : reinterpret_cast<intptr_t>(&visible);
        const uint32_t how = exact ? IO_LOCK_EXACTLY : bits & 2 ? IO_LOCK_AT_LEAST : IO_LOCK_THERE;
        void *const view = ioLockBuffer(&s, wanted, IO_LOCK_WRITE | how);
        if (!view)
            return stored(false, "");
        expect(view == s.next() && visible >= (how == IO_LOCK_THERE ? 1 : count));
        const std::string bytes = some_bytes(input.byte() % (visible + 1));
        ioUnlockBuffer(&s, std::copy(bytes.begin(), bytes.end(), s.next()));
        store(bytes);
    }
    void read_view()
    {
        const bool exact = bits & 4, some = !exact && !(bits & 2);
        int32_t visible = count;
        const intptr_t wanted = exact ? count : reinterpret_cast<intptr_t>(&visible);
        const uint32_t how = exact ? IO_LOCK_EXACTLY : some ? IO_LOCK_THERE : IO_LOCK_AT_LEAST;
        void *const view = ioLockBuffer(&s, wanted, IO_LOCK_READ | how);
        if (!view)
            return not_read(!some && left() < count);
        expect(view == s.next() && visible <= left());
        expect(visible >= (some ? std::min(left(), 1) : count));
        expect(std::string(s.next(), visible) == model.substr(at, visible));
        const int32_t used = input.byte() % (visible + 1);
        ioUnlockBuffer(&s, s.next() + used);
        at += used;
    }
    // An integer, or a string with its length in front, which is read back.
    void record()
    {
        const uint32_t width = 1 << bits % 3, big = descriptor & MEM_ORDER_BIG;
        const uint32_t value = bits & 4 ? input.number() : count;
        const std::string text = some_bytes(bits & 4 ? 0 : count);
        std::string field;
        for (uint32_t i = 0; i < width; i++)
            field.insert(big ? 0 : i, 1, static_cast<char>(value >> 8 * i));
        const int32_t start = at;
        if (bits & 4)
            return stored(ioWriteInt(&s, value, width | big) == 1, field);
        const bool well = ioWriteString(&s, text.data(), count, width | big) == 1;
        stored(well, field + text);
        pending = s.pending();
        if (!well || ioSeek(&s, start, IO_FROM_START) == IO_FAILED)
            return stored(false, "");
        at = start;
        const bool fresh = bits & 0x20;
        const int32_t room = input.byte() + !fresh;
        const block dest = exactly(std::string(room, '.'));
        char *const got = ioReadString(&s, fresh ? nullptr : dest.get(), room, width | big);
        expect(got ? (got == dest.get()) != fresh : s.longest_read < no_limit);
        const std::string kept = text.substr(0, fresh ? count : room - 1);
        expect(!got || memcmp(got, kept.c_str(), kept.size() + 1) == 0);
        expect(!got || where() == start + static_cast<int32_t>(width) + count);
        at = where();
        if (fresh)
            memFree(got);
    }
    // Through memory or a block behind what the buffer holds, or through the buffer.
    void transfer()
    {
        const bool borrows = bits & 1 && s.buffer;
        if (!borrows && !ioSyncBuffer(&s))
            return stored(false, "");
        scripted_stream out;
        out.journal = nullptr;
        if (bits & 2 && s.longest_write == no_limit)
            out.longest_write = input.byte();
        const int32_t limit = bits & 4 ? input.byte() : 0, start = at;
        const block memory(new char[count]);
        void *const area = !borrows && bits & 0x20 ? memory.get() : nullptr;
        const int32_t result =
            ioTransfer(&out, &s, limit, area, borrows ? 0 : count, nullptr, nullptr);
        const int32_t moved = out.data.size();
        expect(model.compare(at, moved, out.data) == 0);
        if (result == IO_FAILED && s.pending().size() > 0)
            return stored(false, "");
        at = where();
        if (result == IO_FAILED) // all that was read is consumed
            return expect(out.longest_write < no_limit && start + moved < at);
        const int32_t whole = std::min<int32_t>(limit > 0 ? limit : no_limit, model.size() - start);
        expect(at == start + moved && moved <= whole);
        expect(moved == whole || s.longest_read < no_limit);
        expect(result == (limit > 0 && moved < limit ? IO_CUT_SHORT : IO_COPIED));
    }
    // Rows that lie one behind the other.
    void rows()
    {
        const bool reads = bits & 1;
        const uint8_t factors[] = {static_cast<uint8_t>(1 + input.byte() % 4), 1, 3};
        const int32_t unit = 1 + count % 9, first = unit * size * factors[0], second = unit * size;
        const std::string elements = some_bytes(first + 4 * second);
        const block bytes = exactly(elements);
        void *table[] = {bytes.get(), bytes.get() + first, bytes.get() + first + second};
        const auto proc = reads ? ioRead2D : ioWrite2D;
        const bool well =
            proc(&s, table, 3, unit, factors, nullptr, 1 | MEM_STEP_FIRST, descriptor);
        if (!reads)
            return stored(well, in_order(elements, descriptor));
        const int32_t length = elements.size();
        if (!well)
            return not_read(left() < length);
        expect(in_order(model.substr(at, length), descriptor) == std::string(bytes.get(), length));
        at += length;
    }
    // What moves no bytes that the user sees, except that a release passes over unread ones.
    void change_buffer()
    {
        const uint32_t change = bits % 4;
        if (change == 0)
            return expect(ioAllocBuffer(&s, count) == 1);
        if (change == 3)
            at += s.unread();
        const auto proc = change == 1 ? ioFlushBuffer : change == 2 ? ioSyncBuffer : ioFreeBuffer;
        const bool well = proc(&s) == 1;
        stored(well, "", change != 3);
        expect(!well || s.pending().empty());
        expect(change == 1 || !s.pending().empty() || (s.back == at && s.data == model));
    }
    void turn()
    {
        constexpr void (stream_model::*const operations[])() = {
            &stream_model::write,      &stream_model::read,      &stream_model::move,
            &stream_model::write_view, &stream_model::read_view, &stream_model::record,
            &stream_model::transfer,   &stream_model::rows,      &stream_model::change_buffer};
        const uint32_t operation = input.byte() % std::size(operations);
        bits = input.byte();
        count = 1 + input.byte() % (bits & 0x40 ? 255 : 12);
        descriptor = input.number() & (MEM_ORDER_MASK | MEM_NO_RESTORE | 7);
        size = std::max<int32_t>(descriptor & MEM_SIZE_MASK, 1);
        s.longest_read = bits & 8 ? 1 + input.byte() : no_limit;
        s.longest_write = bits & 16 ? input.byte() : no_limit;
        pending = s.pending();
        (this->*operations[operation])();
        expect(where() == at);
    }
};

} // namespace

void run(fuzz_input input)
{
    stream_model streams = {input};
    streams.s.journal = nullptr;
    if (const int32_t capacity = streams.input.byte() % 128; capacity > 0)
        ioAllocBuffer(&streams.s, capacity);
    while (streams.input.at < streams.input.end)
        streams.turn();
}
