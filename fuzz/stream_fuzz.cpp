// Operations on a stream over memory beside a string and a position in it.
#include "fuzz_input.h"

void run(fuzz_input input)
{
    const int32_t length = input.byte();
    std::string model(length, '.');
    const block bytes = exactly(model);
    io_memory memory = {length, 0, bytes.get()};
    io_stream stream = {memRead, memWrite, memSeek, reinterpret_cast<intptr_t>(&memory)};
    int32_t at = 0;
    const auto where = [&] { return ioSeek(&stream, 0, IO_FROM_CURRENT); };
    const auto stored = [&] { return std::string(bytes.get(), length); };
    while (input.at < input.end) {
        const uint32_t operation = input.byte() % 16, bits = input.byte();
        const int32_t count = input.byte(), left = length - at, width = 1 + bits % 8;
        const int32_t whole = std::min(count, left / width), moved = whole * width;
        const bool writing = operation & 1, big = bits & 0x80, exact = bits & 0x10;
        const uint32_t descriptor = width | (big ? MEM_ORDER_BIG : MEM_ORDER_LITTLE);
        const auto in_order = [&](std::string elements) {
            for (auto element = elements.begin(); big && element != elements.end();
                 element += width)
                std::reverse(element, element + width);
            return elements;
        };
        if (operation < 4 && writing) { // within the block: a stream keeps what does not fit
            std::string source(moved, '.');
            std::generate(source.begin(), source.end(), [c = count]() mutable { return c++; });
            const block elements = exactly(source);
            expect(ioWrite(&stream, elements.get(), whole, descriptor) == (whole ? whole : -1));
            expect(source == std::string(elements.get(), moved));
            model.replace(at, moved, in_order(source));
            at += moved;
        } else if (operation < 4) {
            const block dest(new char[count * width]);
            expect(ioRead(&stream, dest.get(), count, descriptor) == (count ? whole : -1));
            expect(in_order(model.substr(at, moved)) == std::string(dest.get(), moved));
            at += std::min(count * width, left);
        } else if (operation == 4) { // a move that is refused loses unread bytes
            const int32_t whence = width % 3, offset = big ? input.number() : count - 127;
            const int32_t starts[] = {0, at, length};
            const int64_t target = int64_t{offset} + starts[whence];
            const bool inside = target >= 0 && target <= length;
            expect(ioSeek(&stream, offset, whence) == (inside ? target : IO_FAILED));
            at = inside ? static_cast<int32_t>(target) : where();
        } else if (operation == 5) {
            expect(ioSkip(&stream, count) == (count <= left));
            at = count <= left ? at + count : where();
        } else if (operation < 10) {
            const bool least = bits & 0x20 && !exact;
            int32_t visible = count;
            const intptr_t wanted = exact ? count : reinterpret_cast<intptr_t>(&visible);
            const uint32_t flags =
                (writing ? IO_LOCK_WRITE : IO_LOCK_READ) | (exact   ? IO_LOCK_EXACTLY
                                                            : least ? IO_LOCK_AT_LEAST
                                                                    : 0);
            char *const view = static_cast<char *>(ioLockBuffer(&stream, wanted, flags));
            expect(!view == (!writing && (exact || least) && count > left));
            if (!view)
                continue;
            expect((!least || visible >= count) && (visible > 0 || exact || left == 0));
            expect(writing || model.substr(at, visible) == std::string(view, visible));
            const int32_t used = std::min({visible, left, width * 4});
            memset(view, count, writing ? used : 0);
            model.replace(at, used, view, used);
            ioUnlockBuffer(&stream, view + used);
            at += used;
        } else if (operation < 12) {
            expect((writing ? ioFlushBuffer : ioSyncBuffer)(&stream) == 1 && stored() == model);
            expect(writing || memory.position == at);
        } else if (operation < 14) { // unread bytes are dropped, and a reset drops pending ones
            if (operation == 12)
                ioResetBuffer(&stream);
            else
                expect(ioFreeBuffer(&stream) == 1 && stored() == model);
            model = stored();
            at = memory.position;
        } else {
            expect(ioAllocBuffer(&stream, count) == 1);
        }
        expect(where() == at);
    }
    expect(ioFreeBuffer(&stream) == 1 && stored() == model);
}
