// Converts 16-bit samples to floats in [-1, 1), changes their level, and converts them back.
#include <Kelbase/IPP/IPP_util.h>

#include <cstdio>

int main() {
    constexpr unsigned int count = 6;
    const short recorded[count] = {0, 1, -1, 16384, -32768, 32767};

    float samples[count];
    IPP::Convert(count, recorded, samples, 15); // divided by 2^15
    for (float& sample : samples) {
        std::printf(" %9.6f", static_cast<double>(sample));
        sample *= 1.5f;
    }
    std::printf("\n");

    short louder[count];
    IPP::Convert(count, samples, louder, -15, true); // times 2^15, rounded, limited to 16 bits
    for (const short sample : louder) std::printf(" %9d", sample);
    std::printf("\n");

    // The conversion to float and back gives the same bits.
    short again[count];
    IPP::Convert(count, recorded, samples, 15);
    IPP::Convert(count, samples, again, -15, true);
    const bool same = IPP::Equal(sizeof again, reinterpret_cast<const unsigned char*>(recorded),
                                 reinterpret_cast<const unsigned char*>(again));
    std::printf("%s\n", same ? "unchanged" : "changed");

    // A product that does not fit 32 bits gives the lowest value, as NaN does. A product that fits
    // is limited to 16 bits.
    const float wild[2] = {1e5f, 2.0f};
    short held[2];
    IPP::Convert(2, wild, held, -15, false);
    std::printf("%d %d\n", held[0], held[1]);
}
