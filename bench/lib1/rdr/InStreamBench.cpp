#include "rdr/FileInStream.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>

#include <benchmark/benchmark.h>
#include <google/protobuf/io/coded_stream.h>
#include <unistd.h>

#include "plat/DString.h"

namespace {

constexpr int lineCount = 1'000'000;

/// A million lines, 40 MB, in a file that goes with this run.
struct Lines {
    std::string path;

    Lines() {
        char name[] = "/tmp/InStreamBench.XXXXXX";
        close(mkstemp(name));
        path = name;
        std::ofstream file(path);
        std::mt19937 random(7); // NOLINT(bugprone-random-generator-seed): the same in every run
        for (int i = 0; i < lineCount; ++i)
            file << std::string(random() % 79, 'x') << '\n';
    }
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;
    ~Lines() { std::filesystem::remove(path); }
};

const char* linesPath() {
    static const Lines lines;
    return lines.path.c_str();
}

void lumoLines(benchmark::State& state) {
    const char* path = linesPath();
    for (auto _ : state) {
        rdr::FileInStream stream(path, true);
        plat::DString line;
        for (int i = 0; i < lineCount; ++i)
            benchmark::DoNotOptimize(stream.readLine(&line));
    }
}
BENCHMARK(lumoLines)->Name("ReadLines/1m/lumo")->Unit(benchmark::kMillisecond);

void getlineLines(benchmark::State& state) {
    const char* path = linesPath();
    for (auto _ : state) {
        std::FILE* file = std::fopen(path, "rb");
        char* line = nullptr;
        std::size_t size = 0;
        while (getline(&line, &size, file) >= 0)
            benchmark::DoNotOptimize(line);
        std::free(line);
        std::fclose(file);
    }
}
BENCHMARK(getlineLines)->Name("ReadLines/1m/getline")->Unit(benchmark::kMillisecond);

void streamLines(benchmark::State& state) {
    const char* path = linesPath();
    for (auto _ : state) {
        std::ifstream file(path);
        std::string line;
        while (std::getline(file, line))
            benchmark::DoNotOptimize(line.data());
    }
}
BENCHMARK(streamLines)->Name("ReadLines/1m/ifstream")->Unit(benchmark::kMillisecond);

constexpr int stringCount = 1000;
constexpr int stringSize = 20;

/// Everything is there from the start.
class MemoryStream final : public rdr::InStream {
public:
    explicit MemoryStream(const std::string& bytes) {
        ptr = checkpointPtr = reinterpret_cast<const unsigned char*>(bytes.data());
        end = ptr + bytes.size();
    }
    int pos() override { return 0; }
    bool overrun(int) override { return false; }
};

std::string lengthPrefixed(bool isVarint) {
    std::string bytes;
    for (int i = 0; i < stringCount; ++i) {
        bytes += isVarint ? std::string(1, char(stringSize)) : std::string{0, 0, 0, stringSize};
        bytes += std::string(stringSize, 'x');
    }
    return bytes;
}

void lumoStrings(benchmark::State& state) {
    const std::string bytes = lengthPrefixed(false);
    for (auto _ : state) {
        MemoryStream stream(bytes);
        for (int i = 0; i < stringCount; ++i) {
            const std::unique_ptr<char[]> text(stream.readLongString(1024));
            benchmark::DoNotOptimize(text.get());
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * stringCount);
}
BENCHMARK(lumoStrings)->Name("PrefixedStrings/new_array/lumo");

void iostreamStrings(benchmark::State& state) {
    const std::string bytes = lengthPrefixed(false);
    for (auto _ : state) {
        std::istringstream stream(bytes);
        for (int i = 0; i < stringCount; ++i) {
            unsigned char length[4];
            stream.read(reinterpret_cast<char*>(length), 4);
            const std::unique_ptr<char[]> text(new char[length[3] + 1U]);
            stream.read(text.get(), length[3]);
            text[length[3]] = '\0';
            benchmark::DoNotOptimize(text.get());
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * stringCount);
}
BENCHMARK(iostreamStrings)->Name("PrefixedStrings/new_array/istringstream");

void lumoShortStrings(benchmark::State& state) {
    const std::string bytes = lengthPrefixed(true);
    for (auto _ : state) {
        MemoryStream stream(bytes);
        char text[256];
        for (int i = 0; i < stringCount; ++i) {
            stream.readShortString(text);
            benchmark::DoNotOptimize(text);
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * stringCount);
}
BENCHMARK(lumoShortStrings)->Name("PrefixedStrings/in_place/lumo");

void protobufStrings(benchmark::State& state) {
    const std::string bytes = lengthPrefixed(true);
    for (auto _ : state) {
        google::protobuf::io::CodedInputStream stream(
            reinterpret_cast<const std::uint8_t*>(bytes.data()), int(bytes.size()));
        std::string text;
        for (int i = 0; i < stringCount; ++i) {
            std::uint32_t length = 0;
            stream.ReadVarint32(&length);
            stream.ReadString(&text, int(length));
            benchmark::DoNotOptimize(text.data());
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * stringCount);
}
BENCHMARK(protobufStrings)->Name("PrefixedStrings/in_place/protobuf");

} // namespace
