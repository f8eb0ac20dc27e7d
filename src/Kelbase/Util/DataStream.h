#pragma once

#include <Kelbase/common/common_string.h>
#include <Kelbase/common/common_types.h>

#include <vector>

namespace Util {

/// Reads and writes typed values in a sequence of bytes. Reading and writing share one position.
///
/// Values follow each other without header, tag or padding: a reader must know what was written. Integers are
/// stored in two's complement, `float` and `double` as their IEEE 754 bits, in the stream's byte order.
/// `bool` and the character types have 1 byte, `short` 2, `int` and `float` 4, `double` 8. `long` has 4 bytes
/// on every platform: writing stores its low 32 bits, reading extends them (by the sign for `long`, with
/// zeros for `unsigned long`).
///
/// A read past the end throws `Util::Exception::DataStreamIO` and leaves position and destination unchanged.
/// The operator for `String` differs, see there.
///
/// Written bytes replace the bytes at the position and extend the stream past its end. Zeros fill a gap
/// between the old end and the position. A write throws `std::bad_alloc` for lack of memory and
/// `std::length_error` if the size does not fit 32 bits. The stream is then unchanged. A stream belongs to
/// one thread at a time.
class DataStream : private noncopyable {
public:
    /// The first two values mean the least significant byte first. Every other value means the most
    /// significant byte first.
    enum EndianType : unsigned int { EndianDefault = 0, EndianLittle = 1, EndianBig = 2 };

    virtual EndianType GetEndianType() const = 0; ///< Returns the number that was set.
    /// Sets the byte order for the following reads and writes. Accepts any number.
    virtual void SetEndianType(EndianType type) = 0;
    /// Returns whether writing a `String` writes its length first. Reading a `String` always expects the
    /// length.
    virtual bool IsWriteStringLength() const = 0;
    /// Sets whether writing a `String` writes its length first. `operator>>` cannot read a text without its
    /// length.
    virtual void SetWriteStringLength(bool on) = 0;

    // Reading

    virtual DataStream& operator>>(bool& v) = 0; ///< Reads one byte; true unless it is 0.
    ///@{
    /// Reads as many bytes as the type has. Throws if there are fewer, and then leaves `v` unchanged.
    virtual DataStream& operator>>(char& v) = 0;
    virtual DataStream& operator>>(signed char& v) = 0;
    virtual DataStream& operator>>(unsigned char& v) = 0;
    virtual DataStream& operator>>(short& v) = 0;
    virtual DataStream& operator>>(unsigned short& v) = 0;
    virtual DataStream& operator>>(int& v) = 0;
    virtual DataStream& operator>>(unsigned int& v) = 0;
    virtual DataStream& operator>>(long& v) = 0;
    virtual DataStream& operator>>(unsigned long& v) = 0;
    virtual DataStream& operator>>(float& v) = 0;
    virtual DataStream& operator>>(double& v) = 0;
    ///@}
    /// Reads a byte count as `unsigned int`, at most 200000, and that many bytes. The text ends at the first
    /// NUL, the position moves past all bytes. After a failure `v` is empty, and the position is after the
    /// count if the count could be read.
    virtual DataStream& operator>>(String& v) = 0;
    /// Reads as many bytes as `v` has elements.
    virtual DataStream& operator>>(std::vector<unsigned char>& v) = 0;

    ///@{
    /// Reads and returns the next value. The argument only selects the type.
    virtual bool ReadPrimitive(bool) = 0;
    virtual char ReadPrimitive(char) = 0;
    virtual signed char ReadPrimitive(signed char) = 0;
    virtual unsigned char ReadPrimitive(unsigned char) = 0;
    virtual short ReadPrimitive(short) = 0;
    virtual unsigned short ReadPrimitive(unsigned short) = 0;
    virtual int ReadPrimitive(int) = 0;
    virtual unsigned int ReadPrimitive(unsigned int) = 0;
    virtual long ReadPrimitive(long) = 0;
    virtual unsigned long ReadPrimitive(unsigned long) = 0;
    virtual float ReadPrimitive(float) = 0;
    virtual double ReadPrimitive(double) = 0;
    ///@}

    /// Reads `count` bytes. A count of 0 does nothing and never fails.
    virtual void Read(unsigned int count, unsigned char* destination) = 0;

    // Writing

    virtual DataStream& operator<<(bool v) = 0; ///< Writes the byte 0 or 1.
    ///@{
    /// Writes as many bytes as the type has.
    virtual DataStream& operator<<(char v) = 0;
    virtual DataStream& operator<<(signed char v) = 0;
    virtual DataStream& operator<<(unsigned char v) = 0;
    virtual DataStream& operator<<(short v) = 0;
    virtual DataStream& operator<<(unsigned short v) = 0;
    virtual DataStream& operator<<(int v) = 0;
    virtual DataStream& operator<<(unsigned int v) = 0;
    virtual DataStream& operator<<(long v) = 0;
    virtual DataStream& operator<<(unsigned long v) = 0;
    virtual DataStream& operator<<(float v) = 0;
    virtual DataStream& operator<<(double v) = 0;
    ///@}
    /// Writes the length in bytes as `unsigned int` if `IsWriteStringLength`, then the text without
    /// terminator.
    virtual DataStream& operator<<(const String& v) = 0;
    /// Writes the bytes without their count.
    virtual DataStream& operator<<(const std::vector<unsigned char>& v) = 0;

    /// Writes `count` bytes. A count of 0 does nothing; the source may then be null.
    virtual void Write(unsigned int count, const unsigned char* source) = 0;

    // Position and size, in bytes

    virtual bool AtEnd() const = 0;               ///< Returns whether the position is at or past the end.
    virtual unsigned int GetPosition() const = 0; ///< Returns the position, which may lie past the end.
    virtual unsigned int GetSize() const = 0;     ///< Returns the size. `SetPosition` does not change it.
    /// Returns the size minus the position, modulo 2^32. It wraps if the position lies past the end.
    virtual unsigned int GetRemaining() const = 0;
    /// Sets the position without a check. A write past the end is possible.
    virtual void SetPosition(unsigned int p) = 0;
    /// Moves the position by `n` bytes, forwards or backwards, modulo 2^32.
    virtual void Skip(int n) = 0;

    virtual ~DataStream() = default;
};

} // namespace Util
