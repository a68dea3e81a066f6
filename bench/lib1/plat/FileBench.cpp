#include "plat/TransactedFilePtr.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <glib.h>
#include <unistd.h>

#include "plat/path.h"

namespace {

const std::string content(4096, 'x');

/// A file of this run's own, gone with it.
struct Target {
    std::string folder;
    std::string path;

    Target() {
        char name[] = "/tmp/FileBench.XXXXXX";
        folder = mkdtemp(name);
        path = folder + "/target";
        std::ofstream(path) << content;
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    ~Target() { std::filesystem::remove_all(folder); }
};

// Both put the bytes on the disk before the name.
void lumoReplace(benchmark::State& state) {
    const Target target;
    for (auto _ : state) {
        plat::TransactedFilePtr file(target.path.c_str(), true);
        std::fwrite(content.data(), 1, content.size(), file.get());
        file.commit();
    }
}
BENCHMARK(lumoReplace)->Name("ReplaceFile/4k_synced/lumo")->UseRealTime();

void glibReplace(benchmark::State& state) {
    const Target target;
    for (auto _ : state)
        g_file_set_contents_full(
            target.path.c_str(), content.data(), gssize(content.size()),
            GFileSetContentsFlags(G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE),
            0666, nullptr);
}
BENCHMARK(glibReplace)->Name("ReplaceFile/4k_synced/GLib")->UseRealTime();

constexpr const char* path = "/usr/local/../share/./lumo//strings/../strings.en.po";

void lumoPath(benchmark::State& state) {
    for (auto _ : state) {
        plat::CanonicalName name(path);
        benchmark::DoNotOptimize(&name);
    }
}
BENCHMARK(lumoPath)->Name("LexicalPath/dots/lumo");

void glibPath(benchmark::State& state) {
    for (auto _ : state) {
        char* name = g_canonicalize_filename(path, "/");
        benchmark::DoNotOptimize(name);
        g_free(name);
    }
}
BENCHMARK(glibPath)->Name("LexicalPath/dots/GLib");

void stdPath(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(std::filesystem::path(path).lexically_normal());
}
BENCHMARK(stdPath)->Name("LexicalPath/dots/std_filesystem");

} // namespace
