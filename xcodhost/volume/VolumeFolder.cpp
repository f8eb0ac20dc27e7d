#include "VolumeFolder.h"

#include "DisplayText.h"
#include "ExitStatus.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace xcodhost {

std::string VolumeFolder(const std::string& named) {
    const auto refuse = [&](const std::string& reason) {
        return UsageError("--volume: " + Printable(named) + ": " + reason);
    };
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(named.c_str(), nullptr), &std::free);
    if (!real) throw refuse(std::strerror(errno));
    std::string folder = real.get();
    struct stat status {};
    if (stat(folder.c_str(), &status) < 0) throw refuse(std::strerror(errno));
    if (!S_ISDIR(status.st_mode)) throw refuse("not a folder");
    if (folder == "/") throw refuse("the root directory of this machine is not a startup volume");
    if (access(folder.c_str(), R_OK | X_OK) < 0) throw refuse(std::strerror(errno));
    return folder;
}

} // namespace xcodhost
