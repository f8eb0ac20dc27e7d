#include "DesktopAlert.h"

#include "AlertResponder.h"
#include "DialogProcess.h"
#include "DisplayText.h"
#include "ExitStatus.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace xcodhost {

namespace {

using Kind = DialogProgram::Kind;
using Texts = std::vector<std::string>;

// Limits for a screen of 1024 by 768 pixels. Widths are in bytes, because characters of several bytes are
// often wider than others.
constexpr std::size_t kLineWidth = 80;
constexpr std::size_t kMostLines = 24;
constexpr std::size_t kRowWidth = 130;
constexpr std::size_t kNarrowestButton = 12;

// Exit statuses. The tool chooses those of yad's buttons (from 100) and of zenity's closed window, so that
// they differ from the statuses of failures. yad itself returns 252 for a closed window.
constexpr int kFirstButton = 100;
constexpr int kYadClosed = 252;
constexpr int kZenityClosed = 101;

/// The zero-width space, which ends each title. A title that equals the name of a stock button would
/// otherwise show the text and the icon of the stock button. In zenity the number of marks at the end
/// identifies the button.
constexpr std::string_view kMark = "\xE2\x80\x8B";

const char* nameOf(Kind kind) {
    return kind == Kind::kYad ? "yad" : kind == Kind::kZenity ? "zenity" : "kdialog";
}

/// Returns the path of a program. Returns an empty string if no absolute directory of PATH has the program.
std::string findInPath(const std::string& name) {
    const char* variable = std::getenv("PATH");
    std::string_view path = variable ? variable : "";
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(':'), path.size());
        std::string file = std::string(path.substr(0, end)) + '/' + name;
        struct stat info {};
        if (file[0] == '/' && end > 0 && stat(file.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
            access(file.c_str(), X_OK) == 0) {
            return file;
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return {};
}

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value;
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// Removes one line from the front of `rest` and returns the line. Breaks at a space if there is one, and
/// never inside a character.
std::string nextLine(std::string_view& rest) {
    if (rest.size() <= kLineWidth) return std::string(std::exchange(rest, {}));
    std::size_t end = rest.rfind(' ', kLineWidth);
    if (end == std::string_view::npos || end == 0) {
        for (end = kLineWidth; (static_cast<unsigned char>(rest[end]) & 0xC0) == 0x80;) --end;
    }
    std::string line(rest.substr(0, end));
    rest.remove_prefix(rest[end] == ' ' ? end + 1 : end);
    return line;
}

/// Returns the message as lines that fit the screen. The programs do not break long words.
Texts linesOf(const std::string& message) {
    Texts lines;
    std::string_view rest = message;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::string paragraph = Printable(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        std::string_view left = paragraph;
        do {
            if (lines.size() == kMostLines) {
                lines.emplace_back("[...]");
                return lines;
            }
            lines.push_back(nextLine(left));
        } while (!left.empty());
    }
    return lines;
}

bool fitARow(const Texts& buttons) {
    std::size_t width = 0;
    for (const std::string& title : buttons) width += std::max(title.size(), kNarrowestButton);
    return width <= kRowWidth;
}

/// Returns a button's label, which ends with `marks` marks. Doubles each underscore, because a single
/// underscore marks the next letter as the key of the button.
std::string buttonLabel(const std::string& title, std::size_t marks) {
    std::string label = replaced(replaced(Printable(title), kMark, ""), "_", "__");
    for (std::size_t i = 0; i < marks; ++i) label += kMark;
    return label;
}

Texts yadCommand(const std::string& path, const Texts& lines, const Texts& buttons) {
    // yad interprets backslashes in its text, and cuts titles at "!" unless another separator is given.
    Texts command{path,
                  "--title=xcodhost",
                  "--center",
                  "--image=dialog-question",
                  "--no-markup",
                  "--item-separator=\x01",
                  "--text=" + replaced(Join(lines, "\n"), "\\", "\\\\")};
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        command.push_back("--button=" + buttonLabel(buttons[i], 1) + ':' +
                          std::to_string(kFirstButton + static_cast<int>(i)));
    }
    return command;
}

Texts zenityCommand(const std::string& path, const Texts& lines, const Texts& buttons) {
    Texts command{path,          "--question",       "--switch",
                  "--no-markup", "--title=xcodhost", "--text=" + Join(lines, "\n")};
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        command.push_back("--extra-button=" + buttonLabel(buttons[i], i + 1));
    }
    return command;
}

/// Returns the command for a list. kdialog has rows of up to three buttons, but reports a closed window as
/// one of these buttons.
Texts kdialogCommand(const std::string& path, const Texts& lines, const Texts& buttons) {
    std::string text = replaced(Join(lines, "\n"), "&", "&amp;");
    text = replaced(replaced(std::move(text), "<", "&lt;"), "\\", "&#92;");
    Texts command{
        path, "--title", "xcodhost", "--menu", "<qt>" + replaced(std::move(text), "\n", "<br>") + "</qt>",
        "--"};
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        command.push_back(std::to_string(i));
        command.push_back(Printable(buttons[i]));
    }
    return command;
}

Texts commandFor(const DialogProgram& program, const Texts& lines, const Texts& buttons) {
    switch (program.kind) {
    case Kind::kYad: return yadCommand(program.path, lines, buttons);
    case Kind::kZenity: return zenityCommand(program.path, lines, buttons);
    default: return kdialogCommand(program.path, lines, buttons);
    }
}

std::size_t countMarks(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(kMark, at)) != std::string_view::npos; at += kMark.size()) {
        ++count;
    }
    return count;
}

/// Returns the index of the chosen button, -1 if the window was closed, or no value if the program failed.
std::optional<int> choiceOf(Kind kind, const DialogResult& end, std::size_t count) {
    const int status = WIFEXITED(end.status) ? WEXITSTATUS(end.status) : -1;
    int choice = -1;
    switch (kind) {
    case Kind::kYad:
        if (status == kYadClosed) return -1;
        choice = status - kFirstButton;
        break;
    case Kind::kZenity:
        // An extra button and a closed window give the same status. Only a button writes its title.
        if (status == kZenityClosed && end.output.empty()) return -1;
        choice = static_cast<int>(countMarks(end.output)) - 1;
        break;
    case Kind::kKdialog:
        if (status == 1 && end.output.empty()) return -1;
        if (status == 0) std::from_chars(end.output.data(), end.output.data() + end.output.size(), choice);
        break;
    }
    if (choice < 0 || static_cast<std::size_t>(choice) >= count) return std::nullopt;
    return choice;
}

std::string failureOf(Kind kind, const DialogResult& end) {
    std::string text = nameOf(kind);
    text += WIFEXITED(end.status) ? " ended with exit status " + std::to_string(WEXITSTATUS(end.status))
                                  : " was killed by signal " + std::to_string(WTERMSIG(end.status));
    return end.lastError.empty() ? text : text + ": " + Printable(end.lastError);
}

} // namespace

std::vector<DialogProgram> FindDialogPrograms() {
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY")) {
        throw UsageError("--answers desktop: no display: neither DISPLAY nor WAYLAND_DISPLAY is set; "
                         "use ask, first, or the titles of buttons");
    }
    std::vector<DialogProgram> programs;
    for (const Kind kind : {Kind::kYad, Kind::kZenity, Kind::kKdialog}) {
        std::string path = findInPath(nameOf(kind));
        if (!path.empty()) programs.push_back({kind, std::move(path)});
    }
    if (programs.empty()) {
        throw UsageError("--answers desktop: PATH has none of yad, zenity, kdialog; install one of them, or "
                         "use ask, first, or the titles of buttons");
    }
    return programs;
}

AlertAnswer ShowOnDesktop(const std::vector<DialogProgram>& programs, const std::string& message,
                          const std::vector<std::string>& buttons, const Interruption& interruption) {
    const Texts lines = linesOf(message);
    Texts failures;
    for (const DialogProgram& program : programs) {
        if (program.kind != Kind::kKdialog && !fitARow(buttons)) continue;
        // In a locale that is not UTF-8 the programs reject or garble the texts.
        const DialogResult end = RunDialog(commandFor(program, lines, buttons),
                                           {{"LC_ALL", "C.UTF-8"}, {"ZENITY_ESC", "101"}}, interruption);
        const std::optional<int> choice = choiceOf(program.kind, end, buttons.size());
        if (choice) return {*choice, *choice < 0 ? "its window was closed" : ""};
        failures.push_back(failureOf(program.kind, end));
    }
    if (failures.empty()) return {-1, "the buttons are too wide for one row in yad and zenity"};
    return {-1, Join(failures, "; ")};
}

} // namespace xcodhost
