#include "os/mac/FrameworkPath.h"

#include <cstring>

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace {

TEST(FrameworkPath, IsThatOfTheInnerFrameworksLibrary) {
    EXPECT_STREQ(os::frameworkPath("ApplicationServices", "CoreGraphics").str(),
                 "/System/Library/Frameworks/ApplicationServices.framework/Frameworks/"
                 "CoreGraphics.framework/CoreGraphics");
}

TEST(SingleCandidate, IsThePathUnlessALookupWouldSplitIt) {
    EXPECT_STREQ(os::singleCandidate("/opt/lumo/lib.so"), "/opt/lumo/lib.so");
    EXPECT_STREQ(os::singleCandidate("/opt/[1]/lib.so"), "/opt/[1]/lib.so");
    EXPECT_STREQ(os::singleCandidate("/opt/a,b/lib.so"), "lib.so");
    EXPECT_STREQ(os::singleCandidate("a,b"), "a,b");
    EXPECT_STREQ(os::singleCandidate(""), "");
}

// On this system: the file that is linked in, here that of the fake services.
TEST(CoreGraphicsPath, IsAnAbsolutePathOfALoadedLibrary) {
    const plat::DString path = os::coreGraphicsPath();
    EXPECT_EQ(*path.str(), '/');
    EXPECT_EQ(std::strchr(path.str(), ','), nullptr) << "or lookups would take it for a list";
    void* const library = dlopen(path.str(), RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    EXPECT_NE(dlsym(library, "CGDisplayCreateImageForRect"), nullptr);
    dlclose(library);
}

} // namespace
