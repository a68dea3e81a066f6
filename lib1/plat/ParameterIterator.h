#pragma once

#include <list>

namespace plat {

class ConfigParameter;
class Configuration;

/// Walks the parameters of a configuration, the newest first, and then, if asked to, those of its
/// children, their children and so on, level by level.
/// Ownership: owns nothing; configurations and parameters must not come or go meanwhile.
class ParameterIterator {
public:
    /// Stands at the first parameter.
    ParameterIterator(const Configuration* config, bool recurse);

    /// Goes on to the next parameter.
    void next();

private:
    struct Layout;

    std::list<const Configuration*> pending; ///< not visited yet

public:
    ConfigParameter* param = nullptr;      ///< the current parameter; null at the end
    const Configuration* config = nullptr; ///< where it is registered

private:
    bool recurse;
};

} // namespace plat
