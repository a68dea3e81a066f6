#include "plat/DynamicFn.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "lib1/plat/RecordingLogger.h"
#include "plat/unix/Thread.h"

namespace {

using plat::DynamicFn;
using plat::DynamicFnBase;
using plat::DynamicFnLoadFailed;
using testing::ElementsAre;
using testing::IsEmpty;

using Number = int (*)();

// Files of this test's own; LUMO_TEST_SONAME is what the second calls itself.
constexpr const char* one = LUMO_TEST_ONE;
constexpr const char* two = LUMO_TEST_TWO;

RecordingLogger recorder("recorder");

// Deleted at exit after everything that was made later, the lock of the loader included.
std::unique_ptr<DynamicFnBase> outlivesTheLock;

bool isLoaded(const char* file) {
    void* const handle = dlopen(file, RTLD_LAZY | RTLD_NOLOAD);
    if (handle != nullptr)
        dlclose(handle);
    return handle != nullptr;
}

// Answers in place of the probe of each candidate.
struct Probe {
    std::string file;
    std::string names;

    bool operator==(const Probe&) const = default;
    friend void PrintTo(const Probe& probe, std::ostream* out) {
        *out << probe.file << " for " << probe.names;
    }
};
std::vector<Probe> probes;
int succeedAt = 0; // the first probe has number 1

class ReplacedProbe {
public:
    explicit ReplacedProbe(int at = 0) {
        probes.clear();
        succeedAt = at;
        DynamicFnBase::checkDllFn = [](const char* file, const char* names) {
            probes.push_back({file, names});
            return int(probes.size()) == succeedAt;
        };
    }
    ReplacedProbe(const ReplacedProbe&) = delete;
    ReplacedProbe& operator=(const ReplacedProbe&) = delete;
    ~ReplacedProbe() { DynamicFnBase::checkDllFn = nullptr; }
};

struct CandidatesRow {
    const char* name;
    const char* libs;
    bool plainPaths;
    std::vector<std::string> files;
    friend void PrintTo(const CandidatesRow& row, std::ostream* out) { *out << row.libs; }
};

class Candidates : public testing::TestWithParam<CandidatesRow> {};

TEST_P(Candidates, AreTriedInOrder) {
    const ReplacedProbe replaced;
    const DynamicFnBase lookup(GetParam().libs, "f", GetParam().plainPaths);
    std::vector<std::string> files;
    files.reserve(probes.size());
    for (const Probe& probe : probes)
        files.push_back(probe.file);
    EXPECT_EQ(files, GetParam().files);
    EXPECT_FALSE(lookup.found());
}
using Files = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(
    Specifications, Candidates,
    testing::Values(
        CandidatesRow{"Path", "/usr/lib/libz.dylib", false, {"/usr/lib/libz.dylib"}},
        CandidatesRow{"PlainPath", "/usr/lib/libz.dylib", true, {"/usr/lib/libz.dylib"}},
        CandidatesRow{"RelativePath", "./z", false, {"./z"}},
        CandidatesRow{"BareName", "foo", false, {"libfoo.dylib"}},
        CandidatesRow{"PlainBareName", "foo", true, {"foo"}},
        CandidatesRow{"Versions", "foo[1,2]", false, {"libfoo.1.dylib", "libfoo.2.dylib"}},
        CandidatesRow{"OneVersion", "foo[1.2]", false, {"libfoo.1.2.dylib"}},
        CandidatesRow{"PlainBrackets", "foo[1,2]", true, {"foo[1", "2]"}},
        CandidatesRow{"Several", "a,b,/c/d", false, {"liba.dylib", "libb.dylib", "/c/d"}},
        CandidatesRow{"PlainSeveral", "a,b,/c/d", true, {"a", "b", "/c/d"}},
        CandidatesRow{"AfterVersions",
                      "a[1],b[2,3],c",
                      false,
                      {"liba.1.dylib", "libb.2.dylib", "libb.3.dylib", "libc.dylib"}},
        CandidatesRow{"BetweenBracketAndComma", "a[1]x,b", false, {"liba.1.dylib", "libb.dylib"}},
        CandidatesRow{"PathWithBracket", "/x/y[1,2],b", false, {"/x/y", "libb.dylib"}},
        CandidatesRow{"EmptyBrackets", "foo[],b", false, {"libb.dylib"}},
        CandidatesRow{"EmptyVersions", "foo[,1,]", false, {"libfoo.1.dylib"}},
        CandidatesRow{"UnclosedBracket", "foo[1,2", false, {"libfoo.1.dylib", "libfoo.2.dylib"}},
        CandidatesRow{"Empty", "", false, {}}, CandidatesRow{"PlainEmpty", "", true, {}},
        CandidatesRow{"EmptyCandidates", ",a,,b,", false, {"liba.dylib", "libb.dylib"}},
        CandidatesRow{"PlainEmptyCandidates", ",a,,b,", true, {"a", "b"}}),
    [](const auto& row) { return row.param.name; });

TEST(DynamicFnCheck, ReceivesTheNamesAsTheyStand) {
    const ReplacedProbe replaced;
    const DynamicFnBase lookup("a", "f,,g ,h", true);
    EXPECT_THAT(probes, ElementsAre(Probe{"a", "f,,g ,h"}));
}

TEST(DynamicFnCheck, EndsTheSearchWithoutAFunction) {
    const ReplacedProbe replaced(2);
    const DynamicFn<Number> lookup("a,b,c", "lumoTestNumber", true);
    EXPECT_THAT(probes, ElementsAre(Probe{"a", "lumoTestNumber"}, Probe{"b", "lumoTestNumber"}));
    EXPECT_FALSE(lookup.found());
    EXPECT_EQ(lookup.get(), nullptr);
}

TEST(DynamicFnCheck, EndsTheSearchInsideAVersionList) {
    const ReplacedProbe replaced(2);
    const DynamicFnBase lookup("a[1,2,3],b", "f", false);
    EXPECT_THAT(probes, ElementsAre(Probe{"liba.1.dylib", "f"}, Probe{"liba.2.dylib", "f"}));
}

TEST(DynamicFnCheck, OpensNothing) {
    const ReplacedProbe replaced(1);
    const DynamicFnBase lookup(one, "lumoTestNumber", true);
    EXPECT_FALSE(isLoaded(one));
}

TEST(DynamicFn, FindsAndCallsAFunction) {
    const DynamicFn<Number> number(one, "lumoTestNumber", true);
    ASSERT_TRUE(number.found());
    EXPECT_EQ(number(), 1);
    const DynamicFn<int (*)(int)> twice(one, "lumoTestTwice", false);
    ASSERT_TRUE(twice.found());
    EXPECT_EQ(twice(21), 42);
    EXPECT_EQ(twice.get()(3), 6);
}

TEST(DynamicFn, MissingLibraryIsNoError) {
    const DynamicFn<Number> lookup("/nowhere/libnone.so", "f", true);
    EXPECT_FALSE(lookup.found());
}

TEST(DynamicFn, NullListsFindNothing) {
    EXPECT_FALSE(DynamicFnBase(nullptr, "f", true).found());
    EXPECT_FALSE(DynamicFnBase(one, nullptr, true).found());
}

TEST(DynamicFn, TakesTheFirstLibraryThatHasTheFunction) {
    const std::string libs = std::string("/nowhere/x.so,") + two + "," + one;
    const DynamicFn<Number> number(libs.c_str(), "lumoTestNumber", true);
    ASSERT_TRUE(number.found());
    EXPECT_EQ(number(), 2);
}

TEST(DynamicFn, TakesTheFirstNameThatTheLibraryHas) {
    const DynamicFn<int (*)(int)> lookup(one, "missing,lumoTestTwice,lumoTestNumber", true);
    ASSERT_TRUE(lookup.found());
    EXPECT_EQ(lookup(4), 8);
}

// The file of the second library calls itself as a bare name with a version is looked for; once it
// is loaded, the loader finds it under that name.
TEST(DynamicFn, FindsABareNameWithAVersion) {
    const DynamicFnBase loaded(two, "lumoTestNumber", true);
    const DynamicFn<Number> lookup("lumotest[1,2]", "lumoTestNumber", false);
    ASSERT_TRUE(lookup.found());
    EXPECT_EQ(lookup(), 2);
    EXPECT_FALSE(DynamicFnBase("lumotest", "lumoTestNumber", false).found());
    EXPECT_FALSE(DynamicFnBase("lumotest[1,2]", "lumoTestNumber", true).found());
}

TEST(DynamicFn, LibraryWithoutTheFunctionIsClosedAndTheNextTried) {
    const std::string libs = std::string(one) + "," + two;
    {
        const DynamicFnBase lookup(libs.c_str(), "missing", true);
        EXPECT_FALSE(lookup.found());
        EXPECT_FALSE(isLoaded(one));
        EXPECT_FALSE(isLoaded(two));
    }
    const DynamicFn<Number> lookup(libs.c_str(), "lumoTestOnly2", true);
    ASSERT_TRUE(lookup.found());
    EXPECT_EQ(lookup(), 2);
    EXPECT_FALSE(isLoaded(one));
}

TEST(DynamicFn, WhatALibraryDependsOnCountsAsItsOwn) {
    EXPECT_TRUE(DynamicFnBase(one, "cbrt", true).found());
}

TEST(DynamicFn, LibraryStaysOpenAsLongAsTheObjectLives) {
    {
        const DynamicFnBase lookup(one, "lumoTestNumber", true);
        EXPECT_TRUE(isLoaded(one));
    }
    EXPECT_FALSE(isLoaded(one));
}

TEST(DynamicFn, ProbingAgainReplacesWhatWasFound) {
    DynamicFnBase lookup(one, "lumoTestNumber", true);
    EXPECT_TRUE(lookup.checkDll(two, "lumoTestNumber"));
    EXPECT_TRUE(lookup.found());
    EXPECT_FALSE(isLoaded(one));
    EXPECT_TRUE(isLoaded(two));
    EXPECT_FALSE(lookup.checkDll(two, "missing"));
    EXPECT_FALSE(lookup.found());
    EXPECT_FALSE(isLoaded(two));
}

struct LoggedDynamicFn : testing::Test {
    LoggedDynamicFn() { recorder.take(); }
    ~LoggedDynamicFn() override { recorder.onWrite = nullptr; }

    LogSetting setting{"DynamicFn:recorder:110"};
};

TEST_F(LoggedDynamicFn, LogsWhatWasFoundAndWhatWasNot) {
    const std::string libs = std::string("/nowhere/x.so,") + one;
    const DynamicFnBase lookup(libs.c_str(), "missing,,lumoTestNumber", true);
    const auto line = [](const std::string& text) {
        return RecordingLogger::Line{110, "DynamicFn", text};
    };
    EXPECT_THAT(recorder.take(),
                ElementsAre(line(" [DynFnOpen(/nowhere/x.so) failed]"),
                            line("  [DynFnFind(missing) failed]"), line("  [DynFnFind() failed]"),
                            line("found 'lumoTestNumber' in '" + std::string(one) + "'")));
}

TEST_F(LoggedDynamicFn, IsSilentBelowDebugplus) {
    plat::LogWriter::applyLogSetting("*:recorder:109");
    const DynamicFnBase lookup("/nowhere/x.so", "f", true);
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST_F(LoggedDynamicFn, LogDestinationMayLookUpItself) {
    bool inside = false;
    bool found = false;
    recorder.onWrite = [&] {
        if (std::exchange(inside, true))
            return;
        found = DynamicFnBase(two, "lumoTestNumber", true).found();
    };
    const DynamicFnBase lookup(one, "lumoTestNumber", true);
    EXPECT_TRUE(found);
    EXPECT_TRUE(lookup.found());
}

class ThrowingDestination : public LoggedDynamicFn,
                            public testing::WithParamInterface<const char*> {};

// The lock is free again: a second thread would wait for it for ever. The library is closed.
TEST_P(ThrowingDestination, LeavesNothingBehind) {
    recorder.onWrite = [] { throw std::runtime_error("full"); };
    EXPECT_THROW(DynamicFnBase(one, GetParam(), true), std::runtime_error);
    recorder.onWrite = nullptr;
    EXPECT_FALSE(isLoaded(one));

    class Prober : public plat::ThreadRunner {
    public:
        void run(plat::Thread*) override {
            found = DynamicFnBase(two, "lumoTestNumber", true).found();
        }
        bool found = false;
    } prober;
    plat::Thread thread("prober", &prober);
    thread.start();
    thread.join();
    EXPECT_TRUE(prober.found);
}
INSTANTIATE_TEST_SUITE_P(FoundOrNot, ThrowingDestination,
                         testing::Values("lumoTestNumber", "missing"));

TEST_F(LoggedDynamicFn, LockIsHeldWhileLogging) {
    class Prober : public plat::ThreadRunner {
    public:
        void run(plat::Thread*) override {
            begun = true;
            const DynamicFnBase lookup(two, "lumoTestNumber", true);
            done = true;
        }
        std::atomic<bool> begun{false};
        std::atomic<bool> done{false};
    } prober;
    plat::Thread thread("prober", &prober);
    bool first = true;
    bool doneInside = true;
    recorder.onWrite = [&] {
        if (!std::exchange(first, false))
            return;
        thread.start();
        while (!prober.begun)
            usleep(100);
        usleep(20000); // long enough for a probe that nothing holds up
        doneInside = prober.done;
    };
    const DynamicFnBase lookup(one, "lumoTestNumber", true);
    thread.join();
    EXPECT_FALSE(doneInside);
    EXPECT_TRUE(prober.done);
}

TEST(DynamicFnDeathTest, ObjectMayOutliveTheLockAtExit) {
    EXPECT_EXIT(
        {
            outlivesTheLock = std::make_unique<DynamicFnBase>(one, "lumoTestNumber", true);
            std::exit(outlivesTheLock->found() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "^$");
}

TEST(DynamicFnLoadFailed, IsAnExceptionWithAnEmptyTag) {
    EXPECT_TRUE((std::is_base_of_v<plat::Exception, DynamicFnLoadFailed>));
    const DynamicFnLoadFailed failure(1, "Function %s not found in %s library", "f", "libs");
    EXPECT_STREQ(failure.message.get(), "Function f not found in libs library");
    EXPECT_STREQ(failure.typeName.get(), "");
}

} // namespace
