// The option parser ends, stays inside of its arguments, and finds the same by halving as one by one.
#include "fuzz_input.h"

void run(fuzz_input input)
{
    // In order of their names, for a table that is searched by halving.
    static constexpr const char *sorted[] = {"= 1", "A",     "= a",    ":= ab",
                                             "b",   "=: ba", "c- d e", "x"};
    const uint32_t flags = input.number() & ~(STROPT_WANTS_VALUE | STROPT_IN_CLUSTER);
    const uint32_t kind = input.byte(), asked = input.number();
    const uint32_t chosen = input.byte(), halving = flags & STROPT_SORTED;
    const std::string prefix_set = input.bytes(4), delimiter_set = input.bytes(4);
    const char *const prefixes = kind & 1 ? nullptr : prefix_set.c_str();
    const char *const delimiters = kind & 2 ? nullptr : halving ? ":=" : delimiter_set.c_str();
    std::vector<block> texts;
    std::vector<const char *> table;
    for (uint32_t i = 0; i < 8; i++) {
        const std::string entry = halving ? sorted[i] : input.bytes(10);
        if (chosen >> i & 1)
            table.push_back(texts.emplace_back(exactly(entry + '\0')).get());
    }
    const uint32_t count = table.size(), most = 1 + input.end - input.at;
    std::vector<char *> arguments;
    while (input.at < input.end)
        arguments.push_back(texts.emplace_back(exactly(input.bytes(12) + '\0')).get());
    arguments.push_back(nullptr);
    const auto expect_inside = [&](const char *text) {
        bool inside = !text;
        for (size_t i = 0; arguments[i]; i++)
            inside |= text >= arguments[i] && text <= arguments[i] + strlen(arguments[i]);
        expect(inside);
    };
    const auto parse = [&](uint32_t with) {
        str_option option = {kind & 4 ? stroptTable : stroptArgv, with, arguments.data()};
        std::vector<std::pair<int32_t, const char *>> seen;
        for (int32_t result = 0; result != STROPT_END;) {
            result = stroptGetOption(&option, prefixes, delimiters, table.data(), count);
            seen.emplace_back(result, option.value);
            expect(seen.size() <= most); // each call takes a character or an argument
            const uint32_t index = result & STROPT_DETAIL_MASK;
            expect((result & STROPT_CLASS_MASK) != STROPT_ENTRY || index < count);
            expect_inside(option.value);
            expect_inside(option.current);
            if (asked >> seen.size() % 32 & 1 && result != STROPT_END)
                expect_inside(stroptGetString(&option));
        }
        return seen;
    };
    expect(parse(flags) == parse(flags & ~STROPT_SORTED));
}
