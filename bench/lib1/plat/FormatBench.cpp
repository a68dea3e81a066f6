#include <string>

#include <absl/strings/str_format.h>
#include <benchmark/benchmark.h>
#include <fmt/compile.h>
#include <fmt/format.h>

#include "plat/SString.h"
#include "rdr/MemOutStream.h"
#include "rdr/StringWriter.h"

namespace {

constexpr int textSize = 1'000'000;
const char* const word = " screens, "; // behind each number

// A text of 1 MB, from numbers and words.

void lumoTyped(benchmark::State& state) {
    int64_t appends = 0;
    for (auto _ : state) {
        rdr::MemOutStream stream;
        rdr::StringWriter writer(&stream);
        for (int i = 0; stream.length() < textSize; ++i, ++appends)
            writer.appendInt(int(unsigned(i) * 2654435U)).append(word);
        benchmark::DoNotOptimize(stream.data());
    }
    state.SetItemsProcessed(appends);
}
BENCHMARK(lumoTyped)->Name("AppendTyped/1m/lumo");

void fmtTyped(benchmark::State& state) {
    int64_t appends = 0;
    for (auto _ : state) {
        fmt::memory_buffer text;
        for (int i = 0; int(text.size()) < textSize; ++i, ++appends)
            fmt::format_to(std::back_inserter(text), FMT_COMPILE("{}{}"),
                           int(unsigned(i) * 2654435U), word);
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(appends);
}
BENCHMARK(fmtTyped)->Name("AppendTyped/1m/fmt");

void lumoPrintf(benchmark::State& state) {
    int64_t appends = 0;
    for (auto _ : state) {
        rdr::MemOutStream stream;
        rdr::StringWriter writer(&stream);
        for (int i = 0; stream.length() < textSize; ++i, ++appends)
            writer.prf("%d%s", int(unsigned(i) * 2654435U), word);
        benchmark::DoNotOptimize(stream.data());
    }
    state.SetItemsProcessed(appends);
}
BENCHMARK(lumoPrintf)->Name("AppendPrintf/1m/lumo");

void abslPrintf(benchmark::State& state) {
    int64_t appends = 0;
    for (auto _ : state) {
        std::string text;
        for (int i = 0; int(text.size()) < textSize; ++i, ++appends)
            absl::StrAppendFormat(&text, "%d%s", int(unsigned(i) * 2654435U), word);
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(appends);
}
BENCHMARK(abslPrintf)->Name("AppendPrintf/1m/absl");

// A message of the size of an exception's.

const char* const path = "/usr/local/share/lumo/screens/of/the/second/desk/layout.conf";

void lumoMessage(benchmark::State& state) {
    int i = 0;
    for (auto _ : state) {
        plat::SString<256> message;
        message.prf("%s(%d): cannot read %s at line %u: %s (%d)", "readLayout", ++i, path, 1234U,
                    "No such file or directory", 2);
        benchmark::DoNotOptimize(message.get());
    }
}
BENCHMARK(lumoMessage)->Name("Message/256/lumo");

void abslMessage(benchmark::State& state) {
    int i = 0;
    for (auto _ : state) {
        char message[256];
        absl::SNPrintF(message, sizeof message, "%s(%d): cannot read %s at line %u: %s (%d)",
                       "readLayout", ++i, path, 1234U, "No such file or directory", 2);
        benchmark::DoNotOptimize(&message[0]);
    }
}
BENCHMARK(abslMessage)->Name("Message/256/absl");

void libcMessage(benchmark::State& state) {
    int i = 0;
    for (auto _ : state) {
        char message[256];
        std::snprintf(message, sizeof message, "%s(%d): cannot read %s at line %u: %s (%d)",
                      "readLayout", ++i, path, 1234U, "No such file or directory", 2);
        benchmark::DoNotOptimize(&message[0]);
    }
}
BENCHMARK(libcMessage)->Name("Message/256/libc");

} // namespace
