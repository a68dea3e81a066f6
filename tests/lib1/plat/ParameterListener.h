#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "plat/ConfigParameter.h"

/// Keeps what it hears of parameters.
class ParameterListener : public plat::ParameterChangedCallback {
public:
    using Change = std::pair<std::string, int>; ///< a parameter's name and a priority

    ParameterListener() = default;
    explicit ParameterListener(plat::ConfigParameter& param) { param.callbacks.push_back(this); }

    void parameterChanged(plat::ConfigParameter* param, int priority) override {
        heard.emplace_back(param->getName(), priority);
        if (onChange)
            onChange();
    }

    /// All changes since the last call.
    std::vector<Change> take() { return std::exchange(heard, {}); }
    /// The priorities of all changes since the last call.
    std::vector<int> takePriorities() {
        std::vector<int> priorities;
        for (const Change& change : take())
            priorities.push_back(change.second);
        return priorities;
    }

    std::function<void()> onChange; ///< called after each change was kept; may throw

private:
    std::vector<Change> heard;
};

/// The text in force.
inline std::string valueOf(const plat::ConfigParameter& param) {
    const plat::String text = plat::String::owning(param.getValueStr());
    return text.get() == nullptr ? "(null)" : text.get();
}

/// The texts of all priorities.
inline std::vector<std::pair<int, std::string>> valuesOf(const plat::ConfigParameter& param) {
    std::vector<std::pair<int, std::string>> values;
    for (const auto& [priority, text] : param.getStringValues())
        values.emplace_back(priority, text.get() == nullptr ? "(null)" : text.get());
    return values;
}
