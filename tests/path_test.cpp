#include "tessel/string.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using texts = std::vector<std::string>;

// A copy of a text in a block of exactly its size and `room` more, where a sanitizer sees a step
// too far.
struct exact_text {
    std::vector<char> block;

    explicit exact_text(const std::string &text, size_t room = 0)
        : block(text.c_str(), text.c_str() + text.size() + 1)
    {
        block.resize(block.size() + room);
        block.shrink_to_fit();
    }
};

TEST(Paths, BecomeCompatible)
{
    const texts rows[] = {{"", ""},
                          {"/usr/bin", "\\usr\\bin"},
                          {"//c/a/b", "c:\\a\\b"},
                          {"//cx", "c:\\"},
                          {"//c///", "c:\\\\\\"},
                          {"//", "\\\\"},
                          {"//c", "\\\\c"},
                          {"///c/d", "/:\\\\d"},
                          {"a/b\\ c", "a\\b  c"},
                          {"a\\\\b/c", "a\\\\b\\c"},
                          {"a\\\\\\ /\\", "a\\\\  \\\\"},
                          {"a\\b", "a\\b"}};
    for (const texts &row : rows) {
        exact_text path(row[0]);
        EXPECT_EQ(strGetCompatiblePath(path.block.data()), path.block.data());
        EXPECT_EQ(path.block.data(), row[1]) << row[0];
    }
}

TEST(Paths, GetASeparatorOfTheirKind)
{
    const texts rows[] = {
        {"dir", "dir\\"}, {"a/b", "a/b/"},  {"a\\b/c", "a\\b/c/"}, {"a/b\\c", "a/b\\c\\"},
        {"c:", "c:"},     {"c:d", "c:d\\"}, {"dir\\", "dir\\"},    {"dir/", "dir/"},
        {"", ""},         {"/", "/"},       {"/a:b", "/a:b/"},     {"x\\\xff", "x\\\xff\\"}};
    for (const texts &row : rows) {
        exact_text path(row[0], row[1].size() - row[0].size());
        EXPECT_EQ(strAppendDirectorySeparator(path.block.data()),
                  static_cast<int32_t>(row[1].size()));
        EXPECT_EQ(path.block.data(), row[1]) << row[0];
    }
    EXPECT_STREQ(strGetDirectorySeparator(), ":\\/");
}

// The name that is found, then the parts that are cut.
TEST(Paths, AreFoundAndCutInParts)
{
    const texts rows[] = {{"c:\\dir\\file.txt", "file.txt", "c:\\dir", "file", "txt"},
                          {"file.txt", "file.txt", "", "file", "txt"},
                          {"file", "file", "", "file", ""},
                          {"c:file", "file", "c", "file", ""},
                          {"\\file", "file", "", "file", ""},
                          {"dir\\", "", "dir", "", ""},
                          {"a.b\\c", "c", "", "a", "b\\c"},
                          {"a/b.c.d", "b.c.d", "a", "b.c", "d"},
                          {".profile", ".profile", "", "", "profile"},
                          {"name.", "name.", "", "name", ""},
                          {"", "", "", "", ""}};
    for (const texts &row : rows) {
        SCOPED_TRACE(row[0]);
        const std::string &text = row[0];
        const size_t dot = text.find_last_of('.');
        EXPECT_EQ(strGetFileExtension(text.c_str()),
                  dot == text.npos ? nullptr : text.c_str() + dot + 1);
        EXPECT_EQ(strGetFileName(text.c_str()), row[1]);
        for (int wanted = 0; wanted < 8; wanted++) {
            exact_text path(text);
            const char *parts[3] = {"-", "-", "-"};
            strSplitPath(wanted & 1 ? &parts[0] : nullptr, wanted & 2 ? &parts[1] : nullptr,
                         wanted & 4 ? &parts[2] : nullptr, path.block.data());
            for (size_t i = 0; i < 3; i++)
                EXPECT_EQ(parts[i], wanted & 1 << i ? row[2 + i] : "-");
            const char *const start = path.block.data();
            const bool split = text.substr(0, dot).find_first_of(":\\/") != text.npos;
            EXPECT_EQ(wanted & 1 && parts[0] == start, wanted & 1 && split);
            EXPECT_EQ(wanted & 4 && parts[2] == start + text.size(), wanted & 4 && row[4].empty());
        }
    }
    EXPECT_EQ(strGetFileExtension(nullptr), nullptr);
    EXPECT_EQ(strGetFileName(nullptr), nullptr);
}

TEST(Paths, AreAbsoluteOrNot)
{
    for (const char *const path : {"/x", "\\x", "c:\\x", "c:/x", "1:/x", "/", "/:\\"})
        EXPECT_EQ(strAbsolutePath(path), 1) << path;
    for (const char *const path : {"x", "c:x", "c:", "", "x/y", "xc:/", ":/x"})
        EXPECT_EQ(strAbsolutePath(path), 0) << path;
}

} // namespace
