#include "BlockFile.h"

#include "DisplayText.h"
#include "ExitStatus.h"

#include <macplatform/FileDescriptor.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace xcodhost {

namespace {

constexpr std::size_t kLongest = std::size_t{1} << 20;

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw UsageError("--block: " + Printable(path) + ": " + reason);
}

/// Returns the bytes of the file, but at most one byte more than the longest block.
std::vector<char> readStart(int descriptor, const std::string& path) {
    std::vector<char> bytes(kLongest + 1);
    std::size_t size = 0;
    while (size < bytes.size()) {
        const ssize_t count = read(descriptor, bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) refuse(path, std::strerror(errno));
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
    }
    bytes.resize(size);
    return bytes;
}

} // namespace

ParameterBlock ReadBlockFile(const std::string& path) {
    // Without O_NONBLOCK the open of a pipe would wait for a writer.
    const macplatform::FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) refuse(path, std::strerror(errno));
    struct stat status {};
    if (fstat(file.Get(), &status) < 0 || !S_ISREG(status.st_mode)) refuse(path, "not a file");
    std::vector<char> bytes = readStart(file.Get(), path);
    if (bytes.size() < ParameterBlock::kSize) {
        refuse(path, std::to_string(bytes.size()) + " bytes; a parameter block has at least " +
                         std::to_string(ParameterBlock::kSize));
    }
    if (bytes.size() > kLongest) refuse(path, "longer than 1048576 bytes");
    return ParameterBlock(std::move(bytes));
}

} // namespace xcodhost
