#include "plat/unix/Thread.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "lib1/plat/RecordingLogger.h"
#include "lib1/plat/VirtualSlot.h"
#include "plat/BadInt.h"
#include "plat/StringUtil.h"
#include "plat/unix/Condition.h"
#include "plat/unix/ThreadLocalPtr.h"

namespace {

using plat::Condition;
using plat::Mutex;
using plat::Thread;
using plat::ThreadLocalPtr;
using plat::ThreadRunner;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::UnorderedElementsAre;

RecordingLogger recorder("recorder");

// The lines of one test. Each is "action, in nine columns, name, handle".
struct ThreadingTest : testing::Test {
    ThreadingTest() { recorder.take(); }

    LogSetting setting{"Threading:recorder:100"};
};

// A point that one thread opens and others wait at.
class Gate {
public:
    void open() {
        const std::lock_guard lock(mutex);
        isOpen = true;
        condition.broadcast();
    }
    void pass() {
        const std::lock_guard lock(mutex);
        while (!isOpen)
            condition.wait(-1);
    }

private:
    Mutex mutex;
    Condition condition{&mutex};
    bool isOpen = false;
};

class FunctionRunner : public ThreadRunner {
public:
    explicit FunctionRunner(std::function<void(Thread*)> function) : body(std::move(function)) {}
    void run(Thread* thread) override { body(thread); }

private:
    std::function<void(Thread*)> body;
};

std::string hexHandle(pthread_t handle) {
    char text[32];
    std::snprintf(text, sizeof(text), "%lx", static_cast<unsigned long>(handle));
    return text;
}

TEST_F(ThreadingTest, NewThreadIsCreatedAndNotStarted) {
    Thread thread("worker", nullptr);
    EXPECT_EQ(thread.getState(), Thread::State::Created);
    EXPECT_STREQ(thread.getName(), "worker");
    EXPECT_THAT(recorder.take(),
                ElementsAre(RecordingLogger::Line{100, "Threading", "created   worker 0"}));
}

TEST_F(ThreadingTest, NameIsCopied) {
    char name[] = "worker";
    const Thread thread(name, nullptr);
    name[0] = 'W';
    EXPECT_STREQ(thread.getName(), "worker");
    EXPECT_NE(thread.getName(), name);
}

TEST_F(ThreadingTest, RunnerRunsOnANewThreadThatItReceives) {
    Thread* received = nullptr;
    Thread* self = nullptr;
    pthread_t handle = pthread_self();
    FunctionRunner runner([&](Thread* thread) {
        received = thread;
        self = Thread::self();
        handle = pthread_self();
    });
    Thread thread("worker", &runner);
    thread.start();
    EXPECT_EQ(thread.join(), &thread);
    EXPECT_EQ(received, &thread);
    EXPECT_EQ(self, &thread);
    EXPECT_FALSE(pthread_equal(handle, pthread_self()));
}

TEST_F(ThreadingTest, LogsTheWholeLifeOfAThread) {
    std::string handle;
    FunctionRunner runner([&](Thread*) { handle = hexHandle(pthread_self()); });
    {
        Thread thread("worker", &runner);
        thread.start();
        thread.join();
    }
    const std::vector<std::string> lines = recorder.takeTexts();
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[0], "created   worker 0");
    // "join" comes from this thread, "started" and "stopped" from the other.
    const std::vector<std::string> middle(lines.begin() + 1, lines.begin() + 4);
    EXPECT_THAT(middle, UnorderedElementsAre("join      worker " + handle,
                                             MatchesRegex("started   worker [0-9a-f]+"),
                                             "stopped   worker " + handle));
    EXPECT_EQ(lines[4], "joined    worker " + handle);
    EXPECT_EQ(lines[5], "destroy   worker " + handle);
    EXPECT_EQ(lines[6], "destroyed worker " + handle);
}

TEST_F(ThreadingTest, DetailFollowsAColon) {
    const Thread thread("worker", nullptr);
    recorder.take();
    thread.logAction("x", "why");
    thread.logAction("longer than nine", "");
    thread.logAction("x", nullptr);
    EXPECT_THAT(recorder.takeTexts(),
                ElementsAre("x         worker 0: why",
                            "longer than nine worker 0: ", "x         worker 0"));
}

TEST_F(ThreadingTest, ThreadWithoutRunnerDoesNothing) {
    Thread thread("idle", nullptr);
    thread.start();
    EXPECT_EQ(thread.join(), &thread);
    EXPECT_EQ(thread.getState(), Thread::State::Joined);
}

TEST_F(ThreadingTest, SubclassOverridesTheBody) {
    class Worker : public Thread {
    public:
        Worker() : Thread("worker", nullptr) {}
        ~Worker() override { join(); }
        void run() override { ran = true; }
        bool ran = false;
    };
    Worker worker;
    worker.start();
    worker.join();
    EXPECT_TRUE(worker.ran);
}

TEST_F(ThreadingTest, StatesFollowTheBody) {
    Gate inBody;
    Gate mayEnd;
    FunctionRunner runner([&](Thread*) {
        inBody.open();
        mayEnd.pass();
    });
    Thread thread("worker", &runner);
    thread.start();
    inBody.pass();
    EXPECT_EQ(thread.getState(), Thread::State::Started);
    mayEnd.open();
    while (thread.getState() != Thread::State::Finished)
        usleep(100);
    thread.join();
    EXPECT_EQ(thread.getState(), Thread::State::Joined);
}

TEST_F(ThreadingTest, StateNumbersAreTheGivenOnes) {
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<Thread::State>, int>));
    EXPECT_EQ(int(Thread::State::Created), 0);
    EXPECT_EQ(int(Thread::State::Started), 1);
    EXPECT_EQ(int(Thread::State::Finished), 2);
    EXPECT_EQ(int(Thread::State::Joined), 3);
    EXPECT_EQ(int(Thread::State::Native), 4);
}

TEST_F(ThreadingTest, SecondStartDoesNothing) {
    int runs = 0;
    FunctionRunner runner([&](Thread*) { ++runs; });
    Thread thread("worker", &runner);
    thread.start();
    thread.start();
    thread.join();
    thread.start();
    thread.join();
    EXPECT_EQ(runs, 1);
}

TEST_F(ThreadingTest, JoinOfAThreadNeverStartedReturnsAtOnce) {
    int runs = 0;
    FunctionRunner runner([&](Thread*) { ++runs; });
    Thread thread("worker", &runner);
    recorder.take();
    EXPECT_EQ(thread.join(), &thread);
    EXPECT_THAT(recorder.takeTexts(), ElementsAre("join      worker 0", "joined    worker 0"));
    EXPECT_EQ(thread.getState(), Thread::State::Joined);
    thread.start(); // too late
    EXPECT_EQ(thread.getState(), Thread::State::Joined);
    EXPECT_EQ(runs, 0);
}

TEST_F(ThreadingTest, SecondJoinLogsNothing) {
    Thread thread("worker", nullptr);
    thread.start();
    thread.join();
    recorder.take();
    EXPECT_EQ(thread.join(), &thread);
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST_F(ThreadingTest, DestructorWaitsForTheBody) {
    Gate mayEnd;
    bool ended = false;
    FunctionRunner runner([&](Thread*) {
        mayEnd.pass();
        ended = true;
    });
    {
        Thread thread("worker", &runner);
        thread.start();
        mayEnd.open();
    }
    EXPECT_TRUE(ended);
}

TEST_F(ThreadingTest, ExceptionOfTheBodyIsLoggedAndSwallowed) {
    FunctionRunner runner([](Thread*) {
        const char* text = "no number";
        plat::strToInt(&text, 10);
    });
    Thread thread("worker", &runner);
    thread.start();
    while (thread.getState() != Thread::State::Finished)
        usleep(100);
    thread.join();
    std::vector<std::string> failed;
    for (const std::string& line : recorder.takeTexts()) {
        EXPECT_FALSE(line.starts_with("stopped"));
        if (line.starts_with("failed"))
            failed.push_back(line);
    }
    EXPECT_THAT(failed,
                ElementsAre(MatchesRegex("failed    worker [0-9a-f]+: Failed to parse integer")));
}

TEST_F(ThreadingTest, NothingIsLoggedBelowDebugLevel) {
    plat::LogWriter::applyLogSetting("*:recorder:99");
    Thread thread("worker", nullptr);
    thread.start();
    thread.join();
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST_F(ThreadingTest, SelfOfAForeignThreadIsANativeObject) {
    Thread* const self = Thread::self();
    EXPECT_EQ(Thread::self(), self);
    EXPECT_STREQ(self->getName(), "Native");
    EXPECT_EQ(self->getState(), Thread::State::Native);
    recorder.take();
    EXPECT_EQ(self->join(), nullptr);
    self->start();
    EXPECT_EQ(self->getState(), Thread::State::Native);
    EXPECT_FALSE(self->detach());
    EXPECT_THAT(recorder.take(), IsEmpty());
}

// Keeps native objects of threads that have ended findable for leak checkers: they are never freed.
std::vector<Thread*>& nativeThreads() {
    static auto* const threads = new std::vector<Thread*>;
    return *threads;
}

TEST_F(ThreadingTest, EachForeignThreadHasANativeObjectOfItsOwn) {
    struct Entry {
        static void* run(void*) { return Thread::self(); }
    };
    pthread_t handle;
    ASSERT_EQ(pthread_create(&handle, nullptr, Entry::run, nullptr), 0);
    void* self = nullptr;
    pthread_join(handle, &self);
    nativeThreads().push_back(static_cast<Thread*>(self));
    EXPECT_NE(self, Thread::self());
    EXPECT_THAT(recorder.takeTexts(), testing::Contains("native    Native " + hexHandle(handle)));
}

// Ends when it is told to.
class Vanishing : public Thread {
public:
    explicit Vanishing(Gate* mayEnd) : Thread("vanishing", nullptr), gate(mayEnd) {}
    void run() override { gate->pass(); }

private:
    Gate* gate;
};

// The last thing that an object of a thread does is to log its end.
void waitUntilDestroyed() {
    for (;;) {
        for (const std::string& line : recorder.takeTexts()) {
            if (line.starts_with("destroyed vanishing"))
                return;
        }
        usleep(100);
    }
}

TEST_F(ThreadingTest, DetachedBeforeTheStartDeletesItself) {
    Gate gate;
    auto* const thread = new Vanishing(&gate);
    EXPECT_TRUE(thread->detach());
    thread->start();
    EXPECT_EQ(thread->join(), nullptr); // does not wait
    gate.open();
    waitUntilDestroyed();
}

TEST_F(ThreadingTest, DetachedWhileRunningDeletesItself) {
    Gate gate;
    auto* const thread = new Vanishing(&gate);
    thread->start();
    EXPECT_TRUE(thread->detach());
    gate.open();
    waitUntilDestroyed();
}

TEST_F(ThreadingTest, DetachComesTooLateForAFinishedThread) {
    Thread thread("worker", nullptr);
    thread.start();
    while (thread.getState() != Thread::State::Finished)
        usleep(100);
    EXPECT_FALSE(thread.detach());
    EXPECT_EQ(thread.join(), &thread);
    EXPECT_FALSE(thread.detach());
}

TEST_F(ThreadingTest, RunFollowsTheDestructor) {
    EXPECT_EQ(virtualSlot(&Thread::run), 2U);
    EXPECT_EQ(virtualSlot(&ThreadRunner::run), 2U);
}

TEST(ThreadDeathTest, OtherExceptionsEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            FunctionRunner runner([](Thread*) { throw 7; });
            Thread thread("worker", &runner);
            thread.start();
            thread.join();
        },
        "terminate|uncaught");
}

TEST(Mutex, MayBeTakenAgainByItsOwner) {
    Mutex mutex;
    mutex.lock();
    mutex.lock();
    mutex.unlock();
    mutex.unlock();
}

TEST(Mutex, KeepsOthersOutUntilGivenBackAsOftenAsTaken) {
    constexpr int rounds = 2000;
    static Mutex mutex;
    static int count;
    count = 0;
    FunctionRunner runner([](Thread*) {
        for (int i = 0; i < rounds; ++i) {
            const std::lock_guard outer(mutex);
            const std::lock_guard inner(mutex);
            ++count;
        }
    });
    Thread first("first", &runner);
    Thread second("second", &runner);
    first.start();
    second.start();
    first.join();
    second.join();
    EXPECT_EQ(count, 2 * rounds);
}

TEST(Mutex, AllShareOneRecursiveAttribute) {
    const pthread_mutexattr_t* const attribute = Mutex::recAttr();
    EXPECT_EQ(Mutex::recAttr(), attribute);
    int type = 0;
    EXPECT_EQ(pthread_mutexattr_gettype(attribute, &type), 0);
    EXPECT_EQ(type, PTHREAD_MUTEX_RECURSIVE);
}

TEST(Condition, SignalWakesAWaiter) {
    Mutex mutex;
    Condition condition(&mutex);
    int waiting = 0;
    int tokens = 0;
    FunctionRunner runner([&](Thread*) {
        const std::lock_guard lock(mutex);
        ++waiting;
        while (tokens == 0)
            EXPECT_TRUE(condition.wait(-1));
        --tokens;
    });
    Thread first("first", &runner);
    Thread second("second", &runner);
    first.start();
    second.start();
    const auto bothWait = [&] {
        const std::lock_guard lock(mutex);
        return waiting == 2;
    };
    while (!bothWait()) // who has counted itself gives the mutex back only by waiting
        usleep(100);
    for (int given = 0; given < 2; ++given) {
        const std::lock_guard lock(mutex);
        ++tokens;
        condition.signal();
    }
    first.join();
    second.join();
    EXPECT_EQ(tokens, 0);
}

TEST(Condition, BroadcastWakesAllWaiters) {
    Mutex mutex;
    Condition condition(&mutex);
    int waiting = 0;
    bool isOpen = false;
    FunctionRunner runner([&](Thread*) {
        const std::lock_guard lock(mutex);
        ++waiting;
        while (!isOpen)
            EXPECT_TRUE(condition.wait(-1));
    });
    Thread first("first", &runner);
    Thread second("second", &runner);
    first.start();
    second.start();
    const auto bothWait = [&] {
        const std::lock_guard lock(mutex);
        return waiting == 2;
    };
    while (!bothWait())
        usleep(100);
    {
        const std::lock_guard lock(mutex);
        isOpen = true;
        condition.broadcast();
    }
    first.join();
    second.join();
    EXPECT_EQ(waiting, 2);
}

TEST(Condition, SignalWithoutWaitersIsForgotten) {
    Mutex mutex;
    Condition condition(&mutex);
    condition.signal();
    condition.broadcast();
}

void timedWait(int timeoutMs) {
    Mutex mutex;
    Condition condition(&mutex);
    condition.wait(timeoutMs);
}

TEST(ConditionDeathTest, TimedWaitIsAnAssertion) {
    constexpr const char* message =
        "^Assertion 'timeoutMs == -1' failed at [^ ]*Threading.cpp:[0-9]+: "
        "Condition timed wait not implemented yet\n";
    EXPECT_DEATH(timedWait(0), message);
    EXPECT_DEATH(timedWait(1), message);
    EXPECT_DEATH(timedWait(-2), message);
}

TEST(ThreadLocalPtr, IsNullAtFirstAndKeepsWhatIsSet) {
    ThreadLocalPtr<int> slot;
    int value = 3;
    EXPECT_EQ(slot.get(), nullptr);
    slot.set(&value);
    EXPECT_EQ(slot.get(), &value);
    slot.set(nullptr);
    EXPECT_EQ(slot.get(), nullptr);
}

TEST(ThreadLocalPtr, HasAValueForEachThread) {
    ThreadLocalPtr<int> slot;
    int mine = 1;
    slot.set(&mine);
    int* seen = &mine;
    FunctionRunner runner([&](Thread*) {
        seen = slot.get();
        int theirs = 2;
        slot.set(&theirs); // nothing is freed at the end of the thread
    });
    Thread thread("worker", &runner);
    thread.start();
    thread.join();
    EXPECT_EQ(seen, nullptr);
    EXPECT_EQ(slot.get(), &mine);
}

TEST(ThreadLocalPtr, StaysNullWhenTheSystemHasNoSlotLeft) {
    std::vector<std::unique_ptr<ThreadLocalPtr<int>>> slots;
    int value = 0;
    for (int i = 0; i < 5000; ++i) {
        auto slot = std::make_unique<ThreadLocalPtr<int>>();
        slot->set(&value);
        if (slot->get() == nullptr)
            return; // and no other's slot was written: sanitizers and the runtime still work
        slots.push_back(std::move(slot));
    }
    FAIL() << "5000 slots and no end";
}

} // namespace
