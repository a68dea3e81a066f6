#include "lumoscreenhelper/DisplayStreamPerDisplay.h"

#include <cstddef>

#include "svr/mac/DisplayStreamClient.h"

struct DisplayStreamPerDisplay::Layout {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // the compilers lay out polymorphic types so
    static_assert(offsetof(DisplayStreamPerDisplay, client) == sizeof(void*));
    static_assert(offsetof(DisplayStreamPerDisplay, impl) == 2 * sizeof(void*));
#pragma GCC diagnostic pop
};

DisplayStreamPerDisplay::DisplayStreamPerDisplay(svr::DisplayStreamClient* newClient,
                                                 unsigned display)
    : client(newClient), impl(newClient, display) {}

DisplayStreamPerDisplay::~DisplayStreamPerDisplay() {
    impl.stop();
}

void DisplayStreamPerDisplay::grab() {
    impl.grab();
}

bool DisplayStreamPerDisplay::start() {
    return impl.start(nullptr);
}

bool DisplayStreamPerDisplay::stop() {
    return impl.stop();
}

svr::DisplayStreamSource* NewDisplayStream(svr::DisplayStreamClient* client, unsigned display) {
    return new DisplayStreamPerDisplay(client, display);
}
