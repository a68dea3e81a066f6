#include "platform/linux/core/Data.h"

#include "platform/linux/core/Ref.h"

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

namespace {

platform::Ref<const __CFData> make(std::vector<std::uint8_t> bytes) {
    return platform::Ref<const __CFData>::adopt(new __CFData(std::move(bytes)));
}

TEST(Data, GivesItsBytes) {
    const auto data = make({1, 0, 255});
    EXPECT_EQ(CFGetTypeID(data.get()), CFDataGetTypeID());
    ASSERT_EQ(CFDataGetLength(data.get()), 3);
    const std::uint8_t* bytes = CFDataGetBytePtr(data.get());
    EXPECT_EQ((std::vector<std::uint8_t>(bytes, bytes + 3)),
              (std::vector<std::uint8_t>{1, 0, 255}));
}

TEST(Data, MayBeEmpty) {
    EXPECT_EQ(CFDataGetLength(make({}).get()), 0);
}

TEST(Data, TakesTheBytesOverWithoutCopying) {
    std::vector<std::uint8_t> bytes(100);
    const std::uint8_t* place = bytes.data();
    EXPECT_EQ(CFDataGetBytePtr(make(std::move(bytes)).get()), place);
}

TEST(Data, IsNoOtherType) {
    EXPECT_NE(CFDataGetTypeID(), CFStringGetTypeID());
    EXPECT_NE(CFDataGetTypeID(), CFNumberGetTypeID());
}

} // namespace
