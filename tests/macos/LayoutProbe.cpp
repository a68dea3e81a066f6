// Makes the compiler lay out every class whose members or virtual operations stand in a fixed
// order. Never run: its layouts are printed and compared with layouts.txt.
#include "loc/LString.h"
#include "loc/LibcLocale.h"
#include "loc/LocaleSetter.h"
#include "loc/Localize.h"
#include "loc/PluralRule.h"
#include "loc/TransMap.h"
#include "loc/Translation.h"
#include "lumoscreenhelper/DisplayStreamImpl.h"
#include "lumoscreenhelper/DisplayStreamPerDisplay.h"
#include "os/mac/CGUtil.h"
#include "plat/Assertion.h"
#include "plat/BinaryParameter.h"
#include "plat/BoolParameter.h"
#include "plat/Buf.h"
#include "plat/Configuration.h"
#include "plat/DPrintf.h"
#include "plat/DString.h"
#include "plat/DynamicFn.h"
#include "plat/EnumParameter.h"
#include "plat/Exception.h"
#include "plat/FilePtr.h"
#include "plat/IntParameter.h"
#include "plat/LogWriter.h"
#include "plat/Logger.h"
#include "plat/ParameterAlias.h"
#include "plat/ParameterChangedCallback.h"
#include "plat/ParameterIterator.h"
#include "plat/Rect.h"
#include "plat/S64Parameter.h"
#include "plat/SString.h"
#include "plat/String.h"
#include "plat/StringParameter.h"
#include "plat/TransactedFilePtr.h"
#include "plat/unix/Condition.h"
#include "plat/unix/Mutex.h"
#include "plat/unix/Thread.h"
#include "plat/unix/ThreadLocalPtr.h"
#include "rdr/FileInStream.h"
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

template <typename... Classes>
void probe(Classes*... objects) {
    (destroy(objects), ...);
}

template void probe(svr::DisplayStreamClient*, svr::DisplayStreamSource*, DisplayStreamPerDisplay*,
                    plat::Logger*, plat::Thread*, plat::ThreadRunner*, rdr::InStream*,
                    rdr::BufferedInStream*, rdr::FileInStream*, rdr::OutStream*, rdr::MemOutStream*,
                    plat::ParameterChangedCallback*, plat::ConfigParameter*, plat::BoolParameter*,
                    plat::IntParameter*, plat::StringParameter*, plat::EnumParameter*,
                    plat::BinaryParameter*, plat::S64Parameter*, plat::ParameterAlias*,
                    plat::Configuration::CanonicalizeCallback*, loc::Localize*);
