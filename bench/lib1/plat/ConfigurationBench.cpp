#include "plat/Configuration.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

#include <absl/flags/flag.h>
#include <absl/flags/parse.h>
#include <absl/flags/reflection.h>
#include <benchmark/benchmark.h>
#include <boost/program_options.hpp>
#include <getopt.h>
#include <gflags/gflags.h>
#include <glib.h>

// Its comparison of versions is older than this compiler's warning.
#include <CLI/CLI.hpp>

#include "plat/IntParameter.h"

ABSL_FLAG(int, bench_width, 80, "one flag");
DEFINE_int32(bench_height, 25, "one flag");

// Fifty of each: these two libraries take flags only as definitions of their own.
#define LUMO_FLAG(n)                                                                               \
    ABSL_FLAG(int, aparameter##n, 0, "a number");                                                  \
    DEFINE_int32(gparameter##n, 0, "a number");
#define LUMO_TEN_FLAGS(n)                                                                          \
    LUMO_FLAG(n##0)                                                                                \
    LUMO_FLAG(n##1)                                                                                \
    LUMO_FLAG(n##2)                                                                                \
    LUMO_FLAG(n##3)                                                                                \
    LUMO_FLAG(n##4)                                                                                \
    LUMO_FLAG(n##5)                                                                                \
    LUMO_FLAG(n##6)                                                                                \
    LUMO_FLAG(n##7)                                                                                \
    LUMO_FLAG(n##8)                                                                                \
    LUMO_FLAG(n##9)
LUMO_TEN_FLAGS(1)
LUMO_TEN_FLAGS(2)
LUMO_TEN_FLAGS(3)
LUMO_TEN_FLAGS(4)
LUMO_TEN_FLAGS(5)

namespace {

constexpr int count = 50;

struct Names {
    std::vector<std::string> names;
    std::vector<std::string> arguments; ///< --name=number

    Names() {
        for (int i = 0; i < count; ++i) {
            names.push_back("parameter" + std::to_string(i));
            arguments.push_back("--" + names.back() + "=" + std::to_string(i));
        }
    }
};
const Names all;

/// A command line of its own for each round: some parsers change theirs.
struct CommandLine {
    std::vector<char*> words;

    CommandLine() {
        words.push_back(const_cast<char*>("bench"));
        for (const std::string& argument : all.arguments)
            words.push_back(const_cast<char*>(argument.c_str()));
        words.push_back(nullptr);
    }
    int size() const { return int(words.size()) - 1; }
};

using Parameters = std::vector<std::unique_ptr<plat::IntParameter>>;

Parameters define(plat::Configuration* config) {
    Parameters parameters;
    parameters.reserve(count);
    for (const std::string& name : all.names)
        parameters.push_back(
            std::make_unique<plat::IntParameter>(name.c_str(), "a number", 0, false, config));
    return parameters;
}

void lumoDefineAndParse(benchmark::State& state) {
    for (auto _ : state) {
        plat::Configuration config("bench", nullptr);
        const Parameters parameters = define(&config);
        CommandLine line;
        config.processParamArgs(const_cast<const char**>(line.words.data() + 1), nullptr);
        benchmark::DoNotOptimize(parameters.back()->value());
    }
}
BENCHMARK(lumoDefineAndParse)->Name("DefineAndParse/50/lumo");

void goptionDefineAndParse(benchmark::State& state) {
    for (auto _ : state) {
        std::array<int, count> values{};
        std::array<GOptionEntry, count + 1> entries{};
        for (std::size_t i = 0; i < count; ++i)
            entries[i] = {all.names[i].c_str(), 0,          0,  G_OPTION_ARG_INT,
                          &values[i],           "a number", "N"};
        GOptionContext* context = g_option_context_new(nullptr);
        g_option_context_add_main_entries(context, entries.data(), nullptr);
        CommandLine line;
        int argc = line.size();
        char** argv = line.words.data();
        g_option_context_parse(context, &argc, &argv, nullptr);
        g_option_context_free(context);
        benchmark::DoNotOptimize(values);
    }
}
BENCHMARK(goptionDefineAndParse)->Name("DefineAndParse/50/GOption");

void cli11DefineAndParse(benchmark::State& state) {
    for (auto _ : state) {
        std::array<int, count> values{};
        CLI::App app;
        for (std::size_t i = 0; i < count; ++i)
            app.add_option("--" + all.names[i], values[i], "a number");
        const CommandLine line;
        app.parse(line.size(), line.words.data());
        benchmark::DoNotOptimize(values);
    }
}
BENCHMARK(cli11DefineAndParse)->Name("DefineAndParse/50/CLI11");

namespace po = boost::program_options;

po::variables_map boostParse() {
    po::options_description options;
    for (const std::string& name : all.names)
        options.add_options()(name.c_str(), po::value<int>(), "a number");
    const CommandLine line;
    po::variables_map values;
    po::store(po::parse_command_line(line.size(), line.words.data(), options), values);
    po::notify(values);
    return values;
}

void boostDefineAndParse(benchmark::State& state) {
    for (auto _ : state) {
        po::variables_map values = boostParse();
        benchmark::DoNotOptimize(values);
    }
}
BENCHMARK(boostDefineAndParse)->Name("DefineAndParse/50/Boost");

void lumoParse(benchmark::State& state) {
    plat::Configuration config("bench", nullptr);
    const Parameters parameters = define(&config);
    CommandLine line;
    for (auto _ : state)
        config.processParamArgs(const_cast<const char**>(line.words.data() + 1), nullptr);
}
BENCHMARK(lumoParse)->Name("Parse/50/lumo");

void getoptParse(benchmark::State& state) {
    std::array<option, count + 1> options{};
    for (std::size_t i = 0; i < count; ++i)
        options[i] = {all.names[i].c_str(), required_argument, nullptr, int(i)};
    std::array<long, count> values{};
    for (auto _ : state) {
        CommandLine line;
        optind = 0;
        int found = 0;
        while ((found = getopt_long(line.size(), line.words.data(), "", options.data(), nullptr)) >=
               0)
            values[std::size_t(found)] = std::strtol(optarg, nullptr, 0);
        benchmark::DoNotOptimize(values);
    }
}
BENCHMARK(getoptParse)->Name("Parse/50/getopt_long");

/// --aparameter10=0 to --aparameter59=49, or with another letter.
std::vector<std::string> flagArguments(char letter) {
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i)
        arguments.push_back(std::string("--") + letter + "parameter" + std::to_string(i + 10) +
                            "=" + std::to_string(i));
    return arguments;
}

std::vector<char*> wordsOf(std::vector<std::string>& arguments) {
    std::vector<char*> words{const_cast<char*>("bench")};
    for (std::string& argument : arguments)
        words.push_back(argument.data());
    words.push_back(nullptr);
    return words;
}

void abseilParse(benchmark::State& state) {
    std::vector<std::string> arguments = flagArguments('a');
    for (auto _ : state) {
        std::vector<char*> words = wordsOf(arguments);
        benchmark::DoNotOptimize(absl::ParseCommandLine(count + 1, words.data()));
    }
}
BENCHMARK(abseilParse)->Name("Parse/50/Abseil");

void gflagsParse(benchmark::State& state) {
    std::vector<std::string> arguments = flagArguments('g');
    for (auto _ : state) {
        std::vector<char*> words = wordsOf(arguments);
        int argc = count + 1;
        char** argv = words.data();
        benchmark::DoNotOptimize(gflags::ParseCommandLineFlags(&argc, &argv, true));
    }
}
BENCHMARK(gflagsParse)->Name("Parse/50/gflags");

void lumoFind(benchmark::State& state) {
    plat::Configuration config("bench", nullptr);
    const Parameters parameters = define(&config);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(config.get(all.names[i].c_str()));
        i = (i + 7) % count;
    }
}
BENCHMARK(lumoFind)->Name("FindByName/50/lumo");

void boostFind(benchmark::State& state) {
    const po::variables_map values = boostParse();
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(&values[all.names[i]]);
        i = (i + 7) % count;
    }
}
BENCHMARK(boostFind)->Name("FindByName/50/Boost");

void abseilFind(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(absl::FindCommandLineFlag("bench_width"));
}
BENCHMARK(abseilFind)->Name("FindByName/50/Abseil");

void gflagsFind(benchmark::State& state) {
    gflags::CommandLineFlagInfo info;
    for (auto _ : state)
        benchmark::DoNotOptimize(gflags::GetCommandLineFlagInfo("bench_height", &info));
}
BENCHMARK(gflagsFind)->Name("FindByName/50/gflags");

void lumoRead(benchmark::State& state) {
    plat::Configuration config("bench", nullptr);
    const plat::IntParameter parameter("width", "a number", 80, false, &config);
    for (auto _ : state) {
        benchmark::DoNotOptimize(&parameter);
        benchmark::DoNotOptimize(parameter.value());
    }
}
BENCHMARK(lumoRead)->Name("ReadValue/int/lumo");

void gflagsRead(benchmark::State& state) { // a plain variable
    for (auto _ : state) {
        benchmark::DoNotOptimize(&FLAGS_bench_height);
        benchmark::DoNotOptimize(FLAGS_bench_height);
    }
}
BENCHMARK(gflagsRead)->Name("ReadValue/int/gflags");

void abseilRead(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(absl::GetFlag(FLAGS_bench_width));
}
BENCHMARK(abseilRead)->Name("ReadValue/int/Abseil");

} // namespace
