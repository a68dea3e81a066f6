#pragma once

#include <cstdlib>

#include <unistd.h>

#include <gtest/gtest.h>

/// Runs a check in a process of its own, as a user whom the system can refuse something. It fails
/// where an expectation in it fails.
template <typename Check>
void asOrdinaryUser(Check check) {
    constexpr uid_t nobody = 65534;
    EXPECT_EXIT(
        {
            if (::geteuid() == 0 && ::setuid(nobody) != 0)
                std::_Exit(2);
            check();
            std::_Exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}
