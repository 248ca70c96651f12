// A stream over a string of bytes that plays a script and keeps a log.
#ifndef TESSEL_TESTS_SCRIPTED_STREAM_H
#define TESSEL_TESTS_SCRIPTED_STREAM_H

#include "tessel/io.h"
#include "tessel/mem.h"

#include <algorithm>
#include <deque>
#include <string.h>
#include <string>

// Each call of the back end takes the next outcome of the script, the most bytes that it moves or
// IO_FAILED; behind the script's end calls do all that is asked. The position is that of a file: it
// may lie behind the end, and a write there fills the gap.
struct scripted_stream : io_stream {
    std::string data;
    int32_t back = 0;
    int32_t longest_read = INT32_MAX;
    int32_t longest_write = INT32_MAX;
    bool fails_at_end = false, failed = false; // reads do, and one has
    std::deque<int32_t> script;
    std::string log;             // "read 512 -> 3, seek -2 1 -> 1"
    std::string *journal = &log; // where calls are noted: the log, one of several streams, or none
    scripted_stream *leader = this; // whose script and journal the calls go by
    std::string name;               // in front of each call

    explicit scripted_stream(std::string bytes = {})
        : io_stream{read_back, write_back, seek_back, 0, nullptr, 0xa5}, data(std::move(bytes))
    {
    }
    scripted_stream(const scripted_stream &) = delete;
    ~scripted_stream()
    {
        memFree(buffer);
    }

    // Lets the next calls end as those of a log did.
    void play(const std::string &calls)
    {
        log.clear();
        script.clear();
        for (size_t at = 0; (at = calls.find("-> ", at)) != std::string::npos; at += 3)
            script.push_back(std::stoi(calls.substr(at + 3)));
    }
    int32_t left() const
    {
        return std::max(static_cast<int32_t>(data.size()) - back, 0);
    }
    // The next unread byte of the buffer, or the next free one.
    char *next() const
    {
        return reinterpret_cast<char *>(buffer + 1) + buffer->position;
    }
    // Bytes that the buffer is ahead of the stream.
    int32_t unread() const
    {
        return buffer && buffer->mode == IO_MODE_READ ? buffer->count - buffer->position : 0;
    }
    std::string pending() const
    {
        const bool any = buffer && buffer->mode == IO_MODE_WRITE;
        return any ? std::string(next() - buffer->position, next()) : "";
    }

    // The outcome of a call that could give `most`. The text of it takes long to put together.
    int32_t finish(const char *call, int32_t number, int32_t most, const char *whence = "")
    {
        auto &outcomes = leader->script;
        std::string *const calls = leader->journal;
        const int32_t result = outcomes.empty() ? most : std::min(outcomes[0], most);
        outcomes.erase(outcomes.begin(), outcomes.begin() + !outcomes.empty());
        if (calls)
            *calls += (calls->empty() ? "" : ", ") + name + call + std::to_string(number) + whence +
                      " -> " + std::to_string(result);
        return result;
    }

  private:
    static int32_t read_back(io_stream *stream, void *dest, int32_t bytes)
    {
        auto &s = *static_cast<scripted_stream *>(stream);
        const bool fails = s.fails_at_end && s.left() == 0;
        s.failed = s.failed || fails;
        const int32_t most = fails ? -1 : std::min({bytes, s.left(), s.longest_read});
        const int32_t moved = s.finish("read ", bytes, most);
        if (moved > 0) {
            memcpy(dest, s.data.data() + s.back, static_cast<size_t>(moved));
            s.back += moved;
        }
        return moved;
    }
    static int32_t write_back(io_stream *stream, const void *source, int32_t bytes)
    {
        auto &s = *static_cast<scripted_stream *>(stream);
        const int32_t most = std::min(bytes, s.longest_write);
        const int32_t moved = s.finish("write ", bytes, most);
        if (moved > s.left())
            s.data.resize(static_cast<size_t>(s.back + moved));
        if (moved > 0) {
            memcpy(s.data.data() + s.back, source, static_cast<size_t>(moved));
            s.back += moved;
        }
        return moved;
    }
    static int32_t seek_back(io_stream *stream, int32_t offset, int32_t whence)
    {
        auto &s = *static_cast<scripted_stream *>(stream);
        const int32_t bases[] = {0, s.back, static_cast<int32_t>(s.data.size())};
        const int32_t target = std::max<int32_t>(bases[whence] + offset, IO_FAILED);
        const char *const from[] = {" 0", " 1", " 2"};
        const int32_t result = s.finish("seek ", offset, target, from[whence]);
        s.back = result == IO_FAILED ? s.back : result;
        return result;
    }
};

#endif
