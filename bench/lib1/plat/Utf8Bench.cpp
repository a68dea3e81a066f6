#include "plat/Utf8.h"

#include <clocale>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <glib.h>
#include <google/protobuf/stubs/common.h>
#include <simdjson.h>
#include <uniwidth.h>

#include "lib1/Corpus.h"

namespace {

using Make = std::string (*)(std::size_t);

// Validating

bool lumoValidate(const std::string& text) {
    return plat::isValidUtf8(text.data(), text.data() + text.size());
}
bool simdjsonValidate(const std::string& text) {
    return simdjson::validate_utf8(text.data(), text.size());
}
bool protobufValidate(const std::string& text) {
    return google::protobuf::internal::IsStructurallyValidUTF8(text.data(), int(text.size()));
}

template <bool (*Validate)(const std::string&)>
void validateLong(benchmark::State& state, Make make, std::size_t size) {
    const std::string text = make(size);
    for (auto _ : state) {
        bool isValid = Validate(text);
        benchmark::DoNotOptimize(isValid);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

// Texts of 8 to 32 bytes, one after the other.
template <bool (*Validate)(const std::string&)>
void validateShort(benchmark::State& state, Make make) {
    std::vector<std::string> texts;
    const std::string all = make(8192);
    std::mt19937 random(20261121); // NOLINT(bugprone-random-generator-seed): the same in every run
    for (std::size_t at = 0; texts.size() < 256;) {
        std::size_t end = at + 8 + random() % 22;
        while ((all[end] & 0xC0) == 0x80)
            ++end;
        texts.push_back(all.substr(at, end - at));
        at = end;
    }
    for (auto _ : state) {
        for (const std::string& text : texts) {
            bool isValid = Validate(text);
            benchmark::DoNotOptimize(isValid);
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(texts.size()));
}

// Repairing

void lumoRepair(const std::string& text) {
    std::unique_ptr<char[]> copy(plat::sanitizeUtf8(text.data(), text.data() + text.size()));
    benchmark::DoNotOptimize(copy.get());
}
void glibRepair(const std::string& text) {
    char* const copy = g_utf8_make_valid(text.data(), gssize(text.size()));
    benchmark::DoNotOptimize(copy);
    g_free(copy);
}

template <void (*Repair)(const std::string&)>
void repair(benchmark::State& state) {
    const std::string text = corpus::damaged(65536);
    for (auto _ : state)
        Repair(text);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(repair<lumoRepair>)->Name("Utf8Repair/damaged_64k/lumo");
BENCHMARK(repair<glibRepair>)->Name("Utf8Repair/damaged_64k/glib");

// Columns

int lumoColumns(const std::string& text) {
    return plat::utf8NumColumns(text.data(), text.data() + text.size());
}
int unistringColumns(const std::string& text) {
    return u8_width(reinterpret_cast<const uint8_t*>(text.data()), text.size(), "UTF-8");
}

template <int (*Columns)(const std::string&)>
void columns(benchmark::State& state, Make make) {
    std::setlocale(LC_ALL, "C.UTF-8");
    const std::string text = make(16384);
    for (auto _ : state) {
        int count = Columns(text);
        benchmark::DoNotOptimize(count);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

struct Text {
    std::string name;
    Make make;
};
const Text texts[] = {{"ascii", corpus::ascii},
                      {"latin", corpus::latin},
                      {"cjk", corpus::cjk},
                      {"emoji", corpus::emoji},
                      {"mixed", corpus::mixed}};

void registerValidation(const Text& text) {
    const std::string longName = "Utf8Validate/" + text.name + "_64k/";
    benchmark::RegisterBenchmark((longName + "lumo").c_str(), validateLong<lumoValidate>, text.make,
                                 65536);
    benchmark::RegisterBenchmark((longName + "simdjson").c_str(), validateLong<simdjsonValidate>,
                                 text.make, 65536);
    const std::string shortName = "Utf8Validate/short_" + text.name + "/";
    benchmark::RegisterBenchmark((shortName + "lumo").c_str(), validateShort<lumoValidate>,
                                 text.make);
    benchmark::RegisterBenchmark((shortName + "simdjson").c_str(), validateShort<simdjsonValidate>,
                                 text.make);
    benchmark::RegisterBenchmark((shortName + "protobuf").c_str(), validateShort<protobufValidate>,
                                 text.make);
}

void registerColumns(const Text& text) {
    const std::string name = "Utf8Columns/" + text.name + "_16k/";
    benchmark::RegisterBenchmark((name + "lumo").c_str(), columns<lumoColumns>, text.make);
    benchmark::RegisterBenchmark((name + "unistring").c_str(), columns<unistringColumns>,
                                 text.make);
}

[[maybe_unused]] const bool registered = [] {
    for (const Text& text : texts) {
        registerValidation(text);
        registerColumns(text);
    }
    return true;
}();

} // namespace
