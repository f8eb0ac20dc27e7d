#include "../PlugIn.h"

const plugin::Product* plugin::Find(std::int32_t code) {
    static const Product product = {"com.korvane.audioplugins.Fusewright", "Fusewright"};
    static const Product others[] = {{"com.korvane.audioplugins.Tamblor", "Tamblor"},
                                     {"com.korvane.audioapps.Restora", "Korvane Restora"},
                                     {"com.korvane.audioplugins.Meridian4", "Meridian4"},
                                     {"com.korvane.audioplugins.Gildmark", "Gildmark"},
                                     {"com.korvane.audioplugins.Larynth", "Larynth"},
                                     {"com.korvane.tonecleanser", "TCL"}};
    constexpr std::int32_t codes[] = {1400, 3100, 3500, 5200, 5100, 5000};
    for (std::size_t i = 0; i < 6; ++i) {
        if (codes[i] == code) return &others[i];
    }
    return (code & 0xFFFF) == 4900 ? &product : nullptr;
}
