#include "platform/linux/core/BlockList.h"

#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace platform {
namespace {

class BlockListTest : public testing::Test {
protected:
    ~BlockListTest() override {
        blocks.reset();
        g_main_context_unref(context);
    }

    bool serveOnce() { return g_main_context_iteration(context, FALSE) != FALSE; }
    void serveAll() {
        while (serveOnce()) {
        }
    }
    void addNumber(int number) {
        std::vector<int>* out = &ran;
        blocks->add(^{
          out->push_back(number);
        });
    }

    GMainContext* context = g_main_context_new();
    std::unique_ptr<BlockList> blocks = std::make_unique<BlockList>("some queue", context);
    std::vector<int> ran;
};

TEST_F(BlockListTest, RunsBlocksInTheirOrder) {
    EXPECT_TRUE(blocks->isEmpty());
    for (int i = 0; i < 5; ++i)
        addNumber(i);
    EXPECT_FALSE(blocks->isEmpty());
    EXPECT_TRUE(ran.empty());
    serveAll();
    EXPECT_EQ(ran, (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_TRUE(blocks->isEmpty());
}

TEST_F(BlockListTest, HasNothingToServeWithoutABlock) {
    EXPECT_FALSE(serveOnce());
    addNumber(1);
    serveAll();
    EXPECT_FALSE(serveOnce());
    addNumber(2);
    serveAll();
    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
}

TEST_F(BlockListTest, LeavesWhatABlockAddsToTheNextRound) {
    BlockList* list = blocks.get();
    std::vector<int>* out = &ran;
    list->add(^{
      out->push_back(1);
      list->add(^{
        out->push_back(3);
      });
    });
    addNumber(2);
    EXPECT_TRUE(serveOnce());
    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
    EXPECT_FALSE(list->isEmpty());
    EXPECT_TRUE(serveOnce());
    EXPECT_EQ(ran, (std::vector<int>{1, 2, 3}));
}

TEST_F(BlockListTest, BlockThatThrowsDoesNotKeepTheNextFromRunning) {
    const support::LogCapture log("Platform");
    blocks->add(^{
      throw std::runtime_error("bad block");
    });
    addNumber(2);
    serveAll();
    EXPECT_EQ(ran, (std::vector<int>{2}));
    EXPECT_EQ(log.lines(), (std::vector<std::string>{
                               "Platform: some queue: an exception was dropped: bad block"}));
}

TEST_F(BlockListTest, FreesABlockAfterItRan) {
    auto held = std::make_shared<int>(7);
    const std::weak_ptr<int> watch = held;
    std::vector<int>* out = &ran;
    {
        const std::shared_ptr<int> captured = std::move(held);
        blocks->add(^{
          out->push_back(*captured);
        });
    }
    EXPECT_FALSE(watch.expired());
    serveAll();
    EXPECT_EQ(ran, (std::vector<int>{7}));
    EXPECT_TRUE(watch.expired());
}

TEST_F(BlockListTest, FreesWithoutRunningWhatIsLeftAtItsEnd) {
    auto held = std::make_shared<int>(7);
    const std::weak_ptr<int> watch = held;
    std::vector<int>* out = &ran;
    {
        const std::shared_ptr<int> captured = std::move(held);
        blocks->add(^{
          out->push_back(*captured);
        });
    }
    blocks.reset();
    EXPECT_TRUE(watch.expired());
    EXPECT_FALSE(serveOnce());
    EXPECT_TRUE(ran.empty());
}

TEST_F(BlockListTest, LosesNoBlockOfSeveralThreads) {
    constexpr int threads = 4;
    constexpr int blocksEach = 500;
    BlockList* list = blocks.get();
    int count = 0;
    int* counter = &count;
    std::vector<std::thread> adders;
    adders.reserve(threads);
    for (int i = 0; i < threads; ++i) {
        adders.emplace_back([list, counter] {
            for (int block = 0; block < blocksEach; ++block) {
                list->add(^{
                  ++*counter;
                });
            }
        });
    }
    serveAll(); // while they add
    for (std::thread& adder : adders)
        adder.join();
    serveAll();
    EXPECT_EQ(count, threads * blocksEach);
    EXPECT_TRUE(list->isEmpty());
}

} // namespace
} // namespace platform
