#include "plat/S64Parameter.h"

#include <limits>
#include <memory>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lib1/plat/ParameterListener.h"
#include "plat/Configuration.h"

namespace {

using plat::Configuration;
using plat::S64Parameter;
using testing::ElementsAre;
using testing::Pair;

constexpr long long smallest = std::numeric_limits<long long>::min();
constexpr long long largest = std::numeric_limits<long long>::max();

struct S64ParameterTest : testing::Test {
    Configuration config{"Test", nullptr};
};

struct NumberRow {
    const char* name;
    long long number;
    const char* text;
    friend void PrintTo(const NumberRow& row, std::ostream* out) { *out << row.name; }
};

class S64Number : public S64ParameterTest, public testing::WithParamInterface<NumberRow> {};

TEST_P(S64Number, IsKeptAsText) {
    S64Parameter param("Big", "", 77, false, &config);
    EXPECT_TRUE(param.setParam(GetParam().number, 50));
    EXPECT_EQ(valueOf(param), GetParam().text);
    EXPECT_EQ(param.getValue(), GetParam().number);
}

TEST_P(S64Number, CanBeTheDefault) {
    const S64Parameter param("Big", "", GetParam().number, false, &config);
    EXPECT_THAT(valuesOf(param), ElementsAre(Pair(100, GetParam().text)));
    EXPECT_EQ(param.getValue(), GetParam().number);
}
INSTANTIATE_TEST_SUITE_P(Numbers, S64Number,
                         testing::Values(NumberRow{"Zero", 0, "int64:0000000000000000"},
                                         NumberRow{"Small", 255, "int64:00000000000000ff"},
                                         NumberRow{"MinusOne", -1, "int64:ffffffffffffffff"},
                                         NumberRow{"EveryDigit", 0x0123456789abcdef,
                                                   "int64:0123456789abcdef"},
                                         NumberRow{"Largest", largest, "int64:7fffffffffffffff"},
                                         NumberRow{"Smallest", smallest, "int64:8000000000000000"}),
                         [](const auto& row) { return row.param.name; });

struct TextRow {
    const char* name;
    const char* text;
    const char* value; // null for a text that is refused
    friend void PrintTo(const TextRow& row, std::ostream* out) { *out << row.name; }
};

class S64Text : public S64ParameterTest, public testing::WithParamInterface<TextRow> {};

TEST_P(S64Text, IsParsed) {
    S64Parameter param("Big", "", 1, false, &config);
    EXPECT_EQ(param.setParam(GetParam().text, 50), GetParam().value != nullptr);
    if (GetParam().value != nullptr)
        EXPECT_THAT(valuesOf(param),
                    ElementsAre(Pair(50, GetParam().value), Pair(100, "int64:0000000000000001")));
    else
        EXPECT_EQ(param.getPriority(), 100);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, S64Text,
    testing::Values(
        TextRow{"Null", nullptr, nullptr}, TextRow{"Empty", "", nullptr},
        TextRow{"Tagged", "int64:00000000000000ff", "int64:00000000000000ff"},
        TextRow{"TaggedUpper", "int64:00000000000000FF", nullptr},
        TextRow{"TaggedShort", "int64:ff", nullptr},
        TextRow{"TaggedOneShort", "int64:0000000000000ff", nullptr},
        TextRow{"TaggedOneLong", "int64:00000000000000fff", nullptr},
        TextRow{"TaggedFirstNoDigit", "int64:g0000000000000ff", nullptr},
        TextRow{"TaggedLastNoDigit", "int64:00000000000000fg", nullptr},
        TextRow{"TagInUpperCase", "INT64:00000000000000ff", nullptr},
        TextRow{"TagAlone", "int64:", nullptr},
        TextRow{"NoUtf8", "int64:00000000000000\xFF\xFF", nullptr},
        // Without the tag, the first byte is the lowest one, and letters may be capital.
        TextRow{"Plain", "0102030405060708", "int64:0807060504030201"},
        TextRow{"PlainUpper", "FF00000000000000", "int64:00000000000000ff"},
        TextRow{"PlainNegative", "00000000000000F0", "int64:f000000000000000"},
        TextRow{"PlainShort", "01020304050607", nullptr},
        TextRow{"PlainOdd", "010203040506070", nullptr},
        TextRow{"PlainLong", "010203040506070809", nullptr},
        TextRow{"PlainNoDigit", "010203040506070g", nullptr}, TextRow{"Decimal", "5", nullptr}),
    [](const auto& row) { return row.param.name; });

TEST_F(S64ParameterTest, AnswersAsAString) {
    const S64Parameter param("Big", loc::msgid_t("plat_test_unknown"), 5, true, &config);
    EXPECT_TRUE(param.isString());
    EXPECT_FALSE(param.isBool() || param.isInt() || param.isEnum() || param.isBinary());
    EXPECT_EQ(param.getIntValue(), 0);
    EXPECT_TRUE(param.isHidden());
    EXPECT_STREQ(param.getDescription(), "plat_test_unknown");
}

TEST_F(S64ParameterTest, ClonesAsAStringParameter) {
    S64Parameter param("Big", "", 5, false, &config);
    param.setParam(-1LL, 50);
    Configuration other("Other", nullptr);
    const std::unique_ptr<plat::ConfigParameter> copy(param.clone(&other));
    EXPECT_EQ(dynamic_cast<S64Parameter*>(copy.get()), nullptr);
    EXPECT_TRUE(copy->isString());
    EXPECT_THAT(valuesOf(*copy), ElementsAre(Pair(50, "int64:ffffffffffffffff"),
                                             Pair(100, "int64:0000000000000005")));
    EXPECT_TRUE(copy->setParam("int64:zz", 50));
    EXPECT_EQ(valueOf(*copy), "int64:zz");
}

TEST_F(S64ParameterTest, TextThatIsNoNumberReadsAsZero) {
    S64Parameter param("Big", "", 5, false, &config);
    for (const char* text : {static_cast<const char*>(nullptr), "", "int64:", "int64:ff",
                             "int64:000000000000000g", "0102030405060708090a0b"}) {
        param.setValue(plat::String(text), 50); // asks for no form
        EXPECT_EQ(param.getValue(), 0);
    }
}

} // namespace
