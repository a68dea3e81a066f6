#pragma once

#include <algorithm>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "plat/Exception.h"
#include "rdr/BlockException.h"
#include "rdr/EndOfMsg.h"
#include "rdr/EndOfStream.h"
#include "rdr/InStream.h"

/// What a source does when it is asked for data.
struct SourceStep {
    enum class Kind { Bytes, NoData, ThrowsBlock, EndsMessage, Fails };

    Kind kind;
    std::string bytes = {};
};

/// A step that delivers these bytes.
inline SourceStep bytes(std::string data) {
    return {SourceStep::Kind::Bytes, std::move(data)};
}
inline const SourceStep noData{SourceStep::Kind::NoData};
inline const SourceStep throwsBlock{SourceStep::Kind::ThrowsBlock};
inline const SourceStep endsMessage{SourceStep::Kind::EndsMessage};
inline const SourceStep fails{SourceStep::Kind::Fails};

/// A stream that delivers its data as a script says, and then ends. With every refill its bytes
/// move to a new array, so that a pointer that was kept for too long points to freed memory.
class ScriptedInStream : public rdr::InStream {
public:
    explicit ScriptedInStream(std::deque<SourceStep> script, bool isRewindable = true,
                              int capacity = 1 << 20)
        : steps(std::move(script)), size(capacity), buffer(new unsigned char[0]) {
        ptr = end = checkpointPtr = buffer.get();
        rewindable = isRewindable;
    }

    int pos() override { return offset + int(ptr - buffer.get()); }
    bool overrun(int itemSize) override {
        requests.push_back(itemSize);
        moveToNewBuffer();
        const std::ptrdiff_t wanted = std::min<std::ptrdiff_t>(itemSize, buffer.get() + size - ptr);
        while (end - ptr < wanted) {
            if (!deliver())
                return false;
        }
        return true;
    }

    /// What is read and then what is not read yet of the buffered bytes.
    std::string rest() const { return {ptr, end}; }

    std::vector<int> requests; ///< the item sizes of all refills

private:
    void moveToNewBuffer() {
        const unsigned char* const kept = checkpointPtr;
        std::unique_ptr<unsigned char[]> moved(new unsigned char[std::size_t(size)]);
        std::copy(kept, end, moved.get());
        offset += int(kept - buffer.get());
        ptr = moved.get() + (ptr - kept);
        end = moved.get() + (end - kept);
        checkpointPtr = moved.get();
        buffer = std::move(moved);
    }

    bool deliver() {
        if (steps.empty())
            throw rdr::EndOfStream();
        SourceStep& step = steps.front();
        if (step.kind == SourceStep::Kind::Bytes) {
            const auto room = std::size_t(buffer.get() + size - end);
            const std::size_t n = std::min(room, step.bytes.size());
            std::copy_n(step.bytes.data(), n, buffer.get() + (end - buffer.get()));
            end += n;
            step.bytes.erase(0, n);
            if (step.bytes.empty())
                steps.pop_front();
            return true;
        }
        const SourceStep::Kind kind = step.kind;
        steps.pop_front();
        switch (kind) {
        case SourceStep::Kind::ThrowsBlock:
            throw rdr::BlockException();
        case SourceStep::Kind::EndsMessage:
            throw rdr::EndOfMsg();
        case SourceStep::Kind::Fails:
            throw plat::Exception("broken");
        default:
            return false;
        }
    }

    std::deque<SourceStep> steps;
    int size;
    int offset = 0;
    std::unique_ptr<unsigned char[]> buffer;
};
