#include "plat/hexDump.h"

#include <string>

#include <gtest/gtest.h>

namespace {

std::string dump(const std::string& bytes) {
    testing::internal::CaptureStderr();
    plat::hexDump("title: ", "prefix ", reinterpret_cast<const unsigned char*>(bytes.data()),
                  int(bytes.size()));
    return testing::internal::GetCapturedStderr();
}

TEST(HexDump, OfNothingIsTheTitle) {
    EXPECT_EQ(dump(""), "title: ");
}

// A line's bytes, padded to the column where its text begins.
std::string column(std::string hex) {
    hex.resize(52, ' ');
    return hex;
}

const std::string sixteen =
    "78 78 78 78  78 78 78 78  78 78 78 78  78 78 78 78  xxxxxxxxxxxxxxxx\n";

TEST(HexDump, OfAFullLineGroupsByFour) {
    EXPECT_EQ(dump("0123456789abcdef"),
              "title: 30 31 32 33  34 35 36 37  38 39 61 62  63 64 65 66  0123456789abcdef\n");
}

TEST(HexDump, PadsAShortLine) {
    EXPECT_EQ(dump("ab"), "title: " + column("61 62") + "ab\n");
    EXPECT_EQ(dump("abcd"), "title: " + column("61 62 63 64") + "abcd\n");
    EXPECT_EQ(dump("abcde"), "title: " + column("61 62 63 64  65") + "abcde\n");
    EXPECT_EQ(dump("0123456789abcde"),
              "title: " + column("30 31 32 33  34 35 36 37  38 39 61 62  63 64 65") +
                  "0123456789abcde\n");
}

TEST(HexDump, PutsThePrefixBeforeFurtherLines) {
    EXPECT_EQ(dump(std::string(16, 'x') + "ghij"),
              "title: " + sixteen + "prefix " + column("67 68 69 6a") + "ghij\n");
    EXPECT_EQ(dump(std::string(33, 'x')),
              "title: " + sixteen + "prefix " + sixteen + "prefix " + column("78") + "x\n");
}

TEST(HexDump, EndsWithTheLastFullLine) {
    EXPECT_EQ(dump(std::string(32, 'x')), "title: " + sixteen + "prefix " + sixteen);
}

TEST(HexDump, ShowsADotForWhatIsNotPrintable) {
    EXPECT_EQ(dump(std::string("\0\x1F ~\x7F\x80\xFF", 7)),
              "title: " + column("00 1f 20 7e  7f 80 ff") + ".. ~...\n");
}

} // namespace
