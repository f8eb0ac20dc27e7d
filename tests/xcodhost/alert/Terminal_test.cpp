// Tests of alerts that the user answers on a real terminal.

#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <gmock/gmock.h>

#include <pty.h>

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// The tool on a terminal of its own. Standard error goes to the terminal, standard output to a file.
class TerminalRun {
public:
    TerminalRun() {
        const std::string out = (folder / "out").string();
        const std::string scratch = (folder / "scratch").string();
        std::filesystem::create_directory(scratch);
        std::fflush(nullptr);
        tool = forkpty(&terminal, nullptr, nullptr, nullptr);
        if (tool != 0) return;
        setenv("TMPDIR", scratch.c_str(), 1);
        if (!std::freopen(out.c_str(), "w", stdout)) _exit(127);
        execl(XCODHOST, XCODHOST, "run", bundle.Path().c_str(), "--product", "12", "--event", "pre",
              "--timeout", "5", nullptr);
        _exit(127);
    }
    TerminalRun(const TerminalRun&) = delete;
    TerminalRun& operator=(const TerminalRun&) = delete;
    ~TerminalRun() {
        End();
        close(terminal);
    }

    /// Returns the output since the last call up to and including `text`, or all output if `text` is not
    /// in the output.
    std::string ShownUntil(const std::string& text) const {
        std::string shown;
        char c = 0;
        while (shown.find(text) == std::string::npos && read(terminal, &c, 1) == 1) shown += c;
        return shown;
    }
    void Type(const std::string& keys) const {
        EXPECT_EQ(write(terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    /// Waits for the end of the tool and returns its status as waitpid reports it.
    int End() {
        if (!hasEnded) {
            ShownUntil("the end");
            waitpid(tool, &status, 0);
        }
        hasEnded = true;
        return status;
    }
    std::string Report() {
        End();
        return ReadBytes(folder / "out");
    }
    bool LeftNothing() const { return std::filesystem::is_empty(folder / "scratch"); }

private:
    TemporaryFolder folder;
    TestBundle bundle;
    pid_t tool = -1;
    int terminal = -1;
    int status = 0;
    bool hasEnded = false;
};

constexpr const char* kPrompt = "Button [1]: ";

TEST(Terminal, AsksAgainAfterAnUnknownButton) {
    TerminalRun run;
    EXPECT_THAT(run.ShownUntil(kPrompt), HasSubstr("Alert \"Go on?\"\r\n  1  Yes\r\n  2  No\r\n"));
    run.Type("3\n");
    EXPECT_THAT(run.ShownUntil(kPrompt), HasSubstr("no button \"3\"; enter a number or a title"));
    run.Type("No\n");
    EXPECT_THAT(run.Report(), HasSubstr("[Yes] [No]: No\n"));
}

TEST(Terminal, CountsTheEndOfTheInputAsNotShown) {
    TerminalRun run;
    run.ShownUntil(kPrompt);
    run.Type("\x04");
    EXPECT_THAT(run.Report(), HasSubstr("[Yes] [No]: not shown, no button was chosen\n"));
}

TEST(Terminal, InterruptsTheRunAtCtrlC) {
    TerminalRun run;
    run.ShownUntil(kPrompt);
    run.Type("\x03");
    const int status = run.End();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_THAT(run.Report(), IsEmpty());
    EXPECT_TRUE(run.LeftNothing()) << "the scratch volume still exists";
}

} // namespace
