// Input for the text benchmarks.
#ifndef TESSEL_BENCH_COMMENTED_TEXT_H
#define TESSEL_BENCH_COMMENTED_TEXT_H

#include <cstdint>
#include <random>
#include <string>

// Settings with comments, as configuration files have them.
inline std::string commented_text(size_t bytes)
{
    std::mt19937 random(20260117);
    const auto below = [&](uint32_t bound) { return static_cast<uint32_t>(random() % bound); };
    std::string text;
    text.reserve(bytes + 256);
    const auto word = [&] {
        for (uint32_t length = 2 + below(9); length > 0; length--)
            text += static_cast<char>('a' + below(26));
    };
    while (text.size() < bytes) {
        switch (below(8)) {
        case 0:
            text += "# ";
            for (int i = 0; i < 6; i++, text += ' ')
                word();
            break;
        case 1:
            text += "/* ";
            for (int i = 0; i < 8; i++) {
                word();
                text += i == 4 ? "\n   " : " ";
            }
            text += "*/";
            break;
        default:
            text.append(below(3) * 4, ' ');
            word();
            text += " = ";
            for (uint32_t values = 1 + below(4); values > 0; values--) {
                word();
                if (values > 1)
                    text += ' ';
            }
            if (below(8) == 0)
                text += " # a note";
            break;
        }
        text += below(4) == 0 ? "\r\n" : "\n";
    }
    return text;
}

// Quoted strings of a few words, one a line, with an escape behind every sixth word or so.
inline std::string quoted_text(size_t bytes)
{
    std::mt19937 random(20260117);
    const auto below = [&](uint32_t bound) { return static_cast<uint32_t>(random() % bound); };
    constexpr const char *escapes[] = {"\\n", "\\t", "\\\"", "\\\\"};
    std::string text;
    text.reserve(bytes + 256);
    while (text.size() < bytes) {
        text += '"';
        for (uint32_t words = 1 + below(10); words > 0; words--) {
            for (uint32_t length = 2 + below(9); length > 0; length--)
                text += static_cast<char>('a' + below(26));
            if (below(6) == 0)
                text += escapes[below(4)];
            else if (words > 1)
                text += ' ';
        }
        text += "\"\n";
    }
    return text;
}

#endif
