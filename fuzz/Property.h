#pragma once

/// What a fuzzer states about every input: a property that holds, or ends the run with the input kept.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <string_view>

inline void Require(bool holds, const char* claim) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", claim);
    std::abort();
}

inline std::string Hexadecimal(const std::string& bytes) {
    std::string digits;
    char pair[4];
    for (const char c : bytes) {
        std::snprintf(pair, sizeof pair, "%02X ", static_cast<unsigned char>(c));
        digits += pair;
    }
    return digits;
}

inline void RequireEqual(const std::string& seen, const std::string& expected, const char* claim) {
    if (seen == expected) return;
    std::fprintf(stderr, "seen     %s\nexpected %s\n", Hexadecimal(seen).c_str(),
                 Hexadecimal(expected).c_str());
    Require(false, claim);
}

inline std::string_view Bytes(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Bytes before the first NUL: what reads a text as a C string sees.
inline std::string_view BeforeNul(std::string_view bytes) { return bytes.substr(0, bytes.find('\0')); }
