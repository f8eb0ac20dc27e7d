#include "ImageMemory.h"

#include <cstring>
#include <sys/mman.h>

namespace macplatform {

ImageMemory::ImageMemory(const ImageFile& file) : image(file) {
    void* const mapped =
        mmap(nullptr, file.end - file.start, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw UnsupportedMachO("out of memory");
    capacity = static_cast<char*>(mapped);
    slide = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(mapped)) - file.start;
    for (const Segment& segment : file.segments) {
        if (!segment.contents.empty())
            std::memcpy(At(segment.address), segment.contents.data(), segment.contents.size());
    }
}

void ImageMemory::Check(std::uint32_t address) const {
    for (const Segment& segment : image.segments) {
        if (address >= segment.address && address - segment.address < segment.size &&
            segment.size - (address - segment.address) >= 4) {
            return;
        }
    }
    throw UnsupportedMachO("a fix-up is outside the segments");
}

std::uint32_t ImageMemory::Word(std::uint32_t address) const {
    Check(address);
    std::uint32_t value = 0;
    std::memcpy(&value, At(address), sizeof value);
    return value;
}

void ImageMemory::SetWord(std::uint32_t address, std::uint32_t value) {
    Check(address);
    std::memcpy(At(address), &value, sizeof value);
}

std::string_view ImageMemory::Bytes(const ImageSection& section) const {
    return {At(section.address), section.size};
}

void ImageMemory::Protect() const {
    for (const Segment& segment : image.segments) {
        const int read = (segment.protection & 1) != 0 ? PROT_READ : 0;
        const int write = (segment.protection & 2) != 0 ? PROT_WRITE : 0;
        const int run = (segment.protection & 4) != 0 ? PROT_EXEC : 0;
        if (segment.size != 0 && mprotect(At(segment.address), segment.size, read | write | run) != 0)
            throw UnsupportedMachO("cannot set the memory protection of the segment " + segment.name);
    }
}

} // namespace macplatform
