// Sets of characters with a membership test that costs the same for every set.
#ifndef TESSEL_SRC_CHAR_SET_H
#define TESSEL_SRC_CHAR_SET_H

#include <stdint.h>

inline constexpr char str_white_char[] = " \t\r\n";

struct char_set {
    uint64_t words[4];
};

constexpr void char_set_add(char_set &set, char c)
{
    const auto index = static_cast<unsigned char>(c);
    set.words[index / 64] |= uint64_t{1} << index % 64;
}

constexpr bool char_set_has(const char_set &set, char c)
{
    const auto index = static_cast<unsigned char>(c);
    return (set.words[index / 64] >> index % 64 & 1) != 0;
}

constexpr char_set char_set_complement(const char_set &set)
{
    return {{~set.words[0], ~set.words[1], ~set.words[2], ~set.words[3]}};
}

// The set of the characters of a text. Its terminator is a member, as with strchr.
constexpr char_set char_set_of(const char *members)
{
    char_set set = {{1, 0, 0, 0}};
    for (; *members; members++)
        char_set_add(set, *members);
    return set;
}

inline constexpr char_set white_set = char_set_of(str_white_char);

// The set of a text, or white space for none.
inline char_set char_set_or_white(const char *members)
{
    return members ? char_set_of(members) : white_set;
}

#endif
