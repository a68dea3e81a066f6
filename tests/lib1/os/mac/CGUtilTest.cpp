#include "os/mac/CGUtil.h"

#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/mac/lumoscreenhelper/fake/Services.h"

namespace {

using fake::Services;
using os::CGImageData;
using os::CGImagePtr;
using testing::ElementsAre;
using testing::IsEmpty;

struct CGUtilTest : testing::Test {
    CGUtilTest() { services.reset(); }
    ~CGUtilTest() override { EXPECT_THAT(services.errors, IsEmpty()); }

    Services& services = Services::get();
};

TEST_F(CGUtilTest, FunctionsAreFound) {
    EXPECT_TRUE(CGImagePtr::canCreateFromDisplay());
    EXPECT_TRUE(CGImageData::isSupported());
    EXPECT_THAT(services.takeCalls(), IsEmpty());
}

TEST_F(CGUtilTest, PictureIsTakenAndReleased) {
    {
        const CGImagePtr image(3, {0, 0, 1, 1});
        EXPECT_NE(image.get(), nullptr);
    }
    EXPECT_THAT(
        services.takeCalls(),
        ElementsAre("CGDisplayCreateImageForRect(3, 0 0 1x1) = image1", "CGImageRelease(image1)"));
    EXPECT_THAT(services.alive(), IsEmpty());
}

TEST_F(CGUtilTest, AreaIsConvertedToOriginAndSize) {
    const CGImagePtr image(4294967295U, {-10, 20, 30, 25});
    EXPECT_THAT(services.takeCalls(),
                ElementsAre("CGDisplayCreateImageForRect(4294967295, -10 20 40x5) = image1"));
}

TEST_F(CGUtilTest, NoPictureIsNull) {
    services.givesImages = false;
    {
        const CGImagePtr image(3, {0, 0, 1, 1});
        EXPECT_EQ(image.get(), nullptr);
    }
    EXPECT_THAT(services.takeCalls(),
                ElementsAre("CGDisplayCreateImageForRect(3, 0 0 1x1) = null"));
}

TEST_F(CGUtilTest, ResetReleasesOnce) {
    CGImagePtr image(3, {0, 0, 1, 1});
    services.takeCalls();
    image.reset();
    image.reset();
    EXPECT_EQ(image.get(), nullptr);
    EXPECT_THAT(services.takeCalls(), ElementsAre("CGImageRelease(image1)"));
}

TEST_F(CGUtilTest, DataIsACopyOfThePicturesBytes) {
    auto* const image = services.make<CGImage>("image");
    image->provider = services.make<CGDataProvider>("provider");
    image->provider->bytes = {1, 2, 3};
    {
        const CGImageData data(image);
        ASSERT_NE(data.get(), nullptr);
        EXPECT_THAT(data.get()->bytes, ElementsAre(1, 2, 3));
    }
    EXPECT_THAT(services.takeCalls(),
                ElementsAre("CGImageGetDataProvider(image1)",
                            "CGDataProviderCopyData(provider1) = data1", "CFRelease(data1)"));
}

TEST_F(CGUtilTest, PictureWithoutBytesHasNullData) {
    EXPECT_EQ(CGImageData(services.make<CGImage>("image")).get(), nullptr);
    EXPECT_EQ(CGImageData(nullptr).get(), nullptr);
}

TEST_F(CGUtilTest, ScaleIsTheWidthOfOnePoint) {
    services.imageWidth = 2;
    EXPECT_EQ(os::getScaleFactor(5), 2U);
    EXPECT_THAT(services.takeCalls(),
                ElementsAre("CGDisplayCreateImageForRect(5, 0 0 1x1) = image1",
                            "CGImageGetWidth(image1)", "CGImageRelease(image1)"));
}

TEST_F(CGUtilTest, ScaleIsOneWithoutAPicture) {
    services.givesImages = false;
    EXPECT_EQ(os::getScaleFactor(5), 1U);
}

} // namespace
