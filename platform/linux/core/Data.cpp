#include "platform/linux/core/Data.h"

CFTypeID CFDataGetTypeID() {
    return static_cast<CFTypeID>(platform::ObjectType::Data);
}

CFIndex CFDataGetLength(CFDataRef data) {
    return static_cast<CFIndex>(data->bytes.size());
}

const uint8_t* CFDataGetBytePtr(CFDataRef data) {
    return data->bytes.data();
}
