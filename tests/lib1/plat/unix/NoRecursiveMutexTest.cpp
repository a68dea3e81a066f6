// A system that refuses recursive mutexes, played by a pthread_mutexattr_settype of this program's
// own, which the foundation finds before the system's. The lock attribute is made before main runs,
// or later, once a process: so each case is a run of this program with the refusal switched on.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include "plat/unix/Mutex.h"

extern "C" __attribute__((visibility("default"))) int
pthread_mutexattr_settype(pthread_mutexattr_t* attribute, int type) noexcept {
    if (std::getenv("LUMO_TEST_REFUSE_RECURSION") != nullptr)
        return EINVAL;
    static_assert(sizeof(int) <= sizeof(pthread_mutexattr_t));
    std::memcpy(attribute, &type, sizeof(type)); // where glibc keeps the kind
    return 0;
}

namespace {

// Runs this program again and returns its standard error.
std::string errorsOf(const char* environment) {
    char program[4096] = {};
    if (readlink("/proc/self/exe", program, sizeof(program) - 1) < 0)
        return "no program";
    const std::string command = std::string(environment) + " '" + program +
                                "' --gtest_filter=*LocksAllTheSame 2>&1 >/dev/null";
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return "no shell";
    std::string text;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        text += char(c);
    EXPECT_EQ(pclose(pipe), 0);
    return text;
}

TEST(NoRecursiveMutex, LocksAllTheSame) {
    plat::Mutex first;
    plat::Mutex second;
    first.lock();
    first.unlock();
    second.lock();
    second.unlock();
}

TEST(NoRecursiveMutex, IsSaidOnceWithoutALineEnd) {
    const std::string warning =
        "WARNING: system libpthread has no recursive mutexes; deadlock may result.";
    EXPECT_EQ(warning.size(), 73U);
    EXPECT_EQ(errorsOf("LUMO_TEST_REFUSE_RECURSION=1"), warning);
}

TEST(NoRecursiveMutex, IsNotSaidWhereTheyExist) {
    EXPECT_EQ(errorsOf(""), "");
}

} // namespace
