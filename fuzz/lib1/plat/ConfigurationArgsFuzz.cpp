#include "plat/Configuration.h"

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Require.h"
#include "lib1/plat/NumberModel.h"
#include "loc/Localize.h"
#include "loc/TransMap.h"
#include "plat/BadUtf8.h"
#include "plat/BinaryParameter.h"
#include "plat/BoolParameter.h"
#include "plat/EnumParameter.h"
#include "plat/IntParameter.h"
#include "plat/ParameterAlias.h"
#include "plat/S64Parameter.h"
#include "plat/StringParameter.h"
#include "plat/Utf8.h"

namespace {

using plat::Configuration;
using Value = std::optional<std::string>; ///< nothing for a name alone
using Args = std::vector<std::string>;

constexpr const char* levels[] = {"low", "mid", "High", nullptr};

/// A configuration with a parameter of each kind, a child and two aliases.
struct Fixture {
    Configuration config{"Fuzz", nullptr};
    Configuration child{"Child", nullptr};
    plat::BoolParameter flag{"Flag", "", false, false, &config};
    plat::IntParameter width{"Width", "", 1, false, &config, -5, 80};
    plat::StringParameter text{"Text", "", "-", false, &config};
    plat::EnumParameter level{"Level", "", "low", levels, false, &config};
    plat::BinaryParameter bytes{"Bytes", "", {}, &config};
    plat::S64Parameter big{"Big", "", 0, false, &config};
    plat::BoolParameter deep{"Deep", "", false, false, &child};
    plat::StringParameter hiddenByFlag{"flag", "", "-", false, &child};
    plat::ParameterAlias both{"Text", "Flag", nullptr};
    plat::ParameterAlias loop{"loop", "Width", nullptr};

    Fixture() {
        config.registerChild(&child, true);
        config.addAlias("Both", &both);
        config.addAlias("Loop", &loop);
    }

    std::map<std::string, std::string> values() const {
        std::map<std::string, std::string> texts;
        for (const plat::ConfigParameter* param :
             {static_cast<const plat::ConfigParameter*>(&flag),
              static_cast<const plat::ConfigParameter*>(&width),
              static_cast<const plat::ConfigParameter*>(&text),
              static_cast<const plat::ConfigParameter*>(&level),
              static_cast<const plat::ConfigParameter*>(&bytes),
              static_cast<const plat::ConfigParameter*>(&big),
              static_cast<const plat::ConfigParameter*>(&deep)}) {
            std::string name = param->getName();
            name[0] = char(std::tolower(name[0]));
            texts[name] = plat::String::owning(param->getValueStr()).get();
        }
        REQUIRE(hiddenByFlag.getPriority() == 100);
        return texts;
    }
};

std::string lower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z')
            c = char(c + ('a' - 'A'));
    }
    return text;
}

bool areHexDigits(const std::string& text, bool alsoUpper) {
    return text.find_first_not_of(alsoUpper ? "0123456789abcdefABCDEF" : "0123456789abcdef") ==
           std::string::npos;
}

// What a parameter of each kind keeps of a text; nothing if it refuses it.

Value flagText(const Value& value) {
    const std::string word = lower(value.value_or(""));
    for (const char* on : {"", "1", "on", "true", "yes"}) {
        if (word == on)
            return "1";
    }
    for (const char* off : {"0", "off", "false", "no"}) {
        if (word == off)
            return "0";
    }
    return std::nullopt;
}

Value widthText(const Value& value) {
    const auto number = value ? numberOf(*value, 0) : std::optional<int>();
    if (!number || *number < -5 || *number > 80)
        return std::nullopt;
    return std::to_string(*number);
}

Value textText(const Value& value) {
    if (value && !plat::isValidUtf8(value->c_str()))
        throw std::string("Bad UTF-8 string for Text");
    return value;
}

Value levelText(const Value& value) {
    for (const char* const* name = levels; value && *name != nullptr; ++name) {
        if (lower(*value) == lower(*name))
            return *name;
    }
    return std::nullopt;
}

Value bytesText(const Value& value) {
    if (!value || value->size() % 2 != 0 || !areHexDigits(*value, true))
        return std::nullopt;
    return lower(*value);
}

Value bigText(const Value& value) {
    if (!value)
        return std::nullopt;
    if (value->size() == 22 && value->starts_with("int64:"))
        return areHexDigits(value->substr(6), false) ? value : std::nullopt;
    const Value bytes = bytesText(value);
    if (!bytes || bytes->size() != 16)
        return std::nullopt;
    std::string kept;
    for (std::size_t i = 0; i < 16; i += 2)
        kept.insert(0, bytes->substr(i, 2));
    return "int64:" + kept;
}

struct Model {
    std::map<std::string, std::string> values{{"flag", "0"}, {"width", "1"},
                                              {"text", "-"}, {"level", "low"},
                                              {"bytes", ""}, {"big", "int64:0000000000000000"},
                                              {"deep", "0"}};
    std::optional<Configuration::UsageType> usage;

    bool keep(const char* name, const Value& text) {
        if (text)
            values[name] = *text;
        return text.has_value();
    }

    bool set(const std::string& anyCase, const Value& value) {
        const std::string name = lower(anyCase);
        if (name == "both") {
            const bool isFlagSet = set("flag", value);
            return set("text", value) || isFlagSet;
        }
        if (name == "loop")
            return set("width", value);
        if (name == "flag" || name == "deep")
            return keep(name.c_str(), flagText(value));
        if (name == "width")
            return keep("width", widthText(value));
        if (name == "text")
            return keep("text", textText(value));
        if (name == "level")
            return keep("level", levelText(value));
        if (name == "bytes")
            return keep("bytes", bytesText(value));
        return name == "big" && keep("big", bigText(value));
    }

    bool setWord(const std::string& arg) {
        std::size_t dashes = 0;
        while (dashes < 2 && dashes < arg.size() && arg[dashes] == '-')
            ++dashes;
        const std::size_t equals = arg.find('=', dashes);
        if (equals != std::string::npos)
            return set(arg.substr(dashes, equals - dashes), arg.substr(equals + 1));
        return dashes > 0 && set(arg.substr(dashes), std::nullopt);
    }

    /// The index of the first argument that is no setting.
    std::size_t take(const Args& args) {
        std::size_t i = 0;
        while (i < args.size()) {
            if (setWord(args[i]))
                i += 1;
            else if (args[i].starts_with("-") && i + 1 < args.size() &&
                     set(args[i].substr(1), args[i + 1]))
                i += 2;
            else
                break;
        }
        return i;
    }

    /// What a whole command line throws; nothing if all is well.
    std::string process(const Args& args, bool hasUsage) {
        std::size_t i = take(args);
        const auto wordAt = [&args](std::size_t at) {
            return at < args.size() ? lower(args[at]) : "";
        };
        const std::string word = wordAt(i);
        if (hasUsage && (word == "-help" || word == "--help" || word == "-h" || word == "/?")) {
            const std::string next = wordAt(i + 1);
            usage = next == "all"   ? Configuration::UsageAll
                    : next == "xml" ? Configuration::UsageXml
                                    : Configuration::UsageNormal;
        }
        if (i < args.size() && args[i].starts_with("-psn_"))
            ++i;
        if (i == args.size())
            return "";
        const std::string text =
            "Bad argument '" + args[i] + "'." + (hasUsage ? "  Run with -help for usage." : "");
        return plat::Exception(text.c_str()).message.get(); // which cuts it
    }
};

std::optional<Configuration::UsageType> usage;

void keepUsage(Configuration::UsageType type, Configuration*) {
    usage = type;
}

/// What a call throws, by its message; the model throws texts.
template <typename Call>
std::string thrownBy(Call call) {
    try {
        call();
    } catch (const plat::Exception& failure) {
        return failure.message.get();
    } catch (const std::string& message) {
        return message;
    }
    return "";
}

void useEnglish() {
    static loc::TransMap map;
    static const bool isFilled =
        (loc::Localize::inst().setTransMapLocales({plat::String("en")}, &map), true);
    static_cast<void>(isFilled);
}

void checkWholeLine(const Args& args, bool hasUsage) {
    std::vector<const char*> argv;
    for (const std::string& arg : args)
        argv.push_back(arg.c_str());
    argv.push_back(nullptr);

    Fixture fixture;
    Model model;
    usage.reset();
    std::string expected;
    const std::string bad = thrownBy([&] { expected = model.process(args, hasUsage); });
    const std::string thrown = thrownBy(
        [&] { fixture.config.processParamArgs(argv.data(), hasUsage ? keepUsage : nullptr); });
    REQUIRE(thrown == (bad.empty() ? expected : bad));
    REQUIRE(usage == model.usage);
    REQUIRE(fixture.values() == model.values);
}

void checkOneByOne(const Args& args) {
    std::vector<const char*> argv;
    for (const std::string& arg : args)
        argv.push_back(arg.c_str());
    argv.push_back(nullptr);

    Fixture fixture;
    Model model;
    std::size_t stop = 0;
    const std::string bad = thrownBy([&] { stop = model.take(args); });
    const char** arg = argv.data();
    const std::string thrown = thrownBy([&] {
        while (fixture.config.processParamArg(&arg))
            ++arg;
    });
    REQUIRE(thrown == bad);
    REQUIRE(!bad.empty() || arg == argv.data() + stop);
    REQUIRE(fixture.values() == model.values);
}

} // namespace

// Each line is an argument.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    useEnglish();
    Args args(1);
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == '\n')
            args.emplace_back();
        else if (data[i] != '\0')
            args.back() += char(data[i]);
    }
    if (args.back().empty())
        args.pop_back();
    checkWholeLine(args, false);
    checkWholeLine(args, true);
    checkOneByOne(args);
    return 0;
}
