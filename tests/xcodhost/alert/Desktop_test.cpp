// Tests of alerts in a real window on a real X server, answered with the mouse and the keyboard.

#include "support/HostTool.h"
#include "support/TestBundle.h"
#include "support/Variable.h"

#include <gmock/gmock.h>

#include <csignal>

using testing::HasSubstr;

namespace {

/// A program in a process group of its own. The destructor kills the group.
class Background {
public:
    Background(const std::vector<const char*>& command, int passedDescriptor = -1) : id(fork()) {
        if (id != 0) return;
        setpgid(0, 0);
        if (passedDescriptor >= 0) dup2(passedDescriptor, 3);
        std::vector<char*> argv;
        for (const char* argument : command) argv.push_back(const_cast<char*>(argument));
        argv.push_back(nullptr);
        if (!std::freopen("/dev/null", "w", stderr)) _exit(127);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;
    ~Background() {
        setpgid(id, id);
        kill(-id, SIGKILL);
        waitpid(id, nullptr, 0);
    }

private:
    pid_t id;
};

/// An X server without a visible screen. The server chooses the number of its display.
class Desktop {
public:
    Desktop() {
        if (pipe(numberPipe) != 0) return;
        server.emplace(std::vector<const char*>{"Xvfb", "-displayfd", "3", "-screen", "0", "1024x768x24",
                                                "-nolisten", "tcp", "-noreset"},
                       numberPipe[1]);
        close(numberPipe[1]);
        std::string number = ":";
        for (char c = 0; read(numberPipe[0], &c, 1) == 1 && c != '\n';) number += c;
        close(numberPipe[0]);
        display.emplace("DISPLAY", number.c_str());
        noWayland.emplace("WAYLAND_DISPLAY", nullptr);
        noBus.emplace("NO_AT_BRIDGE", "1");
    }

private:
    int numberPipe[2] = {-1, -1};
    std::optional<Background> server;
    std::optional<Variable> display, noWayland, noBus;
};

/// Sets PATH to a directory with only these programs.
class Installed {
public:
    explicit Installed(const std::vector<std::string>& programs) {
        for (const std::string& program : programs) {
            std::filesystem::create_symlink("/usr/bin/" + program, folder / program);
        }
        path.emplace("PATH", folder.Path().c_str());
    }

private:
    TemporaryFolder folder;
    std::optional<Variable> path;
};

/// Returns a shell command that waits for the window and then runs `action`. In `action`, $window is the
/// window.
std::string onceShown(const std::string& action) {
    return "export PATH=/usr/bin:/bin; "
           "window=$(xdotool search --sync --onlyvisible --name '^xcodhost$' | tail -n 1); " +
           action;
}

/// Returns a shell command that does `action` until the window has gone: a window that was shown a moment ago
/// can miss it.
std::string untilClosed(const std::string& action) {
    return onceShown("while xdotool getwindowname $window; do " + action + "; done >/dev/null 2>&1");
}

/// Returns a shell command that clicks one of `count` buttons. The buttons have equal widths and fill the
/// lower edge of the window.
std::string click(int button, int count) {
    return untilClosed("eval \"$(xdotool getwindowgeometry --shell $window)\"; "
                       "xdotool mousemove $((X + WIDTH * (2 * " +
                       std::to_string(button) + " + 1) / " + std::to_string(2 * count) +
                       ")) $((Y + HEIGHT - 25)) click 1");
}

const std::string kPressEscape = untilClosed("xdotool windowfocus --sync $window key Escape");

HostTool runWith(const std::string& person, std::vector<std::string> arguments,
                 const std::string& scratch = {}) {
    const Background hands({"/bin/sh", "-c", person.c_str()});
    const TestBundle bundle;
    arguments.insert(arguments.begin(), {"run", bundle.Path(), "--event", "pre", "--answers", "desktop",
                                         "--timeout", "5", "--product"});
    return RunHost(arguments, {}, scratch);
}

using Row = std::tuple<const char*, std::pair<int, int>>;

class AWindow : public testing::TestWithParam<Row> {};

TEST_P(AWindow, ReportsTheClickedButton) {
    const auto& [program, clicked] = GetParam();
    const Desktop desktop;
    const Installed installed({program});
    const HostTool run =
        runWith(click(clicked.second, clicked.first), {"18", "--language", std::to_string(clicked.first)});
    EXPECT_THAT(run.out, HasSubstr("0x00000000 -> 0x000" + std::to_string(clicked.second + 1) + "0000"))
        << run.out << run.err;
}

/// The number of buttons, and the index of the clicked button.
const std::pair<int, int> kClicks[] = {{1, 0}, {2, 1}, {3, 1}, {4, 1}, {4, 3}};
std::string nameOf(const testing::TestParamInfo<Row>& row) {
    const auto& [program, clicked] = row.param;
    return program + ("Of" + std::to_string(clicked.first)) + "Click" + std::to_string(clicked.second + 1);
}
INSTANTIATE_TEST_SUITE_P(Desktop, AWindow,
                         testing::Combine(testing::Values("yad", "zenity"), testing::ValuesIn(kClicks)),
                         nameOf);

class AnyProgram : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Desktop, AnyProgram, testing::Values("yad", "zenity"),
                         [](const auto& row) { return row.param; });

TEST_P(AnyProgram, ShowsTextsLiterally) {
    const Desktop desktop;
    const Installed installed({GetParam()});
    const HostTool run = runWith(click(3, 4), {"19"});
    EXPECT_THAT(run.out, HasSubstr("[gtk-ok] [A_B:7] [x!y!z] [--help]: --help\n"));
    EXPECT_THAT(run.out, HasSubstr("0x00000000 -> 0x00040000")) << run.out << run.err;
}

TEST_P(AnyProgram, ReportsAClosedWindowAsNotShown) {
    const Desktop desktop;
    const Installed installed({GetParam()});
    EXPECT_THAT(runWith(kPressEscape, {"12"}).out, HasSubstr(": not shown, its window was closed\n"));
    EXPECT_THAT(runWith(kPressEscape, {"20"}).out, HasSubstr("0x00000000 -> 0xFFFF0000")) << "a stop alert";
}

TEST_P(AnyProgram, EndsWithAnInterruptedRun) {
    const Desktop desktop;
    const Installed installed({GetParam()});
    const TemporaryFolder scratch;
    const std::string note = scratch / "dialog";
    const HostTool run = runWith(onceShown("xdotool getwindowpid $window > '" + note +
                                           "'; kill -TERM $(ps -o ppid= -p $(cat '" + note + "'))"),
                                 {"12"}, scratch.Path());
    EXPECT_TRUE(WIFSIGNALED(run.status) && WTERMSIG(run.status) == SIGTERM) << run.status << run.out;
    const int dialog = std::atoi(ReadBytes(note).c_str());
    ASSERT_GT(dialog, 1);
    EXPECT_EQ(kill(dialog, 0), -1) << "the window still exists";
    std::filesystem::remove(note);
    EXPECT_TRUE(std::filesystem::is_empty(scratch.Path())) << "the scratch volume still exists";
}

TEST(Desktop, TriesTheNextProgramAfterAFailure) {
    const Desktop desktop;
    const Installed installed({"zenity"});
    const TemporaryFolder broken;
    const std::string yad = broken.Write("yad", "#!/bin/sh\necho 'no toolkit' >&2\nexit 1\n");
    std::filesystem::permissions(yad, std::filesystem::perms::owner_all);
    const std::string path = broken.Path().string() + ':' + std::getenv("PATH");
    const Variable both("PATH", path.c_str());
    EXPECT_THAT(runWith(click(1, 2), {"12"}).out, HasSubstr("[Yes] [No]: No\n"));
    const Variable one("PATH", broken.Path().c_str());
    EXPECT_THAT(runWith("", {"12"}).err,
                HasSubstr("was not shown: yad ended with exit status 1: no toolkit"));
    EXPECT_THAT(runWith("", {"18", "--language", "99"}).err,
                HasSubstr("the buttons are too wide for one row"));
}

} // namespace
