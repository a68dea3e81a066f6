#include "plat/StringCopyOpt.h"

#include <utility>

#include <gtest/gtest.h>

namespace {

using plat::StringCopyOpt;

const char text[] = "text";

TEST(StringCopyOpt, IsNullAtFirst) {
    const StringCopyOpt key;
    EXPECT_EQ(key.get(), nullptr);
    EXPECT_FALSE(key.ownsCopy());
}

TEST(StringCopyOpt, RefersToTheVeryText) {
    const StringCopyOpt key(text, false);
    EXPECT_EQ(key.get(), text);
    EXPECT_FALSE(key.ownsCopy());
}

TEST(StringCopyOpt, OwnsACopy) {
    const StringCopyOpt key(text, true);
    EXPECT_NE(key.get(), text);
    EXPECT_STREQ(key.get(), text);
    EXPECT_TRUE(key.ownsCopy());
}

TEST(StringCopyOpt, CopyOfNullIsNull) {
    EXPECT_EQ(StringCopyOpt(nullptr, true).get(), nullptr);
}

TEST(StringCopyOpt, CopyingSharesAReferenceAndDuplicatesACopy) {
    const StringCopyOpt shared(text, false);
    const StringCopyOpt owned(text, true);
    const StringCopyOpt sharedToo = shared; // NOLINT(performance-unnecessary-copy-initialization)
    const StringCopyOpt duplicate = owned;  // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(sharedToo.get(), text);
    EXPECT_NE(duplicate.get(), owned.get());
    EXPECT_STREQ(duplicate.get(), text);
}

TEST(StringCopyOpt, MovingHandsTheTextOver) {
    StringCopyOpt owned(text, true);
    const char* const copy = owned.get();
    const StringCopyOpt taker = std::move(owned);
    EXPECT_EQ(taker.get(), copy);
    EXPECT_TRUE(taker.ownsCopy());
}

TEST(StringCopyOpt, AssignmentFreesTheOldText) {
    StringCopyOpt key("old", true);
    key = StringCopyOpt(text, false);
    EXPECT_EQ(key.get(), text);
    EXPECT_FALSE(key.ownsCopy());
}

struct OrderRow {
    const char* name;
    const char* a;
    const char* b;
    bool isLess;
    friend void PrintTo(const OrderRow& row, std::ostream* out) { *out << row.name; }
};
class KeyOrder : public testing::TestWithParam<OrderRow> {};
TEST_P(KeyOrder, IsByBytesNullFirst) {
    EXPECT_EQ(StringCopyOpt(GetParam().a, false) < StringCopyOpt(GetParam().b, true),
              GetParam().isLess);
}
INSTANTIATE_TEST_SUITE_P(Rows, KeyOrder,
                         testing::Values(OrderRow{"TwoNulls", nullptr, nullptr, false},
                                         OrderRow{"NullBeforeEmpty", nullptr, "", true},
                                         OrderRow{"EmptyAfterNull", "", nullptr, false},
                                         OrderRow{"Equal", "a", "a", false},
                                         OrderRow{"Less", "a", "b", true},
                                         OrderRow{"More", "b", "a", false},
                                         OrderRow{"Prefix", "a", "aa", true},
                                         OrderRow{"CaseCounts", "B", "a", true},
                                         OrderRow{"BytesAreUnsigned", "z", "\xC3\xA9", true}),
                         [](const auto& row) { return row.param.name; });

} // namespace
