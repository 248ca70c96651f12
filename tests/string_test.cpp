#include "tessel/string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <stdlib.h>
#include <string.h>
#include <string>
#include <utility>
#include <vector>

using namespace std::string_literals; // for texts that hold NUL characters

namespace
{

// The text that a call leaves, and the index of its result in it.
using outcome = std::pair<std::string, intptr_t>;
constexpr intptr_t nothing = -99;

// Calls with a copy that is just as large as the string: a sanitizer sees what goes beyond.
template <typename procedure>
outcome apply(const std::string &text, const procedure &call)
{
    std::vector<char> room(text.c_str(), text.c_str() + text.size() + 1);
    const char *const result = call(room.data());
    // The address one before the text is a result as well.
    const intptr_t index =
        reinterpret_cast<intptr_t>(result) - reinterpret_cast<intptr_t>(room.data());
    return {{room.data(), text.size()}, result ? index : nothing};
}

bool is_member(char c, const char *set)
{
    return strchr(set ? set : " \t\r\n", c) != nullptr;
}

outcome forward_model(std::string text, const char *set, uint32_t flags)
{
    const bool skips = flags & 1;
    size_t end = 0;
    while (end < text.size() && is_member(text[end], set) == skips)
        end++;
    if (text.empty() || (!skips && end == text.size()))
        return {text, nothing};
    const intptr_t position = static_cast<intptr_t>(end) - skips;
    if (flags & 2)
        return {text, position};
    if (position >= 0)
        text[static_cast<size_t>(position)] = '\0';
    return {text, position + 1};
}

outcome backward_model(std::string text, size_t start, size_t end, const char *set, uint32_t flags)
{
    const bool skips = flags & 1;
    size_t at = end;
    while (at > start && is_member(text[at - 1], set) == skips)
        at--;
    if (start == end || (skips ? text[at] == '\0' : at == start))
        return {text, nothing};
    at -= !skips;
    text[at] = flags & 2 ? text[at] : '\0';
    return {text, static_cast<intptr_t>(at) + 1};
}

std::vector<std::string> all_texts(const std::string &alphabet, size_t longest)
{
    std::vector<std::string> texts = {""};
    for (size_t i = 0; texts[i].size() < longest; i++)
        for (const char c : alphabet)
            texts.push_back(texts[i] + c);
    return texts;
}

const char *const sets[] = {nullptr, "", ",", "b,", " a"};

TEST(string, tokens_of_known_texts)
{
    const struct {
        const char *in;
        uint32_t flags;
        intptr_t first, last;
    } rows[] = {{"", 0, nothing, nothing}, {"", 1, nothing, nothing}, {"abc", 0, nothing, nothing},
                {"abc", 1, 0, nothing},    {"abc", 3, -1, nothing},   {"a b c", 0, 2, 4},
                {"a b c", 2, 1, 4},        {"   ab", 1, 3, nothing},  {"   ab", 3, 2, nothing},
                {"   ", 1, 3, 1},          {"abc  ", 1, 0, 4},        {"abc  ", 3, -1, 4}};
    for (const auto &row : rows) {
        const auto first = [&](char *text) { return strToken(text, nullptr, row.flags); };
        const auto last = [&](char *text) { return strBackwardToken(text, 0, nullptr, row.flags); };
        EXPECT_EQ(apply(row.in, first).second, row.first) << row.in << " flags " << row.flags;
        EXPECT_EQ(apply(row.in, last).second, row.last) << row.in << " flags " << row.flags;
    }
    EXPECT_EQ(strToken(nullptr, "a", 1), nullptr);
    EXPECT_EQ(strTokenIndex(nullptr, "a", 1), -1);
    EXPECT_EQ(strBackwardToken(nullptr, 3, "a", STR_FROM_END), nullptr);
    EXPECT_EQ(strBackwardTokenIndex(nullptr, 0, "a", 0), -1);
    char text[] = "a b";
    EXPECT_EQ(strBackwardToken(text, -1, nullptr, 0), nullptr);
    EXPECT_EQ(strBackwardToken(text + 3, -1, nullptr, STR_FROM_END), nullptr);
}

TEST(string, first_tokens_of_all_short_texts)
{
    for (const std::string &text : all_texts("ab ,\n", 5)) {
        for (const char *const set : sets) {
            for (uint32_t flags = 0; flags < 8; flags++) {
                const auto call = [&](char *copy) { return strToken(copy, set, flags); };
                ASSERT_EQ(apply(text, call), forward_model(text, set, flags)) << "flags " << flags;
                const intptr_t index = forward_model(text, set, flags | 2).second;
                ASSERT_EQ(strTokenIndex(text.c_str(), set, flags), std::max<intptr_t>(index, -1));
            }
        }
    }
}

void check_stretch(const std::string &text, size_t start, size_t end, const char *set,
                   uint32_t flags)
{
    const auto length = static_cast<int32_t>(end - start);
    const size_t from = flags & STR_FROM_END ? end : start;
    if (length == 0 && !(flags & STR_FROM_END))
        end += strlen(text.c_str() + start);
    const auto call = [&](char *copy) { return strBackwardToken(copy + from, length, set, flags); };
    const outcome expected = backward_model(text, start, end, set, flags);
    ASSERT_EQ(apply(text, call), expected) << start << '-' << end << " flags " << flags;
    const intptr_t index =
        std::max<intptr_t>(expected.second - 1 - static_cast<intptr_t>(start), -1);
    const auto find = [&](char *copy) {
        EXPECT_EQ(strBackwardTokenIndex(copy + from, length, set, flags), index);
        return copy;
    };
    ASSERT_EQ(apply(text, find), outcome(text, 0));
}

// Of stretches from and up to every place of a text, which may hold NUL characters.
TEST(string, last_tokens_of_all_short_stretches)
{
    for (const std::string &text : all_texts("a ,\0"s, 4))
        for (const char *const set : sets)
            for (const uint32_t flags : {0u, 1u, 2u, 3u, 0x10u, 0x11u, 0x12u, 0x1cu, 0x13u})
                for (size_t start = 0; start <= text.size(); start++)
                    for (size_t end = start; end <= text.size(); end++)
                        check_stretch(text, start, end, set, flags);
}

TEST(string, replaces_and_counts)
{
    const std::string replacements[] = {"x", "xy", "b,a", "ba", "xyzt", ""};
    for (const std::string &text : all_texts("ab,", 5)) {
        for (const std::string set : {"", "a", "ab", "ba,", "aab", "x"}) {
            for (size_t n = 0; n < 8 * std::size(replacements); n++) {
                const std::string &with = replacements[n / 8];
                const int32_t count =
                    std::to_array({0, 1, -1, 2, -2, 9, INT32_MAX, INT32_MIN})[n % 8];
                std::string expected = text;
                int32_t members = 0;
                for (size_t i = 0; i < text.size(); i++) {
                    char &c = expected[count > 0 ? i : text.size() - 1 - i];
                    const size_t at = set.find(c);
                    if (at == std::string::npos)
                        continue;
                    members++;
                    if (!with.empty() && (count == 0 || members <= std::abs(int64_t{count})))
                        c = with[std::min(at, with.size() - 1)];
                }
                const auto call = [&](char *copy) {
                    return strReplaceToken(copy, set.c_str(), with.c_str(), count);
                };
                ASSERT_EQ(apply(text, call), outcome(expected, 0))
                    << text << ' ' << set << ' ' << with << ' ' << count;
                ASSERT_EQ(strCountToken(text.c_str(), set.c_str()), members) << text << ' ' << set;
            }
        }
    }
}

} // namespace
