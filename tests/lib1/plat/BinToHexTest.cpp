#include "plat/BinToHex.h"

#include <climits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plat/Assertion.h"

namespace {

using plat::binToHexStr;
using plat::CBuf;
using plat::intToHex;

TEST(IntToHex, GivesLowerCaseDigits) {
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(intToHex(i), "0123456789abcdef"[i]);
}

class IntToHexOutside : public testing::TestWithParam<int> {};
TEST_P(IntToHexOutside, ThrowsAndNeitherPrintsNorAborts) {
    testing::internal::CaptureStderr();
    try {
        intToHex(GetParam());
        ADD_FAILURE() << "nothing thrown";
    } catch (const plat::AssertionFail& e) {
        EXPECT_STREQ(e.expr, "i >= 0 && i <= 15");
        EXPECT_STREQ(e.typeName.get(), "AssertionFail");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
INSTANTIATE_TEST_SUITE_P(Values, IntToHexOutside, testing::Values(16, -1, INT_MAX, INT_MIN));

TEST(BinToHexStr, WritesTwoDigitsAByte) {
    const unsigned char bytes[] = {0x00, 0xAB, 0xFF};
    EXPECT_STREQ(binToHexStr(CBuf<unsigned char>(bytes, 3)).get(), "00abff");
}

TEST(BinToHexStr, GivesAnEmptyTextForNoBytes) {
    EXPECT_STREQ(binToHexStr(CBuf<unsigned char>()).get(), "");
}

TEST(BinToHexStr, WritesEveryByteAtEveryLength) {
    for (int length = 0; length < 300; ++length) {
        std::vector<unsigned char> bytes;
        std::string expected;
        for (int i = 0; i < length; ++i) {
            bytes.push_back(static_cast<unsigned char>(i * 7 + length));
            expected += "0123456789abcdef"[bytes.back() >> 4];
            expected += "0123456789abcdef"[bytes.back() & 15];
        }
        EXPECT_EQ(binToHexStr(CBuf<unsigned char>(bytes.data(), length)).get(), expected);
    }
}

} // namespace
