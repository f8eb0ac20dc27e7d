#include <Kelbase/Util/ByteStream.h>

#include <Kelbase/IPP/IPP_util.h>
#include <Kelbase/Util/Exception/DataStreamIO.h>

#include <cstring>
#include <stdexcept>

namespace Util {

namespace {

constexpr unsigned long long largestSize = 0xFFFFFFFF;
constexpr unsigned int longestString = 200000; // a larger count is taken for what it mostly is: damage

/// What the line of this source throws.
Exception::DataStreamIO failure(const String& message, long long line) {
    Exception::DataStreamIO result(message);
    result.SetLocation("src/Kelbase/Util/ByteStream", line);
    return result;
}

[[noreturn]] void refuseSize() { throw std::length_error("Util::ByteStream: more than 4294967295 bytes"); }

/// The unsigned integer as wide as a number of `size` bytes.
template <std::size_t size>
struct BitsOf;
template <>
struct BitsOf<1> {
    using Type = unsigned char;
};
template <>
struct BitsOf<2> {
    using Type = unsigned short;
};
template <>
struct BitsOf<4> {
    using Type = unsigned int;
};
template <>
struct BitsOf<8> {
    using Type = unsigned long long;
};

// Shifts, not the machine's byte order; the compiler makes one load or store of them.

template <typename Bits>
Bits decode(const unsigned char* bytes, bool littleEndian) {
    unsigned long long bits = 0;
    if (littleEndian)
        for (std::size_t i = 0; i < sizeof(Bits); ++i)
            bits |= static_cast<unsigned long long>(bytes[i]) << 8 * i;
    else
        for (std::size_t i = 0; i < sizeof(Bits); ++i) bits = bits << 8 | bytes[i];
    return static_cast<Bits>(bits);
}

template <typename Bits>
void encode(Bits bits, unsigned char* bytes, bool littleEndian) {
    constexpr std::size_t size = sizeof bits;
    if (littleEndian)
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(bits >> 8 * i);
    else
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<unsigned char>(bits >> 8 * (size - 1 - i));
}

} // namespace

ByteStream::ByteStream(unsigned int capacity) { data.reserve(capacity); }

ByteStream::ByteStream(const std::vector<unsigned char>& bytes) {
    if (bytes.size() > largestSize) refuseSize();
    data = bytes;
}

ByteStream::ByteStream(unsigned int count, const unsigned char* bytes) : data(count) {
    IPP::Copy(count, bytes, data.data());
}

/// Whether `count` bytes can be read at the position.
bool ByteStream::Holds(unsigned long long count) const {
    return count <= data.size() && position <= data.size() - count;
}

/// Makes the data reach `count` bytes past the position.
void ByteStream::MakeRoom(unsigned long long count) {
    if (count > largestSize - position) refuseSize();
    const std::size_t end = position + static_cast<std::size_t>(count);
    if (end > data.size()) data.resize(end);
}

void ByteStream::Clear() {
    data.clear();
    position = 0;
}

void ByteStream::Skip(int n) { SetPosition(GetPosition() + static_cast<unsigned int>(n)); }

// Reading

template <typename T>
DataStream& ByteStream::ReadNumber(T& v) {
    constexpr unsigned int width = sizeof v;
    if (!Holds(width))
        throw failure(String("Can't extract %1 bytes at position %2, total size %3")
                          .Arg(width)
                          .Arg(position)
                          .Arg(GetSize()),
                      __LINE__);
    const auto bits = decode<typename BitsOf<width>::Type>(&data[position], IsLittleEndian());
    std::memcpy(&v, &bits, width);
    position += width;
    return *this;
}

DataStream& ByteStream::operator>>(bool& v) {
    unsigned char byte = 0;
    ReadNumber(byte);
    v = byte != 0;
    return *this;
}

DataStream& ByteStream::operator>>(long& v) {
    int low = 0;
    ReadNumber(low);
    v = low;
    return *this;
}

DataStream& ByteStream::operator>>(unsigned long& v) {
    unsigned int low = 0;
    ReadNumber(low);
    v = low;
    return *this;
}

DataStream& ByteStream::operator>>(char& v) { return ReadNumber(v); }
DataStream& ByteStream::operator>>(signed char& v) { return ReadNumber(v); }
DataStream& ByteStream::operator>>(unsigned char& v) { return ReadNumber(v); }
DataStream& ByteStream::operator>>(short& v) { return ReadNumber(v); }
DataStream& ByteStream::operator>>(unsigned short& v) { return ReadNumber(v); }
DataStream& ByteStream::operator>>(int& v) { return ReadNumber(v); }
DataStream& ByteStream::operator>>(unsigned int& v) { return ReadNumber(v); }
DataStream& ByteStream::operator>>(long long& v) { return ReadNumber(v); }
DataStream& ByteStream::operator>>(unsigned long long& v) { return ReadNumber(v); }
DataStream& ByteStream::operator>>(float& v) { return ReadNumber(v); }
DataStream& ByteStream::operator>>(double& v) { return ReadNumber(v); }

DataStream& ByteStream::operator>>(String& v) {
    v = String();
    unsigned int length = 0;
    *this >> length;
    if (length > longestString) throw failure(String("Improbable string length %1").Arg(length), __LINE__);
    if (length == 0) return *this;
    if (!Holds(length)) throw failure(String("Can't read string of length %1").Arg(length), __LINE__);
    v = String(reinterpret_cast<const char*>(&data[position]), length);
    position += length;
    return *this;
}

DataStream& ByteStream::operator>>(std::vector<unsigned char>& v) {
    ReadBytes(v.size(), v.data());
    return *this;
}

void ByteStream::Read(unsigned int count, unsigned char* destination) { ReadBytes(count, destination); }

void ByteStream::ReadBytes(std::size_t count, unsigned char* destination) {
    if (count == 0) return;
    if (!Holds(count))
        throw failure(String("Can't read %1 bytes").Arg(static_cast<unsigned long long>(count)), __LINE__);
    IPP::Copy(static_cast<unsigned int>(count), &data[position], destination);
    position += static_cast<unsigned int>(count);
}

template <typename T>
T ByteStream::ReadValue() {
    T v = T();
    *this >> v;
    return v;
}

bool ByteStream::ReadPrimitive(bool) { return ReadValue<bool>(); }
char ByteStream::ReadPrimitive(char) { return ReadValue<char>(); }
signed char ByteStream::ReadPrimitive(signed char) { return static_cast<signed char>(ReadValue<char>()); }
unsigned char ByteStream::ReadPrimitive(unsigned char) { return ReadValue<unsigned char>(); }
short ByteStream::ReadPrimitive(short) { return ReadValue<short>(); }
unsigned short ByteStream::ReadPrimitive(unsigned short) { return ReadValue<unsigned short>(); }
int ByteStream::ReadPrimitive(int) { return ReadValue<int>(); }
unsigned int ByteStream::ReadPrimitive(unsigned int) { return ReadValue<unsigned int>(); }
long ByteStream::ReadPrimitive(long) { return ReadValue<long>(); }
unsigned long ByteStream::ReadPrimitive(unsigned long) { return ReadValue<unsigned long>(); }
long long ByteStream::ReadPrimitive(long long) { return ReadValue<long long>(); }
unsigned long long ByteStream::ReadPrimitive(unsigned long long) { return ReadValue<unsigned long long>(); }
float ByteStream::ReadPrimitive(float) { return ReadValue<float>(); }
double ByteStream::ReadPrimitive(double) { return ReadValue<double>(); }

// Writing

template <typename T>
DataStream& ByteStream::WriteNumber(T v) {
    constexpr unsigned int width = sizeof v;
    MakeRoom(width);
    typename BitsOf<width>::Type bits;
    std::memcpy(&bits, &v, width);
    encode(bits, &data[position], IsLittleEndian());
    position += width;
    return *this;
}

DataStream& ByteStream::operator<<(bool v) { return WriteNumber(static_cast<unsigned char>(v ? 1 : 0)); }
DataStream& ByteStream::operator<<(char v) { return WriteNumber(v); }
DataStream& ByteStream::operator<<(signed char v) { return WriteNumber(v); }
DataStream& ByteStream::operator<<(unsigned char v) { return WriteNumber(v); }
DataStream& ByteStream::operator<<(short v) { return WriteNumber(v); }
DataStream& ByteStream::operator<<(unsigned short v) { return WriteNumber(v); }
DataStream& ByteStream::operator<<(int v) { return WriteNumber(v); }
DataStream& ByteStream::operator<<(unsigned int v) { return WriteNumber(v); }
DataStream& ByteStream::operator<<(long v) { return WriteNumber(static_cast<unsigned int>(v)); }
DataStream& ByteStream::operator<<(unsigned long v) { return WriteNumber(static_cast<unsigned int>(v)); }
DataStream& ByteStream::operator<<(long long v) { return WriteNumber(v); }
DataStream& ByteStream::operator<<(unsigned long long v) { return WriteNumber(v); }
DataStream& ByteStream::operator<<(float v) { return WriteNumber(v); }
DataStream& ByteStream::operator<<(double v) { return WriteNumber(v); }

DataStream& ByteStream::operator<<(const String& v) {
    const unsigned int length = v.GetLength();
    if (writeStringLength) {
        MakeRoom(4ull + length); // first, so that no length is left behind without its text
        *this << length;
    }
    WriteBytes(length, reinterpret_cast<const unsigned char*>(v.Latin1()));
    return *this;
}

DataStream& ByteStream::operator<<(const std::vector<unsigned char>& v) {
    WriteBytes(v.size(), v.data());
    return *this;
}

void ByteStream::Write(unsigned int count, const unsigned char* source) { WriteBytes(count, source); }

void ByteStream::WriteBytes(std::size_t count, const unsigned char* source) {
    if (count == 0) return;
    MakeRoom(count);
    IPP::Copy(static_cast<unsigned int>(count), source, &data[position]);
    position += static_cast<unsigned int>(count);
}

} // namespace Util
