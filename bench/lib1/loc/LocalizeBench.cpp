#include "loc/Localize.h"

#include <memory>
#include <string>
#include <vector>

#include <absl/strings/str_format.h>
#include <benchmark/benchmark.h>
#include <fmt/compile.h>
#include <fmt/format.h>
#include <glib.h>

#include "loc/LString.h"
#include "loc/StringsFile.h"
#include "plat/Configuration.h"
#include "rdr/EndOfStream.h"
#include "rdr/InStream.h"

namespace {

/// English texts, whatever the environment says.
void speakEnglish() {
    static const bool done = [] {
        plat::Configuration::global()->set("Locale", "en_US", 50);
        loc::Localize::inst().init({});
        return true;
    }();
    benchmark::DoNotOptimize(done);
}

constexpr const char* id = "plat_usage_label";

void lumoMessage(benchmark::State& state) {
    speakEnglish();
    for (auto _ : state)
        benchmark::DoNotOptimize(LUMO_LOCALIZE("plat_usage_label"));
}
BENCHMARK(lumoMessage)->Name("Message/by_id/lumo");

void glibMessage(benchmark::State& state) {
    GHashTable* table = g_hash_table_new(g_str_hash, g_str_equal);
    std::vector<std::string> keys;
    for (int i = 0; i < 60; ++i)
        keys.push_back("plat_message_number_" + std::to_string(i));
    for (std::string& key : keys)
        g_hash_table_insert(table, key.data(), key.data());
    g_hash_table_insert(table, const_cast<char*>(id), const_cast<char*>("Usage:"));
    for (auto _ : state)
        benchmark::DoNotOptimize(g_hash_table_lookup(table, id));
    g_hash_table_destroy(table);
}
BENCHMARK(glibMessage)->Name("Message/by_id/GHashTable");

void lumoPlural(benchmark::State& state) {
    speakEnglish();
    int count = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(LUMO_LOCALIZE_PLURAL("loc_bytesize_unit", ++count & 3, 0, 1000));
}
BENCHMARK(lumoPlural)->Name("Plural/by_id/lumo");

// The form is chosen, the rest is one search: what any catalogue in memory has to do.
void glibPlural(benchmark::State& state) {
    GHashTable* table = g_hash_table_new(g_str_hash, g_str_equal);
    g_hash_table_insert(table, const_cast<char*>("loc_bytesize_unit_sing"),
                        const_cast<char*>("%D byte"));
    g_hash_table_insert(table, const_cast<char*>("loc_bytesize_unit_zeromany"),
                        const_cast<char*>("%D bytes"));
    int count = 0;
    for (auto _ : state) {
        const char* key =
            (++count & 3) == 1 ? "loc_bytesize_unit_sing" : "loc_bytesize_unit_zeromany";
        benchmark::DoNotOptimize(g_hash_table_lookup(table, key));
    }
    g_hash_table_destroy(table);
}
BENCHMARK(glibPlural)->Name("Plural/by_id/GHashTable");

void lumoPositional(benchmark::State& state) {
    loc::LString text;
    for (auto _ : state) {
        text.xprintf("%2$S of %1$D bytes", loc::PrintfArgs(4096, "picture.png"));
        benchmark::DoNotOptimize(text.str());
    }
}
BENCHMARK(lumoPositional)->Name("Positional/two/lumo");

void abseilPositional(benchmark::State& state) {
    const auto format = absl::ParsedFormat<'d', 's'>::New("%2$s of %1$d bytes");
    std::string text;
    for (auto _ : state) {
        text.clear();
        absl::StrAppendFormat(&text, *format, 4096, "picture.png");
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(abseilPositional)->Name("Positional/two/Abseil_parsed");

void fmtPositional(benchmark::State& state) {
    std::string text;
    for (auto _ : state) {
        text.clear();
        fmt::vformat_to(std::back_inserter(text), "{1} of {0} bytes",
                        fmt::make_format_args(4096, "picture.png"));
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(fmtPositional)->Name("Positional/two/fmt");

constexpr int entryCount = 2000;

class MemoryStream final : public rdr::InStream {
public:
    explicit MemoryStream(const std::string& bytes)
        : start(reinterpret_cast<const unsigned char*>(bytes.data())) {
        ptr = checkpointPtr = start;
        end = ptr + bytes.size();
        rewindable = false;
    }
    int pos() override { return int(ptr - start); }
    bool overrun(int) override { throw rdr::EndOfStream(); }

private:
    const unsigned char* start;
};

void lumoLoad(benchmark::State& state) {
    std::string file;
    for (int i = 0; i < entryCount; ++i)
        file += "msgid \"bench_entry_" + std::to_string(i) + "\"\nmsgstr \"The text of entry " +
                std::to_string(i) + "\"\n\n";
    for (auto _ : state) {
        MemoryStream stream(file);
        loc::readStringsFile(&stream, "bench.po", "xx", &loc::Localize::inst());
    }
}
BENCHMARK(lumoLoad)->Name("LoadEntries/2000/lumo")->Unit(benchmark::kMicrosecond);

void glibLoad(benchmark::State& state) {
    std::string file = "[strings]\n";
    for (int i = 0; i < entryCount; ++i)
        file +=
            "bench_entry_" + std::to_string(i) + "=The text of entry " + std::to_string(i) + "\n";
    for (auto _ : state) {
        GKeyFile* keys = g_key_file_new();
        g_key_file_load_from_data(keys, file.data(), file.size(), G_KEY_FILE_NONE, nullptr);
        g_key_file_free(keys);
    }
}
BENCHMARK(glibLoad)->Name("LoadEntries/2000/GKeyFile")->Unit(benchmark::kMicrosecond);

} // namespace
