#pragma once

/// @file
/// Declares functions that check a property of every input of a fuzzer.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <string_view>

/// Aborts the process with a message if `holds` is false. The fuzzer then saves the input.
inline void Require(bool holds, const char* claim) {
    if (holds) return;
    std::fprintf(stderr, "property violated: %s\n", claim);
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

/// Aborts the process if the values differ. The message has both values in hexadecimal.
inline void RequireEqual(const std::string& seen, const std::string& expected, const char* claim) {
    if (seen == expected) return;
    std::fprintf(stderr, "seen     %s\nexpected %s\n", Hexadecimal(seen).c_str(),
                 Hexadecimal(expected).c_str());
    Require(false, claim);
}

inline std::string_view Bytes(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Returns the bytes before the first NUL. Returns all bytes if there is no NUL.
inline std::string_view BeforeNul(std::string_view bytes) { return bytes.substr(0, bytes.find('\0')); }
