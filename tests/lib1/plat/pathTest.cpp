#include "plat/path.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using plat::BaseName;
using plat::CanonicalName;
using plat::DirName;

TEST(IsAbsolutePath, LooksAtTheFirstCharacter) {
    EXPECT_TRUE(plat::isAbsolutePath("/"));
    EXPECT_TRUE(plat::isAbsolutePath("//"));
    EXPECT_TRUE(plat::isAbsolutePath("/a/b"));
    EXPECT_FALSE(plat::isAbsolutePath(""));
    EXPECT_FALSE(plat::isAbsolutePath(nullptr));
    EXPECT_FALSE(plat::isAbsolutePath("a/"));
    EXPECT_FALSE(plat::isAbsolutePath("./a"));
    EXPECT_FALSE(plat::isAbsolutePath(" /a"));
}

TEST(HasParentDir, IsFalseForTheRootOnly) {
    EXPECT_FALSE(plat::hasParentDir("/"));
    EXPECT_TRUE(plat::hasParentDir(""));
    EXPECT_TRUE(plat::hasParentDir(nullptr));
    EXPECT_TRUE(plat::hasParentDir("//"));
    EXPECT_TRUE(plat::hasParentDir("/.."));
    EXPECT_TRUE(plat::hasParentDir("/a"));
    EXPECT_TRUE(plat::hasParentDir("a"));
}

struct PathRow {
    const char* path;
    const char* canonical;
    const char* dir;
    const char* base;
    friend void PrintTo(const PathRow& row, std::ostream* out) { *out << '"' << row.path << '"'; }
};
class Paths : public testing::TestWithParam<PathRow> {};

constexpr PathRow rows[] = {
    {"", ".", "..", "."},
    {".", ".", "..", "."},
    {"./", ".", "..", "."},
    {"././/.", ".", "..", "."},
    {"a/..", ".", "..", "."},
    {"a/../", ".", "..", "."},
    {"a/b/../..", ".", "..", "."},
    {"a/../.", ".", "..", "."},
    {"/", "/", "/", "/"},
    {"//", "/", "/", "/"},
    {"///", "/", "/", "/"},
    {"/.", "/", "/", "/"},
    {"/./", "/", "/", "/"},
    {"/..", "/", "/", "/"},
    {"/../..", "/", "/", "/"},
    {"/a/..", "/", "/", "/"},
    {"/a/../..", "/", "/", "/"},
    {"/x", "/x", "/", "x"},
    {"//x", "/x", "/", "x"},
    {"/x/", "/x", "/", "x"},
    {"/../x", "/x", "/", "x"},
    {"/./../x/.", "/x", "/", "x"},
    {"/a/../b", "/b", "/", "b"},
    {"/a/b", "/a/b", "/a", "b"},
    {"/a/b/", "/a/b", "/a", "b"},
    {"/a//b//c", "/a/b/c", "/a/b", "c"},
    {"/a/b/../c/./d", "/a/c/d", "/a/c", "d"},
    {"x", "x", ".", "x"},
    {"x/", "x", ".", "x"},
    {"./x", "x", ".", "x"},
    {".//x", "x", ".", "x"},
    {"a/../b", "b", ".", "b"},
    {"a/./../b", "b", ".", "b"},
    {"a//b/", "a/b", "a", "b"},
    {"./a/./b/.", "a/b", "a", "b"},
    {"a/b/..", "a", ".", "a"},
    {"a/b/../", "a", ".", "a"},
    {"a/b/c/..", "a/b", "a", "b"},
    {"a/b/../../c/d", "c/d", "c", "d"},
    {"..", "..", "../..", "."},
    {"../", "..", "../..", "."},
    {"./..", "..", "../..", "."},
    {"../.", "..", "../..", "."},
    {"../x/..", "..", "../..", "."},
    {"a/../..", "..", "../..", "."},
    {"a/b/../../..", "..", "../..", "."},
    {"../..", "../..", "../../..", "."},
    {"../a/../..", "../..", "../../..", "."},
    {"a/../../..", "../..", "../../..", "."},
    {"../x", "../x", "..", "x"},
    {"../a/../x", "../x", "..", "x"},
    {"../../a", "../../a", "../..", "a"},
    {"../../a/b", "../../a/b", "../../a", "b"},
    {"...", "...", ".", "..."},
    {"a/...", "a/...", "a", "..."},
    {"..a/b..", "..a/b..", "..a", "b.."},
    {"a/.b/..", "a", ".", "a"},
    {".../..", ".", "..", "."},
    {".a", ".a", ".", ".a"},
    {"a /b ", "a /b ", "a ", "b "},
    {"\xC3\xA4/\xFF", "\xC3\xA4/\xFF", "\xC3\xA4", "\xFF"},
};
INSTANTIATE_TEST_SUITE_P(Table, Paths, testing::ValuesIn(rows));

TEST_P(Paths, HaveACanonicalForm) {
    EXPECT_STREQ(CanonicalName(GetParam().path).get(), GetParam().canonical);
}

TEST_P(Paths, AreCanonicalOnce) {
    EXPECT_STREQ(CanonicalName(GetParam().canonical).get(), GetParam().canonical);
}

TEST_P(Paths, AreInADirectory) {
    EXPECT_STREQ(DirName(GetParam().path).get(), GetParam().dir);
}

TEST_P(Paths, EndInAName) {
    EXPECT_STREQ(BaseName(GetParam().path, nullptr).get(), GetParam().base);
    EXPECT_STREQ(BaseName(GetParam().path, "").get(), GetParam().base);
}

TEST(CanonicalName, TakesNullAsEmpty) {
    EXPECT_STREQ(CanonicalName(nullptr).get(), ".");
    EXPECT_STREQ(DirName(nullptr).get(), "..");
    EXPECT_STREQ(BaseName(nullptr, nullptr).get(), ".");
}

TEST(CanonicalName, TakesLongPaths) {
    std::string path;
    for (int i = 0; i < 10000; ++i)
        path += "component/./../";
    EXPECT_STREQ(CanonicalName((path + "x").c_str()).get(), "x");
    EXPECT_STREQ(CanonicalName(("/" + path).c_str()).get(), "/");
    path.clear();
    for (int i = 0; i < 10000; ++i)
        path += "../";
    path.pop_back();
    EXPECT_STREQ(CanonicalName(path.c_str()).get(), path.c_str());
    EXPECT_STREQ(DirName(path.c_str()).get(), (path + "/..").c_str());
}

struct SuffixRow {
    const char* path;
    const char* suffix;
    const char* base;
    friend void PrintTo(const SuffixRow& row, std::ostream* out) {
        *out << '"' << row.path << "\" \"" << row.suffix << '"';
    }
};
class BaseNameSuffix : public testing::TestWithParam<SuffixRow> {};
INSTANTIATE_TEST_SUITE_P(
    Table, BaseNameSuffix,
    testing::Values(SuffixRow{"x.txt", ".txt", "x"}, SuffixRow{"a/x.txt/", ".txt", "x"},
                    SuffixRow{".txt", ".txt", ".txt"}, SuffixRow{"/.txt", ".txt", ".txt"},
                    SuffixRow{"x.txt", ".TXT", "x.txt"}, SuffixRow{"x.txt", "txt", "x."},
                    SuffixRow{"x.txt.txt", ".txt", "x.txt"}, SuffixRow{"x", "a/x", "x"},
                    SuffixRow{"a/b", "/b", "b"}, SuffixRow{"txt", ".txt", "txt"},
                    SuffixRow{"/", "/", "/"}, SuffixRow{"/", "", "/"}, SuffixRow{".", ".", "."},
                    SuffixRow{"..", ".", "."}, SuffixRow{"a..", ".", "a."},
                    SuffixRow{"x.txt", "", "x.txt"}));

TEST_P(BaseNameSuffix, IsCutOffALongerBase) {
    EXPECT_STREQ(BaseName(GetParam().path, GetParam().suffix).get(), GetParam().base);
}

} // namespace
