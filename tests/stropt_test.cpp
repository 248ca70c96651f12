#include "tessel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace
{
struct command_line {
    uint32_t flags;
    const char *prefixes;
    const char *delimiters;
    std::vector<std::string> table;
    std::vector<std::string> arguments;
    uint32_t asked = 0; // bit i: stroptGetString is called after the i-th result
};

std::vector<char *> pointers(const std::vector<std::string> &texts)
{
    std::vector<char *> all;
    for (const std::string &text : texts)
        all.push_back(const_cast<char *>(text.c_str()));
    all.push_back(nullptr);
    return all;
}

std::string quoted(const char *text)
{
    return text ? std::string("'").append(text).append("'") : "null";
}

// A result, and what it left in the record.
void tell(std::ostream &out, int32_t result, const str_option &option)
{
    static const char *const classes[] = {"", "#", "bare ", "value ", "", "error"};
    const int32_t kind = result >> 28, detail = result & STROPT_DETAIL_MASK;
    out << (result == STROPT_LONE ? "lone" : kind < 0 ? "wide " : classes[kind]);
    if (kind == STROPT_BARE >> 28)
        out << quoted(option.current);
    else if (kind == STROPT_ENTRY >> 28 || detail > 0x7f)
        out << detail;
    else if (detail > 0)
        out << static_cast<char>(detail);
    if (option.value)
        out << ' ' << quoted(option.value);
    if (option.pushback == STROPT_EXHAUSTED)
        out << " exhausted";
    else if (option.pushback)
        out << " before " << quoted(option.pushback);
    if (option.flags & STROPT_IN_CLUSTER)
        out << " ...";
}

// Everything that a parser says about a command line.
std::string transcript(decltype(&stroptGetOption) get_option, const command_line &line)
{
    std::vector<char *> arguments = pointers(line.arguments);
    const std::vector<char *> entries = pointers(line.table);
    const auto count = static_cast<uint32_t>(line.table.size());
    str_option option = {};
    option.fetch = [](str_option *self) {
        EXPECT_NE(self->pushback, STROPT_EXHAUSTED);
        return stroptTable(self);
    };
    option.flags = line.flags;
    option.cursor = arguments.data();
    std::ostringstream out;
    for (uint32_t call = 0; call < 32; call++) {
        const uint32_t flags = option.flags;
        const int32_t result = get_option(&option, line.prefixes, line.delimiters,
                                          count > 0 ? entries.data() : nullptr, count);
        if (result == STROPT_END)
            break;
        tell(out, result, option);
        if (const uint32_t changed = (option.flags ^ flags) & ~uint32_t{STROPT_IN_CLUSTER})
            out << " changes " << changed;
        if (line.asked >> call & 1) {
            const char *const string = stroptGetString(&option);
            EXPECT_EQ(string, option.value ? option.value : option.current);
            out << " -> " << quoted(string);
        }
        out << "; ";
    }
    return out.str();
}

TEST(OptionParser, SaysWhatItFinds)
{
    const struct {
        command_line line;
        const char *expected;
    } cases[] = {
        {{0x10, "-", "=", {}, {"-abc", "d"}}, "a 'bc' ...; b 'c' ...; c; bare 'd'; "},
        {{0, "-", "=", {}, {"-abc", "-d", "file", ""}}, "a 'bc'; d; bare 'file'; bare ''; "},
        {{0, "-", "=", {}, {"-o", "file", "-o", "file"}, 1}, "o -> 'file'; o; bare 'file'; "},
        {{0, "-", "=", {}, {"-ofile", "-p"}, 1}, "o 'file' -> 'file'; p; "},
        {{0x10, "-", "=", {}, {"-of"}, 1}, "o 'f' ... -> 'f'; f; "},
        {{0x200, "-", "=", {"a", "b", "c", "= name"}, {"--name=value"}}, "#3 'value'; "},
        {{0x200, "-", "=", {"name", ": name"}, {"--name=value"}}, "error 'name=value'; "},
        {{0x200, "-", "=", {"= name"}, {"--other", "--nam"}}, "error 'other'; error 'nam'; "},
        {{0x200, "-", "=", {"= name"}, {"--name", "x", "--name=", "v"}},
         "#0; bare 'x'; #0; bare 'v'; "},
        {{0xa00, "-", "=", {"= name"}, {"--name", "value", "--name", "-x", "--name", ""}, 1},
         "#0 before 'value' -> 'value'; #0 before '-x'; x; #0 before ''; bare ''; "},
        {{0xa00,
          "-",
          "=",
          {"= name"},
          {"--name=v", "--name=", "v", "--name", "=v", "--name", "=", "v", "--name="}},
         "#0 'v'; #0 'v'; #0 'v'; #0 'v'; #0 exhausted; "},
        {{0xa00, "-", "=", {"= name"}, {"--name", "="}, 1}, "#0 exhausted -> null; "},
        {{0xa00, "-", "=", {"= name"}, {"--name"}, 1}, "#0 exhausted -> null; "},
        {{0xa00, "-", "=", {"name"}, {"--name", "=v"}}, "#0; bare '=v'; "},
        {{0x200, "-", "=", {" name"}, {"--name", "--name=v"}}, "#0; error 'name=v'; "},
        {{0, "-", "=", {"name"}, {"-name", "-nam"}}, "#0; n 'am'; "},
        {{0x200, "-", "=", {"name"}, {"-name", "--"}}, "n 'ame'; error ''; "},
        {{0x200, "-", "=", {}, {"--", "-"}}, "-; error; "},
        {{0x400, "-", "=", {"name"}, {"-"}}, "lone; "},
        {{0x70, "-", "=", {}, {"xvf", "out"}}, "x 'vf' ... changes 96; v 'f' ...; f; bare 'out'; "},
        {{0x20, "-", "=", {"name"}, {"name", "other"}}, "#0; o 'ther'; "},
        {{0x220, "-", "=", {"name"}, {"name"}}, "n 'ame'; "},
        {{0x200, nullptr, "=", {"name"}, {"name", "-x"}}, "#0; - 'x'; "},
        {{0, "- +", "=", {}, {"+list", "+", " x"}}, "value + 'list'; value + ''; bare ' x'; "},
        {{0x200, "-/", "=", {"name"}, {"--name", "//name", "-/name"}}, "#0; #0; / 'name'; "},
        {{0x1200, "-", "=", {"z", "= b", "a"}, {"--a", "--b=1"}}, "error 'a'; #1 '1'; "},
        {{0x1200, "-", nullptr, {"z", "= b", "a"}, {"--a", "--b=1"}}, "#2; #1 '1'; "},
        {{0x1200, "-", "=", {"a", "a", "= a"}, {"--a", "--a=1"}}, "#1; #2 '1'; "},
        {{0x200, "-", "", {"= name"}, {"--name", "--name=v"}}, "#0; error 'name=v'; "},
        {{0x380, "/", ":", {"= name"}, {"--name=v", "//name"}}, "#0 'v'; bare '//name'; "},
        {{0, "-", "=", {}, {"-\xff"}}, "wide 268435455; "}};
    for (const auto &[line, expected] : cases)
        EXPECT_EQ(transcript(stroptGetOption, line), expected);
}

TEST(OptionParser, StaysAtTheEnd)
{
    char program[] = "program", last[] = "a";
    char *two[] = {program, last, nullptr}, *none[] = {nullptr, last};
    for (char **const arguments : {two, none})
        for (const stropt_fetch_proc fetch : {stroptArgv, stroptTable}) {
            str_option option = {};
            option.fetch = fetch;
            option.cursor = arguments;
            for (char **next = arguments + (fetch == stroptArgv && *arguments); *next; next++)
                EXPECT_EQ(fetch(&option), *next);
            option.value = last;
            for (int again = 0; again < 3; again++)
                EXPECT_EQ(stroptGetOption(&option, "-", "=", nullptr, 0), STROPT_END);
            EXPECT_EQ(option.value, last);
            EXPECT_EQ(option.current, nullptr);
        }
}

// The parser a second time, plainly, as it is told to a user. Its flags and results have no names,
// so that a wrong number behind a name shows.

bool has(const std::string &set, char c)
{
    return set.find(c) != std::string::npos;
}

struct model_entry {
    explicit model_entry(const std::string &entry)
        : spaced(has(entry, ' ')), head(entry.substr(0, spaced ? entry.find(' ') : 0)),
          name(entry.substr(entry.find(' ') + 1))
    {
    }

    // The length of the text in front of its value, or -1 if the entry does not match.
    int match(const std::string &text, const char *delimiters) const
    {
        const size_t length = name.size();
        if (text == name)
            return static_cast<int>(length);
        if (text.compare(0, length, name) != 0 || !has(head, text[length]))
            return -1;
        return !delimiters || has(delimiters, text[length]) ? static_cast<int>(length) + 1 : -1;
    }

    bool lies_before(const std::string &text, const char *delimiters) const
    {
        size_t i = 0;
        while (i < text.size() && text[i] == name.c_str()[i])
            i++;
        if (i == text.size())
            return false;
        if (has(delimiters, text[i]))
            return i == name.size();
        return static_cast<signed char>(text[i]) > static_cast<signed char>(name.c_str()[i]);
    }

    bool spaced;
    std::string head, name;
};

char *model_fetch(str_option &option)
{
    char *const pushed = option.pushback;
    if (pushed == STROPT_EXHAUSTED)
        return nullptr;
    option.pushback = nullptr;
    return pushed ? pushed : option.fetch(&option);
}

void model_value(str_option &option, const model_entry &entry, char *text, bool delimited)
{
    option.value = *text ? text : nullptr;
    if (*text || !entry.spaced || !(option.flags & 0x800))
        return;
    char *next = model_fetch(option);
    if (next && !delimited) {
        if (!*next || !has(entry.head, *next)) {
            option.pushback = next;
            return;
        }
        next = next[1] ? next + 1 : model_fetch(option);
    }
    option.value = next;
    option.pushback = next ? option.pushback : STROPT_EXHAUSTED;
}

int32_t model_short(str_option &option, uint32_t flags, char *text)
{
    if (!*text)
        return flags & 0x400 ? 0 : 0x50000000;
    option.value = text[1] ? text + 1 : nullptr;
    option.flags = (option.flags & ~0x8000u) | (option.value && flags & 0x10 ? 0x8000 : 0);
    return static_cast<signed char>(*text);
}
int model_find(const std::vector<model_entry> &table, const std::string &text,
               const char *delimiters, bool sorted)
{
    int low = 0, high = static_cast<int>(table.size()) - 1;
    while (low <= high) {
        const int i = sorted && delimiters ? (low + high) / 2 : low;
        const model_entry &entry = table[static_cast<size_t>(i)];
        if (entry.match(text, delimiters) >= 0)
            return i;
        if (!sorted || !delimiters || entry.lies_before(text, delimiters))
            low = i + 1;
        else
            high = i - 1;
    }
    return -1;
}

int32_t model_result(str_option &option, const char *prefixes, const char *delimiters,
                     const std::vector<model_entry> &table)
{
    const uint32_t flags = option.flags;
    if (flags & 0x8000)
        return model_short(option, flags, option.value);
    char *text = option.current = model_fetch(option);
    if (!text)
        return 0x40000000;
    option.value = nullptr;

    const std::string all = prefixes ? prefixes : "", openers = all.substr(0, all.find(' '));
    const char first = *text;
    bool long_name = !table.empty(), error = (flags & 0x200) && prefixes;
    if (first && has(openers, first)) {
        text++;
        if (error && long_name) {
            long_name = *text == first;
            text += long_name;
        }
    } else if (first && first != ' ' && has(all, first)) {
        option.value = text + 1;
        return 0x30000000 | static_cast<signed char>(first);
    } else if (prefixes && !(flags & 0x20)) {
        return 0x20000000;
    } else if (error) {
        long_name = false;
    }

    const int index = long_name ? model_find(table, text, delimiters, flags & 0x1000) : -1;
    if (index >= 0) {
        const model_entry &entry = table[static_cast<size_t>(index)];
        const int length = entry.match(text, delimiters);
        model_value(option, entry, text + length, length > static_cast<int>(entry.name.size()));
        return 0x10000000 + index;
    }
    if (!long_name || !error)
        return model_short(option, flags, text);
    option.value = text;
    return 0x50000000;
}

int32_t model_option(str_option *option, const char *prefixes, const char *delimiters,
                     const char *const *table, uint32_t count)
{
    const uint32_t flags = option->flags;
    const int32_t result =
        model_result(*option, flags & 0x80 ? "-" : prefixes, flags & 0x100 ? "=" : delimiters,
                     std::vector<model_entry>(table, table + count));
    if (result != 0x40000000 && flags & 0x40)
        option->flags &= ~0x60u;
    return result;
}

std::vector<signed char> signed_bytes(const std::string &text)
{
    return {text.begin(), text.end()};
}

TEST(OptionParser, AgreesWithTheModelUnderAllFlags)
{
    std::mt19937 random(1);
    const auto one_of = [&](const auto &choices) { return choices[random() % std::size(choices)]; };
    const auto word = [&](const std::string &alphabet, size_t longest) {
        std::string text(random() % (longest + 1), ' ');
        for (char &c : text)
            c = one_of(alphabet);
        return text;
    };
    const char *const prefix_sets[] = {nullptr, "", "-", "-+", "- =a", " +", "-  b-"};
    const char *const delimiter_sets[] = {nullptr, "", "=", ":=", "a"};
    const std::string heads[] = {"", " ", "= ", "=: ", "a= "}, starts[] = {"", "-", "--", "+", "="};
    for (uint32_t round = 0; round < 100 * 512; round++) {
        command_line line = {round % 512 << 4, one_of(prefix_sets), one_of(delimiter_sets), {}, {}};
        for (size_t i = random() % 8; i > 0; i--)
            line.table.push_back(one_of(heads) + word("ab\xe4=", 3));
        if (random() % 2)
            std::sort(line.table.begin(), line.table.end(), [](const auto &a, const auto &b) {
                return signed_bytes(model_entry(a).name) < signed_bytes(model_entry(b).name);
            });
        for (size_t i = random() % 7; i > 0; i--)
            line.arguments.push_back(one_of(starts) + word("aab\xe4=:- ", 4));
        line.asked = static_cast<uint32_t>(random() & random());
        ASSERT_EQ(transcript(stroptGetOption, line), transcript(model_option, line))
            << "flags " << line.flags << testing::PrintToString(line.arguments)
            << testing::PrintToString(line.table);
    }
}
} // namespace
