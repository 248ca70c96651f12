// Quoted strings: the same over a memory block and over a slow stream, in a room of exactly the size
// that is named; and a string that is written with escapes is read back as it was.
#include "fuzz_input.h"

static void read_back(const std::string &string)
{
    const std::string special("\0\\\n\r\t\"", 6), letters = "0\\nrt\"";
    std::string quoted = " \"";
    for (const char c : string) {
        const size_t index = special.find(c);
        quoted += index < special.size() ? std::string{'\\', letters[index]} : std::string{c};
    }
    quoted += '"';
    const int32_t room = string.size() + 1;
    const block text = exactly(quoted), dest(new char[room]), smaller(new char[room - 1]);
    io_memory memory = {static_cast<int32_t>(quoted.size()), 0, text.get()};
    const io_source source = {&memory, ioLockMemory, ioUnlockMemory};
    expect(iotextReadString(&source, dest.get(), room, '"', '"', 0, 0, nullptr) == IOTEXT_STOPPED);
    expect(memcmp(string.c_str(), dest.get(), room) == 0);
    memory.position = 0;
    expect(iotextReadString(&source, smaller.get(), room - 1, '"', '"', 0, 0, nullptr) ==
           IOTEXT_TOO_LONG);
}

void run(fuzz_input input)
{
    const char open = static_cast<char>(input.byte()), close = static_cast<char>(input.byte());
    const uint8_t bits = input.byte(), last = input.byte(), room = input.byte() % 64 + 1;
    const uint32_t flags = (bits & 0x1fu) | (bits & 0x80u) << 8; // the last is IOTEXT_COMMENTS
    read_back(std::string(input.at, input.end));
    compare_sources(input, room, {}, [&](const io_source *source, char *dest, io_text *text, int) {
        return iotextReadString(source, dest, room, open, close, static_cast<char>(last), flags,
                                bits & 0x20 ? nullptr : text);
    });
}
