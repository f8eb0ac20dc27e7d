#pragma once

/// Declares the contract between the vendor's products and the plug-in: product codes, preferences, languages
/// and paths.

#include <array>
#include <cstdint>

namespace xcodhost {

struct ProductContract {
    std::int32_t code;
    const char* domain;    ///< The preferences domain, which is the product's bundle identifier.
    const char* shortName; ///< The product's name in the updater's keys.
};

inline constexpr std::array<ProductContract, 7> kProducts = {{
    {1400, "com.korvane.audioplugins.Tamblor", "Tamblor"},
    {3100, "com.korvane.audioapps.Restora", "Korvane Restora"},
    {3500, "com.korvane.audioplugins.Meridian4", "Meridian4"},
    {5200, "com.korvane.audioplugins.Gildmark", "Gildmark"},
    {5100, "com.korvane.audioplugins.Larynth", "Larynth"},
    {5000, "com.korvane.tonecleanser", "TCL"},
    {4900, "com.korvane.audioplugins.Fusewright", "Fusewright"},
}};

/// Product codes that no product has: neighbours of known codes, a code with the low 16 bits of a known code,
/// a negated code, and the limits of the range.
inline constexpr std::array<std::int32_t, 9> kUnknownProducts = {
    0, 1234, 1399, 1401, -1, 4900 + 0x10000, -4900, INT32_MAX, INT32_MIN};

struct LanguageContract {
    std::int32_t code;
    const char* tag;
};

inline constexpr std::array<LanguageContract, 12> kLanguages = {{
    {0, "en"},
    {1, "fr"},
    {2, "de"},
    {3, "it"},
    {4, "en"},
    {5, "en"},
    {6, "es"},
    {7, "en"},
    {8, "en"},
    {9, "en"},
    {10, "en"},
    {11, "ja"},
}};

/// Language codes that are not in the table. Each of them means English.
inline constexpr std::array<std::int32_t, 7> kOtherLanguages = {12,           13,        -1,       11 + 0x100,
                                                                11 + 0x10000, INT32_MAX, INT32_MIN};

inline constexpr const char* kUpdaterDomain = "com.korvane.updater";
inline constexpr const char* kCurrentVersion = "1.73";
inline constexpr const char* kIntervalKey = "UpdateInterval";
inline constexpr const char* kFailureKey = "InstallStatus";
inline constexpr const char* kLanguageKey = "Lang";
inline constexpr const char* kStatusFile = "/Library/Application Support/Korvane/Updater/install_status.txt";
inline constexpr const char* kVendorFolder = "/Applications/Korvane";
inline constexpr const char* kIconFile = "/Applications/Korvane/Icon\r";
inline constexpr std::uint16_t kInvisibleFlag = 0x4000;
inline constexpr std::uint16_t kCustomIconFlag = 0x0400;
inline constexpr const char* kFailureMessage = "Unable to set post install option keys.";
inline constexpr int kFailureStopAlert = 5000;

} // namespace xcodhost
