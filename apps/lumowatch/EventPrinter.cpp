#include "lumowatch/EventPrinter.h"

#include "lumowatch/JsonPrinter.h"
#include "lumowatch/TextPrinter.h"

namespace lumowatch {
namespace {

class SilentPrinter final : public EventPrinter {
public:
    void changed(double, std::span<const CGRect>) override {}
    void moved(double, CGFloat, CGFloat, std::span<const CGRect>) override {}
    void grabbed(double, const plat::Rect&, const std::string&) override {}
    void note(double, const std::string&) override {}
    void summary(const Statistics&) override {}
};

} // namespace

std::unique_ptr<EventPrinter> EventPrinter::make(EventFormat format, std::FILE* stream) {
    switch (format) {
    case EventFormat::Json:
        return std::make_unique<JsonPrinter>(stream);
    case EventFormat::None:
        return std::make_unique<SilentPrinter>();
    case EventFormat::Text:
        break;
    }
    return std::make_unique<TextPrinter>(stream);
}

} // namespace lumowatch
