// Quoted strings: the same over a memory block and over a slow stream, in a room of exactly the size
// that is named; and a string that is written with escapes is read back as it was.
#include "fuzz_input.h"

#include "../tests/text_source.h"

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
    const block dest(new char[room]), smaller(new char[room - 1]);
    const text_source source(quoted, {}), again(quoted, {});
    expect(iotextReadString(&source, dest.get(), room, '"', '"', 0, 0, nullptr) == IOTEXT_STOPPED);
    expect(memcmp(string.c_str(), dest.get(), room) == 0);
    expect(iotextReadString(&again, smaller.get(), room - 1, '"', '"', 0, 0, nullptr) ==
           IOTEXT_TOO_LONG);
}

void run(fuzz_input input)
{
    const char open = static_cast<char>(input.byte()), close = static_cast<char>(input.byte());
    const char last = static_cast<char>(input.byte());
    const uint8_t bits = input.byte(), room = input.byte() % 64 + 1;
    const uint32_t flags = (bits & 0x1fu) | (bits & 0x80u) << 8; // the last is IOTEXT_COMMENTS
    const shape how = {1 + static_cast<int32_t>(input.byte()),
                       1 + static_cast<int32_t>(input.byte())};
    const std::string marks = {'#', '/', '*', '\\', '\n', '\r', ' ', 'n', '\0', open, close};
    comments delimiters = {input.word(3, marks), input.word(3, marks), input.word(3, marks)};
    if (delimiters[2].empty()) // nothing else closes a block comment
        delimiters[1].clear();
    const std::string text = input.text(marks);
    read_back(text);

    // The result, the string, the record's numbers and the place, for each string of the text.
    const auto read_all = [&](const text_source &source) {
        std::string seen;
        io_text record = text_record(delimiters);
        for (int calls = 0, result = 1; calls < 64 && result && result != IOTEXT_FAILED; calls++) {
            const std::string untouched(room, '\1');
            const block dest = exactly(untouched);
            result = iotextReadString(&source, dest.get(), room, open, close, last, flags,
                                      bits & 0x20 ? nullptr : &record);
            const std::string item(dest.get(), room);
            expect(result == IOTEXT_FAILED || item == untouched || item.find('\0') < room);
            seen += item;
            for (const int32_t value :
                 {result, record.line, record.count, record.error_line, source.position()})
                seen += ' ' + std::to_string(value);
        }
        return seen;
    };
    expect(read_all({text, {}}) == read_all({text, how}));
}
