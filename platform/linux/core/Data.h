#pragma once

#include "platform/linux/core/Object.h"

#include <CoreFoundation/CFData.h>

#include <utility>
#include <vector>

/// Immutable bytes.
struct __CFData final : platform::Object {
    explicit __CFData(std::vector<std::uint8_t> content) noexcept
        : Object(platform::ObjectType::Data), bytes(std::move(content)) {}

    const std::vector<std::uint8_t> bytes;
};
