#pragma once

#include "lumoscreenhelper/DisplayStreamImpl.h"
#include "svr/mac/DisplayStreamSource.h"

/// The source that hosts get: an engine in run-loop mode.
class DisplayStreamPerDisplay : public svr::DisplayStreamSource {
public:
    DisplayStreamPerDisplay(svr::DisplayStreamClient* newClient, unsigned display);
    ~DisplayStreamPerDisplay() override;

    void grab() override;
    bool start() override;
    bool stop() override;

private:
    struct Layout;

    [[maybe_unused]] svr::DisplayStreamClient* client;
    svr::DisplayStreamImpl impl;
};
