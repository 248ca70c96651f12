// The scanner over memory and over streams, held against one written plainly.
#include "fuzz_input.h"

#include "../tests/text_source.h"

#include <random>
#include <tuple>

using namespace std::string_literals; // for texts that hold NUL characters

namespace
{

// What a callback hears, and what it answers: nothing special, or a play of cancellations, drops,
// changed characters and changed flags that every copy repeats.
struct listener {
    std::string heard = {}; // event, character ('-' for null) and, without a view, place
    bool plays = false;
    std::minstd_rand script = {};

    int32_t hear(int32_t event, char *character, uint32_t &flags, int32_t place)
    {
        const auto below = [&](uint32_t bound) { return static_cast<uint32_t>(script() % bound); };
        const bool has_view = event < IOTEXT_ON_LINE_OPEN;
        heard += {static_cast<char>('0' + event), character ? *character : '-'};
        if (!has_view)
            heard += static_cast<char>(place);
        if (plays && below(24) == 0)
            return IOTEXT_CANCELLED;
        if (plays && below(8) == 0)
            flags = below(0x40);
        if (plays && has_view && below(8) == 0)
            *character = "z \n"[below(4)];
        return plays ? static_cast<int32_t>(below(8)) : 0; // only 2 has a meaning
    }
};

// What one call shows: result, room, count, line, terminator, error_line, events, and where the
// source then stands.
using outcome =
    std::tuple<int32_t, std::string, int32_t, int32_t, int32_t, int32_t, std::string, int32_t>;

enum front_end { reads, sleeps, waits, observes };

// The whole text and an index into it. What a callback cancels is thrown.
struct scan_model {
    static constexpr size_t none = 3, cut = 4;
    std::string in;
    comments delimiters;
    io_text text;
    listener ears;
    std::string room = {};
    size_t stored = 0, at = 0;
    uint32_t wanted = 0;
    int32_t line = 0, count = 0;

    bool line_end() const
    {
        return in[at] == '\n' || in[at] == '\r';
    }
    void take()
    {
        const char c = in[at];
        const bool pairs = line_end();
        if (++at < in.size() && pairs && line_end() && in[at] != c)
            at++;
    }
    int32_t tell(int32_t event, const char *character)
    {
        constexpr uint32_t bits[] = {0x01, 0x02, 0x04, 0x08, 0x10, 0x10, 0x20, 0x20};
        if (!(wanted & bits[event]))
            return 0;
        const int32_t answer = ears.hear(event, const_cast<char *>(character), text.callback_flags,
                                         static_cast<int32_t>(at));
        if (answer == -1027)
            throw answer;
        if (event != 0 || answer != 2)
            wanted = text.callback_flags;
        return answer;
    }
    // Consumes the delimiter that stands here, from the i-th on, and gives its index.
    size_t delimiter(size_t i)
    {
        for (; i < none; i++) {
            const std::string &d = delimiters[i];
            if (d.empty() || d[0] != in[at])
                continue;
            if (at + d.size() > in.size())
                return cut;
            if (in.compare(at, d.size(), d) == 0) {
                at += d.size();
                return i;
            }
        }
        return none;
    }
    int32_t comment(bool block)
    {
        int32_t lines = 0; // of a block, counted when it ends
        bool closed = false;
        tell(block ? 6 : 4, delimiters[block].c_str());
        while (!closed && at < in.size()) {
            const size_t which = block && !line_end() ? delimiter(2) : none;
            if (which != none) {
                closed = which == 2;
                break;
            }
            const char c = line_end() ? '\n' : in[at];
            closed = line_end() && !block;
            if (closed) {
                at++; // a cancellation comes between the halves of a line end
                tell(0, &c);
                at--;
            }
            (block ? lines : line) += line_end();
            take();
            if (!closed)
                tell(block ? 3 : 2, &c);
        }
        line += lines;
        if (block && !closed)
            return -1025;
        tell(block ? 7 : 5, block ? delimiters[2].c_str() : closed ? "\n" : nullptr);
        return 2;
    }
    int32_t scan_text(const std::string &set, uint32_t mode)
    {
        while (at < in.size()) {
            const size_t which = mode & 0x08 ? none : delimiter(0);
            if (which < none)
                return which == 2 ? -1025 : comment(which == 1);
            const char c = line_end() ? '\n' : in[at];
            const bool member = c == '\0' || set.find(c) != std::string::npos;
            const bool stops = !(mode & 0x04) && member == !(mode & 0x01);
            const bool stays = stops && mode & 0x01;
            if (!stays) {
                line += line_end();
                take();
            }
            if (stops) {
                text.terminator = static_cast<signed char>(c);
                if (!stays)
                    tell(1, &c);
                return 1;
            }
            if (tell(0, &c) == 2)
                continue;
            if (stored + 1 < room.size())
                room[stored++] = c;
            else if (!room.empty() && !(mode & 0x02))
                return -4;
            count++;
        }
        return 0;
    }
    int32_t scan(const std::string &set, uint32_t mode)
    {
        wanted = text.callback_flags;
        line = text.line;
        stored = 0;
        count = 0;
        int32_t result;
        try {
            result = scan_text(set, mode);
        } catch (int32_t cancelled) {
            result = cancelled;
        }
        if (result == -1025)
            text.error_line = line;
        // White space that begins with a NUL is none for the trim.
        const std::string item = room.substr(0, stored);
        const size_t kept = item.find_last_not_of(" \t\r\n\0"s) + 1;
        room[stored] = '\0';
        if (!(mode & 0x40) && item[kept] != '\0') {
            room[kept] = '\0';
            count -= static_cast<int32_t>(stored - kept);
        }
        text.line = line;
        text.count = count;
        return result;
    }
    // `size` 0 means no room: the item is only counted.
    int32_t item(const char *delimiter_set, int32_t size, uint32_t mode)
    {
        const std::string set = delimiter_set ? delimiter_set : " \t\r\n";
        std::string skip, kept_room(static_cast<size_t>(size), '~');
        for (const char c : " \t\r\n"s)
            if (!(mode & 0x20) || set.find(c) == std::string::npos)
                skip += c;
        int32_t result;
        do {
            room.clear();
            result = mode & 0x10 ? 0 : scan(skip, 0x19);
            room = kept_room;
            result = result < 0 ? -1 : scan(set, mode);
            kept_room = room;
        } while (result == 2 && text.count <= 0 && !(mode & 0x80));
        return result;
    }
    outcome read(front_end how, const char *set, int32_t size, uint32_t mode)
    {
        constexpr uint32_t modes[] = {0, 0x10, 0x20, 0x21}; // of the front ends
        ears.heard.clear();
        int32_t result;
        do {
            result = how ? item(set, 0, modes[how]) : item(set, size, mode);
        } while (result == 2 && (how == sleeps || how == observes));
        if (how == waits && result >= 0 && text.count > 0)
            result = -100;
        room.resize(size, '~');
        return {result,          room + '~',      text.count, text.line,
                text.terminator, text.error_line, ears.heard, static_cast<int32_t>(at)};
    }
};

// The scanner itself.
struct session {
    text_source source;
    io_text text;
    listener ears;
    bool recorded;

    outcome read(front_end how, const char *set, int32_t size, uint32_t mode)
    {
        io_text *const record = recorded ? &text : nullptr;
        std::string room(static_cast<size_t>(size) + 1, '~'); // one more, to stay as it is
        ears.heard.clear();
        text.callback_data = reinterpret_cast<uintptr_t>(this);
        const int32_t result =
            how == sleeps  ? iotextSleep(&source, set, record)
            : how == waits ? iotextWait(&source, set, record)
            : how          ? iotextObserve(&source, set, record)
                  : iotextRead(&source, set, size > 0 ? room.data() : nullptr, size, mode, record);
        return {result,          room,       text.count,       text.line, text.terminator,
                text.error_line, ears.heard, source.position()};
    }
    static int32_t listen(const io_source *from, io_text *record, int32_t event, char *character)
    {
        session &s = *reinterpret_cast<session *>(record->callback_data);
        expect(from == &s.source && record == &s.text);
        const int32_t place = event < IOTEXT_ON_LINE_OPEN ? 0 : s.source.position();
        return s.ears.hear(event, character, record->callback_flags, place);
    }
};

// Locks memory that fails where the text ends or has too few characters, and from then on.
bool broken;

void *lock_failing(void *memory, intptr_t size, uint32_t flags)
{
    int32_t *const visible = reinterpret_cast<int32_t *>(size);
    const int32_t wanted = flags & IO_LOCK_AT_LEAST ? *visible : 1;
    void *const view = ioLockMemory(memory, size, flags);
    broken = broken || !view || *visible < wanted;
    return broken ? nullptr : view;
}

} // namespace

void run(fuzz_input input)
{
    const std::string marks = "#/*\xe9 \n\r\0"s, others = "@[`{:\x7f"
                                                          "azAZ09\x80\xff";
    const uint32_t how = input.byte(), bare = how & 0x08; // without a record, and so without events
    const uint32_t play = input.byte(), events = input.byte() | (bare ? 0x40 : 0);
    const uint32_t mode = input.byte() & (how & 0x10 ? 0x1ff : how & 0x20 ? 0xa7 : 0x50);
    const uint32_t rooms = input.byte();
    const int32_t sizes[] = {0, 1, 2, 3, 4, 25, 40, 150}, size = sizes[rooms % 8];
    shape form = shapes[how % std::size(shapes)];
    form.capacity += form.capacity > 0 ? rooms / 8 : 0;
    const std::string set = input.word(3, marks + others);
    comments delimiters = {input.word(3, marks), input.word(3, marks), input.word(3, marks)};
    if (delimiters[2].empty()) // nothing else closes a block comment
        delimiters[1].clear();
    if (bare)
        delimiters = {};
    const std::string text = input.text(marks + others);

    // Where the source fails at the end of the text, a scan fails instead of coming to that end.
    const auto compare = [&](const std::string &in, bool fails) {
        scan_model model = {in, delimiters, text_record(delimiters, 7), {}};
        model.text.terminator = 99;
        model.text.callback = session::listen;
        model.ears.plays = play % 2;
        model.ears.script.seed(play + 1);
        session s = {{in, form}, model.text, model.ears, !bare};
        s.source.stream.fails_at_end = fails;
        broken = false;
        if (fails && s.source.lock == ioLockMemory)
            s.source.lock = lock_failing;
        // An inverted scan may stay where it is for ever.
        for (int call = 0, result = 1; call < 30 && result != 0 && result != -1; call++) {
            s.text.callback_flags = model.text.callback_flags = events & 0x40 ? 0 : events & 0x3f;
            const char *const stops = events & 0x80 ? nullptr : set.c_str();
            const auto front = how < 0xc0 ? reads : static_cast<front_end>((play / 2 + call) % 4);
            const outcome expected = model.read(front, stops, size, mode);
            if (bare) // nothing is told but the result
                s.text = model.text;
            const outcome got = s.read(front, stops, size, mode);
            if ((broken || s.source.stream.failed) && std::get<0>(got) == -1)
                return;
            expect(got == expected);
            result = std::get<0>(expected);
            expect(!fails || result != 0);
        }
    };
    compare(text, false);
    compare(text.substr(0, play % (text.size() + 1)), true);
}
