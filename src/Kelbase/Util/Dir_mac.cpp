#include <Kelbase/Util/Dir.h>

#include <Kelbase/Util/Exception/FailureSite.h>

#include <cerrno>
#include <cstdint>

#include <sys/mount.h>
#include <sys/param.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Util {

using Exception::FailureSite;
using Exception::FileIO;
using Exception::Throw;

namespace {

constexpr char kSourceFile[] = "src/Kelbase/Util/Dir_mac";

constexpr FailureSite kAncestorNotMade = {kSourceFile, 105, FileIO::WriteError, "mkdir() failed with %1/%2"};
constexpr FailureSite kNotMade = {kSourceFile, 118, FileIO::WriteError, "mkdir() failed with %1/%2"};
constexpr FailureSite kNotRemoved = {kSourceFile, 135, FileIO::RemoveError, "rmdir() failed"};
constexpr FailureSite kTimeNotSet = {kSourceFile, 158, FileIO::UnexpectedError, "Error setting folder time"};
constexpr FailureSite kTimeNotRead = {kSourceFile, 171, FileIO::UnexpectedError, "Error getting folder time"};

constexpr mode_t kNewFolderMode = 0755;

String withoutTrailingSlashes(const String& path) {
    unsigned int length = path.GetLength();
    while (length > 1 && path.Latin1()[length - 1] == '/') --length;
    return path.Left(length);
}

/// Creates one folder. Returns 0 or the system's error number.
int makeFolder(const FolderPath& folder) {
    const String name = folder.ToString();
    return mkdir(name.Latin1(), kNewFolderMode) == 0 ? 0 : errno;
}

} // namespace

bool Dir::Exists() const {
    if (path.IsEmpty()) return false;
    const String name = path.ToString();
    if (access(name.Latin1(), F_OK) != 0) return false;
    struct stat status;
    return stat(withoutTrailingSlashes(name).Latin1(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool Dir::GetDirInfo(DirInfo& info) const {
    struct statfs volume;
    if (statfs(path.ToString().Latin1(), &volume) != 0) return false;
    const auto bytes =
        static_cast<std::uint32_t>(volume.f_bsize) * static_cast<std::uint32_t>(volume.f_bavail);
    info.availableSpace = static_cast<unsigned long long>(static_cast<std::int32_t>(bytes));
    return true;
}

void Dir::GetTime(FileTime* time) const {
    FileTime read;
    if (!ReadFileTime(path.ToString(), read)) Throw(kTimeNotRead, path, 0);
    if (time) *time = read;
}

void Dir::SetTime(const FileTime& time) const {
    if (!WriteFileTime(path.ToString(), time)) Throw(kTimeNotSet, path, 0);
}

void Dir::Create(bool recursive) const {
    if (Exists()) return;
    if (!recursive) {
        if (const int error = makeFolder(path)) Throw(kNotMade, path, 0, -1, error);
        return;
    }
    const String name = path.ToString();
    if (!name.BeginsWith("/") && !name.BeginsWith("~/")) return;
    checked_value<unsigned int> end = name.BeginsWith("/") ? 1U : 2U;
    while ((end = name.Find('/', end + 1)).IsGiven()) {
        const FolderPath ancestor(name.Left(end), false);
        if (Dir(ancestor).Exists()) continue;
        if (const int error = makeFolder(ancestor)) Throw(kAncestorNotMade, path, 0, -1, error);
    }
}

void Dir::Remove() const {
    if (Exists() && rmdir(path.ToString().Latin1()) != 0) Throw(kNotRemoved, path, 0);
}

} // namespace Util
