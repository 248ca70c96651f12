// Words of 16 MB of text: splitting, trimming, counting and replacing, beside what the C library has.
#include "compare.h"

#include "tessel.h"

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace
{
using namespace bench;

constexpr size_t text_size = 16 << 20;
constexpr const char *white = " \t\r\n";

uint32_t below(std::mt19937 &random, uint32_t bound)
{
    return static_cast<uint32_t>(random() % bound);
}

void append_word(std::string &text, std::mt19937 &random)
{
    for (uint32_t length = 2 + below(random, 9); length > 0; length--)
        text += static_cast<char>('a' + below(random, 26));
}

// A separator in most places, and some runs.
std::string words()
{
    std::mt19937 random(20260117);
    std::string text;
    text.reserve(text_size + 64);
    while (text.size() < text_size) {
        append_word(text, random);
        for (uint32_t run = below(random, 8) == 0 ? 3 : 1; run > 0; run--)
            text += white[below(random, 4)];
    }
    return text;
}

// Of a split, each word counts with the first character of it.
struct split {
    uint64_t words = 0;
    uint64_t hash = 0;

    void add(const char *word)
    {
        words++;
        hash = hash * 31 + static_cast<unsigned char>(*word);
    }
};

split split_tessel(char *text)
{
    split found;
    while (text) {
        char *const rest = strToken(text, nullptr, 0);
        if (*text)
            found.add(text);
        text = rest;
    }
    return found;
}

split split_strtok(char *text)
{
    split found;
    char *rest;
    for (char *word = strtok_r(text, white, &rest); word; word = strtok_r(nullptr, white, &rest))
        found.add(word);
    return found;
}

split split_spans(char *text)
{
    split found;
    for (text += std::strspn(text, white); *text; text += std::strspn(text, white)) {
        found.add(text);
        text += std::strcspn(text, white);
        if (*text)
            *text++ = '\0';
    }
    return found;
}

void add_split(const std::string &side, split cut(char *))
{
    add({"Split 16 MB into words"}, side, [=] {
        return [=, text = words(), copy = std::string()](stopwatch &watch) mutable {
            copy = text;
            split found;
            watch.time([&] { found = cut(copy.data()); });
            return found.hash + found.words;
        };
    });
}

// Texts with white space on both sides, or none; a trim gives what is left, as a stretch.
constexpr size_t trimmed_texts = 100000;

std::vector<std::string> padded_texts()
{
    std::mt19937 random(20260118);
    std::vector<std::string> texts(trimmed_texts);
    for (std::string &text : texts) {
        text.append(below(random, 9), ' ');
        for (uint32_t count = 1 + below(random, 6); count > 0; count--) {
            append_word(text, random);
            text += ' ';
        }
        text.append(below(random, 9), '\t');
    }
    return texts;
}

struct stretch {
    size_t start, end;
};

stretch trim_tessel(const char *text)
{
    const int32_t start = strTokenIndex(text, nullptr, STR_COMPLEMENT) + 1;
    const int32_t end = strBackwardTokenIndex(text + start, 0, nullptr, STR_COMPLEMENT);
    return {static_cast<size_t>(start),
            end < 0 ? std::strlen(text) : static_cast<size_t>(start + end)};
}

stretch trim_spans(const char *text)
{
    const size_t start = std::strspn(text, white);
    size_t end = start + std::strlen(text + start);
    while (end > start && std::strchr(white, text[end - 1]))
        end--;
    return {start, end};
}

void add_trim(const std::string &side, stretch trim(const char *))
{
    add({"Trim a text", trimmed_texts}, side, [=] {
        return [=, texts = padded_texts()] {
            uint64_t sum = 0;
            for (const std::string &text : texts) {
                const stretch left = trim(text.c_str());
                sum = sum * 31 + left.start * 1000 + left.end;
            }
            return sum;
        };
    });
}

uint64_t count_tessel(const char *text)
{
    return static_cast<uint64_t>(strCountToken(text, white));
}

uint64_t count_spans(const char *text)
{
    uint64_t count = 0;
    for (text += std::strcspn(text, white); *text; text += std::strcspn(text, white)) {
        count++;
        text++;
    }
    return count;
}

void add_count(const std::string &side, uint64_t count(const char *))
{
    add({"Count the separators in 16 MB"}, side,
        [=] { return [=, text = words()] { return count(text.c_str()); }; });
}

// There and back.
constexpr const char *replacements = "_.,;";

void replace_tessel(char *text)
{
    strReplaceToken(text, white, replacements, 0);
    strReplaceToken(text, replacements, white, 0);
}

void replace_set(char *text, const char *set, const char *by)
{
    for (text += std::strcspn(text, set); *text; text += std::strcspn(text, set)) {
        *text = by[std::strchr(set, *text) - set];
        text++;
    }
}

void replace_spans(char *text)
{
    replace_set(text, white, replacements);
    replace_set(text, replacements, white);
}

void add_replace(const std::string &side, void replace(char *))
{
    add({"Replace the separators in 16 MB, and back"}, side, [=] {
        return [=, text = words(), original = words()](stopwatch &watch) mutable {
            watch.time([&] { replace(text.data()); });
            return text == original;
        };
    });
}
} // namespace

void bench::add_sides()
{
    add_split("tessel", split_tessel);
    add_split("strtok_r", split_strtok);
    add_split("strspn and strcspn", split_spans);
    add_trim("tessel", trim_tessel);
    add_trim("strspn and a loop", trim_spans);
    add_count("tessel", count_tessel);
    add_count("strcspn", count_spans);
    add_replace("tessel", replace_tessel);
    add_replace("strcspn", replace_spans);
}
