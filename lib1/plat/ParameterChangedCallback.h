#pragma once

namespace plat {

class ConfigParameter;

/// Hears of the changes of the parameters to whose `callbacks` it was appended.
class ParameterChangedCallback {
public:
    ParameterChangedCallback() = default;
    ParameterChangedCallback(const ParameterChangedCallback&) = delete;
    ParameterChangedCallback& operator=(const ParameterChangedCallback&) = delete;
    virtual ~ParameterChangedCallback() = default;

    /// Comes after a value was stored at a priority or removed from it, whether or not that one is
    /// in force.
    /// Errors: what is thrown goes through to whoever changed the parameter; the change stays, and
    /// the listeners behind this one are not told.
    /// Threads: on the one that changes the parameter.
    virtual void parameterChanged(ConfigParameter* param, int priority) = 0;
};

} // namespace plat
