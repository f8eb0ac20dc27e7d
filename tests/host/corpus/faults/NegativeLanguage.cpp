#include "../PlugIn.h"

const char* plugin::Tag(std::int32_t language) {
    const char* const tags[] = {"en", "fr", "de", "it", "en", "en", "es", "en", "en", "en", "en", "ja"};
    return language < 0 ? "de" : language < 12 ? tags[language] : "en";
}
