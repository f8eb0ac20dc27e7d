#pragma once

#include "ImageFile.h"

namespace macplatform {

/// The segments of an image in memory, filled from the file. The segments have the same distances as in the
/// file. The memory is writable until `Protect`, and is never unmapped. The functions throw MachORefused.
class ImageMemory {
public:
    explicit ImageMemory(const ImageFile& file);

    /// Returns the difference between an address in memory and the address in the file.
    std::uint32_t Slide() const { return slide; }
    /// Return or set the four bytes at an address of the file, which must be inside a segment.
    std::uint32_t Word(std::uint32_t address) const;
    void SetWord(std::uint32_t address, std::uint32_t value);
    /// Returns the bytes of a section.
    std::string_view Bytes(const ImageSection& section) const;
    /// Returns the memory of an address of the file. The address is not checked.
    char* At(std::uint32_t address) const { return capacity + (address - image.start); }
    /// Gives each segment the protection that the file requests.
    void Protect() const;

private:
    void Check(std::uint32_t address) const;

    const ImageFile& image;
    char* capacity = nullptr;
    std::uint32_t slide = 0;
};

} // namespace macplatform
