#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "plat/StringUtil.h"

namespace loc {

class TransMap;

/// The texts that one thread has looked up lately: it spares it the lock and the search.
/// Shape: by the address of an id and by the map; ids are literals. The bytes of an id are compared
/// all the same: an unloaded file may have left its address to another id. A text is found again
/// only while no text and no map has changed, in the whole process. Threads: one each; the
/// generation is everybody's.
class TextCache {
public:
    /// How a text is asked for. All plural rules tell 0, 1 and the other counts apart at most.
    enum Kind { Finished, Raw, PluralOfZero, PluralOfOne, PluralOfOthers };

    struct Key {
        const char* id;
        const TransMap* map;
        unsigned generation;
        Kind kind = Finished;
        int min = 0;
        int max = 0;

        bool operator==(const Key&) const = default;
    };

    static Kind pluralKind(int count) noexcept {
        if (count == 0)
            return PluralOfZero;
        return count == 1 ? PluralOfOne : PluralOfOthers;
    }

    /// Counts the changes of texts and maps.
    static unsigned generation() noexcept { return changes.load(std::memory_order_acquire); }
    /// Makes every text that any thread has found count no more. Comes before the change.
    static void renew() noexcept { changes.fetch_add(1, std::memory_order_acq_rel); }

    /// The text, or null.
    const char* find(const Key& key) const noexcept {
        const Entry& entry = entries[indexOf(key)];
        return entry.key == key && std::strcmp(entry.id, key.id) == 0 ? entry.text : nullptr;
    }

    /// Keeps a text, in place of another one, unless the id is null or of more than 47 bytes.
    /// Returns the text.
    const char* add(const Key& key, const char* text) noexcept {
        const int length = plat::strLen(key.id, idSize);
        if (key.id == nullptr || length == idSize)
            return text;
        Entry& entry = entries[indexOf(key)];
        entry.key = key;
        entry.text = text;
        std::memcpy(entry.id, key.id, std::size_t(length) + 1);
        return text;
    }

private:
    static constexpr int idSize = 48;

    struct Entry {
        Key key{}; ///< the one of an empty entry has a null map, which no thread has
        const char* text = nullptr;
        char id[idSize] = {};
    };

    static constexpr std::size_t size = 64;

    static std::size_t indexOf(const Key& key) noexcept {
        // Literals lie side by side: their last bits differ most.
        const auto address = reinterpret_cast<std::uintptr_t>(key.id);
        return (address ^ (address >> 6) ^ std::size_t(key.kind)) % size;
    }

    static inline constinit std::atomic<unsigned> changes{0};

    std::array<Entry, size> entries{};
};

} // namespace loc
