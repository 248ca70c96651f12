// Strings, tokens, paths and the text of numbers beside models, in blocks of exactly their size.
#include "fuzz_input.h"

static void build(std::string left, const std::string &right, uint32_t room, int32_t position)
{
    const block target(new char[room]), first = exactly(left + '\0'),
                                        second = exactly(right + '\0');
    const bool fits = left.size() + right.size() < room;
    const char *const joined = strUnion(target.get(), first.get(), second.get(), room);
    expect(joined == (fits ? target.get() : nullptr) && (!fits || left + right == joined));
    int32_t extra = room;
    char *const text = strCopy(nullptr, first.get(), room);
    char *const longer = strInsert(text, second.get(), position, left.size() + 1 + room, &extra);
    expect(left.insert(std::min<size_t>(position, left.size()), right) == longer);
    memFree(longer);
}

static void cut(const std::string &text, const std::string &used, size_t length, uint32_t flags)
{
    const bool complement = flags & STR_COMPLEMENT, from_end = flags & STR_FROM_END;
    const block place = exactly(text + '\0'), again = exactly(text + '\0');
    const block set = exactly(used + '\0');
    const std::string stretch = length > 0 || from_end ? text.substr(0, length) : text;
    // Indices of the positions; the first may be that in front of the text.
    size_t first = text.find_first_of(used), last = stretch.find_last_of(used);
    if (complement)
        first = std::min(text.find_first_not_of(used), text.size()) - 1;
    if (complement && !stretch.empty())
        last = stretch.find_last_not_of(used) + 1;
    const bool keep = flags & STR_KEEP, behind = last < text.size();
    const bool ahead = !text.empty() && (complement || first < text.size());
    const uintptr_t start = reinterpret_cast<uintptr_t>(place.get());
    expect(strTokenIndex(place.get(), set.get(), flags) == (ahead ? int32_t(first) : -1));
    const char *const token = strToken(place.get(), set.get(), flags);
    expect(reinterpret_cast<uintptr_t>(token) == (ahead ? start + int32_t(first) + !keep : 0));
    expect(text.substr(0, ahead && !keep && first + 1 ? first : text.size()) == place.get());
    char *const from = again.get() + (from_end ? length : 0);
    expect(strBackwardTokenIndex(from, length, set.get(), flags) == (behind ? int32_t(last) : -1));
    const char *const rest = strBackwardToken(from, length, set.get(), flags);
    expect(rest == (behind ? again.get() + last + 1 : nullptr));
    expect(text.substr(0, behind && !keep ? last : text.size()) == again.get());
}

static void change(const std::string &text, const std::string &other, int count, uint32_t format)
{
    const block path = exactly(text + '\0'), native = exactly(text + '\0');
    const block number = exactly(text + '\0'), set = exactly(other + '\0');
    const block closed = exactly(text + std::string(2, '\0'));
    const char *directory, *name, *extension;
    const size_t index = text.find_last_of(":\\/") + 1, length = text.size();
    expect(strGetFileName(path.get()) == path.get() + index);
    expect(strlen(strGetCompatiblePath(native.get())) <= length);
    const size_t longer = strAppendDirectorySeparator(closed.get());
    expect(longer == strlen(closed.get()) && *strGetFileName(closed.get()) == '\0');
    expect(strAbsolutePath(path.get()) <= (index > 0));
    expect(strlen(strReduceZero(number.get(), format)) <= length);
    expect((strCountToken(path.get(), set.get()) > 0) == (text.find_first_of(other) < length));
    expect(strReplaceToken(path.get(), set.get(), set.get(), count) == text);
    strSplitPath(&directory, &name, &extension, path.get());
    expect(strlen(directory) + strlen(name) + strlen(extension) + 2 >= length);
    const std::string printed = std::to_string(format * 0.125) + "e+0" + std::to_string(count & 15);
    const block reduced = exactly(printed + '\0');
    const char *const short_form = strReduceZero(reduced.get(), format);
    expect(strtod(short_form, nullptr) == strtod(printed.c_str(), nullptr));
}

void run(fuzz_input input)
{
    const uint32_t flags = input.byte(), format = input.number(), room = input.byte() % 80;
    const int32_t count = static_cast<int8_t>(input.byte());
    const std::string other = input.bytes(20).c_str(), text = input.bytes(60).c_str();
    build(text, other, room, count);
    cut(text, other, room % (text.size() + 1), flags);
    change(text, other, count, format);
}
