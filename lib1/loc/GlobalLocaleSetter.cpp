#include "loc/GlobalLocaleSetter.h"

namespace loc {

GlobalLocaleSetter::GlobalLocaleSetter(const char* name)
    : saved(std::setlocale(LC_ALL, nullptr)),
      reported(std::setlocale(LC_CTYPE, name == nullptr ? "" : name)),
      threadsOwn(::uselocale(LC_GLOBAL_LOCALE)) {}

GlobalLocaleSetter::~GlobalLocaleSetter() {
    ::uselocale(threadsOwn);
    std::setlocale(LC_ALL, saved.get());
}

} // namespace loc
