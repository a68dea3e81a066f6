#include "plat/Buf.h"

#include <array>
#include <cstring>
#include <utility>

#include <gtest/gtest.h>

#include "lib1/FreedBytes.h"

namespace {

using plat::CBuf;
using plat::MBuf;

TEST(CBuf, ViewsWhatItIsGiven) {
    const char text[] = {'a', 'b'};
    const CBuf<char> view(text, 2);
    EXPECT_EQ(view.data, text);
    EXPECT_EQ(view.length, 2);
    EXPECT_EQ(view.end() - view.begin(), 2);
}

TEST(CBuf, StartsEmpty) {
    const CBuf<char> view;
    EXPECT_EQ(view.data, nullptr);
    EXPECT_EQ(view.length, 0);
}

TEST(MBuf, StartsEmptyAndOpen) {
    const MBuf<char> buf;
    EXPECT_EQ(buf.get(), nullptr);
    EXPECT_EQ(buf.length(), 0);
    EXPECT_FALSE(buf.isSecure());
}

TEST(MBuf, OwnsTheArrayPutIn) {
    MBuf<char> buf;
    char* const array = new char[3];
    buf.replaceBuf(array, 3);
    EXPECT_EQ(buf.get(), array);
    EXPECT_EQ(buf.length(), 3);
    EXPECT_EQ(buf.view().data, array);
    EXPECT_EQ(buf.view().length, 3);
    buf.clear();
    EXPECT_EQ(buf.get(), nullptr);
    EXPECT_EQ(buf.length(), 0);
}

char* secret() {
    char* const array = new char[FreedBytes::watchedSize];
    std::memset(array, 's', FreedBytes::watchedSize);
    // Or the compiler, which sees that the array is freed soon, leaves the writing out.
    asm volatile("" : : "r"(array) : "memory");
    return array;
}

TEST(MBuf, SecureOneWipesTheOldArrayBeforeFreeingIt) {
    MBuf<char> buf(true);
    buf.replaceBuf(secret(), FreedBytes::watchedSize);
    FreedBytes::last.fill('#');
    buf.replaceBuf(new char[1], 1);
    EXPECT_EQ(FreedBytes::last, FreedBytes::Bytes{});
}

TEST(MBuf, SecureOneWipesItsLengthOnly) {
    MBuf<char> buf(true);
    buf.replaceBuf(secret(), FreedBytes::watchedSize - 1);
    buf.clear();
    FreedBytes::Bytes wiped{};
    wiped.back() = 's';
    EXPECT_EQ(FreedBytes::last, wiped);
}

TEST(MBuf, SecureOneWipesInTheEnd) {
    {
        MBuf<char> buf;
        buf.setSecure(true);
        buf.replaceBuf(secret(), FreedBytes::watchedSize);
        FreedBytes::last.fill('#');
    }
    EXPECT_EQ(FreedBytes::last, FreedBytes::Bytes{});
}

TEST(MBuf, SecureOneCountsInBytes) {
    MBuf<short> buf(true);
    auto* const array = new short[FreedBytes::watchedSize / sizeof(short)];
    std::memset(array, 's', FreedBytes::watchedSize);
    buf.replaceBuf(array, FreedBytes::watchedSize / sizeof(short));
    buf.clear();
    EXPECT_EQ(FreedBytes::last, FreedBytes::Bytes{});
}

TEST(MBuf, OpenOneFreesWithoutWiping) {
    MBuf<char> buf;
    buf.replaceBuf(secret(), FreedBytes::watchedSize);
    buf.clear();
    FreedBytes::Bytes untouched;
    untouched.fill('s');
    EXPECT_EQ(FreedBytes::last, untouched);
}

TEST(MBuf, MovesArrayLengthAndFlag) {
    MBuf<char> first(true);
    char* const array = new char[2];
    first.replaceBuf(array, 2);
    MBuf<char> second(std::move(first));
    EXPECT_EQ(second.get(), array);
    EXPECT_EQ(second.length(), 2);
    EXPECT_TRUE(second.isSecure());
    EXPECT_EQ(first.get(), nullptr); // NOLINT(bugprone-use-after-move):
                                     // a moved buffer is empty
    EXPECT_EQ(first.length(), 0);
    MBuf<char> third;
    third.replaceBuf(new char[1], 1);
    third = std::move(second);
    EXPECT_EQ(third.get(), array);
    EXPECT_TRUE(third.isSecure());
}

} // namespace
