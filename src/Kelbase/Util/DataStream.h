#pragma once

#include <Kelbase/common/common_string.h>
#include <Kelbase/common/common_types.h>

#include <vector>

namespace Util {

/// Typed values in a sequence of bytes, written and read at one cursor.
///
/// Values follow each other without header, tag or padding; a reader must know what was written. Integers are
/// two's complement, `float` and `double` their IEEE 754 bits, in the stream's byte order. `bool` and the
/// characters take 1 byte, `short` 2, `int` and `float` 4, `double` 8. `long` takes 4 on every platform: its
/// low 32 bits are written, reading extends them (by the sign for `long`, with zeros for `unsigned long`).
///
/// A read past the end throws `Util::Exception::DataStreamIO`. Position and destination stay as they were,
/// except for a `String`.
///
/// Written bytes replace those at the position; what lies past the end is added, a gap before it filled with
/// zeros. Nothing fails but for want of memory, or of 32 bits for the size: `std::bad_alloc` or
/// `std::length_error`, and the stream stays as it was. A stream belongs to one thread at a time.
class DataStream : private noncopyable {
public:
    /// Least significant byte first for the first two, most significant first for every other value.
    enum EndianType : unsigned int { EndianDefault = 0, EndianLittle = 1, EndianBig = 2 };

    virtual EndianType GetEndianType() const = 0; ///< As it was set, whatever the number.
    /// Holds for values read and written from now on; any number is taken.
    virtual void SetEndianType(EndianType type) = 0;
    /// Whether a written `String` is preceded by its length. A read one always must be.
    virtual bool IsWriteStringLength() const = 0;
    /// Without lengths a reader must know them: `operator>>` cannot read such a text back.
    virtual void SetWriteStringLength(bool on) = 0;

    // Reading

    virtual DataStream& operator>>(bool& v) = 0; ///< True for any byte but 0.
    ///@{
    /// The next bytes, as many as the type takes; throws, and `v` is then as before, when there are fewer.
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
    /// A byte count as `unsigned int`, at most 200000, and that many bytes. The text ends at the first NUL
    /// among them, the position moves past all. After a failure `v` is empty, and the position stands after
    /// the count if that could be read.
    virtual DataStream& operator>>(String& v) = 0;
    /// As many bytes as `v` has elements.
    virtual DataStream& operator>>(std::vector<unsigned char>& v) = 0;

    ///@{
    /// The next value; the argument only says its type.
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

    /// `count` bytes as they are. A count of 0 does nothing and never fails.
    virtual void Read(unsigned int count, unsigned char* destination) = 0;

    // Writing

    virtual DataStream& operator<<(bool v) = 0; ///< The byte 0 or 1.
    ///@{
    /// As many bytes as the type takes.
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
    /// The length in bytes as `unsigned int`, if `IsWriteStringLength`, and the text without terminator.
    virtual DataStream& operator<<(const String& v) = 0;
    /// The bytes alone, without their count.
    virtual DataStream& operator<<(const std::vector<unsigned char>& v) = 0;

    /// `count` bytes as they are. A count of 0 does nothing; the source may then be null.
    virtual void Write(unsigned int count, const unsigned char* source) = 0;

    // Cursor

    virtual bool AtEnd() const = 0;               ///< At or past the end.
    virtual unsigned int GetPosition() const = 0; ///< In bytes from the start; may lie past the end.
    virtual unsigned int GetSize() const = 0;     ///< In bytes; does not grow before something is written.
    /// Size minus position, modulo 2^32: beyond the end it wraps.
    virtual unsigned int GetRemaining() const = 0;
    /// Not checked: a position beyond the end is where a write may go.
    virtual void SetPosition(unsigned int p) = 0;
    /// Moves by `n` bytes, either way, modulo 2^32.
    virtual void Skip(int n) = 0;

    virtual ~DataStream() = default;
};

} // namespace Util
