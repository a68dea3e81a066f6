#pragma once

#include <cstdio>
#include <list>
#include <map>

#include "loc/MsgId.h"
#include "plat/ParameterIndex.h"
#include "plat/StrCaseCmp.h"
#include "plat/String.h"

namespace plat {

class ConfigParameter;
class ParameterAlias;

/// A named set of parameters, with other configurations as its children.
///
/// Names are looked up without regard to case. A parameter that names no configuration is in the
/// global one.
/// Ownership: parameters, children and aliases are not owned and must outlive the configuration;
/// only a copy owns its parameters, which are clones.
/// Threads: nothing is locked; configurations are used on one thread.
class Configuration {
public:
    /// Which help is asked for.
    enum UsageType {
        UsageNormal,
        UsageAll, ///< also about hidden parameters
        UsageXml,
    };
    /// Prints usage information; may end the process.
    using UsageCallback = void (*)(UsageType type, Configuration* config);

    /// Settings that are kept elsewhere, for canonicalize().
    class CanonicalizeCallback {
    public:
        CanonicalizeCallback() = default;
        CanonicalizeCallback(const CanonicalizeCallback&) = delete;
        CanonicalizeCallback& operator=(const CanonicalizeCallback&) = delete;
        virtual ~CanonicalizeCallback() = default;

        /// Tells whether there is a setting of that name, and puts its text into `*value`.
        virtual bool get(const char* name, String* value) = 0;
        virtual void set(const char* name, const char* value) = 0;
        virtual void remove(const char* name) = 0;
    };

    /// Makes an empty configuration. The name is copied; the description is the title of listings,
    /// and may be null.
    Configuration(const char* name, loc::msgid_t description);
    /// Clones all parameters of another configuration and its descendants into one that has no
    /// children. Ownership: owns the clones; shares the other's aliases.
    Configuration(const Configuration& other);
    Configuration& operator=(const Configuration&) = delete;
    ~Configuration();

    /// The configuration of the process.
    static Configuration* global();

    const char* getName() const noexcept { return name.str(); }

    /// Empties the list of parameters, and deletes those that are owned.
    void clear();

    /// Adds a child behind the others unless it is there already, or removes it.
    void registerChild(Configuration* child, bool add);

    /// Registers an alias under a name, in place of one whose name differs by case at most.
    void addAlias(const char* aliasName, ParameterAlias* alias);

    /// Sets what a name stands for: an alias, or else a parameter of this configuration, or else
    /// whatever the first child to succeed has under that name.
    /// Shape: an alias shadows a parameter of its name. An own parameter, or alias, that refuses
    /// the value ends the search. Aliases that lead to themselves with the same value set nothing.
    /// Errors: false if nothing took the value; passes on what a parameter throws.
    bool set(const char* paramName, const char* value, int priority);
    /// Does the same with the first `nameLen` bytes of a name.
    bool set(const char* paramName, int nameLen, const char* value, int priority);
    /// Sets what one word says: "name=value", "-name=value" or "--name=value"; "-name" or "--name"
    /// alone set without a value, which switches a parameter on that can be on or off.
    bool set(const char* arg, int priority);

    /// Finds a parameter here or in a descendant, those of the first child before the next child's.
    /// Aliases are not looked at. Errors: null if there is none.
    ConfigParameter* get(const char* paramName) const;
    /// Errors: throws Exception "Parameter ... not found".
    ConfigParameter* getOrThrow(const char* paramName) const;

    /// Copies all values of another configuration's own parameters to the own parameters of the
    /// same names; with `recurse` also to those of the children, but no deeper.
    void copyValues(const Configuration* other, bool recurse);
    /// Copies the values in force, with their priorities, of another configuration's own parameters
    /// to the own parameters of the same names.
    void merge(const Configuration* other);
    /// Sets here what `a` and its descendants have in force and `b` has differently.
    void mergeDiffs(const Configuration* a, const Configuration* b);
    /// Whether another configuration has every parameter of this one and its descendants, with the
    /// same text in force.
    bool subset(const Configuration* other) const;

    /// Rewrites a store of settings: a name that is an alias here is replaced by the names it
    /// stands for, except where the store has those already.
    void canonicalize(CanonicalizeCallback* cb);

    /// Writes a line a parameter to the log, the values of policies and preferences at info level.
    void logReport() const;

    /// Prints parameters with their descriptions and values, sorted by name; then the children's.
    /// Units: columns; `indent` are given to the names.
    void list(bool showHidden, bool showValues, std::FILE* out, int width, int indent) const;
    /// Prints how to write parameters, and lists them, to standard output; with `all` also the
    /// hidden ones and the names that log settings may have.
    void printParamUsage(bool all, bool showValues) const;
    /// How to write parameters on a command line. Ownership: not the caller's.
    static const char* paramUsageText();

    /// Takes the argument at `**argp` as a setting of a preference. `*argp` moves on to the next
    /// one if that is its value: a further step leads past both.
    /// Errors: false if the argument is no setting, or there is none.
    bool processParamArg(const char*** argp);
    /// Takes arguments as settings up to the first that is none, where `*argp` stands afterwards.
    /// If that one asks for help, `usage` is called unless it is null.
    void processParamArgs(const char*** argp, UsageCallback usage);
    /// Takes a whole command line, without the program's name and with a null at its end.
    /// Errors: throws an Exception of the type "BadCmdLineArg" for an argument that is no setting,
    /// also for one that asks for help if `usage` returns; what was set stays set.
    void processParamArgs(const char** argv, UsageCallback usage);

private:
    struct Layout;
    class AliasInProgress;
    class MovingSearch;
    friend class ConfigParameter;
    friend class ParameterIterator;

    using Aliases = std::map<String, ParameterAlias*, strcasecmp_t>;

    void add(ConfigParameter* param);
    ConfigParameter* getOwn(const char* paramName) const noexcept;
    bool setByName(const char* paramName, const char* value, int priority,
                   const AliasInProgress* outer);
    bool setAlias(const Aliases::value_type& entry, const char* paramName, const char* value,
                  int priority, const AliasInProgress* outer);
    void copyOwnValues(const Configuration* other);

    String name;
    loc::msgid_t description;
    ConfigParameter* parameters = nullptr; ///< the newest
    std::list<Configuration*> children;
    bool ownsParameters = false;
    Aliases aliases;
    ParameterIndex index; ///< of the parameters: the list gives the order, this one the speed
};

/// Whether a command-line argument asks for help: "-help", "--help", "-h" or "/?", case ignored.
bool isHelpArg(const char* arg) noexcept;

} // namespace plat
