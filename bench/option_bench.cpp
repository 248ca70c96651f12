// The option parser beside getopt_long and popt, on the same 50 arguments and the same 40 long options: ten
// rounds of a flag, an attached value, a value in an argument of its own, a cluster of short
// options and a value of its own argument.
#include "compare.h"

#include "tessel.h"

#include <getopt.h>
#ifdef TESSEL_BENCH_POPT
#include <popt.h>
#endif

#include <array>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace
{
using namespace bench;

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
#ifdef TESSEL_BENCH_POPT
        for (const char letter : {'x', 'v', 'z'})
            popt_options.push_back(
                {nullptr, letter, POPT_ARG_NONE, nullptr, letter, nullptr, nullptr});
        for (const size_t i : order)
            popt_options.push_back({names[i], '\0',
                                    i % 3 == 0 ? unsigned{POPT_ARG_STRING} : POPT_ARG_NONE, nullptr,
                                    0x100, nullptr, nullptr});
        popt_options.push_back({});
#endif

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
#ifdef TESSEL_BENCH_POPT
    std::vector<poptOption> popt_options;
#endif
    std::vector<std::string> texts;
    std::vector<char *> arguments;
};

// Options found, and the length of their values, which shows that all parsers see the same.
struct tally {
    int count = 0;
    size_t value_bytes = 0;
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

#ifdef TESSEL_BENCH_POPT
tally parse_popt(const command_line &line)
{
    tally found;
    const poptContext context = poptGetContext(
        "program", static_cast<int>(line.arguments.size()) - 1,
        const_cast<const char **>(line.arguments.data()), line.popt_options.data(), 0);
    while (poptGetNextOpt(context) >= 0) {
        found.count++;
        if (char *const value = poptGetOptArg(context)) {
            found.value_bytes += std::string_view(value).size();
            std::free(value);
        }
    }
    poptFreeContext(context);
    return found;
}
#endif

template <typename Parse>
void add_parser(bool sorted, const std::string &side, Parse parse)
{
    const std::string name =
        std::string("50 arguments, 40 long options, ") + (sorted ? "sorted" : "unsorted");
    add({name}, side, [=] {
        return [=, line = std::make_unique<command_line>(sorted)] {
            const tally found = parse(*line);
            return static_cast<uint64_t>(found.count) << 32 | found.value_bytes;
        };
    });
}
} // namespace

void bench::add_sides()
{
    for (const bool sorted : {true, false}) {
        add_parser(sorted, "tessel", [=](command_line &line) {
            return parse_tessel(line, sorted ? STROPT_SORTED : 0);
        });
        add_parser(sorted, "getopt_long", parse_getopt);
#ifdef TESSEL_BENCH_POPT
        add_parser(sorted, "popt", parse_popt);
#endif
    }
}
