#include "plat/LogWriter.h"

#include <memory>

#include <benchmark/benchmark.h>
#include <glog/logging.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include "plat/Logger.h"

namespace {

plat::LogWriter vlog("Bench");

class DiscardingLogger : public plat::Logger {
public:
    using Logger::Logger;
    void write(int, const char*, const char* text) override { benchmark::DoNotOptimize(text); }
    void flush() override {}
} discard("discard");

void lumoDisabled(benchmark::State& state) {
    plat::LogWriter::applyLogSetting("*:discard:30");
    int i = 0;
    for (auto _ : state) {
        vlog.debug("changed %d of %s", ++i, "screen");
        benchmark::DoNotOptimize(i);
    }
}
BENCHMARK(lumoDisabled)->Name("LogDisabled/debug/lumo");

void glogDisabled(benchmark::State& state) {
    int i = 0;
    for (auto _ : state) {
        VLOG(3) << "changed " << ++i << " of " << "screen";
        benchmark::DoNotOptimize(i);
    }
}
BENCHMARK(glogDisabled)->Name("LogDisabled/debug/glog");

void lumoEnabled(benchmark::State& state) {
    plat::LogWriter::applyLogSetting("*:discard:100");
    int i = 0;
    for (auto _ : state)
        vlog.debug("changed %d of %s at %u", ++i, "screen", 1234U);
}
BENCHMARK(lumoEnabled)->Name("LogEnabled/debug/lumo");

// As ours does, spdlog formats the message and hands it to a sink that forgets it.
class DiscardingSink : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        benchmark::DoNotOptimize(message.payload.data());
    }
    void flush_() override {}
};

void spdlogEnabled(benchmark::State& state) {
    spdlog::logger logger("bench", std::make_shared<DiscardingSink>());
    logger.set_level(spdlog::level::debug);
    int i = 0;
    for (auto _ : state)
        logger.debug("changed {} of {} at {}", ++i, "screen", 1234U);
}
BENCHMARK(spdlogEnabled)->Name("LogEnabled/debug/spdlog");

} // namespace
