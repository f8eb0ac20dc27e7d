#include <Kelbase/Util/ByteStream.h>

#include <Kelbase/IPP/IPP_util.h>
#include <Kelbase/Util/Exception/DataStreamIO.h>

#include <cstring>

namespace Util {

namespace {

constexpr unsigned int kLongestString = 200000; // a larger count is most likely damage

/// Returns the exception that a line of this source throws.
Exception::DataStreamIO failure(const String& message, long long line) {
    Exception::DataStreamIO result(message);
    result.SetLocation("src/Kelbase/Util/ByteStream", line);
    return result;
}

} // namespace

void ByteStream::Clear() {
    data.Clear();
    position = 0;
}

void ByteStream::Skip(int n) { SetPosition(GetPosition() + static_cast<unsigned int>(n)); }

// Reading

void ByteStream::ThrowReadError(unsigned int width) const {
    throw failure(String("Can't extract %1 bytes at position %2, total size %3")
                      .Arg(width)
                      .Arg(position)
                      .Arg(GetSize()),
                  __LINE__);
}

DataStream& ByteStream::operator>>(String& v) {
    v = String();
    unsigned int length = 0;
    ReadAs<unsigned int>(length);
    if (length > kLongestString) throw failure(String("Improbable string length %1").Arg(length), __LINE__);
    if (length == 0) return *this;
    if (!Holds(length)) throw failure(String("Can't read string of length %1").Arg(length), __LINE__);
    v = String(reinterpret_cast<const char*>(data.Data() + position), length);
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
    IPP::Copy(static_cast<unsigned int>(count), data.Data() + position, destination);
    position += static_cast<unsigned int>(count);
}

// Writing

DataStream& ByteStream::operator<<(const String& v) {
    const unsigned int length = v.GetLength(), prefix = writeStringLength ? 4 : 0;
    if (prefix + length == 0) return *this;
    // Length and text get their place together, so that a failure writes neither.
    unsigned char* const place = data.Place(position, 0ull + prefix + length);
    if (writeStringLength) ByteOrder::Encode(length, place, IsLittleEndian());
    std::memcpy(place + prefix, v.Latin1(), length);
    position += prefix + length;
    return *this;
}

DataStream& ByteStream::operator<<(const std::vector<unsigned char>& v) {
    WriteBytes(v.size(), v.data());
    return *this;
}

void ByteStream::Write(unsigned int count, const unsigned char* source) { WriteBytes(count, source); }

void ByteStream::WriteBytes(std::size_t count, const unsigned char* source) {
    if (count == 0) return;
    unsigned char* const place = data.Place(position, count);
    IPP::Copy(static_cast<unsigned int>(count), source, place);
    position += static_cast<unsigned int>(count);
}

} // namespace Util
