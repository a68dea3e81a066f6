#include "rdr/InStream.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "Require.h"
#include "plat/Exception.h"
#include "rdr/BlockException.h"
#include "rdr/BufferedInStream.h"
#include "rdr/EndOfStream.h"

namespace {

// Delivers its bytes in pieces; a piece of 0 bytes says that there is no data now, every other one
// of them by an exception. All that is left comes behind the last piece.
class PieceStream : public rdr::BufferedInStream {
public:
    PieceStream(std::string content, std::vector<std::uint8_t> sizes, bool isRewindable, int size)
        : BufferedInStream(size), rest(std::move(content)), pieces(std::move(sizes)) {
        rewindable = isRewindable;
    }
    int read(void* buf, int len) override {
        std::size_t n = std::min(rest.size(), std::size_t(len));
        if (!pieces.empty()) {
            n = std::min<std::size_t>(n, pieces.back());
            pieces.pop_back();
            if (n == 0 && !rest.empty()) {
                throwsNext = !throwsNext;
                if (throwsNext)
                    throw rdr::BlockException();
                return 0;
            }
        }
        if (n == 0)
            throw rdr::EndOfStream();
        std::memcpy(buf, rest.data(), n);
        rest.erase(0, n);
        return int(n);
    }

private:
    std::string rest;
    std::vector<std::uint8_t> pieces;
    bool throwsNext = false;
};

struct Operation {
    int kind;
    int number;
};
constexpr int kinds = 9;

std::string owned(char* array) {
    const std::unique_ptr<char[]> holder(array);
    return array;
}

// The bytes of so many items, however many come at a time.
std::string items(rdr::InStream& in, int itemSize, int count) {
    std::vector<unsigned char> scratch(std::size_t(itemSize), '\0');
    std::string read;
    while (count > 0) {
        int n = count;
        const unsigned char* const p = in.getItems(scratch.data(), itemSize, &n);
        REQUIRE(n >= 1 && n <= count);
        read.append(p, p + std::ptrdiff_t(n) * itemSize);
        count -= n;
    }
    return read;
}

std::string perform(rdr::InStream& in, const Operation& op) {
    const int n = op.number;
    switch (op.kind) {
    case 0: {
        std::vector<unsigned char> scratch(std::size_t(n + 1), '\0');
        const unsigned char* const p = in.getItem_(scratch.data(), n + 1);
        return {p, p + n + 1};
    }
    case 1:
        return items(in, n % 7 + 1, n / 7 + 1);
    case 2:
        return owned(in.readLongString(unsigned(n)));
    case 3: {
        char dest[256];
        std::memset(dest, 'y', sizeof dest);
        in.readShortString(dest);
        return dest;
    }
    case 4:
        return owned(in.readShortString());
    case 5:
        return owned(in.readShortSecureString());
    case 6:
        in.skip(n);
        return "";
    case 7: {
        plat::DString line;
        const int length = in.readLine(&line, n);
        REQUIRE(line.get()[length] == '\0');
        return {line.get(), std::size_t(length)};
    }
    default: {
        std::vector<char> dest(std::size_t(n + 1), 'y');
        const int length = in.readLine(dest.data(), n);
        REQUIRE(length <= n);
        REQUIRE(dest[std::size_t(length)] == (length == n && n > 0 ? 'y' : n > 0 ? '\0' : 'y'));
        return {dest.data(), std::size_t(length)};
    }
    }
}

// What one operation gave, with the position behind it.
struct Result {
    std::string text;
    std::string error;
    int position;
    bool operator==(const Result&) const = default;
};

Result attempt(rdr::InStream& in, const Operation& op) {
    Result result;
    for (;;) {
        in.checkpoint();
        const int start = in.pos();
        try {
            result.text = perform(in, op);
        } catch (const rdr::BlockException&) {
            REQUIRE(in.pos() == start);
            continue;
        } catch (const plat::Exception& e) {
            result.error = e.message.get();
        }
        result.position = in.pos();
        return result;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    std::vector<Operation> operations(input.ConsumeIntegralInRange<std::size_t>(1, 20));
    for (Operation& op : operations) {
        op.kind = input.ConsumeIntegralInRange<int>(0, kinds - 1);
        op.number = input.ConsumeIntegralInRange<int>(0, 300);
    }
    const int smallSize = input.ConsumeIntegralInRange<int>(1, 64);
    const auto pieces =
        input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 64));
    std::vector<std::uint8_t> someBytes = pieces;
    std::erase(someBytes, 0);
    const std::string content = input.ConsumeRemainingBytesAsString();

    PieceStream whole(content, {}, true, 1 << 16);
    PieceStream broken(content, pieces, true, 1 << 16);
    PieceStream small(content, someBytes, false, smallSize); // where waiting would lose bytes
    for (const Operation& op : operations) {
        const Result expected = attempt(whole, op);
        REQUIRE(attempt(broken, op) == expected);
        const Result inPieces = attempt(small, op);
        REQUIRE(inPieces.text == expected.text && inPieces.error == expected.error);
        if (!expected.error.empty())
            break; // how much of a cut item is used up depends on the buffer
        REQUIRE(inPieces.position == expected.position);
    }
    return 0;
}
