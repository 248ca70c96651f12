#include "tessel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <stdlib.h>
#include <string.h>
#include <string>
#include <utility>
#include <vector>

using namespace std::string_literals; // for texts that hold NUL characters

namespace
{

// The text that a call leaves, and the index of its result in it.
using outcome = std::pair<std::string, intptr_t>;
constexpr intptr_t nothing = -99;

// Calls with a copy that is just as large as the string: a sanitizer sees what goes beyond.
template <typename procedure>
outcome on_copy(const std::string &text, const procedure &call)
{
    std::vector<char> room(text.c_str(), text.c_str() + text.size() + 1);
    const char *const result = call(room.data());
    // The address one before the text is a result as well.
    const intptr_t index =
        reinterpret_cast<intptr_t>(result) - reinterpret_cast<intptr_t>(room.data());
    return {{room.data(), text.size()}, result ? index : nothing};
}

std::string members(const char *set)
{
    return set ? set + "\0"s : " \t\r\n\0"s;
}

outcome forward_model(std::string text, const char *set, uint32_t flags)
{
    const bool skips = flags & 1, keeps = flags & 2;
    size_t end = skips ? text.find_first_not_of(members(set)) : text.find_first_of(members(set));
    if (text.empty() || (!skips && end == text.npos))
        return {text, nothing};
    end = std::min(end, text.size()) - skips;
    if (!keeps && end < text.size())
        text[end] = '\0';
    return {text, static_cast<intptr_t>(end + !keeps)};
}

outcome backward_model(std::string text, size_t start, size_t end, const char *set, uint32_t flags)
{
    const bool skips = flags & 1, keeps = flags & 2;
    const std::string stretch = text.substr(start, end - start);
    const size_t last =
        skips ? stretch.find_last_not_of(members(set)) + 1 : stretch.find_last_of(members(set));
    if (start == end || (skips ? text[start + last] == '\0' : last == text.npos))
        return {text, nothing};
    text[start + last] = keeps ? text[start + last] : '\0';
    return {text, static_cast<intptr_t>(start + last + 1)};
}

std::vector<std::string> all_texts(const std::string &alphabet, size_t longest)
{
    std::vector<std::string> texts = {""};
    for (size_t i = 0; texts[i].size() < longest; i++)
        for (const char c : alphabet)
            texts.push_back(texts[i] + c);
    return texts;
}

const char *const sets[] = {nullptr, "", ",", "b,", " a"};

TEST(Strings, FirstTokensOfAllShortTexts)
{
    for (const std::string &text : all_texts("ab ,\n", 5))
        for (const char *const set : sets)
            for (uint32_t flags = 0; flags < 8; flags++) {
                const auto call = [&](char *copy) { return strToken(copy, set, flags); };
                ASSERT_EQ(on_copy(text, call), forward_model(text, set, flags))
                    << "flags " << flags;
                const intptr_t index = forward_model(text, set, flags | 2).second;
                ASSERT_EQ(strTokenIndex(text.c_str(), set, flags), std::max<intptr_t>(index, -1));
            }
    EXPECT_EQ(strTokenIndex(" \r\n\tb", nullptr, STR_COMPLEMENT), 3);
    EXPECT_EQ(strToken(nullptr, "a", 1), nullptr);
    EXPECT_EQ(strTokenIndex(nullptr, "a", 1), -1);
}

void check_stretch(const std::string &text, size_t start, size_t end, const char *set,
                   uint32_t flags)
{
    const auto length = static_cast<int32_t>(end - start);
    const size_t from = flags & STR_FROM_END ? end : start;
    if (length == 0 && !(flags & STR_FROM_END))
        end += strlen(text.c_str() + start);
    const auto call = [&](char *copy) { return strBackwardToken(copy + from, length, set, flags); };
    const outcome expected = backward_model(text, start, end, set, flags);
    ASSERT_EQ(on_copy(text, call), expected) << start << '-' << end << " flags " << flags;
    const std::string copy = text;
    ASSERT_EQ(strBackwardTokenIndex(copy.data() + from, length, set, flags),
              expected.second == nothing ? -1 : expected.second - 1 - static_cast<intptr_t>(start));
    ASSERT_EQ(copy, text);
}

// Of stretches from and up to every place of a text, which may hold NUL characters.
TEST(Strings, LastTokensOfAllShortStretches)
{
    for (const std::string &text : all_texts("a ,\0"s, 4))
        for (const char *const set : sets)
            for (const uint32_t flags : {0u, 1u, 2u, 3u, 0x10u, 0x11u, 0x12u, 0x1cu, 0x13u})
                for (size_t start = 0; start <= text.size(); start++)
                    for (size_t end = start; end <= text.size(); end++)
                        check_stretch(text, start, end, set, flags);
    EXPECT_EQ(strBackwardToken(nullptr, 3, "a", STR_FROM_END), nullptr);
    EXPECT_EQ(strBackwardTokenIndex(nullptr, 0, "a", 0), -1);
    char text[] = "a b";
    EXPECT_EQ(strBackwardToken(text, -1, nullptr, 0), nullptr);
    EXPECT_EQ(strBackwardToken(text + 3, -1, nullptr, STR_FROM_END), nullptr);
}

TEST(Strings, ReplaceAndCountMembers)
{
    for (const std::string &text : all_texts("ab,", 5))
        for (const std::string set : {"", "a", "ab", "ba,", "aab", "x"})
            for (const std::string with : {"x", "xy", "b,a", "ba", "xyzt", ""})
                for (const int32_t count : {0, 1, -1, 2, -2, 9, INT32_MAX, INT32_MIN}) {
                    std::string expected = text;
                    int32_t found = 0;
                    for (size_t i = 0; i < text.size(); i++) {
                        char &c = expected[count > 0 ? i : text.size() - 1 - i];
                        const size_t at = set.find(c);
                        found += at != set.npos;
                        const bool counts = count == 0 || found <= std::abs(int64_t{count});
                        if (at != set.npos && counts && !with.empty())
                            c = with[std::min(at, with.size() - 1)];
                    }
                    const auto call = [&](char *copy) {
                        return strReplaceToken(copy, set.c_str(), with.c_str(), count);
                    };
                    ASSERT_EQ(on_copy(text, call), outcome(expected, 0))
                        << text << ' ' << set << ' ' << with << ' ' << count;
                    ASSERT_EQ(strCountToken(text.c_str(), set.c_str()), found);
                }
}

// What becomes of a text in place: a path of another kind, its parts, a shorter number.
std::string compatible(char *path, uint32_t)
{
    return strGetCompatiblePath(path);
}

std::string closed(char *path, uint32_t)
{
    return std::string(path, path + strAppendDirectorySeparator(path));
}

// The name and the extension that are found, and directory, name and extension that are cut.
std::string in_parts(char *path, uint32_t)
{
    std::string again = path;
    const char *const end = path + strlen(path), *const found = strGetFileExtension(path);
    const std::string all = strGetFileName(path) + ("|"s + (found ? found : "-") + "|");
    const char *directory, *name, *extension, *only;
    strSplitPath(nullptr, &only, nullptr, again.data());
    strSplitPath(&directory, &name, &extension, path);
    strSplitPath(nullptr, nullptr, nullptr, again.data());
    EXPECT_STREQ(only, name);
    EXPECT_TRUE(*extension || extension == end);
    return all + directory + "|" + name + "|" + extension;
}

std::string absolute(char *path, uint32_t)
{
    return std::to_string(strAbsolutePath(path));
}

std::string reduced(char *number, uint32_t format)
{
    return strReduceZero(number, format);
}

TEST(Strings, BecomePathsAndNumbersInPlace)
{
    const struct {
        std::string (*call)(char *text, uint32_t format);
        const char *rows;
        uint32_t format = 0;
    } cases[] = {
        {compatible, R"(>,/usr/bin>\usr\bin,//c/a/b>c:\a\b,//c///>c:\\\,//>\\,//c>\\c,a\b>a\b)"},
        {compatible, R"(///c/d>/:\\d,a/b\ c>a\b  c,a\\b/c>a\\b\c,a\\\ /\>a\\  \\,a\\ b>a\\ b)"},
        {closed, R"(>,dir>dir\,a/b>a/b/,a\b/c>a\b/c/,a/b\c>a/b\c\,c:>c:,c:d>c:d\,dir\>dir\)"},
        {closed, "dir/>dir/,/>/,/a:b>/a:b/,x\\\xff>x\\\xff\\"},
        {in_parts, R"(c:\dir\file.txt>file.txt|txt|c:\dir|file|txt,name.>name.|||name|,>|-|||)"},
        {in_parts, R"(file>file|-||file|,c:file>file|-|c|file|,\file>file|-||file|,dir\>|-|dir||)"},
        {in_parts,
         R"(a.b\c>c|b\c||a|b\c,a/b.c.d>b.c.d|d|a|b.c|d,.profile>.profile|profile|||profile)"},
        {absolute, R"(/x>1,\x>1,c:\x>1,c:/x>1,1:/x>1,/>1,/:\>1)"},
        {absolute, "x>0,c:x>0,c:>0,>0,x/y>0,xc:/>0,:/x>0"},
        {reduced, "1.500>1.5,1.000>1,1.>1,100>100,100.00>100,0.100>0.1,1.050>1.05,-1.50>-1.5"},
        {reduced, "1.2.300>1.2.3,.500>.500,.000>.000,.>.,-.500>-.5,-0.000>0,-0>0,-00>-00,->-"},
        {reduced, "-0.5>-0.5,-0.50>-0.5,1.500e+005>1.5e5,1.500E+005>1.5E5,1.500e-005>1.5e-5"},
        {reduced, "1.500e+050>1.5e50,1.500e+000>1.5,-0.000e+000>0,-0.000e+005>0e5,1.50e>1.5"},
        {reduced, "e+-07>e-7,E12E3>E12E3,1.0e1.0>1e1.0,1.500e-000>1.5,e>,>"},
        {reduced, "1.000>1.,1.>1.,1.500>1.5,-0.000>0.,1.000e+005>1.e5,-0.e1>0.e1,>", 1},
        {reduced, "1.000>1.0,1.>1.,1.500>1.5,-0.000>0.0,-0.>0.,1.000e+005>1.0e5", 2},
        {reduced, "1.0>1.0,1.000>1.0", 255},
        {reduced, "1.000e+000>1", 0xffff0000},
        {reduced, "1.500e+000>1.5e0,1.500e+005>1.5e5,1.50e>1.5,1.50e+>1.5e+,-0.00e-0>0e0", 0x100},
        {reduced, "1.500e+005>1.5e+005,1.500e+000>1.5e+000,1.50e>1.5e", 0x200},
        {reduced, "1.000e+005>1.0e+005", 0x202},
        {reduced, "1.000e+005>1e+005", 0xff00}};
    for (const auto &each : cases) {
        std::istringstream rows(each.rows);
        std::string text, expected;
        while (std::getline(rows, text, '>')) {
            std::getline(rows, expected, ',');
            std::string room = text, result;
            room.resize(each.call == closed ? expected.size() : text.size());
            on_copy(room, [&](char *copy) {
                result = each.call(copy, each.format);
                return copy;
            });
            EXPECT_EQ(result, expected) << text << " with " << each.format;
        }
    }
    EXPECT_STREQ(strGetDirectorySeparator(), ":\\/");
    EXPECT_EQ(strGetFileExtension(nullptr), nullptr);
    EXPECT_EQ(strGetFileName(nullptr), nullptr);
}

struct command_line {
    uint32_t flags;
    const char *prefixes, *delimiters, *table, *arguments; // the last two parted by commas
    const char *transcript;
    bool asks = false; // for a value after the first result
};

// The parts of a list, and pointers to them with a null at the end.
struct argument_list {
    std::vector<std::string> parts;
    std::vector<char *> pointers;

    explicit argument_list(const char *list)
    {
        std::istringstream in(list);
        for (std::string part; std::getline(in, part, ',');)
            parts.push_back(part);
        for (std::string &part : parts)
            pointers.push_back(part.data());
        pointers.push_back(nullptr);
    }
};

// A result, and what it left in the record.
std::string told(int32_t result, const str_option &option)
{
    const auto quoted = [](const char *before, const char *text) {
        return std::string(before) + "'" + text + "'";
    };
    static const char *const classes[] = {"", "#", "bare", "value ", "", "error"};
    const int32_t kind = result >> 28, detail = result & STROPT_DETAIL_MASK;
    std::string all = result == STROPT_LONE ? "lone" : kind < 0 ? "wide " : classes[kind];
    if (kind == STROPT_ENTRY >> 28 || detail > 0x7f)
        all += std::to_string(detail);
    else if (detail > 0)
        all += static_cast<char>(detail);
    if (kind == STROPT_BARE >> 28)
        all += quoted(" ", option.current);
    if (option.value)
        all += quoted(" ", option.value);
    if (option.pushback)
        all += option.pushback == STROPT_EXHAUSTED ? " exhausted"
                                                   : quoted(" before ", option.pushback);
    return all + (option.flags & STROPT_IN_CLUSTER ? " ..." : "");
}

// Everything that a parser says about a command line.
std::string transcript(const command_line &line)
{
    argument_list arguments(line.arguments), table(line.table);
    const auto count = static_cast<uint32_t>(table.parts.size());
    str_option option = {};
    option.fetch = [](str_option *self) {
        EXPECT_NE(self->pushback, STROPT_EXHAUSTED);
        return stroptTable(self);
    };
    option.flags = line.flags;
    option.cursor = arguments.pointers.data();
    std::string all;
    for (int call = 0; call < 32; call++) {
        const uint32_t flags = option.flags;
        const int32_t result = stroptGetOption(&option, line.prefixes, line.delimiters,
                                               count ? table.pointers.data() : nullptr, count);
        if (result == STROPT_END)
            break;
        all += told(result, option);
        if (const uint32_t changed = (option.flags ^ flags) & ~uint32_t{STROPT_IN_CLUSTER})
            all += " changes " + std::to_string(changed);
        if (line.asks && call == 0) {
            const char *const value = stroptGetString(&option);
            EXPECT_EQ(value, option.value ? option.value : option.current);
            all += " -> "s + (value ? value : "none");
        }
        all += "; ";
    }
    return all;
}

TEST(OptionParser, SaysWhatItFinds)
{
    const command_line lines[] = {
        {0x10, "-", "=", "", "-abc,d", "a 'bc' ... -> bc; b 'c' ...; c; bare 'd'; ", true},
        {0, "-", "=", "", "-abc,-d,file,,", "a 'bc' -> bc; d; bare 'file'; bare ''; ", true},
        {0, "-", "=", "", "-o,file,-o,file", "o -> file; o; bare 'file'; ", true},
        {0x200, "-", "=", "a,b,: name,= name", "--name=value,--na", "#3 'value'; error 'na'; "},
        {0x200, "-", "=", ": name,= nam",
         "--name=v,--nam,x,--nam=", "error 'name=v'; #1; bare 'x'; #1; "},
        {0xa00, "-", "=", "= name", "--name,value,--name,-x,--name,,",
         "#0 before 'value' -> value; #0 before '-x'; x; #0 before ''; bare ''; ", true},
        {0xa00, "-", "=", "= name", "--name=v,--name=,v,--name,=v,--name,=,v,--name=",
         "#0 'v'; #0 'v'; #0 'v'; #0 'v'; #0 exhausted; "},
        {0xa00, "-", "=", "= name", "--name,=", "#0 exhausted -> none; ", true},
        {0xa00, "-", "=", "= name", "--name", "#0 exhausted -> none; ", true},
        {0xa00, "-", "=", "name", "--name,=v", "#0; bare '=v'; "},
        {0, "-", "=", "name", "-name,-nam", "#0; n 'am'; "},
        {0x200, "-", "=", "name", "-name,--,-", "n 'ame'; error ''; error; "},
        {0x200, "-", "=", "", "--,-", "-; error; "},
        {0x400, "-", "=", "name", "-", "lone; "},
        {0x70, "-", "=", "", "xvf,out", "x 'vf' ... changes 96; v 'f' ...; f; bare 'out'; "},
        {0x20, "-", "=", "name", "name,other", "#0; o 'ther'; "},
        {0x220, "-", "=", "name", "name", "n 'ame'; "},
        {0x200, nullptr, "=", "name", "name,-x", "#0; - 'x'; "},
        {0, "- + /", "=", "", "+list,/, x", "value + 'list'; value / ''; bare ' x'; "},
        {0x200, "-/", "=", "name", "--name,//name,-/name", "#0; #0; / 'name'; "},
        {0x1200, "-", "=", "z,= b,a", "--a,--b=1", "error 'a'; #1 '1'; "},
        {0x1200, "-", nullptr, "z,= b,a", "--a,--b=1", "#2; #1 '1'; "},
        {0x1200, "-", "=", "a,a,= a", "--a,--a=1", "#1; #2 '1'; "},
        {0x200, "-", "", "= name", "--name,--name=v", "#0; error 'name=v'; "},
        {0x80, "/", "=", "", "-a,/b", "a; bare '/b'; "},
        {0x300, "-", ":", "= name", "--name=v,--name:v", "#0 'v'; error 'name:v'; "},
        {0x200, "-", nullptr, "= na,name",
         "--nan,--namen,--na=", "error 'nan'; error 'namen'; #0; "},
        {0x1200, "-", "=", "\xe4,= a,= a-b,b,c", "--\xe4,--a,--a=1,--a-b=2,--b,--c,--b=1",
         "#0; #1; #1 '1'; #2 '2'; #3; #4; error 'b=1'; "},
        {0, "-", "=", "", "-\xff", "wide 268435455; "}};
    for (const command_line &line : lines)
        EXPECT_EQ(transcript(line), line.transcript);
}

TEST(OptionParser, StaysAtTheEnd)
{
    char program[] = "program", last[] = "a";
    char *two[] = {program, last, nullptr}, *none[] = {nullptr, last};
    for (char **const arguments : {two, none})
        for (const stropt_fetch_proc fetch : {stroptArgv, stroptTable}) {
            str_option option = {fetch, 0, arguments, last, nullptr, nullptr};
            for (char **next = arguments + (fetch == stroptArgv && *arguments); *next; next++)
                EXPECT_EQ(fetch(&option), *next);
            for (int again = 0; again < 3; again++)
                EXPECT_EQ(stroptGetOption(&option, "-", "=", nullptr, 0), STROPT_END);
            EXPECT_EQ(option.value, last);
            EXPECT_EQ(option.current, nullptr);
        }
    // A cluster whose rest is gone ends, and the next argument follows.
    str_option option = {stroptTable, STROPT_IN_CLUSTER, two, nullptr, nullptr, nullptr};
    EXPECT_EQ(stroptGetOption(&option, "-", "=", nullptr, 0), STROPT_BARE);
    EXPECT_EQ(option.flags, 0u);
}

} // namespace
