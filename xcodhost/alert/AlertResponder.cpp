#include "AlertResponder.h"

#include "Console.h"
#include "DisplayText.h"
#include "ExitStatus.h"
#include "process/Interruption.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace xcodhost {

namespace {

bool isStop(const macplatform::Alert& alert) { return alert.kind == macplatform::Alert::Kind::kStop; }

std::vector<std::string> buttonsOf(const macplatform::Alert& alert) {
    return alert.buttons.empty() ? std::vector<std::string>{"OK"} : alert.buttons;
}

const char* const kNoText = "(its text is in a resource of the installer)";

/// Returns the message that a window shows above its buttons.
std::string messageOf(const macplatform::Alert& alert) {
    return isStop(alert) ? Describe(alert) + '\n' + kNoText : alert.message;
}

std::string question(const macplatform::Alert& alert, const std::vector<std::string>& buttons) {
    std::string text = '\n' + Describe(alert) + '\n';
    if (isStop(alert)) text += std::string("  ") + kNoText + '\n';
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        text += "  " + std::to_string(i + 1) + "  " + Printable(buttons[i]) + '\n';
    }
    return text;
}

/// Returns the index of the button whose title, or whose number from 1, was typed. Returns 0 for an empty
/// line and -1 if there is no such button.
int buttonTyped(const std::string& typed, const std::vector<std::string>& buttons) {
    if (typed.empty()) return 0;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        if (typed == buttons[i] || typed == std::to_string(i + 1)) return static_cast<int>(i);
    }
    return -1;
}

} // namespace

AlertResponder::AlertResponder(AlertPolicy alertPolicy, const Interruption& pendingSignals)
    : policy(std::move(alertPolicy)), interruption(pendingSignals) {}

AlertAnswer AlertResponder::Respond(const macplatform::Alert& alert) {
    if (policy.kind == AlertPolicy::Kind::kAsk) return Ask(alert);
    if (policy.kind == AlertPolicy::Kind::kDesktop) {
        return ShowOnDesktop(policy.programs, messageOf(alert), buttonsOf(alert), interruption);
    }
    if (isStop(alert)) return {-1, "its resource is not available"};
    if (policy.kind == AlertPolicy::Kind::kFirst) return {0, {}};
    return NextTitle(alert);
}

AlertAnswer AlertResponder::NextTitle(const macplatform::Alert& alert) {
    if (nextTitle == policy.titles.size()) return {-1, "no title is left"};
    const std::string& title = policy.titles[nextTitle++];
    const std::vector<std::string> buttons = buttonsOf(alert);
    const auto button = std::find(buttons.begin(), buttons.end(), title);
    if (button == buttons.end()) return {-1, "it has no button " + PrintableQuoted(title)};
    return {static_cast<int>(button - buttons.begin()), {}};
}

AlertAnswer AlertResponder::Ask(const macplatform::Alert& alert) {
    const std::vector<std::string> buttons = buttonsOf(alert);
    WriteError(question(alert, buttons));
    std::string line;
    while (true) {
        WriteError("Button [1]: ");
        if (!ReadLine(line)) return {-1, "no button was chosen"};
        const int button = buttonTyped(line, buttons);
        if (button >= 0) return {button, {}};
        WriteError("no button " + PrintableQuoted(line) + "; enter a number or a title\n");
    }
}

/// Reads a line without its line feed. Returns false at the end of the input, and after ten seconds without
/// input unless standard input is a terminal. Throws Interrupted if a signal arrives meanwhile.
bool AlertResponder::ReadLine(std::string& line) {
    while (true) {
        const std::size_t end = bufferedInput.find('\n');
        if (end != std::string::npos) {
            line = bufferedInput.substr(0, end);
            bufferedInput.erase(0, end + 1);
            return true;
        }
        std::array<pollfd, 2> waits{{{STDIN_FILENO, POLLIN, 0}, {interruption.Descriptor(), POLLIN, 0}}};
        const int ready = poll(waits.data(), waits.size(), isatty(STDIN_FILENO) ? -1 : 10000);
        if (ready < 0 && errno != EINTR)
            throw ToolFault::FromErrno("standard input: cannot wait for an answer");
        if (ready == 0) return false;
        interruption.Check();
        std::array<char, 256> bytes{};
        const ssize_t count = waits[0].revents != 0 ? read(STDIN_FILENO, bytes.data(), bytes.size()) : -1;
        if (count == 0 || (count < 0 && waits[0].revents != 0 && errno != EINTR && errno != EAGAIN))
            return false;
        if (count > 0) bufferedInput.append(bytes.data(), static_cast<std::size_t>(count));
    }
}

std::string Describe(const macplatform::Alert& alert) {
    if (isStop(alert)) return "Stop alert " + std::to_string(alert.resource);
    return "Alert " + PrintableQuoted(alert.message);
}

} // namespace xcodhost
