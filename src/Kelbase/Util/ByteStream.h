#pragma once

#include <Kelbase/IPP/IPP_util.h>
#include <Kelbase/Util/DataStream.h>
#include <Kelbase/Util/detail/ByteBuffer.h>
#include <Kelbase/Util/detail/ByteOrder.h>

#include <cstring>

namespace Util {

/// A data stream in memory.
///
/// A new stream is at position 0, stores the least significant byte of a number first, and writes the lengths
/// of strings. A stream has at most 4294967295 bytes. A constructor or a write that needs more bytes throws
/// `std::length_error`.
class ByteStream : public DataStream {
public:
    // The operators for single values are defined in the class. The compiler can then inline them where it
    // knows the type of the stream.

    /// Creates an empty stream with storage for `capacity` bytes.
    explicit ByteStream(unsigned int capacity) : data(capacity) {}
    ///@{
    /// Creates a stream with a copy of the bytes. The position is at the first byte.
    explicit ByteStream(const std::vector<unsigned char>& bytes) : data(0) {
        if (!bytes.empty()) std::memcpy(data.Place(0, bytes.size()), bytes.data(), bytes.size());
    }
    ByteStream(unsigned int count, const unsigned char* bytes) : data(count) {
        if (count > 0) IPP::Copy(count, bytes, data.Place(0, count));
    }
    ///@}

    EndianType GetEndianType() const override { return endianType; }
    void SetEndianType(EndianType type) override { endianType = type; }
    bool IsWriteStringLength() const override { return writeStringLength; }
    void SetWriteStringLength(bool on) override { writeStringLength = on; }

    DataStream& operator>>(bool& v) override { return ReadAs<unsigned char>(v); }
    DataStream& operator>>(char& v) override { return ReadAs<char>(v); }
    DataStream& operator>>(signed char& v) override { return ReadAs<signed char>(v); }
    DataStream& operator>>(unsigned char& v) override { return ReadAs<unsigned char>(v); }
    DataStream& operator>>(short& v) override { return ReadAs<short>(v); }
    DataStream& operator>>(unsigned short& v) override { return ReadAs<unsigned short>(v); }
    DataStream& operator>>(int& v) override { return ReadAs<int>(v); }
    DataStream& operator>>(unsigned int& v) override { return ReadAs<unsigned int>(v); }
    DataStream& operator>>(long& v) override { return ReadAs<int>(v); }
    DataStream& operator>>(unsigned long& v) override { return ReadAs<unsigned int>(v); }
    DataStream& operator>>(float& v) override { return ReadAs<float>(v); }
    DataStream& operator>>(double& v) override { return ReadAs<double>(v); }
    DataStream& operator>>(String& v) override;
    DataStream& operator>>(std::vector<unsigned char>& v) override;

    bool ReadPrimitive(bool) override { return ReadValue<bool>(); }
    char ReadPrimitive(char) override { return ReadValue<char>(); }
    signed char ReadPrimitive(signed char) override { return static_cast<signed char>(ReadValue<char>()); }
    unsigned char ReadPrimitive(unsigned char) override { return ReadValue<unsigned char>(); }
    short ReadPrimitive(short) override { return ReadValue<short>(); }
    unsigned short ReadPrimitive(unsigned short) override { return ReadValue<unsigned short>(); }
    int ReadPrimitive(int) override { return ReadValue<int>(); }
    unsigned int ReadPrimitive(unsigned int) override { return ReadValue<unsigned int>(); }
    long ReadPrimitive(long) override { return ReadValue<long>(); }
    unsigned long ReadPrimitive(unsigned long) override { return ReadValue<unsigned long>(); }
    float ReadPrimitive(float) override { return ReadValue<float>(); }
    double ReadPrimitive(double) override { return ReadValue<double>(); }

    void Read(unsigned int count, unsigned char* destination) override;

    DataStream& operator<<(bool v) override { return WriteNumber(static_cast<unsigned char>(v)); }
    DataStream& operator<<(char v) override { return WriteNumber(v); }
    DataStream& operator<<(signed char v) override { return WriteNumber(v); }
    DataStream& operator<<(unsigned char v) override { return WriteNumber(v); }
    DataStream& operator<<(short v) override { return WriteNumber(v); }
    DataStream& operator<<(unsigned short v) override { return WriteNumber(v); }
    DataStream& operator<<(int v) override { return WriteNumber(v); }
    DataStream& operator<<(unsigned int v) override { return WriteNumber(v); }
    DataStream& operator<<(long v) override { return WriteNumber(static_cast<unsigned int>(v)); }
    DataStream& operator<<(unsigned long v) override { return WriteNumber(static_cast<unsigned int>(v)); }
    DataStream& operator<<(float v) override { return WriteNumber(v); }
    DataStream& operator<<(double v) override { return WriteNumber(v); }
    DataStream& operator<<(const String& v) override;
    DataStream& operator<<(const std::vector<unsigned char>& v) override;

    void Write(unsigned int count, const unsigned char* source) override;

    bool AtEnd() const override { return position >= data.Size(); }
    unsigned int GetPosition() const override { return position; }
    unsigned int GetSize() const override { return data.Size(); }
    unsigned int GetRemaining() const override { return data.Size() - position; }
    void SetPosition(unsigned int p) override { position = p; }
    void Skip(int n) override;

    ///@{
    /// Reads or writes eight bytes. These functions are not part of the abstract interface.
    virtual DataStream& operator>>(long long& v) { return ReadAs<long long>(v); }
    virtual DataStream& operator>>(unsigned long long& v) { return ReadAs<unsigned long long>(v); }
    virtual long long ReadPrimitive(long long) { return ReadValue<long long>(); }
    virtual unsigned long long ReadPrimitive(unsigned long long) { return ReadValue<unsigned long long>(); }
    virtual DataStream& operator<<(long long v) { return WriteNumber(v); }
    virtual DataStream& operator<<(unsigned long long v) { return WriteNumber(v); }
    ///@}

    /// Removes all bytes and sets the position to 0. Keeps the byte order and the setting for string lengths.
    void Clear();

private:
    bool IsLittleEndian() const { return endianType <= EndianLittle; }
    /// Returns whether the stream has `count` bytes from the position on.
    bool Holds(unsigned long long count) const { return position + count <= data.Size(); }
    [[noreturn]] void ThrowReadError(unsigned int width) const;

    /// Reads a number that the stream stores as `Stored`.
    template <typename Stored, typename T>
    DataStream& ReadAs(T& v) {
        if (!Holds(sizeof(Stored))) ThrowReadError(sizeof(Stored));
        v = static_cast<T>(ByteOrder::Decode<Stored>(data.Data() + position, IsLittleEndian()));
        position += static_cast<unsigned int>(sizeof(Stored));
        return *this;
    }
    template <typename T>
    T ReadValue() {
        T v = T();
        *this >> v;
        return v;
    }
    template <typename T>
    DataStream& WriteNumber(T v) {
        ByteOrder::Encode(v, data.Place(position, sizeof v), IsLittleEndian());
        position += static_cast<unsigned int>(sizeof v);
        return *this;
    }
    void ReadBytes(std::size_t count, unsigned char* destination);
    void WriteBytes(std::size_t count, const unsigned char* source);

    ByteBuffer data;
    unsigned int position = 0;
    EndianType endianType = EndianDefault;
    bool writeStringLength = true;
};

} // namespace Util
