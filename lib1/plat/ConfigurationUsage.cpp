#include "plat/Configuration.h"

#include <cstring>
#include <list>

#include "loc/LString.h"
#include "loc/LocaleSetter.h"
#include "loc/Localize.h"
#include "plat/ConfigParameterSort.h"
#include "plat/DPrintf.h"
#include "plat/LogWriter.h"
#include "plat/Logger.h"
#include "plat/ParameterIterator.h"
#include "plat/StringUtil.h"
#include "plat/Utf8.h"

namespace plat {

namespace {

constexpr int usageWidth = 79;
constexpr int usageIndent = 14;
constexpr int aroundName = 5; ///< the columns of the two blanks before a name and " - " behind it

/// The value in force, for the end of an entry.
DString valueNote(const ConfigParameter* param) {
    const String value = String::owning(param->getValueStr());
    return DPrintf("(%s=%s)", LUMO_LOCALIZE("plat_configuration_help_default"), value.str());
}

/// The columns of a text as the wrapping counts them.
int columnsOf(const char* text) {
    const loc::LocaleSetter setter(nullptr);
    return utf8NumColumns(text);
}

int lastLineLength(const char* text) noexcept {
    const char* const lineEnd = std::strrchr(text, '\n');
    return strLen(lineEnd == nullptr ? text : lineEnd + 1);
}

/// Prints a parameter's name, description and, if asked to, its value.
void listParameter(const ConfigParameter* param, bool showValue, std::FILE* out, int width,
                   int indent) {
    loc::LString entry;
    entry.prf("  %-*s - %s", indent, param->getName(), param->getDescription());
    entry.wordWrap(width, indent + aroundName);
    if (!param->isBinary()) {
        // Added even if it is empty: what that leaves behind, a blank or a line, is as it was.
        const DString note = showValue ? valueNote(param) : DString();
        if (lastLineLength(entry.str()) + columnsOf(note.str()) < width)
            entry.prf(" %s", note.str());
        else
            entry.prf("%-*c%s", indent + aroundName + 1, '\n', note.str());
        entry.wordWrap(width, indent + aroundName);
    }
    std::fprintf(out, "%s\n", entry.str());
}

} // namespace

void Configuration::list(bool showHidden, bool showValues, std::FILE* out, int width,
                         int indent) const {
    if (description.str() != nullptr)
        std::fprintf(out, "%s:\n", LUMO_LOCALIZE(description));
    else
        std::fprintf(out, "%s Parameters:\n", name.str());

    std::list<const ConfigParameter*> params;
    for (ParameterIterator it(this, false); it.param != nullptr; it.next()) {
        if (!strBegins(it.param->getName(), "_") && (showHidden || !it.param->isHidden()))
            params.push_back(it.param);
    }
    params.sort(ConfigParameterSort());
    for (const ConfigParameter* param : params)
        listParameter(param, showValues, out, width, indent);

    for (const Configuration* child : children)
        child->list(showHidden, showValues, out, width, indent);
}

void Configuration::printParamUsage(bool all, bool showValues) const {
    loc::LString usage;
    usage.append(paramUsageText());
    usage.wordWrap(usageWidth, 0);
    std::printf("%s\n\n", usage.str());
    list(all, showValues, stdout, usageWidth, usageIndent);
    if (!all)
        return;
    std::printf("\n%s\n", LUMO_LOCALIZE("plat_configuration_log_names_title"));
    LogWriter::listLogWriters(usageWidth, stdout);
    std::printf("\n%s\n", LUMO_LOCALIZE("plat_configuration_log_dests_title"));
    Logger::listLoggers(stdout);
}

const char* Configuration::paramUsageText() {
    return LUMO_LOCALIZE("plat_configuration_param_usage");
}

} // namespace plat
