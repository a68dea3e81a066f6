#include "plat/ParameterIndex.h"

#include <algorithm>
#include <utility>

#include "plat/ConfigParameter.h"
#include "plat/StrCaseCmp.h"

namespace plat {

namespace {

constexpr std::size_t firstSize = 16;

} // namespace

void ParameterIndex::add(ConfigParameter* param, std::uint16_t nameHash) {
    if (2 * (count + 1) > slots.size())
        grow();
    insert({param, nameHash});
    ++count;
}

ConfigParameter* ParameterIndex::find(const char* name) const noexcept {
    if (slots.empty())
        return nullptr;
    const std::uint16_t hash = strCaseHash(name);
    std::size_t place = hash & (slots.size() - 1);
    for (; slots[place].param != nullptr; place = next(place)) {
        const Slot& slot = slots[place];
        if (slot.hash == hash && isSameCaseless(slot.param->getName(), name))
            return slot.param;
    }
    return nullptr;
}

void ParameterIndex::clear() noexcept {
    slots.clear();
    count = 0;
}

void ParameterIndex::grow() {
    const std::vector<Slot> old =
        std::exchange(slots, std::vector<Slot>(std::max(firstSize, 2 * slots.size())));
    // Backwards from a gap, which parameters of one hash cannot lie across: the oldest come first.
    std::size_t gap = 0;
    while (gap < old.size() && old[gap].param != nullptr)
        ++gap;
    for (std::size_t i = gap + old.size(); i-- > gap;) {
        const Slot& slot = old[i & (old.size() - 1)];
        if (slot.param != nullptr)
            insert(slot);
    }
}

/// Puts it at the place of its hash; what stands there and behind moves on by one, up to a gap.
void ParameterIndex::insert(Slot added) noexcept {
    std::size_t place = added.hash & (slots.size() - 1);
    for (; added.param != nullptr; place = next(place))
        std::swap(added, slots[place]);
}

} // namespace plat
