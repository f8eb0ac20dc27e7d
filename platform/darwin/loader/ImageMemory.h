#pragma once

#include "ImageFile.h"

namespace macplatform {

/// The memory of an image. The constructor allocates the memory and copies the segments of the file. The
/// distances between the segments are the same as in the file. The memory is writable until `Protect` is
/// called, and is never unmapped. The functions throw UnsupportedMachO.
class ImageMemory {
public:
    explicit ImageMemory(const ImageFile& file);

    /// Returns the number to add to an address of the file to get the address in memory, modulo 2^32.
    std::uint32_t Slide() const { return slide; }
    /// These functions return or set the four bytes at an address of the file. The bytes must be inside a
    /// segment.
    std::uint32_t Word(std::uint32_t address) const;
    void SetWord(std::uint32_t address, std::uint32_t value);
    /// Returns the bytes of a section.
    std::string_view Bytes(const ImageSection& section) const;
    /// Returns the address in memory of an address of the file. Does not check the address.
    char* At(std::uint32_t address) const { return capacity + (address - image.memory.start); }
    /// Gives each segment the protection that the file requests.
    void Protect() const;

private:
    void Check(std::uint32_t address) const;

    const ImageFile& image;
    char* capacity = nullptr;
    std::uint32_t slide = 0;
};

} // namespace macplatform
