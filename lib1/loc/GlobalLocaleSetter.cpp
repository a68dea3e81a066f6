#include "loc/GlobalLocaleSetter.h"

namespace loc {

// NOLINTBEGIN(concurrency-mt-unsafe): one thread at a time, as the class says

GlobalLocaleSetter::GlobalLocaleSetter(const char* name)
    : saved(std::setlocale(LC_ALL, nullptr)),
      reported(std::setlocale(LC_CTYPE, name == nullptr ? "" : name)),
      threadsOwn(::uselocale(LC_GLOBAL_LOCALE)) {}

GlobalLocaleSetter::~GlobalLocaleSetter() {
    ::uselocale(threadsOwn);
    std::setlocale(LC_ALL, saved.get());
}

// NOLINTEND(concurrency-mt-unsafe)

} // namespace loc
