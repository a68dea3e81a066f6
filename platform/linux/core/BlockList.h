#pragma once

#include <dispatch/dispatch.h>

#include <deque>
#include <glib.h>
#include <mutex>
#include <string>

namespace platform {

/// Blocks in the order in which they came, served by a GLib main context. A block that throws has
/// its exception dropped, with a log line, and the next one runs: neither the run loop nor the
/// host's process can be asked to bear it.
/// Threads: any may add; the blocks run wherever the context is run.
class BlockList {
public:
    /// `label` names the queue in the log.
    BlockList(std::string label, GMainContext* context);
    BlockList(const BlockList&) = delete;
    BlockList& operator=(const BlockList&) = delete;
    /// What has not run by now never does.
    ~BlockList();

    /// Keeps a copy of the block.
    void add(dispatch_block_t block);
    bool isEmpty() const;

private:
    static gboolean dispatch(GSource* source, GSourceFunc callback, gpointer list);
    void runAll();

    const std::string name;
    GSource* source;
    mutable std::mutex mutex;
    std::deque<dispatch_block_t> blocks;
};

} // namespace platform
