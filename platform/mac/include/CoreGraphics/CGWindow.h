#pragma once

// Whether this process may see the screen, for builds without Apple's SDK.

extern "C" {

/// True if the user has allowed this process to record the screen.
bool CGPreflightScreenCaptureAccess(void);

/// Asks the user, once; true if it is allowed already.
bool CGRequestScreenCaptureAccess(void);
}
