// Records of nine numbers and a text through a byte stream, beside bare memcpy into a vector made large
// enough. items_per_second are values.

#include <Kelbase/Util/ByteStream.h>

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

namespace {

using Util::ByteStream;
using Util::DataStream;

constexpr unsigned int records = 10000, valuesEach = 10,
                       bytesEach = 1 + 2 + 2 + 4 + 4 + 4 + 4 + 4 + 8 + 4 + 12;

void writeRecords(ByteStream& stream) {
    const String text("twelve bytes");
    for (unsigned int i = 0; i < records; ++i) {
        const int n = static_cast<int>(i);
        stream << static_cast<unsigned char>(n) << static_cast<short>(n) << static_cast<unsigned short>(n)
               << n << i << static_cast<long>(n) << static_cast<unsigned long>(i) << 0.5f << 0.25 << text;
    }
}

template <typename... T>
void readValues(DataStream& stream, T... v) {
    (stream >> ... >> v);
    (benchmark::DoNotOptimize(v), ...);
}

void writeStream(benchmark::State& state) {
    for (auto _ : state) {
        ByteStream stream(state.range(1) ? records * bytesEach : 0);
        stream.SetEndianType(DataStream::EndianType(state.range(0)));
        writeRecords(stream);
        benchmark::DoNotOptimize(stream.GetSize());
    }
    state.SetItemsProcessed(state.iterations() * records * valuesEach);
}

void readStream(benchmark::State& state) {
    ByteStream stream(0);
    stream.SetEndianType(DataStream::EndianType(state.range(0)));
    writeRecords(stream);
    for (auto _ : state) {
        stream.SetPosition(0);
        while (!stream.AtEnd())
            readValues(stream, static_cast<unsigned char>(0), short(0), static_cast<unsigned short>(0), 0, 0u,
                       0L, 0ul, 0.0f, 0.0, String());
    }
    state.SetItemsProcessed(state.iterations() * records * valuesEach);
}

/// The floor: every value copied to its place, nothing asked.
void writeBare(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<unsigned char> bytes(records * bytesEach);
        unsigned char* p = bytes.data();
        const auto put = [&p](auto v) {
            std::memcpy(p, &v, sizeof v);
            p += sizeof v;
        };
        for (unsigned int i = 0; i < records; ++i) {
            put(static_cast<unsigned char>(i)), put(static_cast<short>(i)),
                put(static_cast<unsigned short>(i));
            put(i), put(i), put(i), put(i), put(0.5f), put(0.25), put(12u);
            std::memcpy(p, "twelve bytes", 12);
            p += 12;
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * records * valuesEach);
}

void writeBlocks(benchmark::State& state) {
    const std::vector<unsigned char> block(1024, 7);
    for (auto _ : state) {
        ByteStream stream(0);
        for (int i = 0; i < 4096; ++i) stream << block;
        benchmark::DoNotOptimize(stream.GetSize());
    }
    state.SetBytesProcessed(state.iterations() * (4096 << 10));
}

void appendBlocks(benchmark::State& state) {
    const std::string block(1024, 7);
    for (auto _ : state) {
        std::string bytes;
        for (int i = 0; i < 4096; ++i) bytes.append(block);
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(state.iterations() * (4096 << 10));
}

BENCHMARK(writeStream)->ArgNames({"endian", "reserved"})->ArgsProduct({{1, 2}, {0, 1}});
BENCHMARK(writeBare);
BENCHMARK(readStream)->ArgName("endian")->Arg(1)->Arg(2);
BENCHMARK(writeBlocks);
BENCHMARK(appendBlocks);

} // namespace
