#include "plat/ParameterIterator.h"

#include <cstddef>

#include "plat/ConfigParameter.h"
#include "plat/Configuration.h"

namespace plat {

struct ParameterIterator::Layout {
    static constexpr std::size_t listSize = sizeof(std::list<const Configuration*>);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // a list need not have standard layout
    static_assert(offsetof(ParameterIterator, pending) == 0);
    static_assert(offsetof(ParameterIterator, param) == listSize);
    static_assert(offsetof(ParameterIterator, config) == listSize + sizeof(void*));
    static_assert(offsetof(ParameterIterator, recurse) == listSize + 2 * sizeof(void*));
#pragma GCC diagnostic pop
};

ParameterIterator::ParameterIterator(const Configuration* first, bool alsoDescendants)
    : pending{first}, recurse(alsoDescendants) {
    next();
}

void ParameterIterator::next() {
    if (param != nullptr)
        param = param->next;
    while (param == nullptr && !pending.empty()) {
        config = pending.front();
        pending.pop_front();
        if (recurse)
            pending.insert(pending.end(), config->children.begin(), config->children.end());
        param = config->parameters;
    }
}

} // namespace plat
