#include "AppleDouble.h"

#include "posix/AtomicFile.h"
#include "volume/VolumePath.h"

#include <macplatform/FileDescriptor.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace macplatform {

namespace {

// An AppleDouble file begins with a magic number, a version, 16 bytes of filler and the number of entries.
// One record per entry follows: its kind, offset and length. All numbers are big-endian.
constexpr std::uint32_t kFileMark = 0x00051607;
constexpr std::size_t kHeaderSize = 26;
constexpr std::size_t kEntrySize = 12;
constexpr std::uint32_t kResourceForkEntry = 2;
constexpr std::uint32_t kFinderInfoEntry = 9;

std::uint32_t load(const std::uint8_t* bytes, int count) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i) value = value << 8 | bytes[i];
    return value;
}

void appendNumber(std::string& bytes, std::uint32_t value, int count) {
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
}

bool readAt(int file, off_t offset, std::uint8_t* bytes, std::size_t count) {
    return pread(file, bytes, count, offset) == static_cast<ssize_t>(count);
}

/// Returns the offset of the 32 bytes of Finder information, or 0 if the file has none. The bytes never begin
/// at offset 0, because the header is there.
off_t findFinderInfo(int file) {
    struct stat item {};
    std::array<std::uint8_t, kHeaderSize> header;
    if (fstat(file, &item) != 0 || !S_ISREG(item.st_mode) || !readAt(file, 0, header.data(), kHeaderSize))
        return 0;
    const std::uint32_t version = load(&header[4], 4);
    if (load(header.data(), 4) != kFileMark || (version != 0x00010000 && version != 0x00020000)) return 0;

    const std::uint32_t count = load(&header[24], 2);
    for (std::uint32_t i = 0; i < count; ++i) {
        std::array<std::uint8_t, kEntrySize> entry;
        if (!readAt(file, static_cast<off_t>(kHeaderSize + i * kEntrySize), entry.data(), kEntrySize))
            return 0;
        if (load(entry.data(), 4) != kFinderInfoEntry) continue;
        const auto offset = static_cast<off_t>(load(&entry[4], 4));
        const std::uint32_t length = load(&entry[8], 4);
        const bool fits = length >= sizeof(FinderInfo) &&
                          offset >= static_cast<off_t>(kHeaderSize + count * kEntrySize) &&
                          offset + static_cast<off_t>(sizeof(FinderInfo)) <= item.st_size;
        return fits ? offset : 0;
    }
    return 0;
}

FileDescriptor openSidecar(const std::string& sidecar, int access) {
    return FileDescriptor(open(sidecar.c_str(), access | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
}

/// Returns the smallest sidecar that every reader accepts: Finder information and an empty resource fork.
std::string newSidecar(const FinderInfo& info) {
    constexpr std::uint32_t infoOffset = kHeaderSize + 2 * kEntrySize;
    std::string bytes;
    appendNumber(bytes, kFileMark, 4);
    appendNumber(bytes, 0x00020000, 4);
    bytes.append(16, '\0');
    appendNumber(bytes, 2, 2);
    for (const std::uint32_t number : {kFinderInfoEntry, infoOffset, std::uint32_t{sizeof info}})
        appendNumber(bytes, number, 4);
    for (const std::uint32_t number : {kResourceForkEntry, infoOffset + std::uint32_t{sizeof info}, 0U})
        appendNumber(bytes, number, 4);
    return bytes.append(info.begin(), info.end());
}

int makeSidecar(const std::string& sidecar, const FinderInfo& info) {
    const auto slash = sidecar.rfind('/');
    const FileDescriptor folder(
        open(sidecar.substr(0, slash + 1).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder ? ReplaceFile(folder.Get(), sidecar.substr(slash + 1), newSidecar(info)) : errno;
}

} // namespace

std::string SidecarPath(const std::string& path) {
    const auto slash = path.rfind('/');
    const bool isVolume = LiesInStartupVolume(path) && !LiesInStartupVolume(path.substr(0, slash));
    if (slash == path.npos || slash + 1 == path.size() || isVolume) return {};
    return path.substr(0, slash + 1) + "._" + path.substr(slash + 1);
}

int ReadSidecar(const std::string& sidecar, FinderInfo& info) {
    const FileDescriptor file = openSidecar(sidecar, O_RDONLY);
    if (!file) return errno == ELOOP ? EBADMSG : errno;
    const off_t offset = findFinderInfo(file.Get());
    return offset != 0 && readAt(file.Get(), offset, info.data(), info.size()) ? 0 : EBADMSG;
}

int WriteSidecar(const std::string& sidecar, const FinderInfo& info) {
    const FileDescriptor file = openSidecar(sidecar, O_RDWR);
    if (!file)
        return errno == ENOENT                     ? makeSidecar(sidecar, info)
               : errno == ELOOP || errno == EISDIR ? EBADMSG
                                                   : errno;
    const off_t offset = findFinderInfo(file.Get());
    if (offset == 0) return EBADMSG;
    const ssize_t wrote = pwrite(file.Get(), info.data(), info.size(), offset);
    return wrote == static_cast<ssize_t>(info.size()) ? 0 : wrote < 0 ? errno : EIO;
}

} // namespace macplatform
