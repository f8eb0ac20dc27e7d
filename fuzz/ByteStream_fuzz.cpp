// Runs a sequence of reads and writes on a stream.
// The same sequence on a string of bytes must have the same results.

#include "Property.h"
#include "Text.h"

#include <Kelbase/Util/ByteStream.h>
#include <Kelbase/Util/Exception/DataStreamIO.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

namespace {

constexpr unsigned int kFarthest =
    1 << 16; ///< No write begins at or after this position, to limit the memory.

class Program {
public:
    explicit Program(FuzzedDataProvider& program) : input(program) {}

    void Run() {
        while (input.remaining_bytes() > 0) {
            Step();
            Require(stream.GetSize() == bytes.size() && stream.GetPosition() == position,
                    "size and position are right");
            Require(stream.GetRemaining() == static_cast<unsigned int>(bytes.size()) - position,
                    "the number of remaining bytes is right");
            Require(stream.AtEnd() == (position >= bytes.size()), "AtEnd is right");
        }
        const auto size = static_cast<unsigned int>(bytes.size());
        std::string all(size, '\0');
        stream.SetPosition(0);
        stream.Read(size, reinterpret_cast<unsigned char*>(all.data()));
        RequireEqual(all, bytes, "the stream has the expected bytes");
    }

private:
    void Step() {
        switch (input.ConsumeIntegralInRange<int>(0, 5)) {
        case 0: return Move();
        case 1:
            order = input.ConsumeIntegralInRange<unsigned int>(0, 4);
            return stream.SetEndianType(static_cast<Util::DataStream::EndianType>(order));
        case 2:
        case 3: return NumberOfSomeType();
        case 4: return Text();
        default: return Block();
        }
    }

    void Move() {
        if (input.ConsumeBool()) {
            position = input.ConsumeIntegral<unsigned int>();
            if (input.ConsumeBool()) position %= 64;
            return stream.SetPosition(position);
        }
        const int step = input.ConsumeIntegral<int>();
        position += static_cast<unsigned int>(step);
        stream.Skip(step);
    }

    /// Returns the offset in the stream of byte `i` of a number.
    /// Byte 0 is the least significant of `width` bytes.
    std::size_t PlaceOf(std::size_t i, std::size_t width) const { return order <= 1 ? i : width - 1 - i; }

    template <typename T>
    void Number() {
        constexpr std::size_t width =
            sizeof(T) == sizeof(long) && std::is_same_v<std::remove_cv_t<T>, long> ? 4 : sizeof(T);
        if (input.ConsumeBool() && position < kFarthest) {
            WriteNumber<T, width>();
        } else {
            ReadNumber<T, width>();
        }
    }

    template <typename T>
    T AnyValue() {
        T value{};
        const std::vector<unsigned char> raw = input.ConsumeBytes<unsigned char>(sizeof value);
        if constexpr (std::is_same_v<T, bool>) return !raw.empty() && raw[0] % 2;
        if (!raw.empty()) std::memcpy(&value, raw.data(), raw.size());
        return value;
    }

    template <typename T, std::size_t width>
    void WriteNumber() {
        const T value = AnyValue<T>();
        if (bytes.size() < position + width) bytes.resize(position + width);
        char raw[sizeof value];
        // The least significant byte is first: every supported processor is little-endian.
        std::memcpy(raw, &value, sizeof value);
        for (std::size_t i = 0; i < width; ++i) bytes[position + PlaceOf(i, width)] = raw[i];
        position += static_cast<unsigned int>(width);
        stream << value;
    }

    template <typename T, std::size_t width>
    void ReadNumber() {
        T value{}, before{};
        const bool fits = position + std::uint64_t{width} <= bytes.size();
        try {
            stream >> value;
            Require(fits, "no number is read past the end");
        } catch (const Util::Exception::DataStreamIO& failure) {
            Require(!fits, "a complete number can be read");
            RequireEqual(BytesOf(failure.GetMessageText()),
                         "Can't extract " + std::to_string(width) + " bytes at position " +
                             std::to_string(position) + ", total size " + std::to_string(bytes.size()),
                         "the message names the number");
            Require(std::memcmp(&value, &before, sizeof value) == 0,
                    "a failed read does not change its destination");
            return;
        }
        char raw[sizeof(T)], seen[sizeof(T)];
        std::memcpy(seen, &value, sizeof value);
        for (std::size_t i = 0; i < width; ++i) raw[i] = bytes[position + PlaceOf(i, width)];
        if constexpr (std::is_same_v<T, bool>) raw[0] = raw[0] != 0;
        Require(std::memcmp(raw, seen, width) == 0, "the value equals the bytes of the stream");
        for (std::size_t i = width; i < sizeof value; ++i) {
            const bool negative = std::is_signed_v<T> && (raw[width - 1] & 0x80);
            Require(seen[i] == static_cast<char>(negative ? -1 : 0),
                    "reading a long extends the sign of 4 bytes");
        }
        position += static_cast<unsigned int>(width);
    }

    void NumberOfSomeType() {
        switch (input.ConsumeIntegralInRange<int>(0, 11)) {
        case 0: return Number<bool>();
        case 1: return Number<char>();
        case 2: return Number<signed char>();
        case 3: return Number<unsigned char>();
        case 4: return Number<short>();
        case 5: return Number<unsigned short>();
        case 6: return Number<int>();
        case 7: return Number<unsigned int>();
        case 8: return Number<long>();
        case 9: return Number<long long>();
        case 10: return Number<float>();
        default: return Number<double>();
        }
    }

    void Store(const std::string& piece) {
        if (piece.empty()) return;
        if (bytes.size() < position + piece.size()) bytes.resize(position + piece.size());
        std::copy(piece.begin(), piece.end(), bytes.begin() + position);
        position += static_cast<unsigned int>(piece.size());
    }

    void Text() {
        if (!input.ConsumeBool() || position >= kFarthest) return ReadText();
        const std::string piece = input.ConsumeRandomLengthString(32);
        const bool withLength = input.ConsumeBool();
        stream.SetWriteStringLength(withLength);
        stream << TextOf(piece);
        if (withLength) {
            std::string length(4, '\0');
            for (std::size_t i = 0; i < 4; ++i)
                length[PlaceOf(i, 4)] = static_cast<char>(piece.size() >> (8 * i));
            Store(length);
        }
        Store(piece);
    }

    /// Returns the 4-byte count at the position, or no value if fewer than 4 bytes remain.
    std::optional<std::uint32_t> CountHere() const {
        if (position + std::uint64_t{4} > bytes.size()) return std::nullopt;
        std::uint32_t count = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            count |= std::uint32_t{static_cast<unsigned char>(bytes[position + PlaceOf(i, 4)])} << (8 * i);
        }
        return count;
    }

    void ReadText() {
        const auto count = CountHere();
        String text("what was there before");
        std::string message;
        try {
            stream >> text;
        } catch (const Util::Exception::DataStreamIO& failure) {
            message = BytesOf(failure.GetMessageText());
        }
        if (!count) {
            Require(message.compare(0, 15, "Can't extract 4") == 0, "a missing length is an error");
            return Require(text.GetLength() == 0, "a failed read clears the string");
        }
        position += 4;
        const std::string shown = std::to_string(*count);
        const bool isThere = position + std::uint64_t{*count} <= bytes.size() || *count == 0;
        RequireEqual(message,
                     *count > 200000 ? "Improbable string length " + shown
                     : isThere       ? ""
                                     : "Can't read string of length " + shown,
                     "the message names the length");
        const bool good = message.empty();
        RequireEqual(BytesOf(text),
                     good && *count > 0
                         ? std::string(BeforeNul(std::string_view(bytes).substr(position, *count)))
                         : "",
                     "the string ends at its first NUL");
        if (good) position += *count;
    }

    void Block() {
        if (input.ConsumeBool() && position < kFarthest) {
            const std::string piece = input.ConsumeRandomLengthString(32);
            const auto* const source = reinterpret_cast<const unsigned char*>(piece.data());
            if (input.ConsumeBool()) {
                stream.Write(static_cast<unsigned int>(piece.size()), source);
            } else {
                stream << std::vector<unsigned char>(source, source + piece.size());
            }
            return Store(piece);
        }
        const auto count = input.ConsumeIntegralInRange<unsigned int>(0, 64);
        std::vector<unsigned char> block(count, 0x5A);
        const bool isThere = count == 0 || position + std::uint64_t{count} <= bytes.size();
        try {
            stream >> block;
            Require(isThere, "no block is read past the end");
        } catch (const Util::Exception::DataStreamIO& failure) {
            Require(!isThere, "a complete block can be read");
            RequireEqual(BytesOf(failure.GetMessageText()), "Can't read " + std::to_string(count) + " bytes",
                         "the message names the size of the block");
            return Require(std::count(block.begin(), block.end(), 0x5A) == count,
                           "a failed read does not change its block");
        }
        if (count == 0) return;
        Require(std::memcmp(block.data(), bytes.data() + position, count) == 0,
                "the block equals the bytes of the stream");
        position += count;
    }

    FuzzedDataProvider& input;
    Util::ByteStream stream{0};
    std::string bytes;
    unsigned int position = 0;
    unsigned int order = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    Program(input).Run();
    return 0;
}
