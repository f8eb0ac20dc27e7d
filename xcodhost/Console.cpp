#include "Console.h"

#include "DisplayText.h"
#include "ExitStatus.h"
#include "process/Interruption.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace xcodhost {

namespace {

bool writeAll(int descriptor, const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(descriptor, text.data() + written, text.size() - written);
        if (count >= 0) {
            written += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace

void PrepareStandardStreams() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        // `open` returns the lowest free number, which is this descriptor.
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) std::_Exit(70);
    }
    SetSignalEffect(SIGPIPE, SIG_IGN);
}

void WriteResult(const std::string& text) {
    if (!writeAll(STDOUT_FILENO, text) && errno != EPIPE) {
        throw ToolFault::FromErrno("standard output: cannot write the result");
    }
}

void WriteError(const std::string& text) { writeAll(STDERR_FILENO, text); }

void Note(const std::string& line) { WriteError("xcodhost: " + Printable(line) + '\n'); }

Style::Style() : isColoured(isatty(STDOUT_FILENO) == 1) {
    const char* noColour = std::getenv("NO_COLOR");
    if (noColour && *noColour) isColoured = false;
}

std::string Style::Wrapped(const char* code, const std::string& text) const {
    return isColoured ? std::string("\x1B[") + code + 'm' + text + "\x1B[0m" : text;
}

} // namespace xcodhost
