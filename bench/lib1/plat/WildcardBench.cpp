#include "plat/Wildcard.h"

#include <string>

#include <benchmark/benchmark.h>
#include <fnmatch.h>
#include <glib.h>

namespace {

void lumoMatch(benchmark::State& state, std::string pattern, std::string text) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.data());
        bool isMatch = plat::Wildcard::match(pattern.c_str(), text.c_str(), true, 1);
        benchmark::DoNotOptimize(isMatch);
    }
}

void glibMatch(benchmark::State& state, std::string pattern, std::string text) {
    GPatternSpec* const spec = g_pattern_spec_new(pattern.c_str());
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.data());
        gboolean isMatch = g_pattern_spec_match_string(spec, text.c_str());
        benchmark::DoNotOptimize(isMatch);
    }
    g_pattern_spec_free(spec);
}

void libcMatch(benchmark::State& state, std::string pattern, std::string text) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.data());
        int mismatch = fnmatch(pattern.c_str(), text.c_str(), FNM_NOESCAPE);
        benchmark::DoNotOptimize(mismatch);
    }
}

struct Row {
    std::string name;
    std::string pattern;
    std::string text;
};
const Row rows[] = {{"prefix_star", "DisplayStream*", "DisplayStreamImpl"},
                    {"three_stars", "*play*Stream*", "DisplayStreamImpl"},
                    {"hostile", "*a*a*a*a*b", std::string(60, 'a')}};

[[maybe_unused]] const bool registered = [] {
    for (const Row& row : rows) {
        benchmark::RegisterBenchmark(("Wildcard/" + row.name + "/lumo").c_str(), lumoMatch,
                                     row.pattern, row.text);
        benchmark::RegisterBenchmark(("Wildcard/" + row.name + "/glib").c_str(), glibMatch,
                                     row.pattern, row.text);
        benchmark::RegisterBenchmark(("Wildcard/" + row.name + "/fnmatch").c_str(), libcMatch,
                                     row.pattern, row.text);
    }
    return true;
}();

} // namespace
