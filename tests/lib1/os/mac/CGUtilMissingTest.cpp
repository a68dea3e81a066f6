// A system without the two functions that are looked up.
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/mac/lumoscreenhelper/fake/Services.h"
#include "os/mac/CGUtil.h"
#include "os/mac/FrameworkPath.h"
#include "plat/DynamicFn.h"

namespace {

using os::CGImageData;
using os::CGImagePtr;
using testing::ElementsAre;

std::vector<std::string> probes;
bool isInterrupted = false;

// Before any lookup: each is made once.
const bool replaced = [] {
    plat::DynamicFnBase::checkDllFn = [](const char* file, const char* names) {
        if (isInterrupted)
            throw std::runtime_error("a log destination failed");
        probes.push_back(std::string(names) + " in " + file);
        return false;
    };
    return true;
}();

std::string path() {
    return os::coreGraphicsPath().str();
}

template <typename Call>
std::string failureOf(Call call) {
    try {
        call();
    } catch (const plat::DynamicFnLoadFailed& failure) {
        return failure.message.get();
    }
    return "nothing";
}

TEST(MissingFunctions, AreToldByTheQueriesAndThrownByTheConstructors) {
    ASSERT_TRUE(replaced);
    isInterrupted = true;
    EXPECT_FALSE(CGImagePtr::canCreateFromDisplay()) << "an exception does not leave a query";
    EXPECT_FALSE(CGImageData::isSupported());
    isInterrupted = false;
    EXPECT_FALSE(CGImagePtr::canCreateFromDisplay());
    EXPECT_FALSE(CGImageData::isSupported());
    EXPECT_EQ(failureOf([] { const CGImagePtr image(1, {0, 0, 1, 1}); }),
              "Function CGDisplayCreateImageForRect not found in " + path() + " library");
    EXPECT_EQ(failureOf([] { const CGImageData data(nullptr); }),
              "Function CGDataProviderCopyData not found in " + path() + " library");
    EXPECT_EQ(failureOf([] { os::getScaleFactor(1); }),
              "Function CGDisplayCreateImageForRect not found in " + path() + " library");
    EXPECT_THAT(probes, ElementsAre("CGDisplayCreateImageForRect in " + path(),
                                    "CGDataProviderCopyData in " + path()))
        << "each is looked for once, in one file";
}

} // namespace
