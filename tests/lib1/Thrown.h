#pragma once

#include <string>

#include "lib1/SystemTexts.h"
#include "plat/Exception.h"

/// What a call threw: "type: message", or "" for nothing.
template <typename Call>
std::string thrown(Call call) {
    try {
        call();
    } catch (const plat::Exception& e) {
        return std::string(e.typeName.get()) + ": " + e.message.get();
    }
    return "";
}

/// What thrown() gives for a failure of the system.
inline std::string systemFailure(const std::string& context, int err,
                                 const std::string& type = "System") {
    return type + ": " + context + ": " + systemErrorText(err) + " (" + std::to_string(err) + ")";
}
