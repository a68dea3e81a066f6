#pragma once

#include <map>
#include <vector>

#include "plat/StrCaseCmp.h"
#include "plat/String.h"

namespace plat {

class ConfigParameter;
class Configuration;

/// Another name under which one or more parameters can be set, which are named in turn: an old
/// name, or one word for several parameters.
/// Ownership: an alias must outlive the configurations that it is registered in, and their copies.
class ParameterAlias {
public:
    /// An alias for one parameter, registered in a configuration; null is the global one.
    ParameterAlias(const char* aliasName, ConfigParameter* target, Configuration* config);
    /// An alias for the parameters of these names, except null ones. It is registered nowhere yet:
    /// see Configuration::addAlias().
    ParameterAlias(const char* target1, const char* target2, const char* target3);
    ParameterAlias(const ParameterAlias&) = delete;
    ParameterAlias& operator=(const ParameterAlias&) = delete;
    virtual ~ParameterAlias();

    /// Puts the parameters into `*targets` that setting the alias stands for, and the text for
    /// each. All get the alias's own value here, which may be null; derived aliases may translate
    /// it. Shape: `aliasName` as it was written where the alias is set. Errors: false refuses the
    /// value.
    virtual bool handleAlias(const char* aliasName, const char* value,
                             std::map<String, String, strcasecmp_t>* targets);

    /// Adds a copy of a parameter's name.
    void addName(const char* name);

protected:
    std::vector<char*> names; ///< owned, each allocated with new[]

private:
    struct Layout;
};

} // namespace plat
