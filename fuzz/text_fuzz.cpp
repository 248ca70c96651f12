// Strings, tokens, paths and the text of numbers, wide ones too, stay in blocks of exactly their size.
#include "fuzz_input.h"

void run(fuzz_input input)
{
    const uint32_t flags = input.byte(), format = input.number(), room = input.byte() % 80;
    const int32_t count = static_cast<int8_t>(input.byte());
    const std::string other = input.bytes(20).c_str(), text = input.bytes(60).c_str();
    const block set = exactly(other + '\0'), target(new char[room]);
    const std::string all = text + other;
    const char *const joined = strUnion(target.get(), text.c_str(), set.get(), room);
    expect(all.size() < room ? joined == all : !joined);
    int32_t extra = room;
    char *const longer = strInsert(strCopy(nullptr, text.c_str(), room), set.get(), count,
                                   text.size() + 1 + room, &extra);
    expect(strlen(longer) == all.size());
    memFree(longer);

    const auto in_place = [&](auto change) {
        const block copy = exactly(text + '\0');
        change(copy.get());
        expect(strlen(copy.get()) <= text.size());
    };
    in_place([&](char *copy) {
        const int32_t index = strTokenIndex(copy, set.get(), flags);
        const char *const token = strToken(copy, set.get(), flags & ~STR_KEEP);
        expect(token ? index == token - copy - 1 : index == -1);
    });
    in_place([&](char *copy) {
        const uint32_t length = room % (text.size() + 1);
        char *const from = copy + (flags & STR_FROM_END ? length : 0);
        const int32_t index = strBackwardTokenIndex(from, length, set.get(), flags);
        const char *const token = strBackwardToken(from, length, set.get(), flags);
        expect(token ? index == token - copy - 1 : index == -1);
    });
    in_place([&](char *copy) { strReplaceToken(copy, set.get(), set.get(), count); });
    in_place([](char *copy) {
        const char *directory, *name, *extension;
        strSplitPath(&directory, &name, &extension, strGetCompatiblePath(copy));
        expect(strGetFileName(name) == name);
    });
    in_place([&](char *copy) { strReduceZero(copy, format); });
    const block closed = exactly(text + std::string(2, '\0'));
    const size_t length = strAppendDirectorySeparator(closed.get());
    expect(length == strlen(closed.get()) && *strGetFileName(closed.get()) == '\0');

    const block digits(new char[room]);
    const x_int value = x_const(input.number(), input.number());
    const int32_t written = x_string(value, digits.get(), room, format);
    if (written > 0 && (format & X_RADIX_MASK) <= 36)
        expect(x_eq(x_value(digits.get(), format), value));
    x_value(exactly(text + '\0').get(), format);
}
