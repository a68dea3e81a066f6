#include "loc/unescapeString.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "Require.h"
#include "lib1/loc/UnescapeModel.h"
#include "plat/Exception.h"

namespace {

template <typename Target>
std::string faultOf(const std::string& text, Target* target) {
    try {
        loc::unescapeString(text.c_str(), target);
    } catch (const plat::Exception& e) {
        return e.message.get();
    }
    return "";
}

} // namespace

// The input with a quote in front and behind, so that the content is reached at once; and as it is.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input = std::string(data, data + size).c_str();
    for (const std::string& text : {'"' + input + '"', '"' + input, input}) {
        const UnescapeModel model(text);
        rdr::MemOutStream out;
        REQUIRE(faultOf(text, &out) == model.fault);
        REQUIRE(std::string(out.data(), out.data() + out.length()) == model.content);
        plat::DString string;
        string.append(">");
        REQUIRE(faultOf(text, &string) == model.fault);
        REQUIRE(string.str() == ">" + std::string(model.content.c_str()));
    }
    return 0;
}
