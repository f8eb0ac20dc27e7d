#pragma once

#include <Kelbase/Util/DataStream.h>

namespace Util {

/// A data stream in memory. It starts at position 0, least significant byte first, writing the lengths of
/// strings. At most 4294967295 bytes; a vector of more is refused with `std::length_error`.
class ByteStream : public DataStream {
public:
    explicit ByteStream(unsigned int capacity); ///< Empty, with storage for that many bytes.
    explicit ByteStream(const std::vector<unsigned char>& bytes);
    ByteStream(unsigned int count, const unsigned char* bytes);

    EndianType GetEndianType() const override { return endianType; }
    void SetEndianType(EndianType type) override { endianType = type; }
    bool IsWriteStringLength() const override { return writeStringLength; }
    void SetWriteStringLength(bool on) override { writeStringLength = on; }

    DataStream& operator>>(bool& v) override;
    DataStream& operator>>(char& v) override;
    DataStream& operator>>(signed char& v) override;
    DataStream& operator>>(unsigned char& v) override;
    DataStream& operator>>(short& v) override;
    DataStream& operator>>(unsigned short& v) override;
    DataStream& operator>>(int& v) override;
    DataStream& operator>>(unsigned int& v) override;
    DataStream& operator>>(long& v) override;
    DataStream& operator>>(unsigned long& v) override;
    DataStream& operator>>(float& v) override;
    DataStream& operator>>(double& v) override;
    DataStream& operator>>(String& v) override;
    DataStream& operator>>(std::vector<unsigned char>& v) override;

    bool ReadPrimitive(bool) override;
    char ReadPrimitive(char) override;
    signed char ReadPrimitive(signed char) override;
    unsigned char ReadPrimitive(unsigned char) override;
    short ReadPrimitive(short) override;
    unsigned short ReadPrimitive(unsigned short) override;
    int ReadPrimitive(int) override;
    unsigned int ReadPrimitive(unsigned int) override;
    long ReadPrimitive(long) override;
    unsigned long ReadPrimitive(unsigned long) override;
    float ReadPrimitive(float) override;
    double ReadPrimitive(double) override;

    void Read(unsigned int count, unsigned char* destination) override;

    DataStream& operator<<(bool v) override;
    DataStream& operator<<(char v) override;
    DataStream& operator<<(signed char v) override;
    DataStream& operator<<(unsigned char v) override;
    DataStream& operator<<(short v) override;
    DataStream& operator<<(unsigned short v) override;
    DataStream& operator<<(int v) override;
    DataStream& operator<<(unsigned int v) override;
    DataStream& operator<<(long v) override;
    DataStream& operator<<(unsigned long v) override;
    DataStream& operator<<(float v) override;
    DataStream& operator<<(double v) override;
    DataStream& operator<<(const String& v) override;
    DataStream& operator<<(const std::vector<unsigned char>& v) override;

    void Write(unsigned int count, const unsigned char* source) override;

    bool AtEnd() const override { return position >= data.size(); }
    unsigned int GetPosition() const override { return position; }
    unsigned int GetSize() const override { return static_cast<unsigned int>(data.size()); }
    unsigned int GetRemaining() const override { return static_cast<unsigned int>(data.size()) - position; }
    void SetPosition(unsigned int p) override { position = p; }
    void Skip(int n) override;

    // Eight bytes; not part of the abstract interface.

    virtual DataStream& operator>>(long long& v);
    virtual DataStream& operator>>(unsigned long long& v);
    virtual long long ReadPrimitive(long long);
    virtual unsigned long long ReadPrimitive(unsigned long long);
    virtual DataStream& operator<<(long long v);
    virtual DataStream& operator<<(unsigned long long v);

    /// Drops all bytes and goes to position 0; byte order and string lengths stay as they are set.
    void Clear();

private:
    bool IsLittleEndian() const { return endianType <= EndianLittle; }
    bool Holds(unsigned long long count) const;
    void MakeRoom(unsigned long long count);
    template <typename T>
    DataStream& ReadNumber(T& v);
    template <typename T>
    DataStream& WriteNumber(T v);
    template <typename T>
    T ReadValue();
    void ReadBytes(std::size_t count, unsigned char* destination);
    void WriteBytes(std::size_t count, const unsigned char* source);

    std::vector<unsigned char> data; // never more than 32 bits can count
    unsigned int position = 0;
    EndianType endianType = EndianDefault;
    bool writeStringLength = true;
};

} // namespace Util
