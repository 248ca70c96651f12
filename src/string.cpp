#include "tessel/string.h"

#include "char_set.h"

#include <stddef.h>
#include <string.h>

// The address `distance` bytes in front of `text`, which may lie outside of its object and is then
// not to be read: formed on integers, where it has a meaning.
static char *address_before(char *text, uintptr_t distance)
{
    return reinterpret_cast<char *>(reinterpret_cast<uintptr_t>(text) - distance);
}

// Index of the first character of `text` at which a scan stops: a member of `stop`, which the
// terminator always is.
static size_t find_forward(const char *text, const char_set &stop)
{
    size_t index = 0;
    while (!char_set_has(stop, text[index]))
        index++;
    return index;
}

// The set of the characters at which a scan stops. The terminator ends every forward scan; a
// backward one asks for the sense that the flags give.
static char_set stop_set(const char *set, uint32_t flags)
{
    const char_set members = char_set_or_white(set);
    return flags & STR_COMPLEMENT ? char_set_complement(members) : members;
}

// Outcome of a forward scan: the index of its position, -1 for the one before the text.
struct token_position {
    bool found;
    ptrdiff_t index;
};

static token_position find_token(const char *text, const char *set, uint32_t flags)
{
    if (!text || !*text)
        return {false, 0};
    char_set stop = stop_set(set, flags);
    char_set_add(stop, '\0');
    const size_t end = find_forward(text, stop);
    if (flags & STR_COMPLEMENT)
        return {true, static_cast<ptrdiff_t>(end) - 1};
    return {text[end] != '\0', static_cast<ptrdiff_t>(end)};
}

char *strToken(char *text, const char *set, uint32_t flags)
{
    const token_position position = find_token(text, set, flags);
    if (!position.found)
        return nullptr;
    if (position.index < 0)
        return flags & STR_KEEP ? address_before(text, 1) : text;
    if (flags & STR_KEEP)
        return text + position.index;
    text[position.index] = '\0';
    return text + position.index + 1;
}

int32_t strTokenIndex(const char *text, const char *set, uint32_t flags)
{
    const token_position position = find_token(text, set, flags);
    return position.found ? static_cast<int32_t>(position.index) : -1;
}

char *strBackwardToken(char *text, int32_t length, const char *set, uint32_t flags)
{
    if (!text)
        return nullptr;
    if (length == 0 && !(flags & STR_FROM_END)) {
        const size_t measured = strlen(text);
        length = measured <= INT32_MAX ? static_cast<int32_t>(measured) : 0;
    }
    if (length <= 0)
        return nullptr;
    char *const start = flags & STR_FROM_END ? text - length : text;

    const char_set stop = stop_set(set, flags);
    char *position = start + length;
    while (position > start && !char_set_has(stop, position[-1]))
        position--;
    // `position` is now behind the stop character, or at the start where there is none.
    if (flags & STR_COMPLEMENT) {
        if (*position == '\0')
            return nullptr;
    } else {
        if (position == start)
            return nullptr;
        position--;
    }
    if (!(flags & STR_KEEP))
        *position = '\0';
    return position + 1;
}

int32_t strBackwardTokenIndex(const char *text, int32_t length, const char *set, uint32_t flags)
{
    // Nothing is written with STR_KEEP.
    char *const found = strBackwardToken(const_cast<char *>(text), length, set, flags | STR_KEEP);
    if (!found)
        return -1;
    const char *const start = flags & STR_FROM_END ? text - length : text;
    return static_cast<int32_t>(found - 1 - start);
}

int32_t strCountToken(const char *text, const char *set)
{
    const char_set members = char_set_of(set);
    uint32_t count = 0;
    for (; *text; text++)
        count += char_set_has(members, *text);
    return static_cast<int32_t>(count);
}

// For each character of a set its replacement, in one table beside the set itself.
struct replacement_map {
    char_set members;
    char replacement[256];
};

static void fill_map(replacement_map &map, const char *set, const char *replacements)
{
    map.members = {};
    for (; *set; set++) {
        if (!char_set_has(map.members, *set)) {
            char_set_add(map.members, *set);
            map.replacement[static_cast<unsigned char>(*set)] = *replacements;
        }
        if (replacements[1])
            replacements++;
    }
}

char *strReplaceToken(char *text, const char *set, const char *replacements, int32_t count)
{
    if (!*replacements)
        return text;
    replacement_map map;
    fill_map(map, set, replacements);

    const bool backward = count < 0;
    uint64_t left = UINT64_MAX;
    if (count != 0)
        left = static_cast<uint64_t>(backward ? -int64_t{count} : count);
    const size_t length = strlen(text);
    for (size_t i = 0; i < length; i++) {
        char &c = text[backward ? length - 1 - i : i];
        if (!char_set_has(map.members, c))
            continue;
        c = map.replacement[static_cast<unsigned char>(c)];
        if (--left == 0)
            break;
    }
    return text;
}
