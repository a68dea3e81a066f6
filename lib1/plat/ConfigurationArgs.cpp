#include "plat/Configuration.h"

#include <algorithm>
#include <iterator>

#include "loc/LString.h"
#include "loc/Localize.h"
#include "plat/ConfigParameter.h"
#include "plat/Exception.h"
#include "plat/StrCaseCmp.h"
#include "plat/StringUtil.h"

namespace plat {

namespace {

/// Which help is asked for, by the argument behind the one that asks, or null.
Configuration::UsageType usageTypeFor(const char* word) noexcept {
    if (strCaseCmp(word, "all") == 0)
        return Configuration::UsageAll;
    return strCaseCmp(word, "xml") == 0 ? Configuration::UsageXml : Configuration::UsageNormal;
}

[[noreturn]] void throwBadArgument(const char* arg, bool hasHelp) {
    loc::LString problem;
    problem.xprintf(LUMO_LOCALIZE_RAW("plat_bad_argument"), loc::PrintfArgs(arg));
    Exception failure(1, "%s%s%s", problem.str(), hasHelp ? "  " : "",
                      hasHelp ? LUMO_LOCALIZE("plat_run_with_help") : "");
    failure.typeName.append("BadCmdLineArg");
    throw failure;
}

} // namespace

bool isHelpArg(const char* arg) noexcept {
    static constexpr const char* helpArgs[] = {"-help", "--help", "-h", "/?"};
    return std::any_of(std::begin(helpArgs), std::end(helpArgs),
                       [arg](const char* helpArg) { return strCaseCmp(arg, helpArg) == 0; });
}

bool Configuration::processParamArg(const char*** argp) {
    constexpr int priority = ConfigParameter::preferencePriority;
    const char* const arg = (*argp)[0];
    if (arg == nullptr)
        return false;
    if (set(arg, priority))
        return true;
    const char* const value = (*argp)[1];
    if (*arg != '-' || value == nullptr || !set(arg + 1, value, priority))
        return false;
    ++*argp;
    return true;
}

void Configuration::processParamArgs(const char*** argp, UsageCallback usage) {
    while (processParamArg(argp))
        ++*argp;
    if (usage != nullptr && isHelpArg((*argp)[0]))
        usage(usageTypeFor((*argp)[1]), this);
}

void Configuration::processParamArgs(const char** argv, UsageCallback usage) {
    processParamArgs(&argv, usage);
    if (strBegins(*argv, "-psn_")) // what the launcher of macOS may put at the end
        ++argv;
    if (*argv != nullptr)
        throwBadArgument(*argv, usage != nullptr);
}

} // namespace plat
