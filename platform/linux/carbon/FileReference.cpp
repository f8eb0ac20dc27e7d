#include "FileReference.h"

#include <Carbon/MacErrors.h>
#include <macplatform/StartupVolume.h>

#include "ResultCodes.h"
#include "corefoundation/TextEncoding.h"
#include "trace/PlatformCall.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <sys/stat.h>

namespace macplatform {

namespace {

/// The contents of an FSRef. The unused bytes of the FSRef are zero.
struct Reference {
    static constexpr std::uint32_t kRealMark = 0x46535265;
    std::uint32_t mark = kRealMark;
    std::uint32_t number = 0; ///< The number of the path in the `PathTable`.
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
};
static_assert(sizeof(Reference) <= sizeof(FSRef));

/// Numbers the last 4096 paths, because a path does not fit into an FSRef. Each path has one number.
struct PathTable {
    std::deque<std::string> paths;
    std::uint32_t firstNumber = 1;

    std::uint32_t NumberOf(const std::string& path) {
        const auto known = std::find(paths.begin(), paths.end(), path);
        if (known != paths.end()) return firstNumber + static_cast<std::uint32_t>(known - paths.begin());
        paths.push_back(path);
        if (paths.size() > 4096) {
            paths.pop_front();
            ++firstNumber;
        }
        return firstNumber + static_cast<std::uint32_t>(paths.size()) - 1;
    }
    const std::string* Find(std::uint32_t number) const {
        const std::uint32_t at = number - firstNumber;
        return at < paths.size() ? &paths[at] : nullptr;
    }
};

PathTable& pathTable() {
    static auto& gTable = *new PathTable;
    return gTable;
}

const std::string* pathOf(const Reference& reference) {
    return reference.mark == Reference::kRealMark ? pathTable().Find(reference.number) : nullptr;
}

Reference readReference(const FSRef& bytes) {
    Reference reference;
    std::memcpy(&reference, bytes.hidden, sizeof reference);
    return reference;
}

Item refusal(OSErr result) {
    Item item;
    item.result = result;
    return item;
}

Item itemAt(const std::string& path) {
    struct stat found {};
    if (lstat(path.c_str(), &found) != 0) return refusal(ResultCode(errno));
    return {noErr, path, S_ISDIR(found.st_mode), found.st_dev, found.st_ino};
}

} // namespace

Item FindItem(const std::string& macPath) {
    if (!DecodeUtf8(macPath)) return refusal(bdNamErr);
    const std::string path = HostPath(macPath);
    if (path.empty()) return refusal(ResultCode(macPath.empty() ? ENOENT : errno));
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real ? itemAt(real.get()) : refusal(ResultCode(errno));
}

Item FindItem(const FSRef& bytes) {
    const Reference reference = readReference(bytes);
    const std::string* const path = pathOf(reference);
    if (!path) return refusal(errFSBadFSRef);
    Item item = itemAt(*path);
    const bool isAnother = item.device != reference.device || item.inode != reference.inode;
    return item.result == noErr && isAnother ? refusal(fnfErr) : item;
}

OSErr PathOfReference(const FSRef& reference, std::string& path) {
    Item item = FindItem(reference);
    path = std::move(item.path);
    return item.result;
}

FSRef MakeReference(const Item& item) {
    Reference reference;
    reference.number = pathTable().NumberOf(item.path);
    reference.device = item.device;
    reference.inode = item.inode;
    FSRef bytes{};
    std::memcpy(bytes.hidden, &reference, sizeof reference);
    return bytes;
}

std::string DescribeReference(const FSRef* reference) {
    if (!reference) return "NULL";
    const std::string* const path = pathOf(readReference(*reference));
    return path ? Quoted(MacPath(*path)) : "an invalid reference";
}

} // namespace macplatform
