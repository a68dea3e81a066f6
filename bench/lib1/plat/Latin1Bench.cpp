#include "plat/Latin1.h"

#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>

#include "lib1/Corpus.h"

namespace {

using Make = std::string (*)(std::size_t);

constexpr std::size_t textSize = 65536;

void lumoToUtf8(const std::string& text) {
    std::unique_ptr<char[]> copy(plat::latin1ToUtf8(text.data(), text.data() + text.size()));
    benchmark::DoNotOptimize(copy.get());
}
void lumoToLatin1(const std::string& text) {
    std::unique_ptr<char[]> copy(plat::utf8ToLatin1(text.data(), text.data() + text.size()));
    benchmark::DoNotOptimize(copy.get());
}

// ICU with both converters open already, and room for the longest result.
class IcuConverter {
public:
    IcuConverter(const char* from, const char* to) : target(nullptr), source(nullptr) {
        UErrorCode status = U_ZERO_ERROR;
        target = ucnv_open(to, &status);
        source = ucnv_open(from, &status);
    }
    IcuConverter(const IcuConverter&) = delete;
    IcuConverter& operator=(const IcuConverter&) = delete;
    ~IcuConverter() {
        ucnv_close(target);
        ucnv_close(source);
    }
    void convert(const std::string& text) const {
        std::unique_ptr<char[]> copy(new char[2 * text.size() + 1]);
        char* out = copy.get();
        const char* in = text.data();
        UChar pivot[4096];
        UChar* pivotSource = pivot;
        UChar* pivotTarget = pivot;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_convertEx(target, source, &out, copy.get() + 2 * text.size(), &in,
                       text.data() + text.size(), pivot, &pivotSource, &pivotTarget, pivot + 4096,
                       1, 1, &status);
        *out = '\0';
        benchmark::DoNotOptimize(copy.get());
    }

private:
    UConverter* target;
    UConverter* source;
};

void icuToUtf8(const std::string& text) {
    static const IcuConverter converter("ISO-8859-1", "UTF-8");
    converter.convert(text);
}
void icuToLatin1(const std::string& text) {
    static const IcuConverter converter("UTF-8", "ISO-8859-1");
    converter.convert(text);
}

template <void (*Convert)(const std::string&)>
void convert(benchmark::State& state, Make make) {
    const std::string text = make(textSize);
    for (auto _ : state)
        Convert(text);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

[[maybe_unused]] const bool registered = [] {
    benchmark::RegisterBenchmark("Latin1ToUtf8/ascii_64k/lumo", convert<lumoToUtf8>, corpus::ascii);
    benchmark::RegisterBenchmark("Latin1ToUtf8/ascii_64k/icu", convert<icuToUtf8>, corpus::ascii);
    benchmark::RegisterBenchmark("Latin1ToUtf8/latin_64k/lumo", convert<lumoToUtf8>,
                                 corpus::latin1);
    benchmark::RegisterBenchmark("Latin1ToUtf8/latin_64k/icu", convert<icuToUtf8>, corpus::latin1);
    benchmark::RegisterBenchmark("Utf8ToLatin1/ascii_64k/lumo", convert<lumoToLatin1>,
                                 corpus::ascii);
    benchmark::RegisterBenchmark("Utf8ToLatin1/ascii_64k/icu", convert<icuToLatin1>, corpus::ascii);
    benchmark::RegisterBenchmark("Utf8ToLatin1/latin_64k/lumo", convert<lumoToLatin1>,
                                 corpus::latin);
    benchmark::RegisterBenchmark("Utf8ToLatin1/latin_64k/icu", convert<icuToLatin1>, corpus::latin);
    return true;
}();

} // namespace
