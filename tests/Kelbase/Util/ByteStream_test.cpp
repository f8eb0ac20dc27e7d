#include <Kelbase/Util/ByteStream.h>

#include <Kelbase/Util/Exception/DataStreamIO.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <limits>
#include <stdexcept>
#include <string>

namespace {

using Util::ByteStream;
using Util::DataStream;
using Bytes = std::vector<unsigned char>;

const DataStream::EndianType kEveryEndianType[] = {DataStream::EndianDefault, DataStream::EndianLittle,
                                                   DataStream::EndianBig, DataStream::EndianType(7)};

Bytes contents(ByteStream& stream) {
    const unsigned int position = stream.GetPosition();
    Bytes bytes(stream.GetSize());
    stream.SetPosition(0);
    stream >> bytes;
    stream.SetPosition(position);
    return bytes;
}

/// Returns the message of the exception that `read` throws.
template <typename Read>
std::string failureOf(Read read) {
    try {
        read();
    } catch (const Util::Exception::DataStreamIO& failure) {
        EXPECT_STREQ(failure.GetFilename().Latin1(), "src/Kelbase/Util/ByteStream");
        EXPECT_GT(failure.GetLineNumber(), 0);
        return failure.GetMessageText().Latin1();
    }
    return "nothing thrown";
}

/// Expects that `value` is written as `big` in big-endian order, and is read back in every byte order.
template <typename T>
void expectCoded(T value, const Bytes& big) {
    for (DataStream::EndianType endianType : kEveryEndianType) {
        SCOPED_TRACE(testing::PrintToString(big) + " in byte order " + std::to_string(endianType));
        Bytes expected = big;
        if (endianType <= DataStream::EndianLittle) std::reverse(expected.begin(), expected.end());
        ByteStream stream(0);
        stream.SetEndianType(endianType);
        EXPECT_EQ(&(stream << value), &stream);
        EXPECT_EQ(contents(stream), expected);
        EXPECT_EQ(stream.GetPosition(), big.size());
        stream.SetPosition(0);
        EXPECT_EQ(stream.ReadPrimitive(T()), value);
        EXPECT_TRUE(stream.AtEnd());
        for (unsigned int size = 0; size < big.size(); ++size) {
            ByteStream cut(size, expected.data());
            T destination = value;
            EXPECT_NE(failureOf([&] { cut >> destination; }), "nothing thrown");
            EXPECT_EQ(destination, value);
            EXPECT_EQ(cut.GetPosition(), 0u);
        }
    }
}

TEST(ByteStream, WritesAndReadsEachTypeInBothByteOrders) {
    expectCoded(true, {1});
    expectCoded(char('k'), {0x6B});
    expectCoded(static_cast<signed char>(-2), {0xFE});
    expectCoded(static_cast<unsigned char>(200), {200});
    expectCoded(short(-2), {0xFF, 0xFE});
    expectCoded(static_cast<unsigned short>(0xABCD), {0xAB, 0xCD});
    expectCoded(0x01020304, {1, 2, 3, 4});
    expectCoded(INT_MIN, {0x80, 0, 0, 0});
    expectCoded(0xFEDCBA98u, {0xFE, 0xDC, 0xBA, 0x98});
    expectCoded(-2L, {0xFF, 0xFF, 0xFF, 0xFE});
    expectCoded(0x89ABCDEFul, {0x89, 0xAB, 0xCD, 0xEF});
    expectCoded(-2LL, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE});
    expectCoded(0x0102030405060708ull, {1, 2, 3, 4, 5, 6, 7, 8});
    expectCoded(-1.5f, {0xBF, 0xC0, 0, 0});
    expectCoded(std::numeric_limits<float>::denorm_min(), {0, 0, 0, 1});
    expectCoded(0.1, {0x3F, 0xB9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A});
}

TEST(ByteStream, WritesTheLow32BitsOfALong) {
    ByteStream stream(0);
    stream << LONG_MIN << ULONG_MAX << LONG_MAX;
    stream.SetPosition(0);
    EXPECT_EQ(stream.ReadPrimitive(0L), LONG_MIN == INT_MIN ? LONG_MIN : 0L);
    EXPECT_EQ(stream.ReadPrimitive(0ul), 0xFFFFFFFFul);
    EXPECT_EQ(stream.ReadPrimitive(0L), LONG_MAX == INT_MAX ? LONG_MAX : -1L);
}

TEST(ByteStream, ReadsEveryNonzeroByteAsTrue) {
    const unsigned char bytes[] = {0, 2, 0x80};
    ByteStream stream(3, bytes);
    EXPECT_FALSE(stream.ReadPrimitive(true));
    EXPECT_TRUE(stream.ReadPrimitive(true));
    EXPECT_TRUE(stream.ReadPrimitive(true));
}

TEST(ByteStream, WritesIntoTheMiddleAndPastTheEnd) {
    ByteStream stream(Bytes{1, 2, 3, 4});
    stream.SetPosition(1);
    stream << short(0x0B0A);
    EXPECT_EQ(contents(stream), (Bytes{1, 0x0A, 0x0B, 4}));
    stream << short(0x0D0C); // one byte inside, one past the end
    EXPECT_EQ(contents(stream), (Bytes{1, 0x0A, 0x0B, 0x0C, 0x0D}));
    stream.SetPosition(7);
    stream.Write(0, nullptr);
    EXPECT_EQ(stream.GetSize(), 5u);
    stream << Bytes{9};
    EXPECT_EQ(contents(stream), (Bytes{1, 0x0A, 0x0B, 0x0C, 0x0D, 0, 0, 9}));
    stream.SetEndianType(DataStream::EndianBig);
    stream.Clear();
    EXPECT_EQ(stream.GetSize() + stream.GetPosition(), 0u);
    EXPECT_EQ(stream.GetEndianType(), DataStream::EndianBig);
}

TEST(ByteStream, FillsAGapWithZerosAfterClear) {
    ByteStream stream(Bytes(20, 0xEE));
    stream.Clear();
    stream.SetPosition(10);
    stream << short(1);
    EXPECT_EQ(contents(stream), (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0}));
}

TEST(ByteStream, SetsThePositionWithoutACheck) {
    ByteStream stream(Bytes{1, 2, 3});
    stream.SetPosition(4);
    EXPECT_EQ(stream.GetRemaining(), 4294967295u);
    EXPECT_TRUE(stream.AtEnd());
    stream.Skip(-2);
    EXPECT_EQ(stream.GetPosition(), 2u);
    EXPECT_EQ(stream.GetRemaining(), 1u);
    EXPECT_FALSE(stream.AtEnd());
    stream.Skip(-3);
    EXPECT_EQ(stream.GetPosition(), 4294967295u);
    stream.Skip(INT_MIN);
    EXPECT_EQ(stream.GetPosition(), 2147483647u);
}

/// Shows whether a call goes through the virtual SetPosition.
struct CursorSpy : ByteStream {
    using ByteStream::ByteStream;
    void SetPosition(unsigned int p) override { ByteStream::SetPosition(p + 100); }
};

TEST(ByteStream, SkipCallsTheVirtualSetPosition) {
    CursorSpy stream(0);
    stream.Skip(5);
    EXPECT_EQ(stream.GetPosition(), 105u);
}

TEST(ByteStream, ReportsFailedReads) {
    ByteStream stream(Bytes{1, 2, 3});
    int number = 5;
    unsigned char bytes[4] = {7, 7, 7, 7};
    Bytes four = {8, 8, 8, 8};
    EXPECT_EQ(failureOf([&] { stream >> number; }), "Can't extract 4 bytes at position 0, total size 3");
    EXPECT_EQ(failureOf([&] { stream.Read(4, bytes); }), "Can't read 4 bytes");
    EXPECT_EQ(failureOf([&] { stream >> four; }), "Can't read 4 bytes");
    EXPECT_EQ(stream.GetPosition(), 0u);
    stream.Read(2, bytes + 2);
    EXPECT_EQ(stream.GetPosition(), 2u);
    stream.SetPosition(4294967295u);
    EXPECT_EQ(failureOf([&] { stream.ReadPrimitive(true); }),
              "Can't extract 1 bytes at position 4294967295, total size 3");
    EXPECT_EQ(failureOf([&] { stream.Read(1, bytes); }), "Can't read 1 bytes");
    EXPECT_EQ(number, 5);
    EXPECT_EQ(bytes[0], 7);
    EXPECT_EQ(four, Bytes(4, 8));
    Bytes none;
    stream >> none;
    stream.Read(0, nullptr);
    EXPECT_EQ(stream.GetPosition(), 4294967295u);
}

TEST(ByteStream, WritesStringsWithOrWithoutTheirLength) {
    ByteStream stream(0);
    stream.SetEndianType(DataStream::EndianBig);
    stream << String("h\xC3\xA9") << String() << String('\0');
    EXPECT_EQ(contents(stream), (Bytes{0, 0, 0, 3, 'h', 0xC3, 0xA9, 0, 0, 0, 0, 0, 0, 0, 1, 0}));
    stream.Clear();
    stream.SetWriteStringLength(false);
    stream << String("abcdefgh") << String();
    EXPECT_EQ(contents(stream), (Bytes{'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'}));
    stream.SetPosition(0);
    String text;
    EXPECT_EQ(failureOf([&] { stream >> text; }), "Improbable string length 1633837924"); // "abcd"
    EXPECT_EQ(stream.GetPosition(), 4u);
}

TEST(ByteStream, ReadsStrings) {
    const struct {
        const char* name;
        Bytes bytes;
        const char* text;
        unsigned int position; ///< The position after the read.
        const char* failure;
    } rows[] = {
        // name, bytes, text, position, failure
        {"Whole", {2, 0, 0, 0, 'o', 'k', '!'}, "ok", 6, "nothing thrown"},
        {"Empty", {0, 0, 0, 0, '!'}, "", 4, "nothing thrown"},
        {"NulInside", {3, 0, 0, 0, 'a', 0, 'b', '!'}, "a", 7, "nothing thrown"},
        {"CountCutOff", {2, 0, 0}, "", 0, "Can't extract 4 bytes at position 0, total size 3"},
        {"TextCutOff", {4, 0, 0, 0, 'a', 'b', 'c'}, "", 4, "Can't read string of length 4"},
        {"LongerThanTheStream", {9, 0, 0, 0, 'a', 'b', 'c'}, "", 4, "Can't read string of length 9"},
        {"LargestCountCutOff", {0x40, 0x0D, 3, 0}, "", 4, "Can't read string of length 200000"},
        {"CountTooLarge", {0x41, 0x0D, 3, 0}, "", 4, "Improbable string length 200001"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ByteStream stream(row.bytes);
        String text("before");
        EXPECT_EQ(failureOf([&] { stream >> text; }), row.failure);
        EXPECT_STREQ(text.Latin1(), row.text);
        EXPECT_EQ(stream.GetPosition(), row.position);
    }
}

TEST(ByteStream, ReadsALongStringAmongOtherValues) {
    const std::string longest(200000, 'x');
    ByteStream stream(0);
    stream << 1 << String(longest.c_str()) << true;
    stream.SetPosition(0);
    String text;
    EXPECT_EQ(stream.ReadPrimitive(0), 1);
    stream >> text;
    EXPECT_EQ(text.Latin1(), longest);
    EXPECT_TRUE(stream.ReadPrimitive(false));
    EXPECT_TRUE(stream.AtEnd());
}

TEST(ByteStream, RejectsSizesOf4GiB) {
    ByteStream stream(Bytes{1, 2, 3});
    const unsigned char bytes[4] = {};
    stream.SetPosition(4294967295u);
    EXPECT_THROW(stream << true, std::length_error);
    EXPECT_THROW(stream << String("a"), std::length_error);
    EXPECT_THROW(stream.Write(4, bytes), std::length_error);
    stream.SetPosition(4294967292u);
    EXPECT_THROW(stream << 1.0, std::length_error);
    EXPECT_THROW(stream << String("a"), std::length_error); // the length fits, but not the text
    EXPECT_EQ(stream.GetPosition(), 4294967292u);
    EXPECT_EQ(contents(stream), (Bytes{1, 2, 3}));
}

} // namespace
