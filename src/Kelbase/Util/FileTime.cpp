#include <Kelbase/Util/FileTime.h>

#include <algorithm>
#include <limits>

#include <sys/stat.h>
#include <sys/time.h>

namespace Util {

namespace {

int toSeconds(time_t time) {
    const auto wide = static_cast<long long>(time);
    return static_cast<int>(
        std::clamp<long long>(wide, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

} // namespace

bool ReadFileTime(const String& path, FileTime& time) {
    struct stat status;
    if (stat(path.Latin1(), &status) != 0) return false;
    time = {toSeconds(status.st_atime), toSeconds(status.st_mtime)};
    return true;
}

bool WriteFileTime(const String& path, const FileTime& time) {
    const timeval times[2] = {{time.accessed, 0}, {time.modified, 0}};
    return utimes(path.Latin1(), times) == 0;
}

} // namespace Util
