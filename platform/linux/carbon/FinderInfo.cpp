#include "FinderInfo.h"

#include <macplatform/FinderFlags.h>

#include "AppleDouble.h"
#include "trace/PlatformCall.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace macplatform {

namespace {

constexpr char kMacDisksAttribute[] = "osx.com.apple.FinderInfo";
constexpr char kAttributeName[] = "user.com.apple.FinderInfo";

bool gAttributesAreMissing = false;

enum class Place { kNone, kAttribute, kSidecar };

bool isEmpty(const FinderInfo& info) { return info == FinderInfo{}; }

const char* attributeFor(const std::string& path) {
    constexpr long hfsPlusMark = 0x482B;
    struct statfs disk {};
    return statfs(path.c_str(), &disk) == 0 && disk.f_type == hfsPlusMark ? kMacDisksAttribute
                                                                          : kAttributeName;
}

/// Returns 0 or an errno: ENODATA if the item has no attribute or its
/// file system does not support attributes.
int readAttribute(const std::string& path, FinderInfo& info) {
    struct stat item {};
    if (gAttributesAreMissing) return lstat(path.c_str(), &item) == 0 ? ENODATA : errno;
    const ssize_t size = lgetxattr(path.c_str(), attributeFor(path), info.data(), info.size());
    if (size == static_cast<ssize_t>(info.size())) return 0;
    if (size >= 0 || errno == ERANGE) return EIO; // The attribute does not have 32 bytes: it is damaged.
    return errno == ENOTSUP || errno == EPERM ? ENODATA : errno;
}

int setAttribute(const std::string& path, const FinderInfo& info) {
    if (gAttributesAreMissing) return ENOTSUP;
    const char* const name = attributeFor(path);
    if (isEmpty(info) && name == kAttributeName)
        return lremovexattr(path.c_str(), name) == 0 || errno == ENODATA ? 0 : errno;
    return lsetxattr(path.c_str(), name, info.data(), info.size(), 0) == 0 ? 0 : errno;
}

/// Sets the attribute, also on a read-only item of this user. On the Mac, only the owner's rights on the item
/// matter, not the write permission for its contents.
int setAttributeAsOwner(const std::string& path, const FinderInfo& info) {
    const int refusal = setAttribute(path, info);
    struct stat item {};
    if (refusal != EACCES || lstat(path.c_str(), &item) != 0 || item.st_uid != geteuid()) return refusal;
    if (S_ISLNK(item.st_mode) || chmod(path.c_str(), item.st_mode | S_IWUSR) != 0) return refusal;
    const int failed = setAttribute(path, info);
    return chmod(path.c_str(), item.st_mode) == 0 ? failed : errno;
}

bool canHaveAttributes(const std::string& path) {
    struct stat item {};
    return lstat(path.c_str(), &item) == 0 && (S_ISREG(item.st_mode) || S_ISDIR(item.st_mode));
}

int readInfo(const std::string& path, FinderInfo& info, Place& place) {
    info = {};
    place = Place::kAttribute;
    const int failed = readAttribute(path, info);
    if (failed != ENODATA) return failed;
    FinderInfo beside{};
    const std::string sidecar = SidecarPath(path);
    const int absent = sidecar.empty() ? ENOENT : ReadSidecar(sidecar, beside);
    info = absent == 0 ? beside : FinderInfo{};
    place = absent == 0 ? Place::kSidecar : Place::kNone;
    // A file of that name that is not a sidecar, or a name that is too long for a sidecar, is not an error:
    // the item has no Finder information then.
    return absent == ENOENT || absent == EBADMSG || absent == ENAMETOOLONG ? 0 : absent;
}

} // namespace

void SimulateMissingExtendedAttributes(bool isSimulated) { gAttributesAreMissing = isSimulated; }

int ReadFinderInfo(const std::string& path, FinderInfo& info) {
    Place place;
    return readInfo(path, info, place);
}

int WriteFinderInfo(const std::string& path, const FinderInfo& info) {
    FinderInfo present;
    Place place;
    if (const int failed = readInfo(path, present, place)) return failed;
    if (present == info) return 0;
    if (place != Place::kSidecar) {
        const int failed = setAttributeAsOwner(path, info);
        if (failed != ENOTSUP && (failed != EPERM || canHaveAttributes(path))) return failed;
    }
    const std::string sidecar = SidecarPath(path);
    return sidecar.empty() ? ENOTSUP : WriteSidecar(sidecar, info);
}

void SwapBasicFinderInfo(const std::uint8_t* from, std::uint8_t* to, bool isFolder) {
    // The widths of the fields: type, creator, flags, location (2 fields), reserved.
    static constexpr std::size_t ofFile[] = {4, 4, 2, 2, 2, 2};
    // The widths of the fields: bounds (4 fields), flags, location (2 fields), reserved.
    static constexpr std::size_t ofFolder[] = {2, 2, 2, 2, 2, 2, 2, 2};
    const std::size_t* width = isFolder ? ofFolder : ofFile;
    constexpr bool littleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    for (std::size_t at = 0; at < 16; at += *width++) {
        for (std::size_t i = 0; i < *width; ++i) to[at + i] = from[at + (littleEndian ? *width - 1 - i : i)];
    }
}

std::optional<std::uint16_t> ReadFinderFlags(const std::string& path) {
    const InternalCallScope internalCalls;
    FinderInfo info;
    if (ReadFinderInfo(path, info) != 0) return std::nullopt;
    return static_cast<std::uint16_t>(info[8] << 8 | info[9]);
}

} // namespace macplatform
