#include "lumoscreenhelper/DispatchQueue.h"

namespace svr {

void runOnMainThread(bool isMainThread, dispatch_block_t block) {
    if (isMainThread)
        block();
    else
        dispatch_async(dispatch_get_main_queue(), block);
}

} // namespace svr
