#include "plat/HexBlocks.h"

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t vectorSize = 16;

/// The best way on this processor, and the one for any.
struct Way {
    const char* name;
    std::size_t (*write)(char*, const unsigned char*, std::size_t);
    std::size_t (*read)(const char*, unsigned char*, std::size_t);
    friend void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }
};

class HexBlocks : public testing::TestWithParam<Way> {};

Bytes someBytes(std::size_t count) {
    Bytes bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<unsigned char>(i * 7 + count));
    return bytes;
}

std::string hexOf(const Bytes& bytes, const char* digits = "0123456789abcdef") {
    std::string hex;
    for (const unsigned char byte : bytes) {
        hex += digits[byte >> 4];
        hex += digits[byte & 15];
    }
    return hex;
}

TEST_P(HexBlocks, WritesWholeBlocksAndNothingBehindThem) {
    for (std::size_t count = 0; count < 300; ++count) {
        const Bytes bytes = someBytes(count);
        std::string text(2 * count, '#');
        const std::size_t done = GetParam().write(text.data(), bytes.data(), count);
        EXPECT_EQ(done, count / vectorSize * vectorSize);
        EXPECT_EQ(text, hexOf(bytes).substr(0, 2 * done) + std::string(2 * (count - done), '#'));
    }
}

TEST_P(HexBlocks, ReadsWholeBlocksAndNothingBehindThem) {
    for (const char* const digits : {"0123456789abcdef", "0123456789ABCDEF"}) {
        for (std::size_t count = 0; count < 300; ++count) {
            const Bytes bytes = someBytes(count);
            const std::string hex = hexOf(bytes, digits);
            Bytes read(count, '#');
            const std::size_t done = GetParam().read(hex.data(), read.data(), count);
            EXPECT_EQ(done, count / vectorSize * vectorSize);
            EXPECT_EQ(Bytes(read.begin(), read.begin() + std::ptrdiff_t(done)),
                      Bytes(bytes.begin(), bytes.begin() + std::ptrdiff_t(done)));
            EXPECT_EQ(Bytes(read.begin() + std::ptrdiff_t(done), read.end()),
                      Bytes(count - done, '#'));
        }
    }
}

TEST_P(HexBlocks, StopsAtTheBlockOfEveryCharacterThatIsNoDigit) {
    const std::string digits = "0123456789abcdefABCDEF";
    const Bytes bytes = someBytes(6 * vectorSize);
    for (std::size_t place = 0; place < 2 * bytes.size(); ++place) {
        for (int c = 0; c < 256; ++c) {
            std::string hex = hexOf(bytes);
            hex[place] = char(c);
            Bytes read(bytes.size());
            const std::size_t blockStart = place / 2 / vectorSize * vectorSize;
            const bool isDigit = digits.find(char(c)) != std::string::npos;
            ASSERT_EQ(GetParam().read(hex.data(), read.data(), bytes.size()),
                      isDigit ? bytes.size() : blockStart)
                << "character " << c << " at " << place;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Ways, HexBlocks,
                         testing::Values(Way{"Best", plat::writeHexBlocks, plat::readHexBlocks},
                                         Way{"Vectors", plat::writeHexVectors,
                                             plat::readHexVectors}),
                         [](const auto& row) { return row.param.name; });

} // namespace
