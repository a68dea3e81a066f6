#pragma once

#include <cstdint>
#include <list>
#include <map>

#include "loc/MsgId.h"
#include "plat/ParameterChangedCallback.h"
#include "plat/String.h"

namespace plat {

class Configuration;
class LogWriter;

/// A named setting that holds a value for each of several priorities; the one with the lowest
/// number is in force.
///
/// Parameters are static objects as a rule: they are registered in one configuration for good, and
/// must live as long as it does.
/// Threads: nothing is locked; parameters are made and changed on one thread.
class ConfigParameter {
public:
    static constexpr int policyPriority = 0;      ///< what an administrator enforces
    static constexpr int preferencePriority = 50; ///< the command line's and the user's wishes
    static constexpr int defaultPriority = 100;   ///< always there; never removed

    ConfigParameter(const ConfigParameter&) = delete;
    ConfigParameter& operator=(const ConfigParameter&) = delete;
    /// Leaves the configuration's list as it is.
    virtual ~ConfigParameter();

    /// Reads a value from a text and stores it. Errors: false for a text that this kind of
    /// parameter does not take; nothing is changed then.
    virtual bool setParam(const char* text, int priority) = 0;
    /// Removes the value of a priority, except the default.
    virtual void unsetParam(int priority, bool notify) = 0;
    /// Stores a number, where that is what the parameter holds. Errors: false, with nothing
    /// changed.
    virtual bool setIntValue(int value, int priority);
    /// The value in force as a text. Ownership: the caller frees the array with delete[].
    virtual char* getValueStr() const = 0;
    /// The value in force as a number; 0 where it is none.
    virtual int getIntValue() const;
    /// The priority of the value in force.
    virtual int getPriority() const = 0;
    /// The values of all priorities as texts.
    virtual std::map<int, String> getStringValues() const = 0;
    virtual bool isBool() const;
    virtual bool isInt() const;
    virtual bool isString() const;
    virtual bool isEnum() const;
    virtual bool isBinary() const;
    /// Makes a parameter with the same values, registered in a configuration, which is not null.
    /// Listeners are not copied. Ownership: that of `new`; a copied configuration owns its clones.
    virtual ConfigParameter* clone(Configuration* into) = 0;

    /// Removes the user's value and the policy, without a word to the listeners; values of other
    /// priorities stay.
    void resetToDefault();
    /// Tells the listeners that the default is in force, if it is. For use after resetToDefault().
    void notifyResetToDefault();
    /// Whether a policy is in force.
    bool isLocked() const { return getPriority() < preferencePriority; }

    /// Takes over all values of another parameter, as texts; one that this kind does not take is
    /// left out. Listeners hear of every removal and every value. Errors: passes on what setParam()
    /// throws, with part of the values copied.
    void copyValues(const ConfigParameter& other);

    const char* getName() const noexcept { return name; }
    /// The description given, or the text of the message id.
    const char* getDescription() const;
    bool isHidden() const noexcept { return hidden; }

protected:
    /// Registers the parameter, in the global configuration if `config` is null.
    /// Ownership: keeps both texts, which are not copied.
    ConfigParameter(const char* name, const char* description, loc::msgid_t descriptionId,
                    bool hidden, Configuration* config);
    /// Makes a copy without the listeners and registers it; `into` is not null.
    ConfigParameter(const ConfigParameter& source, Configuration* into);

    /// Calls all listeners in the order of their list. One that a listener appends is called too.
    void tellListeners(int priority);

    /// Where parameters log.
    static const LogWriter& log() noexcept;

private:
    struct Layout;
    friend class Configuration;
    friend class ParameterIterator;

    ConfigParameter* next = nullptr; ///< the one registered before this in the same configuration
    const char* name;
    const char* description; ///< null: see the id
    loc::msgid_t descriptionId;
    bool hidden;

protected:
    bool ownsStrings = false; ///< the texts are arrays of this object's own

private:
    const std::uint16_t nameHash; ///< tells most other names apart without looking at them

public:
    /// Listeners, not owned; append yours.
    std::list<ParameterChangedCallback*> callbacks;
};

} // namespace plat
