#include <clocale>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <unicode/brkiter.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>

#include "lib1/Corpus.h"
#include "plat/DString.h"

namespace {

constexpr int width = 79;

void lumoWrap(benchmark::State& state, std::string (*make)(std::size_t)) {
    std::setlocale(LC_ALL, "C.UTF-8");
    const std::string text = make(10240);
    for (auto _ : state) {
        plat::DString string;
        string.append(text.c_str());
        string.wordWrap(width, 2);
        benchmark::DoNotOptimize(string.get());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

// The breaks of ICU's line break iterator, put together to lines of the width.
void icuWrap(benchmark::State& state, std::string (*make)(std::size_t)) {
    const std::string text = make(10240);
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createLineInstance(icu::Locale::getUS(), status));
    for (auto _ : state) {
        UText source = UTEXT_INITIALIZER;
        utext_openUTF8(&source, text.data(), int64_t(text.size()), &status);
        breaks->setText(&source, status);
        std::string out;
        out.reserve(text.size() + text.size() / 8);
        int column = 0;
        int32_t from = breaks->first();
        for (int32_t to = breaks->next(); to != icu::BreakIterator::DONE; to = breaks->next()) {
            if (column + to - from > width) {
                out += "\n  ";
                column = 2;
            }
            out.append(text, std::size_t(from), std::size_t(to - from));
            column += to - from;
            from = to;
        }
        utext_close(&source);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

[[maybe_unused]] const bool registered = [] {
    benchmark::RegisterBenchmark("WordWrap/ascii_10k/lumo", lumoWrap, corpus::ascii);
    benchmark::RegisterBenchmark("WordWrap/ascii_10k/icu", icuWrap, corpus::ascii);
    benchmark::RegisterBenchmark("WordWrap/latin_10k/lumo", lumoWrap, corpus::latin);
    benchmark::RegisterBenchmark("WordWrap/latin_10k/icu", icuWrap, corpus::latin);
    return true;
}();

} // namespace
