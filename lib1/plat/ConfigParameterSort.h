#pragma once

#include "plat/ConfigParameter.h"
#include "plat/StrCaseCmp.h"

namespace plat {

/// Orders parameters by name, case ignored.
struct ConfigParameterSort {
    bool operator()(const ConfigParameter* a, const ConfigParameter* b) const noexcept {
        return strCaseCmp(a->getName(), b->getName()) < 0;
    }
};

} // namespace plat
