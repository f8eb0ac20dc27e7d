#include <PostInstall/LanguageTable.h>

CFStringRef LanguageTag(std::int32_t languageCode) {
    switch (languageCode) {
    case 1: return CFSTR("fr");
    case 2: return CFSTR("de");
    case 3: return CFSTR("it");
    case 6: return CFSTR("es");
    case 11: return CFSTR("ja");
    default: return CFSTR("en");
    }
}
