#include "plat/BinaryParameter.h"

#include <algorithm>
#include <cstddef>

#include "plat/HexToBin.h"

namespace plat {

namespace {

/// Fills a buffer with a copy of some bytes.
void putCopy(MBuf<unsigned char>* out, CBuf<unsigned char> bytes) {
    unsigned char* const copy =
        bytes.length > 0 ? new unsigned char[std::size_t(bytes.length)] : nullptr;
    std::copy_n(bytes.data, std::max(bytes.length, 0), copy);
    out->replaceBuf(copy, std::max(bytes.length, 0));
}

MBuf<unsigned char> copyOf(CBuf<unsigned char> bytes) {
    MBuf<unsigned char> copy;
    putCopy(&copy, bytes);
    return copy;
}

} // namespace

BinaryParameter::BinaryParameter(const char* name, const char* description,
                                 CBuf<unsigned char> defaultValue, Configuration* config,
                                 bool hidden)
    : TypedParameter(name, description, nullptr, copyOf(defaultValue), hidden, config) {}

BinaryParameter::BinaryParameter(const char* name, loc::msgid_t description,
                                 CBuf<unsigned char> defaultValue, Configuration* config,
                                 bool hidden)
    : TypedParameter(name, nullptr, description, copyOf(defaultValue), hidden, config) {}

BinaryParameter::BinaryParameter(const BinaryParameter& source, Configuration* into)
    : TypedParameter(source, into) {}

void BinaryParameter::setParam(CBuf<unsigned char> bytes, int priority) {
    setValue(copyOf(bytes), priority);
}

bool BinaryParameter::setParam(const char* text, int priority) {
    MBuf<unsigned char> bytes;
    return text != nullptr && hexStrToBin(text, &bytes) && setValue(bytes, priority);
}

bool BinaryParameter::isBinary() const {
    return true;
}

ConfigParameter* BinaryParameter::clone(Configuration* into) {
    return new BinaryParameter(*this, into);
}

void BinaryParameter::getData(MBuf<unsigned char>* out) const {
    putCopy(out, value().view());
}

} // namespace plat
