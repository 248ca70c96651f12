#include "tessel/string.h"

#include "tessel/mem.h"

#include "bytes.h"
#include "char_set.h"
#include "platform.h"
#include "string_internal.h"

#include <stddef.h>
#include <string.h>

static_assert(offsetof(str_compare_class, text) == 0 &&
              offsetof(str_compare_class, offset) == pointer_size &&
              offsetof(str_compare_class, flags) == pointer_size + 4 &&
              offsetof(str_compare_class, found) == pointer_size + 8 &&
              sizeof(str_compare_class) == 2 * pointer_size + 8);

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
    // The insertion may be the end of `text` itself, from the position or before it, when that
    // stays where it is: its terminator has moved away, but not the characters that are copied.
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
    // The C library looks at many characters at a time: in words of six characters a loop over single
    // ones, which ends in a branch that nothing foretells, takes 1.3 times as long.
    const char *const members = set ? set : str_white_char;
    if (flags & STR_COMPLEMENT)
        return {true, static_cast<ptrdiff_t>(strspn(text, members)) - 1};
    const size_t end = strcspn(text, members);
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

// Paths

static constexpr char str_dirsep_token[] = ":\\/";

static bool is_slash(char c)
{
    return c == '/' || c == '\\';
}

char *strGetCompatiblePath(char *path)
{
    char *at = path;
    if (path[0] == '/' && path[1] == '/' && path[2] && path[3]) {
        path[0] = path[2];
        path[1] = ':';
        path[2] = '\\';
        at = path + 3;
        memmove(at, at + 1, strlen(at));
    }
    for (; *at; at++) {
        if (*at == '/') {
            *at = '\\';
        } else if (*at == '\\' && (at[1] == ' ' || at[1] == '\\')) {
            *at = at[1];
            at++;
        }
    }
    return path;
}

int32_t strAppendDirectorySeparator(char *path)
{
    const size_t measured = strlen(path);
    if (measured >= INT32_MAX)
        return -1;
    const int32_t length = static_cast<int32_t>(measured);
    if (length == 0 || strchr(str_dirsep_token, path[length - 1]))
        return length;
    const char *const behind = strBackwardToken(path, length, "\\/", STR_KEEP);
    path[length] = behind ? behind[-1] : '\\';
    path[length + 1] = '\0';
    return length + 1;
}

const char *strGetDirectorySeparator(void)
{
    return str_dirsep_token;
}

const char *strGetFileExtension(const char *path)
{
    return strBackwardToken(const_cast<char *>(path), 0, ".", STR_KEEP);
}

const char *strGetFileName(const char *path)
{
    const char *const name =
        strBackwardToken(const_cast<char *>(path), 0, str_dirsep_token, STR_KEEP);
    return name ? name : path;
}

void strSplitPath(const char **directoryRef, const char **nameRef, const char **extensionRef,
                  char *path)
{
    const char *const end = path + strlen(path);
    const char *const extension = strBackwardToken(path, 0, ".", 0);
    if (extensionRef)
        *extensionRef = extension ? extension : end;
    const char *const name = strBackwardToken(path, 0, str_dirsep_token, 0);
    if (directoryRef)
        *directoryRef = name ? path : "";
    if (nameRef)
        *nameRef = name ? name : path;
}

int32_t strAbsolutePath(const char *path)
{
    return is_slash(path[0]) || (path[0] && path[1] == ':' && is_slash(path[2]));
}

// The text of printed numbers

// The end of a mantissa without the zeros behind its last significant digit.
static char *reduced_end(char *mantissa, char *end, uint32_t style)
{
    char *behind_point = end;
    while (behind_point - mantissa > 1 && behind_point[-1] != '.')
        behind_point--;
    // A point in the first place is not looked at.
    if (behind_point - mantissa <= 1)
        return end;
    char *cut = end;
    while (cut[-1] == '0')
        cut--;
    if (cut > behind_point)
        return cut;
    if (style == STR_POINT_DROP)
        return behind_point - 1;
    const bool has_zero = behind_point < end;
    return style == STR_POINT_KEEP || !has_zero ? behind_point : behind_point + 1;
}

static bool is_negative_zero(const char *mantissa, size_t length)
{
    static constexpr char longest[] = "-0.0";
    return length >= strlen("-0") && length < sizeof longest &&
           memcmp(mantissa, longest, length) == 0;
}

// The length of an exponent reduced in place, from the letter on; 0 if all of it goes.
static size_t reduce_exponent(char *letter, uint32_t style)
{
    char *const text = letter + 1;
    const size_t length = strlen(text);
    if (style >= STR_EXPONENT_KEEP)
        return 1 + length;
    const size_t run = strspn(text, "+-0");
    if (run == length) {
        if (style == STR_EXPONENT_DROP || length == 0)
            return 0;
        text[0] = text[length - 1];
        return 2;
    }
    const bool negative = memchr(text, '-', run) != nullptr;
    if (negative)
        text[0] = '-';
    memmove(text + negative, text + run, length - run);
    return 1 + negative + (length - run);
}

char *strReduceZero(char *text, uint32_t format)
{
    char *const text_end = text + strlen(text);
    char *const behind_letter = strBackwardToken(text, 0, "eE", STR_KEEP);
    char *const mantissa_end = behind_letter ? behind_letter - 1 : text_end;
    char *start = text;
    char *end = reduced_end(start, mantissa_end, format & STR_POINT_MASK);
    if (is_negative_zero(start, static_cast<size_t>(end - start)))
        start++;
    const size_t length = static_cast<size_t>(end - start);
    memmove(text, start, length);
    end = text + length;
    if (behind_letter) {
        const size_t exponent = reduce_exponent(mantissa_end, format & STR_EXPONENT_MASK);
        memmove(end, mantissa_end, exponent);
        end += exponent;
    }
    *end = '\0';
    return text;
}

// Option parsing

static_assert(offsetof(str_option, flags) == pointer_size &&
              offsetof(str_option, cursor) == 2 * pointer_size &&
              offsetof(str_option, value) == 3 * pointer_size &&
              offsetof(str_option, pushback) == 4 * pointer_size &&
              offsetof(str_option, current) == 5 * pointer_size &&
              sizeof(str_option) == 6 * pointer_size);

char *stroptArgv(str_option *option)
{
    char **place = static_cast<char **>(option->cursor);
    if (*place)
        place++;
    option->cursor = place;
    return *place;
}

char *stroptTable(str_option *option)
{
    char **const place = static_cast<char **>(option->cursor);
    if (*place)
        option->cursor = place + 1;
    return *place;
}

// The next argument: one that was fetched too early, or one of the caller's.
static char *str_option_getarg(str_option *option)
{
    char *const argument = option->pushback;
    if (!argument)
        return option->fetch(option);
    if (argument == STROPT_EXHAUSTED)
        return nullptr;
    option->pushback = nullptr;
    return argument;
}

char *stroptGetString(str_option *option)
{
    if (option->value)
        return option->value;
    option->current = str_option_getarg(option);
    return option->current;
}

// A character as results and orders have it.
static int32_t character_code(char character)
{
    const auto code = static_cast<signed char>(character);
    return code; // NOLINT(bugprone-signed-char-misuse,cert-str34-c)
}

// Whether a character stands in the head of an entry, in front of the first space.
static bool str_option_find_delimiter(const char *entry, char character)
{
    for (; *entry && *entry != ' '; entry++) {
        if (*entry == character)
            return true;
    }
    return false;
}

// Membership in a set as short as those of prefixes and delimiters are.
static bool is_listed(const char *set, char character)
{
    for (; *set; set++) {
        if (*set == character)
            return true;
    }
    return false;
}

// What is looked up in the table. A match changes the record, and only the match that ends the
// lookup does.
struct str_option_search {
    str_option *option;
    const char *delimiters;
    char *text;
};

// The name of an entry, which begins behind the first space if there is one. A linear search does
// this for every entry that it passes; a loop in place of strchr makes it a fifth slower.
static const char *entry_name(const char *entry)
{
    const char *const space = strchr(entry, ' ');
    return space ? space + 1 : entry;
}

// Sets up the value of a match. `value` is the text behind the delimiter that ended the name, or
// null where the text ended with the name.
static void set_value(str_option *option, char *value)
{
    const bool following = (option->flags & STROPT_FOLLOWING) != 0;
    const bool missing = !value || !*value;
    if (missing && following)
        option->flags |= STROPT_WANTS_VALUE;
    // With more arguments to follow an empty text says that the delimiter has been seen.
    option->value = missing && !following ? nullptr : value;
}

// Where the text and the name of an entry first differ, or both end.
struct entry_difference {
    char *text;
    const char *name;
};

static entry_difference find_difference(char *text, const char *name)
{
    while (*text && *text == *name) {
        text++;
        name++;
    }
    return {text, name};
}

// Whether an entry is the one that is looked up, with its value set up if it is. Its name must end
// where the text ends or has a delimiter, one of its own head and of the set, if there is a set.
static inline bool match_entry(const str_option_search &search, const char *entry,
                               entry_difference &difference)
{
    const char *const name = entry_name(entry);
    difference = find_difference(search.text, name);
    if (*difference.name)
        return false;
    char *const delimiter = difference.text;
    const bool has_head = name != entry;
    if (*delimiter) {
        const bool accepted = has_head && str_option_find_delimiter(entry, *delimiter) &&
                              (!search.delimiters || is_listed(search.delimiters, *delimiter));
        if (!accepted)
            return false;
    }
    if (has_head)
        set_value(search.option, *delimiter ? delimiter + 1 : nullptr);
    return true;
}

// The place of an entry relative to the text: 1 behind it, -1 before it, 0 a match. A delimiter in
// the text counts as its end, so that "name=value" stands where "name" does; an entry of that name
// that does not accept the delimiter lies before it. There is a set of delimiters in every search
// by halving.
static int32_t str_option_compare(const void *entryRef, const void *key)
{
    const str_option_search *const search = static_cast<const str_option_search *>(key);
    entry_difference difference;
    if (match_entry(*search, load<const char *>(entryRef), difference))
        return 0;
    const int32_t in_text = character_code(*difference.text);
    const int32_t in_name = character_code(*difference.name);
    if (!in_text)
        return 1;
    if (is_listed(search->delimiters, *difference.text))
        return in_name ? 1 : -1;
    return in_text > in_name ? -1 : 1;
}

// One call of the parser, which passes through the steps below.
struct option_parse {
    str_option *option;
    const char *prefixes;
    const char *delimiters;
    const char *const *table;
    uint32_t count;
    uint32_t flags; // as they were at the start of the call
    char *text;     // what is left of the argument
    int32_t result;
};

enum option_step {
    step_prefix,
    step_no_prefix,
    step_lookup,
    step_short,
    step_finish,
    step_end // the arguments have run out, nothing is left to do
};

static option_step begin(option_parse &parse)
{
    str_option *const option = parse.option;
    if (parse.flags & STROPT_DASH)
        parse.prefixes = "-";
    if (parse.flags & STROPT_EQUALS)
        parse.delimiters = "=";
    if (parse.flags & STROPT_IN_CLUSTER) {
        parse.text = option->value;
        if (parse.text)
            return step_short;
        option->flags &= ~uint32_t{STROPT_IN_CLUSTER};
    }
    option->current = str_option_getarg(option);
    parse.text = option->current;
    if (!parse.text) {
        parse.result = STROPT_END;
        return step_end;
    }
    option->value = nullptr;
    return parse.prefixes ? step_prefix : step_no_prefix;
}

static option_step take_value_character(option_parse &parse)
{
    parse.result = STROPT_VALUE | character_code(*parse.text);
    parse.option->value = parse.text + 1;
    return step_finish;
}

static option_step take_prefix(option_parse &parse)
{
    const char prefix = *parse.text++;
    if (!parse.table)
        return step_short;
    if (!(parse.flags & STROPT_DOUBLED))
        return step_lookup;
    if (*parse.text != prefix)
        return step_short;
    parse.text++;
    return step_lookup;
}

static option_step scan_prefixes(option_parse &parse)
{
    bool values = false;
    for (const char *prefix = parse.prefixes; *prefix; prefix++) {
        if (*prefix == ' ')
            values = true;
        else if (*prefix == *parse.text)
            return values ? take_value_character(parse) : take_prefix(parse);
    }
    return step_no_prefix;
}

static option_step take_plain(option_parse &parse)
{
    if (!parse.prefixes) {
        parse.flags &= ~uint32_t{STROPT_DOUBLED};
        return step_lookup;
    }
    if (!(parse.flags & STROPT_PLAIN)) {
        parse.result = STROPT_BARE;
        return step_finish;
    }
    return parse.flags & STROPT_DOUBLED ? step_short : step_lookup;
}

// Gets the value of an entry just matched from the arguments behind it. Behind a delimiter the next
// argument is the value. Behind the name alone, the next one decides: it may bring the delimiter.
static void follow_up(str_option *option, const char *entry)
{
    if (!(option->flags & STROPT_WANTS_VALUE))
        return;
    option->flags &= ~uint32_t{STROPT_WANTS_VALUE};
    if (!option->value) {
        char *const next = str_option_getarg(option);
        if (!next) {
            option->pushback = STROPT_EXHAUSTED;
            return;
        }
        if (!str_option_find_delimiter(entry, *next)) {
            option->pushback = next;
            return;
        }
        if (next[1]) {
            option->value = next + 1;
            return;
        }
    }
    option->value = str_option_getarg(option);
    if (!option->value)
        option->pushback = STROPT_EXHAUSTED;
}

// Finds the entry that the text names. The linear search is a loop with the comparison inline,
// since most entries are passed at their first character: with memLinSearch() it takes half as long
// again.
static const char *const *find_entry(const option_parse &parse)
{
    const str_option_search search = {parse.option, parse.delimiters, parse.text};
    if (parse.flags & STROPT_SORTED && parse.delimiters)
        return static_cast<const char *const *>(memBinSearch(
            parse.table, parse.count, sizeof *parse.table, &search, str_option_compare, nullptr));
    entry_difference difference;
    for (uint32_t index = 0; index < parse.count; index++) {
        if (match_entry(search, parse.table[index], difference))
            return parse.table + index;
    }
    return nullptr;
}

static option_step look_up(option_parse &parse)
{
    const char *const *const entry = find_entry(parse);
    if (entry) {
        follow_up(parse.option, *entry);
        parse.result = STROPT_ENTRY | static_cast<int32_t>(entry - parse.table);
        return step_finish;
    }
    if (!(parse.flags & STROPT_DOUBLED))
        return step_short;
    parse.option->value = parse.text;
    parse.result = STROPT_ERROR;
    return step_finish;
}

static option_step take_short(option_parse &parse)
{
    str_option *const option = parse.option;
    if (!*parse.text) {
        parse.result = parse.flags & STROPT_LONE_OK ? STROPT_LONE : STROPT_ERROR;
        return step_finish;
    }
    parse.result = character_code(*parse.text++);
    option->value = *parse.text ? parse.text : nullptr;
    if (option->value && parse.flags & STROPT_CLUSTERS)
        option->flags |= STROPT_IN_CLUSTER;
    else
        option->flags &= ~uint32_t{STROPT_IN_CLUSTER};
    return step_finish;
}

static option_step finish(option_parse &parse)
{
    if (parse.flags & STROPT_PLAIN_ONCE)
        parse.option->flags &= ~uint32_t{STROPT_PLAIN | STROPT_PLAIN_ONCE};
    return step_end;
}

int32_t stroptGetOption(str_option *option, const char *prefixes, const char *delimiters,
                        const char *const *table, uint32_t count)
{
    option_parse parse = {option,        prefixes, delimiters, table, table ? count : 0,
                          option->flags, nullptr,  0};
    option_step step = begin(parse);
    for (;;) {
        switch (step) {
        case step_prefix:
            step = scan_prefixes(parse);
            break;
        case step_no_prefix:
            step = take_plain(parse);
            break;
        case step_lookup:
            step = look_up(parse);
            break;
        case step_short:
            step = take_short(parse);
            break;
        case step_finish:
            step = finish(parse);
            break;
        case step_end:
            return parse.result;
        }
    }
}
