#include "platform/linux/core/BlockList.h"

#include "platform/linux/core/Guard.h"

#include <Block.h>
#include <utility>

namespace platform {

namespace {

/// Owns a copied block.
class BlockPtr {
public:
    explicit BlockPtr(dispatch_block_t copied) noexcept : block(copied) {}
    BlockPtr(const BlockPtr&) = delete;
    BlockPtr& operator=(const BlockPtr&) = delete;
    ~BlockPtr() { Block_release(block); }

    void operator()() const { block(); }

private:
    dispatch_block_t block;
};

gboolean neverCalled(gpointer) {
    return G_SOURCE_CONTINUE;
}

} // namespace

BlockList::BlockList(std::string label, GMainContext* context) : name(std::move(label)) {
    static GSourceFuncs functions{nullptr, nullptr, dispatch, nullptr, nullptr, nullptr};
    source = g_source_new(&functions, sizeof(GSource));
    g_source_set_callback(source, neverCalled, this, nullptr);
    g_source_set_name(source, name.c_str());
    g_source_attach(source, context);
}

BlockList::~BlockList() {
    g_source_destroy(source);
    g_source_unref(source);
    for (dispatch_block_t block : blocks)
        Block_release(block);
}

void BlockList::add(dispatch_block_t block) {
    dispatch_block_t copied = Block_copy(block);
    {
        const std::lock_guard lock(mutex);
        blocks.push_back(copied);
    }
    g_source_set_ready_time(source, 0);
}

bool BlockList::isEmpty() const {
    const std::lock_guard lock(mutex);
    return blocks.empty();
}

gboolean BlockList::dispatch(GSource* source, GSourceFunc, gpointer list) {
    // Before the blocks are looked at: one that is added later makes it ready again.
    g_source_set_ready_time(source, -1);
    static_cast<BlockList*>(list)->runAll();
    return G_SOURCE_CONTINUE;
}

void BlockList::runAll() {
    // Only those that are there now: blocks that add blocks must not keep the loop from the rest.
    std::size_t count;
    {
        const std::lock_guard lock(mutex);
        count = blocks.size();
    }
    for (; count > 0; --count) {
        dispatch_block_t next = nullptr;
        {
            const std::lock_guard lock(mutex);
            next = blocks.front();
            blocks.pop_front();
        }
        runGuarded(name.c_str(), [&next] {
            const BlockPtr block(next);
            block();
        });
    }
}

} // namespace platform
