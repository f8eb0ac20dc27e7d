#include "ImageMemory.h"

#include <cstring>
#include <sys/mman.h>

namespace macplatform {

ImageMemory::ImageMemory(const ImageFile& file) : image(file) {
    void* const mapped =
        mmap(nullptr, file.memory.size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw UnsupportedMachO("out of memory");
    capacity = static_cast<char*>(mapped);
    slide = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(mapped)) - file.memory.start;
    for (const Segment& segment : file.segments) {
        if (!segment.contents.empty())
            std::memcpy(At(segment.memory.start), segment.contents.data(), segment.contents.size());
    }
}

void ImageMemory::Check(std::uint32_t address) const {
    for (const Segment& segment : image.segments) {
        if (segment.memory.Contains({address, sizeof(std::uint32_t)})) return;
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
    return {At(section.memory.start), section.memory.size};
}

void ImageMemory::Protect() const {
    for (const Segment& segment : image.segments) {
        const auto [start, size] = segment.memory;
        const int protection = segment.protection & (PROT_READ | PROT_WRITE | PROT_EXEC);
        if (size != 0 && mprotect(At(start), size, protection) != 0)
            throw UnsupportedMachO("cannot set the memory protection of the segment " + segment.name);
    }
}

} // namespace macplatform
