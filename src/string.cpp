#include "tessel/string.h"

#include "tessel/mem.h"

#include "bytes.h"
#include "char_set.h"
#include "platform.h"
#include "string_internal.h"

#include <stddef.h>
#include <string.h>

constexpr size_t word = sizeof(void *);

static_assert(offsetof(str_compare_class, text) == 0 &&
              offsetof(str_compare_class, offset) == word &&
              offsetof(str_compare_class, flags) == word + 4 &&
              offsetof(str_compare_class, found) == word + 8 &&
              sizeof(str_compare_class) == 2 * word + 8);

// Building

// A place for `need` bytes: the target if it has the room, or a new block with extra room.
static char *place_for(char *target, uint64_t need, int32_t room)
{
    if (room < 0)
        return nullptr;
    if (target)
        return need <= static_cast<uint32_t>(room) ? target : nullptr;
    if (need > UINT32_MAX - static_cast<uint32_t>(room))
        return nullptr;
    return static_cast<char *>(memAlloc(static_cast<uint32_t>(need) + static_cast<uint32_t>(room)));
}

char *strCopy(char *target, const char *text, int32_t room)
{
    return strUnion(target, text, nullptr, room);
}

char *strUnion(char *target, const char *left, const char *right, int32_t room)
{
    if (!left && !right)
        return nullptr;
    const size_t left_length = left ? strlen(left) : 0;
    const size_t right_length = right ? strlen(right) : 0;
    char *const place = place_for(target, uint64_t{left_length} + right_length + 1, room);
    if (!place)
        return nullptr;
    // Moved, since a caller that appends has `left` at the target already.
    if (left_length > 0)
        memmove(place, left, left_length);
    if (right_length > 0)
        memmove(place + left_length, right, right_length);
    place[left_length + right_length] = '\0';
    return place;
}

// A new block for a text that shall grow by an insertion, and the end of its old one. Stores the
// new capacity, which is reckoned from both lengths and the extra room wanted.
static char *replace_text(char *text, size_t length, size_t inserted, int32_t extra,
                          int32_t *capacity)
{
    const int64_t wanted = static_cast<int64_t>(uint64_t{length} + inserted + 1) + extra;
    // A negative extra room can make the block too small for what it is for.
    if (wanted > INT32_MAX || wanted < static_cast<int64_t>(inserted))
        return nullptr;
    *capacity = static_cast<int32_t>(wanted);
    char *const block = strCopy(nullptr, text, *capacity);
    if (block)
        memFree(text);
    return block;
}

char *strInsert(char *text, const char *insertion, int32_t position, int32_t capacity,
                int32_t *roomRef)
{
    int32_t extra = 0;
    if (roomRef) {
        extra = *roomRef;
        *roomRef = 0;
    }
    if (!text || !insertion)
        return text;
    if (capacity < 0)
        capacity = INT32_MAX;

    const size_t length = strlen(text);
    const size_t inserted = strlen(insertion);
    if (uint64_t{length} + inserted >= static_cast<uint32_t>(capacity)) {
        if (!roomRef)
            return nullptr;
        text = replace_text(text, length, inserted, extra, roomRef);
        if (!text)
            return nullptr;
    }
    const bool inside = position >= 0 && static_cast<uint32_t>(position) < length;
    const size_t index = inside ? static_cast<uint32_t>(position) : length;
    char *const place = text + index;
    memmove(place + inserted, place, length - index + 1);
    // The insertion may be the end of `text` itself, from the position or before it, when that stays
    // where it is: its terminator has moved away, but not the characters that are copied.
    memmove(place, insertion, inserted); // NOLINT(bugprone-not-null-terminated-result)
    return text;
}

char *strAppend(char *text, const char *insertion, int32_t capacity, int32_t *roomRef)
{
    return strInsert(text, insertion, -1, capacity, roomRef);
}

// Comparison

static bool same_text(const char *left, const char *right, uint32_t flags)
{
    if (flags & STR_NO_CASE)
        return platform_compare_no_case(left, right) == 0;
    return strcmp(left, right) == 0;
}

int32_t strFind(const char *list, const char *text, uint32_t flags)
{
    for (uint32_t index = 0; *list; index++) {
        if (same_text(list, text, flags))
            return static_cast<int32_t>(index);
        list += strlen(list) + 1;
    }
    return -1;
}

int32_t str_compare_class_str(const void *node, str_compare_class *record)
{
    const char *text = static_cast<const char *>(node) + record->offset;
    if (record->flags & STR_POINTER)
        text = load<const char *>(text);
    if (!text || !same_text(text, record->text, record->flags))
        return 0;
    record->found = const_cast<void *>(node);
    return 1;
}

// Tokens

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
