// Makes the compiler lay out every class whose members or virtual operations stand in a fixed order.
// Never run: its layouts are printed and compared with layouts.txt.
#include "lumoscreenhelper/DisplayStreamImpl.h"
#include "lumoscreenhelper/DisplayStreamPerDisplay.h"
#include "os/mac/CGUtil.h"
#include "plat/Assertion.h"
#include "plat/Buf.h"
#include "plat/DPrintf.h"
#include "plat/DString.h"
#include "plat/DynamicFn.h"
#include "plat/Exception.h"
#include "plat/LogWriter.h"
#include "plat/Logger.h"
#include "plat/Rect.h"
#include "plat/SString.h"
#include "plat/String.h"
#include "plat/unix/Condition.h"
#include "plat/unix/Mutex.h"
#include "plat/unix/Thread.h"
#include "plat/unix/ThreadLocalPtr.h"
#include "rdr/InStream.h"
#include "rdr/MemOutStream.h"
#include "rdr/OutStream.h"
#include "svr/mac/DisplayStreamClient.h"
#include "svr/mac/DisplayStreamSource.h"

namespace {

/// A call through the table of virtual operations makes the compiler number them.
template <typename Class>
void destroy(Class* object) {
    delete object;
}

template <typename... Classes>
constexpr std::size_t sizes = (sizeof(Classes) + ...);

} // namespace

extern const std::size_t probedSizes;
const std::size_t probedSizes =
    sizes<plat::AssertionFail, plat::CBuf<char>, plat::MBuf<char>, plat::SString<256>,
          plat::ThreadLocalPtr<plat::Thread>, plat::DynamicFn<void (*)()>>;

void probe(svr::DisplayStreamClient* client, svr::DisplayStreamSource* source,
           DisplayStreamPerDisplay* perDisplay, plat::Logger* logger, plat::Thread* thread,
           plat::ThreadRunner* runner, rdr::InStream* in, rdr::OutStream* out,
           rdr::MemOutStream* memory);
void probe(svr::DisplayStreamClient* client, svr::DisplayStreamSource* source,
           DisplayStreamPerDisplay* perDisplay, plat::Logger* logger, plat::Thread* thread,
           plat::ThreadRunner* runner, rdr::InStream* in, rdr::OutStream* out,
           rdr::MemOutStream* memory) {
    destroy(client);
    destroy(source);
    destroy(perDisplay);
    destroy(logger);
    destroy(thread);
    destroy(runner);
    destroy(in);
    destroy(out);
    destroy(memory);
}
