#include "loc/MsgId.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

TEST(MsgId, IsOnePointerPassedByValue) {
    static_assert(sizeof(loc::msgid_t) == sizeof(const char*));
    static_assert(std::is_trivially_copyable_v<loc::msgid_t>);
}

TEST(MsgId, IsMadeFromALiteral) {
    static constexpr char id[] = "plat_bad_argument";
    const loc::msgid_t msgid = id;
    EXPECT_EQ(msgid.str(), id);
}

TEST(MsgId, OfNullIsNoId) {
    EXPECT_EQ(loc::msgid_t(nullptr).str(), nullptr);
}

} // namespace
