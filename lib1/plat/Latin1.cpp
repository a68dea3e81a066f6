#include "plat/Latin1.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "plat/CopyBytes.h"
#include "plat/Utf8Blocks.h"
#include "plat/Utf8Decode.h"
#include "plat/Word.h"
#include "plat/x86/Cpu.h"
#include "plat/x86/Latin1Avx2.h"
#include "rdr/MemOutStream.h"

namespace plat {

namespace {

constexpr std::ptrdiff_t batchSize = 64;
constexpr int euroSign = 0x20AC;
constexpr unsigned char euroByte = 0x80;

unsigned char latin1Byte(int character) noexcept {
    if (character == euroSign)
        return euroByte;
    return character >= 0 && character < 0x100 ? static_cast<unsigned char>(character) : '?';
}

#if defined(__x86_64__) // decided for each architecture of a universal build

bool hasLatinVectors() noexcept {
    const CpuFeatures features = cpuFeatures();
    return features.avx2 && features.bmi2;
}

const char* countLatin(const char* p, const char* end, std::size_t* count) noexcept {
    return hasLatinVectors() ? countLatinAvx2(p, end, count) : p;
}

const char* writeLatin(const char* p, const char* end, char** out, const char* outEnd) noexcept {
    return hasLatinVectors() ? writeLatinAvx2(p, end, out, outEnd) : p;
}

#else

const char* countLatin(const char* p, const char*, std::size_t*) noexcept {
    return p;
}
const char* writeLatin(const char* p, const char*, char**, const char*) noexcept {
    return p;
}

#endif

/// Counts the characters of a text.
class Counter {
public:
    void addAscii(const char*, std::size_t length) noexcept { count += length; }
    const char* addLatin(const char* p, const char* end) noexcept {
        return countLatin(p, end, &count);
    }
    void addCharacter(int) noexcept { ++count; }

    std::size_t get() const noexcept { return count; }

private:
    std::size_t count = 0;
};

/// Writes the characters of a text, of which there are as many as there is room for.
class Writer {
public:
    Writer(char* begin, std::size_t size) noexcept : out(begin), last(begin + size) {}

    void addAscii(const char* p, std::size_t length) noexcept {
        copyBytes(out, p, length);
        out += length;
    }
    const char* addLatin(const char* p, const char* end) noexcept {
        return writeLatin(p, end, &out, last);
    }
    void addCharacter(int character) noexcept { *out++ = char(latin1Byte(character)); }

    char* get() const noexcept { return out; }

private:
    char* out;
    char* last;
};

/// Tells whether a byte begins a character that Latin-1 lacks, or none.
bool isBeyondLatin(char byte) noexcept {
    return static_cast<unsigned char>(byte) > 0xC3;
}

/// Hands a text to a Counter or a Writer, up to a NUL or `stop`. The end that characters are
/// decoded with may be null.
template <typename Sink>
void walk(const char* begin, const char* stop, const char* end, Sink* sink) noexcept {
    for (const char* p = begin; !isTextEnd(p, stop);) {
        const char* const runEnd = skipPlainBlocks(p, stop);
        sink->addAscii(p, std::size_t(runEnd - p));
        p = runEnd == begin ? begin : sink->addLatin(runEnd, stop);
        if (isTextEnd(p, stop))
            break;
        do
            sink->addCharacter(takeCharacter(&p, end));
        while (!isTextEnd(p, stop) && isBeyondLatin(*p));
    }
}

/// A Latin-1 byte in UTF-8: the bytes, the first one lowest, and their number above them.
using Utf8Form = std::uint32_t;

constexpr int lengthOf(Utf8Form form) noexcept {
    return int(form >> 24);
}

constexpr std::array<Utf8Form, 256> utf8Forms = [] {
    std::array<Utf8Form, 256> forms{};
    for (unsigned i = 0; i < 0x80; ++i)
        forms[i] = i | 1 << 24;
    for (unsigned i = 0x80; i < 0x100; ++i)
        forms[i] = (0xC0 | i >> 6) | (0x80 | (i & 0x3F)) << 8 | 2 << 24;
    forms[euroByte] = 0xE2 | 0x82 << 8 | 0xAC << 16 | 3 << 24;
    return forms;
}();

/// Writes batches of bytes, as long as there are any with accents, and room for the longest form.
const char* writeBatches(const char* p, const char* end, rdr::MemOutStream* stream) noexcept {
    constexpr std::ptrdiff_t longest = batchSize * std::ptrdiff_t(sizeof(Utf8Form));
    auto* out = reinterpret_cast<char*>(stream->getPtr());
    const auto* const outEnd = reinterpret_cast<const char*>(stream->getEnd());
    bool sawAccent = true;
    while (sawAccent && end - p >= batchSize && outEnd - out >= longest) {
        const char* const batchOut = out;
        for (const char* const batchEnd = p + batchSize; p != batchEnd; p += 2) {
            // All of both forms is written, and what is too much of it, over.
            const Utf8Form first = utf8Forms[static_cast<unsigned char>(p[0])];
            const Utf8Form second = utf8Forms[static_cast<unsigned char>(p[1])];
            const std::uint64_t text = first & 0xFFFFFF;
            storeWord(out, text | std::uint64_t(second) << (8 * lengthOf(first)));
            out += lengthOf(first) + lengthOf(second);
        }
        sawAccent = out - batchOut != batchSize;
    }
    stream->setPtr(reinterpret_cast<unsigned char*>(out));
    return p;
}

} // namespace

char* utf8ToLatin1(const char* begin, const char* end, char** outEnd) {
    const char* const stop = textEnd(begin, end);
    Counter counter;
    walk(begin, stop, end, &counter);
    const std::size_t length = counter.get();
    std::unique_ptr<char[]> result(new char[length + 1]);
    Writer writer(result.get(), length);
    walk(begin, stop, end, &writer);
    *writer.get() = '\0';
    if (outEnd != nullptr)
        *outEnd = writer.get();
    return result.release();
}

char* latin1ToUtf8(const char* begin, const char* end, char** outEnd) {
    const auto length = std::size_t(textEnd(begin, end) - begin);
    const char* const stop = textStop(begin, end);
    rdr::MemOutStream out(initialSize(length, length / 2 + 1));
    for (const char* p = begin; p != stop;) {
        const char* const runEnd = skipPlainBlocks(p, stop);
        out.writeBytes(p, int(runEnd - p));
        p = writeBatches(runEnd, stop, &out);
        if (p != stop) {
            const Utf8Form form = utf8Forms[static_cast<unsigned char>(*p++)];
            out.writeBytes(&form, lengthOf(form));
        }
    }
    out.ensureRoom(1);
    *out.getPtr() = '\0';
    const int written = out.length();
    char* const result = reinterpret_cast<char*>(out.takeBuf());
    if (outEnd != nullptr)
        *outEnd = result + written;
    return result;
}

void utf8ToLatin1(CBuf<char> text, MBuf<char>* out) {
    const char* const begin = text.data == nullptr ? "" : text.data;
    char* end = nullptr;
    char* const result = utf8ToLatin1(begin, begin + text.length, &end);
    out->replaceBuf(result, int(end - result));
}

void latin1ToUtf8(CBuf<char> text, MBuf<char>* out) {
    const char* const begin = text.data == nullptr ? "" : text.data;
    char* end = nullptr;
    char* const result = latin1ToUtf8(begin, begin + text.length, &end);
    out->replaceBuf(result, int(end - result));
}

} // namespace plat
