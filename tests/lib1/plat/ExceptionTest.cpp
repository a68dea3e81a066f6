#include "plat/Exception.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "lib1/AllocationHook.h"
#include "lib1/SystemTexts.h"
#include "plat/BadInt.h"
#include "plat/BadUtf8.h"

namespace {

using plat::Exception;
using plat::StdlibException;
using plat::SystemException;
using plat::SystemExceptionFmt;

std::string numbered(const std::string& context, const std::string& text, int err) {
    return context + text + " (" + std::to_string(err) + ")";
}

TEST(Exception, StartsWithoutTexts) {
    const Exception e;
    EXPECT_STREQ(e.message.get(), "");
    EXPECT_STREQ(e.typeName.get(), "");
}

TEST(Exception, TakesAPlainTextAsItStands) {
    const Exception e("100%d \"-\"");
    EXPECT_STREQ(e.message.get(), "100%d \"-\"");
    EXPECT_STREQ(e.typeName.get(), "");
}

TEST(Exception, FormatsBehindAnyNumber) {
    EXPECT_STREQ(Exception(1, "%s=%d", "x", 5).message.get(), "x=5");
    EXPECT_STREQ(Exception(-7, "%s=%d", "x", 5).message.get(), "x=5");
    EXPECT_STREQ(Exception(1, "%s=%d", "x", 5).typeName.get(), "");
}

TEST(Exception, CutsLongTexts) {
    const std::string longText(300, 'x');
    const std::string cut(255, 'x');
    EXPECT_EQ(Exception(longText.c_str()).message.get(), cut);
    EXPECT_EQ(Exception(1, "%s", longText.c_str()).message.get(), cut);
}

TEST(Exception, CutsBetweenCharacters) {
    const std::string text = std::string(254, 'x') + "\u00E9";
    EXPECT_EQ(Exception(text.c_str()).message.get(), std::string(254, 'x'));
    EXPECT_EQ(Exception(1, "%s", text.c_str()).message.get(), std::string(254, 'x'));
}

TEST(Exception, HasTheAddressOfItsText) {
    const SystemException e("x", 1);
    EXPECT_EQ(static_cast<const void*>(&e), static_cast<const void*>(e.message.get()));
    EXPECT_EQ(static_cast<const void*>(&e.typeName),
              static_cast<const void*>(e.message.get() + 256));
}

TEST(Exception, IsAPlainValue) {
    static_assert(!std::is_polymorphic_v<SystemExceptionFmt>);
    static_assert(std::is_trivially_copyable_v<SystemExceptionFmt>);
    const Exception first("abc");
    const Exception second = first; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_STREQ(second.message.get(), "abc");
}

TEST(SystemException, DescribesTheError) {
    const SystemException e("fileTruncate(ftruncate)", ENOSPC);
    EXPECT_EQ(e.message.get(),
              numbered("fileTruncate(ftruncate): ", systemErrorText(ENOSPC), ENOSPC));
    EXPECT_STREQ(e.typeName.get(), "System");
    EXPECT_EQ(e.err, ENOSPC);
}

TEST(SystemException, NeedsNoContext) {
    EXPECT_EQ(SystemException("", ENOENT).message.get(),
              numbered("", systemErrorText(ENOENT), ENOENT));
    EXPECT_STREQ(SystemException("", 0).message.get(), "Success (0)");
}

TEST(SystemException, CallsZeroSuccess) {
    EXPECT_STREQ(SystemException("getcwd", 0).message.get(), "getcwd: Success (0)");
}

class UnknownError : public testing::TestWithParam<int> {};
TEST_P(UnknownError, HasPlainWordsAndItsNumber) {
    EXPECT_EQ(SystemException("ctx", GetParam()).message.get(),
              numbered("ctx: ", "Unknown error", GetParam()));
    EXPECT_EQ(SystemException("ctx", GetParam()).err, GetParam());
}
INSTANTIATE_TEST_SUITE_P(Numbers, UnknownError, testing::Values(99999, -1, -2147483647 - 1),
                         [](const auto& row) { return "Row" + std::to_string(row.index); });

class LongContext : public testing::TestWithParam<int> {};
TEST_P(LongContext, StaysAndTheErrorIsCut) {
    const std::string context(std::size_t(GetParam()), 'x');
    const SystemException e(context.c_str(), ENOENT);
    const std::string message = e.message.get();
    EXPECT_EQ(message.substr(0, context.size()), context.substr(0, 255));
    EXPECT_LE(message.size(), 255U);
    EXPECT_EQ(e.message.get()[255], '\0');
    EXPECT_EQ(e.err, ENOENT);
}
INSTANTIATE_TEST_SUITE_P(Lengths, LongContext,
                         testing::Values(200, 220, 228, 229, 230, 231, 232, 240, 252, 253, 254, 255,
                                         256, 300));

TEST(SystemException, AppendsToWhatIsThere) {
    SystemException e("a", EPERM);
    e.strerror(0);
    EXPECT_EQ(e.message.get(), numbered("a: ", systemErrorText(EPERM), EPERM) + ": Success (0)");
    EXPECT_EQ(e.err, 0);
}

TEST(SystemException, AddsNothingVisibleToAFullMessage) {
    SystemException e(std::string(300, 'x').c_str(), EPERM);
    EXPECT_EQ(e.message.get(), std::string(255, 'x'));
    EXPECT_EQ(e.err, EPERM);
}

TEST(StdlibException, ReadsErrno) {
    errno = ENOENT;
    const StdlibException e("fileOpen(%s)", "name");
    EXPECT_EQ(e.message.get(), numbered("fileOpen(name): ", systemErrorText(ENOENT), ENOENT));
    EXPECT_STREQ(e.typeName.get(), "Stdlib");
    EXPECT_EQ(e.err, ENOENT);
}

TEST(StdlibException, ReadsErrnoBehindTheFormatting) {
    errno = ENOENT;
    const wchar_t unwritable[] = {wchar_t(0x7FFFFFFF), 0}; // the formatter fails with EILSEQ
    EXPECT_EQ(StdlibException("%ls", unwritable).err, EILSEQ);
}

TEST(SystemExceptionFmt, TakesTheErrorBeforeTheArguments) {
    const SystemExceptionFmt e("fdOpen(%s, %d)", EACCES, "path", 5);
    EXPECT_EQ(e.message.get(), numbered("fdOpen(path, 5): ", systemErrorText(EACCES), EACCES));
    EXPECT_STREQ(e.typeName.get(), "System");
    EXPECT_EQ(e.err, EACCES);
}

TEST(SystemExceptionFmt, IsCaughtAsAnException) {
    try {
        throw SystemExceptionFmt("fdOpen(%s)", ENOENT, "path");
    } catch (const Exception& e) {
        EXPECT_EQ(e.message.get(), numbered("fdOpen(path): ", systemErrorText(ENOENT), ENOENT));
        EXPECT_STREQ(e.typeName.get(), "System");
    }
}

TEST(ExceptionFamily, DerivesAsItIsCaught) {
    static_assert(std::is_base_of_v<Exception, SystemException>);
    static_assert(std::is_base_of_v<SystemException, StdlibException>);
    static_assert(std::is_base_of_v<SystemException, SystemExceptionFmt>);
    static_assert(std::is_base_of_v<Exception, plat::BadInt>);
    static_assert(std::is_base_of_v<Exception, plat::BadUtf8>);
    EXPECT_STREQ(plat::BadInt("x").typeName.get(), "");
}

TEST(ExceptionFamily, AllocatesNothing) {
    const std::string longText(1000, 'x');
    const int before = AllocationHook::count;
    const Exception plain(longText.c_str());
    const Exception formatted(1, "%s", longText.c_str());
    const SystemException system(longText.c_str(), 99999);
    const StdlibException stdlib("%s", longText.c_str());
    const SystemExceptionFmt systemFmt("%s %d", ENOENT, longText.c_str(), 1);
    EXPECT_EQ(AllocationHook::count, before);
}

TEST(BadUtf8, CarriesItsMessage) {
    EXPECT_STREQ(plat::BadUtf8("100%d").message.get(), "100%d");
    EXPECT_STREQ(plat::BadUtf8(1, "Bad UTF-8 string for %s", "name").message.get(),
                 "Bad UTF-8 string for name");
    EXPECT_STREQ(plat::BadUtf8(0, "%d", 5).typeName.get(), "");
    EXPECT_EQ(plat::BadUtf8(std::string(300, 'x').c_str()).message.get(), std::string(255, 'x'));
}

} // namespace
