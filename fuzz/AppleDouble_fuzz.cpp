// Reads and writes Finder information in sidecars of any content. Reading must give the same result as a
// second implementation of the format. Writing must change exactly the 32 bytes, or nothing.

#include "Property.h"

#include "carbon/AppleDouble.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

using macplatform::FinderInfo;

namespace {

std::uint64_t big(const std::string& bytes, std::size_t at, std::size_t width) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < width; ++i)
        number = number * 256 + static_cast<unsigned char>(bytes.at(at + i));
    return number;
}

/// Returns the offset of the 32 bytes, to which the first entry of kind 9 refers,
/// or 0 if there are no such bytes.
std::size_t placeOfFinderInfo(const std::string& bytes) {
    if (bytes.size() < 26 || big(bytes, 0, 4) != 0x00051607) return 0;
    if (big(bytes, 4, 4) != 0x00010000 && big(bytes, 4, 4) != 0x00020000) return 0;
    const std::uint64_t count = big(bytes, 24, 2);
    for (std::size_t at = 26; at < 26 + 12 * count; at += 12) {
        if (at + 12 > bytes.size()) return 0;
        if (big(bytes, at, 4) != 9) continue;
        const std::uint64_t offset = big(bytes, at + 4, 4), length = big(bytes, at + 8, 4);
        const bool isInside = offset >= 26 + 12 * count && offset + 32 <= bytes.size() && length >= 32;
        return isInside ? static_cast<std::size_t>(offset) : 0;
    }
    return 0;
}

/// A sidecar file in memory that all runs use. The destructor removes the file.
class Sidecar {
public:
    Sidecar()
        : path("/dev/shm/sidecar-" + std::to_string(getpid())),
          file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        Require(file >= 0, "the sidecar can be created");
    }
    Sidecar(const Sidecar&) = delete;
    Sidecar& operator=(const Sidecar&) = delete;
    ~Sidecar() {
        close(file);
        unlink(path.c_str());
    }

    void Fill(const std::string& bytes) const {
        const auto size = static_cast<ssize_t>(bytes.size());
        Require(ftruncate(file, 0) == 0 && pwrite(file, bytes.data(), bytes.size(), 0) == size,
                "the sidecar can be filled");
    }
    std::string Content() const {
        std::string bytes(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
        Require(pread(file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()),
                "the sidecar can be read");
        return bytes;
    }

    const std::string path;

private:
    const int file;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Sidecar sidecar;
    std::string bytes(Bytes(data, size));
    sidecar.Fill(bytes);

    const std::size_t place = placeOfFinderInfo(bytes);
    FinderInfo info{};
    const int result = macplatform::ReadSidecar(sidecar.path, info);
    Require(result == (place != 0 ? 0 : EBADMSG), "reading succeeds exactly if the file has the information");
    if (place != 0)
        RequireEqual({info.begin(), info.end()}, bytes.substr(place, 32), "reading returns the 32 bytes");

    for (std::uint8_t& byte : info) byte = static_cast<std::uint8_t>(byte + 1);
    Require(macplatform::WriteSidecar(sidecar.path, info) == result, "writing returns the result of reading");
    if (place != 0) bytes.replace(place, 32, std::string(info.begin(), info.end()));
    RequireEqual(sidecar.Content(), bytes, "writing changes only the 32 bytes");
    return 0;
}
