// Benchmarks of byte streams in memory: writes and reads records of nine numbers and a string, integers,
// and blocks.

#include <Kelbase/Util/ByteStream.h>

#include "Comparison.h"

#include <cstdint>
#include <sstream>

#ifdef BENCH_QT
#include <QDataStream>
#include <QIODevice>
#endif
#ifdef BENCH_POCO
#include <Poco/BinaryReader.h>
#include <Poco/BinaryWriter.h>
#endif
#ifdef BENCH_CEREAL
#include <cereal/archives/portable_binary.hpp>
#include <cereal/types/string.hpp>
#endif

namespace {

using comparison::Comparison;
using comparison::Opaque;
using Util::ByteStream;
using Util::DataStream;

constexpr std::uint32_t kRecords = 100000;
constexpr double kValues = kRecords * 10.0;
constexpr std::uint32_t kInts = 1000000;

// Inlines a function into the loop of each implementation. A user's program has such a loop of its own. In a
// shared function, the compiler would not know the type of the stream.
#define IN_PLACE [[gnu::always_inline]] inline

/// Passes the ten values of record `i` to `put`, one value per call.
template <typename Text, typename Put>
IN_PLACE void writeRecord(std::uint32_t i, const Text& text, Put&& put) {
    const std::int32_t n = static_cast<std::int32_t>(i);
    put(static_cast<std::uint8_t>(n)), put(static_cast<std::int16_t>(n)), put(static_cast<std::uint16_t>(n));
    put(n), put(i), put(-n), put(i + 1), put(0.5f), put(n * 0.25), put(text);
}

template <typename Text, typename Put>
IN_PLACE void writeRecords(Put&& put) {
    const Text text("twelve bytes");
    for (std::uint32_t i = 0; i < kRecords; ++i) writeRecord(i, text, put);
}

std::size_t lengthOf(const std::string& s) { return s.size(); }
std::size_t lengthOf(const String& s) { return s.GetLength(); }
#ifdef BENCH_QT
std::size_t lengthOf(const QByteArray& s) { return static_cast<std::size_t>(s.size()); }
#endif

/// Reads all records with `get` and returns the sum of their values.
template <typename Text, typename Get>
IN_PLACE double sumOfRecords(Get&& get) {
    std::uint8_t a = 0;
    std::int16_t b = 0;
    std::uint16_t c = 0;
    std::int32_t d = 0, f = 0;
    std::uint32_t e = 0, g = 0;
    float h = 0;
    double k = 0, broken = 0;
    long long whole = 0;
    Text text;
    for (std::uint32_t i = 0; i < kRecords; ++i) {
        get(a), get(b), get(c), get(d), get(e), get(f), get(g), get(h), get(k), get(text);
        whole += a + b + c + d + static_cast<long long>(e) + f + g + static_cast<long long>(lengthOf(text));
        broken += h + k;
    }
    return static_cast<double>(whole) + broken;
}

/// Writes all records to the stream and sets its position to the start.
IN_PLACE void fill(ByteStream& stream, DataStream::EndianType order) {
    stream.SetEndianType(order);
    writeRecords<String>([&stream](const auto& v) { stream << v; });
    stream.SetPosition(0);
}

auto writeOurs(DataStream::EndianType order) {
    return [order] {
        ByteStream stream(0);
        fill(stream, order);
        return stream.GetSize() > kRecords;
    };
}

std::vector<unsigned char> bytesOf(ByteStream& stream) {
    std::vector<unsigned char> bytes(stream.GetSize());
    stream.SetPosition(0);
    stream >> bytes;
    return bytes;
}

auto readOurs(DataStream::EndianType order) {
    ByteStream written(0);
    fill(written, order);
    return [order, bytes = bytesOf(written)] {
        ByteStream stream(bytes);
        stream.SetEndianType(order);
        return sumOfRecords<String>([&stream](auto& v) { stream >> v; });
    };
}

#ifdef BENCH_QT
template <typename Use>
auto withQt(QDataStream::ByteOrder order, QByteArray& bytes, QIODevice::OpenMode mode, Use use) {
    QDataStream stream(&bytes, mode);
    stream.setByteOrder(order);
    return use(stream);
}

QByteArray writtenByQt(QDataStream::ByteOrder order) {
    QByteArray bytes;
    withQt(order, bytes, QIODevice::WriteOnly,
           [](QDataStream& stream) { writeRecords<QByteArray>([&stream](const auto& v) { stream << v; }); });
    return bytes;
}

auto writeQt(QDataStream::ByteOrder order) {
    return [order] { return static_cast<unsigned int>(writtenByQt(order).size()) > kRecords; };
}

auto readQt(QDataStream::ByteOrder order) {
    return [order, bytes = writtenByQt(order)]() mutable {
        return withQt(order, bytes, QIODevice::ReadOnly, [](QDataStream& stream) {
            return sumOfRecords<QByteArray>([&stream](auto& v) { stream >> v; });
        });
    };
}
#endif

#ifdef BENCH_POCO
using PocoOrder = Poco::BinaryWriter::StreamByteOrder;

std::string writtenByPoco(PocoOrder order) {
    std::ostringstream bytes;
    Poco::BinaryWriter writer(bytes, order);
    writeRecords<std::string>([&writer](const auto& v) {
        if constexpr (std::is_same_v<std::decay_t<decltype(v)>, std::uint8_t>)
            writer << static_cast<char>(v);
        else
            writer << v;
    });
    writer.flush();
    return bytes.str();
}

auto writePoco(PocoOrder order) {
    return [order] { return writtenByPoco(order).size() > kRecords; };
}

auto readPoco(PocoOrder order) {
    return [order, written = writtenByPoco(order)] {
        std::istringstream bytes(written);
        Poco::BinaryReader reader(bytes, static_cast<Poco::BinaryReader::StreamByteOrder>(order));
        return sumOfRecords<std::string>([&reader](auto& v) { reader >> v; });
    };
}
#endif

#ifdef BENCH_CEREAL
using cereal::PortableBinaryInputArchive;
using cereal::PortableBinaryOutputArchive;

std::string writtenByCereal(bool little) {
    std::ostringstream bytes;
    PortableBinaryOutputArchive archive(bytes, little ? PortableBinaryOutputArchive::Options::LittleEndian()
                                                      : PortableBinaryOutputArchive::Options::BigEndian());
    writeRecords<std::string>([&archive](const auto& v) { archive(v); });
    return bytes.str();
}

auto writeCereal(bool little) {
    return [little] { return writtenByCereal(little).size() > kRecords; };
}

auto readCereal(bool little) {
    return [written = writtenByCereal(little)] {
        std::istringstream bytes(written);
        PortableBinaryInputArchive archive(bytes);
        return sumOfRecords<std::string>([&archive](auto& v) { archive(v); });
    };
}
#endif

void enterRecords(const std::string& suffix, bool little) {
    const DataStream::EndianType order = little ? DataStream::EndianLittle : DataStream::EndianBig;
    Comparison writing("write_" + suffix, kValues), reading("read_" + suffix, kValues);
    writing.Add("ours", writeOurs(order));
    reading.Add("ours", readOurs(order));
#ifdef BENCH_QT
    const QDataStream::ByteOrder qtOrder = little ? QDataStream::LittleEndian : QDataStream::BigEndian;
    writing.Add("QDataStream", writeQt(qtOrder));
    reading.Add("QDataStream", readQt(qtOrder));
#endif
#ifdef BENCH_POCO
    const PocoOrder pocoOrder =
        little ? Poco::BinaryWriter::LITTLE_ENDIAN_BYTE_ORDER : Poco::BinaryWriter::BIG_ENDIAN_BYTE_ORDER;
    writing.Add("Poco", writePoco(pocoOrder));
    reading.Add("Poco", readPoco(pocoOrder));
#endif
#ifdef BENCH_CEREAL
    writing.Add("cereal", writeCereal(little));
    reading.Add("cereal", readCereal(little));
#endif
}

/// Writes and reads through the abstract interface, with a virtual call for each value.
void enterAbstract() {
    Comparison writing("write_le_abstract", kValues), reading("read_le_abstract", kValues);
    writing.Add("ours", [] {
        ByteStream stream(0);
        DataStream* abstract = &stream;
        benchmark::DoNotOptimize(abstract);
        writeRecords<String>([abstract](const auto& v) { *abstract << v; });
        return stream.GetSize() > kRecords;
    });
    auto written = std::make_shared<ByteStream>(0);
    fill(*written, DataStream::EndianLittle);
    reading.Add("ours", [written] {
        DataStream* abstract = written.get();
        benchmark::DoNotOptimize(abstract);
        abstract->SetPosition(0);
        return sumOfRecords<String>([abstract](auto& v) { *abstract >> v; });
    });
#ifdef BENCH_QT
    writing.Add("QDataStream", writeQt(QDataStream::LittleEndian));
    reading.Add("QDataStream", readQt(QDataStream::LittleEndian));
#endif
}

void enterInts() {
    Comparison writing("write_ints_be", kInts), reading("read_ints_be", kInts);
    const auto writeTo = [](auto& stream) {
        for (std::uint32_t i = 0; i < kInts; ++i) stream << static_cast<std::int32_t>(i);
    };
    const auto sumFrom = [](auto& stream) {
        std::int32_t v = 0;
        double sum = 0;
        for (std::uint32_t i = 0; i < kInts; ++i) {
            stream >> v;
            sum += v;
        }
        return sum;
    };
    writing.Add("ours", [writeTo] {
        ByteStream stream(0);
        stream.SetEndianType(DataStream::EndianBig);
        writeTo(stream);
        return stream.GetSize() == kInts * 4;
    });
    ByteStream written(0);
    written.SetEndianType(DataStream::EndianBig);
    writeTo(written);
    reading.Add("ours", [bytes = bytesOf(written), sumFrom] {
        ByteStream stream(bytes);
        stream.SetEndianType(DataStream::EndianBig);
        return sumFrom(stream);
    });
#ifdef BENCH_QT
    const auto writeInts = [writeTo] {
        QByteArray bytes;
        withQt(QDataStream::BigEndian, bytes, QIODevice::WriteOnly, writeTo);
        return bytes;
    };
    writing.Add("QDataStream", [writeInts] { return writeInts().size() == kInts * 4; });
    reading.Add("QDataStream", [bytes = writeInts(), sumFrom]() mutable {
        return withQt(QDataStream::BigEndian, bytes, QIODevice::ReadOnly, sumFrom);
    });
#endif
}

void enterBlocks() {
    constexpr unsigned int blocks = 4096, blockSize = 1024;
    const std::string block(blockSize, 'b');
    Comparison writing("write_raw_4M_in_1K", blocks * blockSize);
    writing.Add("ours", [block] {
        ByteStream stream(0);
        for (unsigned int i = 0; i < blocks; ++i)
            stream.Write(blockSize, reinterpret_cast<const unsigned char*>(block.data()));
        return stream.GetSize() == blocks * blockSize;
    });
    writing.Add("std::append", [block] {
        std::string bytes;
        for (unsigned int i = 0; i < blocks; ++i) bytes.append(block);
        return bytes.size() == blocks * blockSize;
    });
#ifdef BENCH_QT
    writing.Add("QDataStream", [block] {
        QByteArray bytes;
        return withQt(QDataStream::LittleEndian, bytes, QIODevice::WriteOnly, [&](QDataStream& stream) {
            for (unsigned int i = 0; i < blocks; ++i) stream.writeRawData(block.data(), blockSize);
            return bytes.size() == blocks * blockSize;
        });
    });
#endif
}

[[maybe_unused]] const bool kRegistered =
    (enterRecords("le", true), enterRecords("be", false), enterAbstract(), enterInts(), enterBlocks(), true);

} // namespace
