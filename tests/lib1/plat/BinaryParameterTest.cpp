#include "plat/BinaryParameter.h"

#include <cstring>
#include <memory>
#include <ostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/FreedBytes.h"
#include "lib1/plat/ParameterListener.h"
#include "lib1/plat/VirtualSlot.h"
#include "plat/Configuration.h"

namespace {

using plat::BinaryParameter;
using plat::Configuration;
using testing::ElementsAre;
using testing::Pair;
using Bytes = plat::MBuf<unsigned char>;

constexpr unsigned char raw[] = {0x00, 0xAB, 0x7F};

struct BinaryParameterTest : testing::Test {
    Configuration config{"Test", nullptr};
};

TEST_F(BinaryParameterTest, HoldsACopyOfItsDefault) {
    unsigned char bytes[] = {1, 2};
    const BinaryParameter param("Bin", "About it.", {bytes, 2}, &config, true);
    bytes[0] = 9;
    EXPECT_EQ(valueOf(param), "0102");
    EXPECT_EQ(param.getLength(), 2);
    EXPECT_TRUE(param.isHidden());
    EXPECT_STREQ(param.getDescription(), "About it.");
}

TEST_F(BinaryParameterTest, EmptyDefaultIsEmptyText) {
    const BinaryParameter param("Bin", loc::msgid_t("plat_test_unknown"), {}, &config);
    EXPECT_EQ(valueOf(param), "");
    EXPECT_EQ(param.getLength(), 0);
    EXPECT_FALSE(param.isHidden());
    EXPECT_STREQ(param.getDescription(), "plat_test_unknown");
}

TEST_F(BinaryParameterTest, TakesBytes) {
    BinaryParameter param("Bin", "", {}, &config);
    ParameterListener listener(param);
    param.setParam(plat::CBuf<unsigned char>(raw, 3), 50);
    param.setParam(plat::CBuf<unsigned char>(raw, 3), 50);
    EXPECT_EQ(valueOf(param), "00ab7f");
    EXPECT_THAT(listener.takePriorities(), ElementsAre(50));
    param.setParam(plat::CBuf<unsigned char>(), 0);
    EXPECT_EQ(valueOf(param), "");
}

struct TextRow {
    const char* name;
    const char* text;
    const char* value; // null for a text that is refused
    friend void PrintTo(const TextRow& row, std::ostream* out) { *out << row.name; }
};

class BinaryText : public BinaryParameterTest, public testing::WithParamInterface<TextRow> {};

TEST_P(BinaryText, IsDecoded) {
    BinaryParameter param("Bin", "", {raw, 3}, &config);
    EXPECT_EQ(param.setParam(GetParam().text, 50), GetParam().value != nullptr);
    if (GetParam().value != nullptr)
        EXPECT_THAT(valuesOf(param), ElementsAre(Pair(50, GetParam().value), Pair(100, "00ab7f")));
    else
        EXPECT_THAT(valuesOf(param), ElementsAre(Pair(100, "00ab7f")));
}
INSTANTIATE_TEST_SUITE_P(
    Texts, BinaryText,
    testing::Values(TextRow{"Null", nullptr, nullptr}, TextRow{"Empty", "", ""},
                    TextRow{"Lower", "0aff", "0aff"}, TextRow{"Upper", "0AFF", "0aff"},
                    TextRow{"OddLength", "abc", nullptr}, TextRow{"NoDigit", "0g", nullptr},
                    TextRow{"Prefix", "0x00", nullptr}, TextRow{"Blank", "00 11", nullptr}),
    [](const auto& row) { return row.param.name; });

TEST_F(BinaryParameterTest, AnswersForItsKind) {
    BinaryParameter param("Bin", "", {raw, 3}, &config);
    EXPECT_TRUE(param.isBinary());
    EXPECT_FALSE(param.isBool() || param.isInt() || param.isString() || param.isEnum());
    EXPECT_EQ(param.getIntValue(), 0);
    EXPECT_FALSE(param.setIntValue(1, 50));
    EXPECT_EQ(virtualSlot(&BinaryParameter::getData), 15U); // behind clone
}

TEST_F(BinaryParameterTest, GivesACopyOfTheBytesInForce) {
    BinaryParameter param("Bin", "", {raw, 3}, &config);
    Bytes out;
    out.replaceBuf(new unsigned char[5], 5);
    param.getData(&out);
    ASSERT_EQ(out.length(), 3);
    EXPECT_EQ(std::memcmp(out.get(), raw, 3), 0);
    out.get()[0] = 9;
    EXPECT_EQ(valueOf(param), "00ab7f");
    param.setParam("", 50);
    param.getData(&out);
    EXPECT_EQ(out.length(), 0);
}

TEST_F(BinaryParameterTest, ClonesItsKind) {
    BinaryParameter param("Bin", "", {raw, 3}, &config);
    param.setParam("ff", 50);
    Configuration other("Other", nullptr);
    const std::unique_ptr<plat::ConfigParameter> copy(param.clone(&other));
    ASSERT_NE(dynamic_cast<BinaryParameter*>(copy.get()), nullptr);
    EXPECT_THAT(valuesOf(*copy), ElementsAre(Pair(50, "ff"), Pair(100, "00ab7f")));
}

Bytes secret(bool isSecure) {
    Bytes bytes(isSecure);
    auto* const array = new unsigned char[FreedBytes::watchedSize];
    std::memset(array, 's', FreedBytes::watchedSize);
    bytes.replaceBuf(array, FreedBytes::watchedSize);
    return bytes;
}

FreedBytes::Bytes allBytes(char byte) {
    FreedBytes::Bytes bytes;
    bytes.fill(byte);
    return bytes;
}

TEST_F(BinaryParameterTest, WipesAReplacedSecret) {
    BinaryParameter param("Bin", "", {}, &config);
    param.setValue(secret(true), 50);
    FreedBytes::last = allBytes('#');
    param.setParam("00", 50);
    EXPECT_EQ(FreedBytes::last, allBytes('\0'));
}

TEST_F(BinaryParameterTest, WipesARemovedSecret) {
    BinaryParameter param("Bin", "", {}, &config);
    param.setValue(secret(true), 50);
    FreedBytes::last = allBytes('#');
    param.unsetParam(50, true);
    EXPECT_EQ(FreedBytes::last, allBytes('\0'));
}

TEST_F(BinaryParameterTest, WipesWhatASecureBufferHeld) {
    const BinaryParameter param("Bin", "", {raw, 3}, &config);
    Bytes out = secret(true);
    FreedBytes::last = allBytes('#');
    param.getData(&out);
    EXPECT_EQ(FreedBytes::last, allBytes('\0'));
    EXPECT_TRUE(out.isSecure());
}

TEST_F(BinaryParameterTest, LeavesOtherBytesUnwiped) {
    BinaryParameter param("Bin", "", {}, &config);
    param.setValue(secret(false), 50);
    FreedBytes::last = allBytes('#');
    param.unsetParam(50, true);
    EXPECT_EQ(FreedBytes::last, allBytes('s'));
}

} // namespace
