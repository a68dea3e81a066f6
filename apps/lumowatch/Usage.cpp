#include "lumowatch/Usage.h"

#include "lumowatch/Texts.h"
#include "plat/ConfigParameter.h"
#include "plat/ParameterIterator.h"

#include <glib.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace lumowatch {
namespace {

constexpr int columns = 79;

const char* kindOf(const plat::ConfigParameter& parameter) {
    if (parameter.isBool())
        return "bool";
    if (parameter.isEnum()) // which is a number too
        return "enum";
    if (parameter.isInt())
        return "int";
    return parameter.isString() ? "string" : "binary";
}

void printXmlOf(const plat::ConfigParameter& parameter) {
    const std::unique_ptr<char, decltype(&g_free)> line(
        g_markup_printf_escaped("  <parameter name=\"%s\" kind=\"%s\">%s</parameter>\n",
                                parameter.getName(), kindOf(parameter), parameter.getDescription()),
        g_free);
    std::fputs(line.get(), stdout);
}

void printXml(const plat::Configuration& config) {
    std::puts("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<parameters program=\"lumowatch\">");
    for (plat::ParameterIterator walk(&config, true); walk.param != nullptr; walk.next()) {
        if (walk.param->getName()[0] != '_') // the library's own
            printXmlOf(*walk.param);
    }
    std::puts("</parameters>");
}

void printWrapped(const std::string& words) {
    loc::LString wrapped;
    wrapped.append(words.c_str());
    wrapped.wordWrap(columns, 0);
    std::printf("%s\n\n", wrapped.str());
}

void printForPeople(bool all, const plat::Configuration& config) {
    std::printf("%s lumowatch [-help [all]]\n\n", text("plat_usage_label").c_str());
    printWrapped(text("lumowatch_purpose"));
    std::printf("%s\n\n", text("plat_configuration_option_usage_only").c_str());
    config.printParamUsage(all, true);
    std::printf("\n");
    printWrapped(text("lumowatch_exit_codes"));
}

} // namespace

void printUsage(plat::Configuration::UsageType type, plat::Configuration* config) {
    if (type == plat::Configuration::UsageXml)
        printXml(*config);
    else
        printForPeople(type == plat::Configuration::UsageAll, *config);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no thread runs before the display is watched
    std::exit(std::fflush(stdout) == 0 ? 0 : 1);
}

} // namespace lumowatch
