// Lookup by message id in compiled catalogues: what gettext and Boost.Locale take for it.

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <libintl.h>
#include <locale>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>
#include <boost/locale.hpp>

namespace {

/// A folder with one catalogue of 60 messages and a plural, in the language "xx"; it goes with this
/// run.
class Catalogue {
public:
    Catalogue() {
        std::array<char, 32> name{"/tmp/CatalogueBench.XXXXXX"};
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no folder for a catalogue");
        folder = name.data();
        const auto messages = folder / "xx" / "LC_MESSAGES";
        std::filesystem::create_directories(messages);
        write(folder / "bench.po");
        const std::string command =
            "msgfmt -o " + (messages / "bench.mo").string() + " " + (folder / "bench.po").string();
        if (std::system(command.c_str()) != 0) // NOLINT(bugprone-command-processor)
            throw std::runtime_error("msgfmt did not compile the catalogue");
    }
    Catalogue(const Catalogue&) = delete;
    Catalogue& operator=(const Catalogue&) = delete;
    ~Catalogue() { std::filesystem::remove_all(folder); }

    const std::string& path() const { return folder.native(); }

private:
    static void write(const std::filesystem::path& path) {
        std::ofstream po(path);
        po << "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n"
              "Plural-Forms: nplurals=2; plural=n != 1;\\n\"\n\n"
              "msgid \"plat_usage_label\"\nmsgstr \"Usage:\"\n\n"
              "msgid \"loc_bytesize_unit\"\nmsgid_plural \"loc_bytesize_unit\"\n"
              "msgstr[0] \"%D byte\"\nmsgstr[1] \"%D bytes\"\n\n";
        for (int i = 0; i < 60; ++i)
            po << "msgid \"plat_message_number_" << i << "\"\nmsgstr \"Text " << i << "\"\n\n";
    }

    std::filesystem::path folder;
};

const std::string& catalogueFolder() {
    static const Catalogue catalogue;
    return catalogue.path();
}

/// A look-up that finds nothing gives the id back, and would measure something else.
void checkFound(benchmark::State& state, const char* text, const char* expected) {
    if (text == nullptr || std::string(text) != expected)
        state.SkipWithError("the catalogue was not found");
}

void openGettext() {
    static const bool done = [] {
        setenv("LANGUAGE", "xx", 1);
        std::setlocale(LC_MESSAGES, "C.UTF-8");
        bindtextdomain("bench", catalogueFolder().c_str());
        bind_textdomain_codeset("bench", "UTF-8");
        return true;
    }();
    benchmark::DoNotOptimize(done);
}

void gettextMessage(benchmark::State& state) {
    openGettext();
    checkFound(state, dgettext("bench", "plat_usage_label"), "Usage:");
    for (auto _ : state)
        benchmark::DoNotOptimize(dgettext("bench", "plat_usage_label"));
}
BENCHMARK(gettextMessage)->Name("Message/by_id/gettext");

void gettextPlural(benchmark::State& state) {
    openGettext();
    const auto* id = "loc_bytesize_unit";
    checkFound(state, dngettext("bench", id, id, 2), "%D bytes");
    unsigned long count = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(dngettext("bench", id, id, ++count & 3));
}
BENCHMARK(gettextPlural)->Name("Plural/by_id/gettext");

using Messages = boost::locale::message_format<char>;

const std::locale& boostLocale() {
    static const std::locale locale = [] {
        boost::locale::generator generator;
        generator.add_messages_path(catalogueFolder());
        generator.add_messages_domain("bench");
        return generator("xx.UTF-8");
    }();
    return locale;
}

void boostMessage(benchmark::State& state) {
    const auto& messages = std::use_facet<Messages>(boostLocale());
    checkFound(state, messages.get(0, nullptr, "plat_usage_label"), "Usage:");
    for (auto _ : state)
        benchmark::DoNotOptimize(messages.get(0, nullptr, "plat_usage_label"));
}
BENCHMARK(boostMessage)->Name("Message/by_id/Boost.Locale");

void boostPlural(benchmark::State& state) {
    const auto& messages = std::use_facet<Messages>(boostLocale());
    checkFound(state, messages.get(0, nullptr, "loc_bytesize_unit", 2), "%D bytes");
    int count = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(messages.get(0, nullptr, "loc_bytesize_unit", ++count & 3));
}
BENCHMARK(boostPlural)->Name("Plural/by_id/Boost.Locale");

} // namespace
