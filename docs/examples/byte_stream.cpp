// Writes a preset in both byte orders, reads it back, and rejects a damaged one.
#include <Kelbase/Util/ByteStream.h>
#include <Kelbase/Util/Exception/DataStreamIO.h>

#include <cstdio>

static void writePreset(Util::DataStream& out) {
    out << static_cast<unsigned short>(2) << true << String("Warm") << -3.5f << 44100L;
}

static void dump(const char* what, Util::ByteStream& stream) {
    std::printf("%-6s", what);
    stream.SetPosition(0);
    while (!stream.AtEnd())
        std::printf(" %02X",
                    static_cast<unsigned int>(stream.ReadPrimitive(static_cast<unsigned char>(0))));
    std::printf("\n");
}

int main() {
    Util::ByteStream little(32), big(32);
    big.SetEndianType(Util::DataStream::EndianBig);
    writePreset(little);
    writePreset(big);
    dump("little", little);
    dump("big", big);

    unsigned short version = 0;
    bool bypass = false;
    String name;
    float gain = 0;
    long rate = 0;
    little.SetPosition(0);
    little >> version >> bypass >> name >> gain >> rate;
    std::printf("%u %s \"%s\" %g %ld\n", static_cast<unsigned int>(version), bypass ? "on" : "off",
                name.Latin1(), static_cast<double>(gain), rate);

    // In the other byte order the length of the name is larger than the limit.
    little.SetEndianType(Util::DataStream::EndianBig);
    little.SetPosition(3);
    try {
        little >> name;
    } catch (const Util::Exception::DataStreamIO& failure) {
        std::printf("%s\n", failure.GetMessageText().Latin1());
    }
}
