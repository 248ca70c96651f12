// The option parser beside getopt_long, on the same 50 arguments and the same 40 long options: ten
// rounds of a flag, an attached value, a value in an argument of its own, a cluster of short
// options and a value of its own argument.
#include "tessel.h"

#include <benchmark/benchmark.h>

#include <getopt.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <vector>

namespace
{
// As an archiver or a compiler has them; every third one takes a value.
constexpr std::array names = {
    "absolute-names", "acls",         "append",      "backup",       "block-size",  "catenate",
    "check-links",    "compare",      "compress",    "create",       "dereference", "directory",
    "exclude",        "exclude-from", "extract",     "file",         "format",      "group",
    "hard-links",     "help",         "ignore-case", "interactive",  "keep-old",    "level",
    "list",           "mode",         "newer",       "no-recursion", "null",        "numeric-owner",
    "occurrence",     "one-file",     "overwrite",   "owner",        "preserve",    "quoting-style",
    "record-size",    "sort",         "verbose",     "wildcards"};
static_assert(names.size() == 40);

constexpr size_t rounds = 10;
constexpr int expected_options = 6 * rounds;

struct command_line {
    explicit command_line(bool sorted)
    {
        std::vector<size_t> order(names.size());
        for (size_t i = 0; i < order.size(); i++)
            order[i] = sorted ? i : i * 7 % names.size();
        for (const size_t i : order)
            entries.push_back(i % 3 == 0 ? std::string("= ") + names[i] : names[i]);
        for (const std::string &entry : entries)
            table.push_back(entry.c_str());
        for (const size_t i : order)
            options.push_back(
                {names[i], i % 3 == 0 ? required_argument : no_argument, nullptr, 0x100});
        options.push_back({});

        texts.push_back("program");
        for (size_t i = 0; i < rounds; i++) {
            texts.push_back(long_option(i * 5 % 13 * 3 + 1));
            texts.push_back(long_option(i * 4 % 14 * 3) + "=value");
            texts.push_back("-xvz");
            texts.push_back(long_option((i * 9 + 5) % 14 * 3));
            texts.push_back("value");
        }
        for (std::string &text : texts)
            arguments.push_back(text.data());
        arguments.push_back(nullptr);
    }

    static std::string long_option(size_t index)
    {
        return std::string("--") + names[index];
    }

    std::vector<std::string> entries;
    std::vector<const char *> table;
    std::vector<option> options;
    std::vector<std::string> texts;
    std::vector<char *> arguments;
};

void report(benchmark::State &state, bool right)
{
    if (!right)
        state.SkipWithError("wrong options");
    state.SetItemsProcessed(state.iterations() * expected_options);
}

// Options found, with a sum over them that shows that both parsers see the same values.
struct tally {
    int count = 0;
    size_t value_bytes = 0;
    bool operator==(const tally &) const = default;
};

tally parse_tessel(command_line &line, uint32_t flags)
{
    str_option parser = {};
    parser.fetch = stroptArgv;
    parser.flags = flags | STROPT_DOUBLED | STROPT_CLUSTERS;
    parser.cursor = line.arguments.data();
    tally found;
    const auto count = static_cast<uint32_t>(line.table.size());
    for (;;) {
        const int32_t result = stroptGetOption(&parser, "-", "=", line.table.data(), count);
        if (result == STROPT_END)
            return found;
        found.count++;
        if ((result & STROPT_CLASS_MASK) != STROPT_ENTRY)
            continue;
        if (line.table[result & STROPT_DETAIL_MASK][0] == '=')
            found.value_bytes += std::string_view(stroptGetString(&parser)).size();
    }
}

tally parse_getopt(command_line &line)
{
    tally found;
    optind = 0;
    opterr = 0;
    const int count = static_cast<int>(line.arguments.size()) - 1;
    int index;
    while (getopt_long(count, line.arguments.data(), "xvz", line.options.data(), &index) != -1) {
        found.count++;
        if (optarg)
            found.value_bytes += std::string_view(optarg).size();
    }
    return found;
}

constexpr tally expected = {expected_options, 2 * rounds * 5};

void options_tessel(benchmark::State &state, bool sorted)
{
    command_line line(sorted);
    bool right = true;
    for (auto _ : state)
        right = right && parse_tessel(line, sorted ? STROPT_SORTED : 0) == expected;
    report(state, right);
}
BENCHMARK_CAPTURE(options_tessel, sorted, true);
BENCHMARK_CAPTURE(options_tessel, unsorted, false);

void options_getopt(benchmark::State &state, bool sorted)
{
    command_line line(sorted);
    bool right = true;
    for (auto _ : state)
        right = right && parse_getopt(line) == expected;
    report(state, right);
}
BENCHMARK_CAPTURE(options_getopt, sorted, true);
BENCHMARK_CAPTURE(options_getopt, unsorted, false);
} // namespace
