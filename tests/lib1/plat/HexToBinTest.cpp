#include "plat/HexToBin.h"

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "lib1/FreedBytes.h"

namespace {

using plat::hexStrToBin;
using plat::MBuf;
using plat::readHexAndShift;

TEST(ReadHexAndShift, TakesEveryDigitAndNothingElse) {
    const std::string digits = "0123456789abcdef";
    const std::string upper = "0123456789ABCDEF";
    for (int c = 0; c < 256; ++c) {
        int number = 5;
        const std::size_t lowerValue = c == 0 ? std::string::npos : digits.find(char(c));
        const std::size_t upperValue = c == 0 ? std::string::npos : upper.find(char(c));
        const std::size_t value = std::min(lowerValue, upperValue);
        const bool isDigit = value != std::string::npos;
        EXPECT_EQ(readHexAndShift(char(c), &number), isDigit) << c;
        EXPECT_EQ(number, isDigit ? 5 * 16 + int(value) : 5);
    }
}

TEST(ReadHexAndShift, ShiftsTheOldestDigitOut) {
    int number = 0;
    for (const char c : std::string("123456789"))
        EXPECT_TRUE(readHexAndShift(c, &number));
    EXPECT_EQ(number, 0x23456789);
    number = INT_MIN;
    EXPECT_TRUE(readHexAndShift('f', &number));
    EXPECT_EQ(number, 15);
}

using Bytes = std::vector<unsigned char>;

Bytes bytesOf(const MBuf<unsigned char>& buf) {
    return {buf.get(), buf.get() + buf.length()};
}

MBuf<unsigned char> filled() {
    MBuf<unsigned char> buf;
    buf.replaceBuf(new unsigned char[2]{1, 2}, 2);
    return buf;
}

struct HexRow {
    const char* name;
    const char* hex;
    bool isHex;
    Bytes bytes;
    friend void PrintTo(const HexRow& row, std::ostream* out) { *out << row.name; }
};
class HexStrToBin : public testing::TestWithParam<HexRow> {};
TEST_P(HexStrToBin, ReplacesTheBytes) {
    MBuf<unsigned char> out = filled();
    EXPECT_EQ(hexStrToBin(GetParam().hex, &out), GetParam().isHex);
    EXPECT_EQ(bytesOf(out), GetParam().bytes);
    if (GetParam().bytes.empty()) {
        EXPECT_EQ(out.get(), nullptr);
    }
}
INSTANTIATE_TEST_SUITE_P(
    Texts, HexStrToBin,
    testing::Values(HexRow{"BothCases", "0A1b", true, {0x0A, 0x1B}},
                    HexRow{"Edges", "00ff7F80", true, {0x00, 0xFF, 0x7F, 0x80}},
                    HexRow{"Empty", "", true, {}}, HexRow{"OddLength", "abc", false, {}},
                    HexRow{"OneDigit", "a", false, {}}, HexRow{"BadLowDigit", "0g", false, {}},
                    HexRow{"BadHighDigit", "g0", false, {}},
                    HexRow{"BadBehindGood", "0011x0", false, {}},
                    HexRow{"NoPrefix", "0x10", false, {}}, HexRow{"NoBlanks", "00 11 ", false, {}},
                    HexRow{"HighByte", "0\xC3", false, {}}, HexRow{"JustOutside", "/0", false, {}},
                    HexRow{"JustBehindNine", ":0", false, {}},
                    HexRow{"JustBeforeA", "@0", false, {}}, HexRow{"JustBehindF", "0G", false, {}}),
    [](const auto& row) { return row.param.name; });

std::string hexOf(std::size_t length) {
    std::string hex;
    for (std::size_t i = 0; i < length; ++i)
        hex += "0123456789abcdefABCDEF"[(i * 7 + length) % 22];
    return hex;
}

TEST(HexStrToBinAtEveryLength, ReadsEveryPair) {
    for (std::size_t length = 0; length < 300; length += 2) {
        const std::string hex = hexOf(length);
        Bytes expected;
        for (std::size_t i = 0; i < length; i += 2)
            expected.push_back(
                static_cast<unsigned char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
        MBuf<unsigned char> out;
        EXPECT_TRUE(hexStrToBin(hex.c_str(), &out));
        EXPECT_EQ(bytesOf(out), expected);
    }
}

TEST(HexStrToBinAtEveryLength, FindsABadDigitAtEveryPlace) {
    for (std::size_t i = 0; i < 100; ++i) {
        for (const char bad :
             {'g', '\x01', '\x80', '\xFF', '/', ':', '@', '`', 'G', '\xB0', '\xE1'}) {
            std::string hex = hexOf(100);
            hex[i] = bad;
            MBuf<unsigned char> out = filled();
            EXPECT_FALSE(hexStrToBin(hex.c_str(), &out));
            EXPECT_EQ(out.length(), 0);
        }
    }
}

TEST(HexStrToBinSecurely, WipesTheOldBytesFirst) {
    for (const char* const hex : {"00", "abc", "0g", ""}) {
        MBuf<unsigned char> out(true);
        auto* const secret = new unsigned char[FreedBytes::watchedSize];
        std::memset(secret, 's', FreedBytes::watchedSize);
        out.replaceBuf(secret, FreedBytes::watchedSize);
        FreedBytes::last.fill('#');
        hexStrToBin(hex, &out);
        EXPECT_EQ(FreedBytes::last, FreedBytes::Bytes{});
        EXPECT_TRUE(out.isSecure());
    }
}

TEST(HexStrToBinSecurely, WipesWhatItHadReadBeforeABadDigit) {
    std::string hex(2 * FreedBytes::watchedSize, '5');
    hex.back() = 'x';
    MBuf<unsigned char> out(true);
    FreedBytes::last.fill('#');
    EXPECT_FALSE(hexStrToBin(hex.c_str(), &out));
    EXPECT_EQ(FreedBytes::last, FreedBytes::Bytes{});
}

} // namespace
