#include "ExitStatus.h"

#include <cerrno>
#include <cstring>

namespace xcodhost {

ToolFault ToolFault::FromErrno(const std::string& action) {
    const int number = errno;
    return ToolFault(action + ": " + std::strerror(number));
}

} // namespace xcodhost
