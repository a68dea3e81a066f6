#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace plat {

class ConfigParameter;

/// Finds the parameters of one configuration by name: what a walk from the newest to the oldest
/// would find first.
/// Shape: a table by the hash of the name, where a parameter stands at the place of its hash or
/// behind it without a gap, the newer ones first. Nothing is read of a parameter before its hash is
/// looked for: others may be gone.
/// Ownership: the parameters are not owned.
class ParameterIndex {
public:
    /// Adds a parameter as the newest one. `nameHash` is that of its name.
    /// Errors: nothing is added if memory for it cannot be had.
    void add(ConfigParameter* param, std::uint16_t nameHash);

    /// The newest parameter of a name, or null.
    ConfigParameter* find(const char* name) const noexcept;

    void clear() noexcept;

private:
    struct Slot {
        ConfigParameter* param = nullptr; ///< null: free
        std::uint16_t hash = 0;
    };

    void grow();
    void insert(Slot added) noexcept;
    std::size_t next(std::size_t place) const noexcept { return (place + 1) & (slots.size() - 1); }

    std::vector<Slot> slots; ///< a power of two, or none; half of them are free at least
    std::size_t count = 0;
};

} // namespace plat
