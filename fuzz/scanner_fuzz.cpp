// A memory block and a slow stream of the same text give the same items, results, lines and events.
#include "fuzz_input.h"

// Writes down each event, drops the characters `d` and stops at `!`.
static int32_t listen(const io_source *, io_text *text, int32_t event, char *character)
{
    const char heard = character ? *character : '~';
    *reinterpret_cast<std::string *>(text->callback_data) +=
        {static_cast<char>('0' + event), heard};
    return heard == '!' ? IOTEXT_CANCELLED : heard == 'd' ? static_cast<int32_t>(IOTEXT_DROP) : 0;
}

void run(fuzz_input input)
{
    const uint32_t front_ends = input.number(), mode = input.byte(), absent = input.byte();
    const std::string set = input.bytes(6);
    const char *const stops = absent & 1 ? nullptr : set.c_str();
    const int32_t room = 1 + input.byte() % 64;
    io_text record = {};
    record.callback = listen;
    record.callback_flags = absent & 2 ? 0 : input.byte();
    static constexpr decltype(&iotextSleep) others[] = {iotextSleep, iotextWait, iotextObserve};
    const auto call = [&](const io_source *source, char *dest, io_text *text, int number) {
        text = absent & 4 ? nullptr : text;
        const uint32_t front_end = front_ends >> number % 8 * 4 & 7;
        if (front_end < 3)
            return others[front_end](source, stops, text);
        return iotextRead(source, stops, front_end == 3 ? nullptr : dest, room, mode, text);
    };
    compare_sources(input, room, record, call);
}
