#pragma once

/// An image's segments in memory.

#include "ImageFile.h"

namespace macplatform {

/// Room for the segments at their distances from one another, filled from the file, writable until `Protect`.
/// It is never given back.
class ImageMemory {
public:
    explicit ImageMemory(const ImageFile& file);

    /// What must be added to an address of the file.
    std::uint32_t Slide() const { return slide; }
    /// Four bytes at an address of the file; refused outside of a segment.
    std::uint32_t Word(std::uint32_t address) const;
    void SetWord(std::uint32_t address, std::uint32_t value);
    /// A section's bytes.
    std::string_view Bytes(const ImageSection& section) const;
    /// Where an address of the file lies now.
    char* At(std::uint32_t address) const { return capacity + (address - image.start); }
    void Protect() const;

private:
    void Check(std::uint32_t address) const;

    const ImageFile& image;
    char* capacity = nullptr;
    std::uint32_t slide = 0;
};

} // namespace macplatform
