#include "loc/LString.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Require.h"
#include "plat/LogWriter.h"
#include "plat/Logger.h"
#include "plat/SString.h"
#include "plat/Utf8.h"

namespace {

std::vector<std::string> logged;

class Log : public plat::Logger {
public:
    using Logger::Logger;
    void write(int, const char*, const char* text) override { logged.emplace_back(text); }
    void flush() override {}
};
Log destination("fuzz");

// Bytes of the input, one after the other; zeros behind its end.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : bytes(data, data + size) {}

    unsigned next() { return at < bytes.size() ? static_cast<unsigned char>(bytes[at++]) : 0; }

    unsigned nextNumber() {
        unsigned number = 0;
        for (int i = 0; i < 4; ++i)
            number = number << 8 | next();
        return number;
    }

    // Up to a zero byte, as a string of C.
    std::string nextText(std::size_t size) {
        const std::string text = bytes.substr(std::min(at, bytes.size()), size);
        at += size;
        return text.c_str();
    }

    // What is left; with tokens in the places of small bytes, so that whole directives are found.
    std::string nextFormat(bool hasTokens) {
        static const char* const tokens[] = {"%",   "%%",  "%S",       "%D",  "%X", "%+D",
                                             "%1$", "%2$", "%3$",      "%.1", ".2", ".3S",
                                             "+",   "$",   "%.2$+1$S", "\t"};
        std::string format;
        while (at < bytes.size()) {
            const unsigned byte = next();
            if (hasTokens && byte < std::size(tokens))
                format += tokens[byte];
            else
                format += char(byte);
        }
        return format.c_str();
    }

private:
    std::string bytes;
    std::size_t at = 0;
};

struct Value {
    int type;
    unsigned number;
    std::string text;
};

std::vector<Value> valuesOf(Input* input, unsigned count) {
    std::vector<Value> values;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned byte = input->next();
        Value value{int(byte & 3), 0, ""}; // type 3 is none
        if (value.type == loc::PrintfArg::stringType)
            value.text = input->nextText(byte >> 4);
        else
            value.number = input->nextNumber();
        values.push_back(value);
    }
    return values;
}

template <typename Number>
std::string printed(const char* format, Number number) {
    char text[20];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

// The result, directive by directive.
struct Model {
    std::string result;
    bool isBad = false;

    Model(const std::string& format, const std::vector<Value>& args) : values(args) {
        for (std::string rest = format; !rest.empty();) {
            std::size_t taken = 1;
            if (rest[0] != '%') {
                result += rest[0];
            } else if (rest.starts_with("%%")) {
                result += '%';
                taken = 2;
            } else if (const auto expanded = expand(rest, &taken)) {
                result += *expanded;
            } else {
                result += "%%";
                isBad = true;
                taken = 1;
            }
            rest.erase(0, taken);
        }
    }

private:
    // A number of at least 1 at a place, and how many characters it has.
    static std::optional<std::pair<int, std::size_t>> numberAt(const std::string& text,
                                                               std::size_t at) {
        const std::size_t end = std::min(text.find_first_not_of("0123456789", at), text.size());
        int number = 0;
        const auto parsed =
            std::from_chars(text.data() + std::min(at, end), text.data() + end, number);
        if (parsed.ec != std::errc() || number < 1)
            return std::nullopt;
        return std::pair(number, end - at);
    }

    std::optional<std::string> expand(const std::string& text, std::size_t* taken) const {
        bool hasPlus = false;
        std::optional<int> precision;
        std::optional<int> position;
        std::size_t at = 1;
        for (; at < text.size(); ++at) {
            const auto number = numberAt(text, at);
            const auto behindPoint = numberAt(text, at + 1);
            if (text[at] == '+' && !hasPlus) {
                hasPlus = true;
            } else if (text[at] == '.' && !precision && behindPoint) {
                precision = behindPoint->first;
                at += behindPoint->second;
            } else if (number && !position && text[at + number->second] == '$') {
                position = number->first;
                at += number->second;
            } else {
                break;
            }
        }
        *taken = at + 1;
        if (at >= text.size() || (!position && values.size() != 1))
            return std::nullopt;
        const auto index = std::size_t(position.value_or(1) - 1);
        if (index >= values.size())
            return std::nullopt;
        return written(text[at], hasPlus, precision, values[index]);
    }

    static std::optional<std::string> written(char letter, bool hasPlus,
                                              std::optional<int> precision, const Value& value) {
        if (letter == 'S' && value.type == 2 && !hasPlus) {
            if (!precision)
                return value.text;
            const std::string cut = value.text.substr(0, std::size_t(*precision));
            const std::unique_ptr<char[]> whole(
                plat::sanitizeUtf8(cut.data(), cut.data() + cut.size(), *precision));
            return std::string(whole.get());
        }
        if (precision)
            return std::nullopt;
        if (letter == 'D' && value.type == 0)
            return printed(hasPlus ? "%+d" : "%d", int(value.number));
        if (hasPlus || value.type != 1)
            return std::nullopt;
        if (letter == 'D')
            return printed("%u", value.number);
        if (letter == 'X')
            return printed("%x", value.number);
        return std::nullopt;
    }

    const std::vector<Value>& values;
};

// How the log shows a message.
std::string shown(const std::string& format) {
    plat::SString<4096> message;
    message.prf("Bad loc string for args - %s", format.c_str());
    const std::unique_ptr<char[]> escaped(plat::strvisUtf8(message.get(), '~'));
    return escaped.get();
}

} // namespace

// The first byte says how many arguments come first, and whether small bytes of the format behind
// them are tokens.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isLogging = (plat::LogWriter::applyLogSetting("Localize:fuzz:0"), true);
    if (!isLogging)
        return 0;
    Input input(data, size);
    const unsigned kind = input.next();
    const std::vector<Value> values = valuesOf(&input, kind & 7);
    const std::string format = input.nextFormat((kind & 8) != 0);

    std::vector<loc::PrintfArg> args(values.size());
    for (std::size_t i = 0; i < args.size(); ++i) {
        args[i].type = values[i].type;
        args[i].signedValue = int(values[i].number);
        args[i].unsignedValue = values[i].number;
        // A wrong use of another value than the type's would show.
        args[i].stringValue = values[i].type == 2 ? values[i].text.c_str() : nullptr;
        args[i].next = i + 1 < args.size() ? &args[i + 1] : nullptr;
    }
    logged.clear();
    loc::LString text;
    text.xprintf(format.c_str(), loc::PrintfArgList(args.empty() ? nullptr : args.data()));

    const Model model(format, values);
    REQUIRE(text.str() == model.result);
    if (model.isBad)
        REQUIRE(logged == std::vector<std::string>{shown(format)});
    else
        REQUIRE(logged.empty());
    return 0;
}
