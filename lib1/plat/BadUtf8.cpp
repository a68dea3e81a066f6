#include "plat/BadUtf8.h"

#include "plat/Assertion.h"
#include "plat/BoolParameter.h"

namespace plat {

namespace {

/// The parameter, as long as it lives: texts are also checked in the static initialisers of other
/// files, before it is made, and at exit, when it may be gone.
class AssertSwitch : public BoolParameter {
public:
    AssertSwitch()
        : BoolParameter("_BadUtf8Assert", "Make bad UTF-8 cause an assertion failure for debugging",
                        false) {
        living = this;
    }
    ~AssertSwitch() override { living = nullptr; }

    static bool isOn() noexcept { return living != nullptr && living->value(); }

private:
    static constinit inline const AssertSwitch* living = nullptr;
};

AssertSwitch assertSwitch;

void assertIfSwitchedOn(const char* message) noexcept {
    if (AssertSwitch::isOn())
        LUMO_ASSERT_FATAL_MSG(0, "%s", message);
}

} // namespace

BadUtf8::BadUtf8(const char* text) noexcept : Exception(text) {
    assertIfSwitchedOn(message.get());
}

BadUtf8::BadUtf8(int, const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    message.vprf(format, args);
    va_end(args);
    assertIfSwitchedOn(message.get());
}

} // namespace plat
