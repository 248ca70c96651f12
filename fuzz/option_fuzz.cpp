// The option parser ends, stays inside of its arguments, and finds the same by halving as one by one.
#include "fuzz_input.h"

void run(fuzz_input input)
{
    // In order of their names, for a table that is searched by halving.
    static constexpr const char *sorted[] = {"= 1", "A",     "= a",    ":= ab",
                                             "b",   "=: ba", "c- d e", "x"};
    const uint32_t flags =
        input.number() & ~(STROPT_WANTS_VALUE | STROPT_IN_CLUSTER | STROPT_SORTED);
    const uint32_t kind = input.byte(), asked = input.number();
    const uint32_t count = input.byte() % 8, halving = kind & 0x18;
    const std::string prefix_set = input.bytes(4), delimiter_set = input.bytes(4);
    const char *const prefixes = kind & 1 ? nullptr : prefix_set.c_str();
    const char *const delimiters = kind & 2 ? nullptr : halving ? ":=" : delimiter_set.c_str();
    std::vector<block> texts;
    std::vector<char *> table, arguments;
    while (table.size() < count) {
        const std::string entry = halving ? sorted[table.size()] : input.bytes(10);
        table.push_back(texts.emplace_back(exactly(entry + '\0')).get());
    }
    const uint32_t most = 1 + input.end - input.at;
    while (input.at < input.end)
        arguments.push_back(texts.emplace_back(exactly(input.bytes(12) + '\0')).get());
    arguments.push_back(nullptr);
    // The sanitizer sees a text that lies elsewhere.
    const auto read = [](const char *text) { expect(!text || strlen(text) <= 12); };
    const auto parse = [&](uint32_t with) {
        str_option option = {kind & 4 ? stroptTable : stroptArgv, with, arguments.data()};
        std::vector<std::pair<int32_t, const char *>> seen;
        for (int32_t result = 0; result != STROPT_END;) {
            result = stroptGetOption(&option, prefixes, delimiters, table.data(), count);
            seen.emplace_back(result, option.value);
            expect(seen.size() <= most); // each call takes a character or an argument
            read(option.value);
            if (asked >> seen.size() % 32 & 1 && result != STROPT_END)
                read(stroptGetString(&option));
        }
        return seen;
    };
    const auto seen = parse(flags);
    expect(!halving || parse(flags | STROPT_SORTED) == seen);
}
