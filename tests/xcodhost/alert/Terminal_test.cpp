// Alerts asked on a real terminal.

#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <gmock/gmock.h>

#include <pty.h>

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// The tool at a terminal of its own, which also shows standard error; standard output goes to a file.
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

    /// All that was shown since the last call, up to this text, or up to the end when it never comes.
    std::string ShownUntil(const std::string& text) const {
        std::string shown;
        char c = 0;
        while (shown.find(text) == std::string::npos && read(terminal, &c, 1) == 1) shown += c;
        return shown;
    }
    void Type(const std::string& keys) const {
        EXPECT_EQ(write(terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    /// waitpid's status once the tool has ended.
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

TEST(Terminal, AsksAgainUntilAButtonIsNamed) {
    TerminalRun run;
    EXPECT_THAT(run.ShownUntil(kPrompt), HasSubstr("Alert \"Go on?\"\r\n  1  Yes\r\n  2  No\r\n"));
    run.Type("3\n");
    EXPECT_THAT(run.ShownUntil(kPrompt), HasSubstr("There is no button \"3\"."));
    run.Type("No\n");
    EXPECT_THAT(run.Report(), HasSubstr("[Yes] [No]: No\n"));
}

TEST(Terminal, TreatsTheEndOfTheInputAsNotShown) {
    TerminalRun run;
    run.ShownUntil(kPrompt);
    run.Type("\x04");
    EXPECT_THAT(run.Report(), HasSubstr("[Yes] [No]: not shown, nobody answered\n"));
}

TEST(Terminal, EndsTheRunAtCtrlC) {
    TerminalRun run;
    run.ShownUntil(kPrompt);
    run.Type("\x03");
    const int status = run.End();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_THAT(run.Report(), IsEmpty());
    EXPECT_TRUE(run.LeftNothing()) << "the scratch volume is left";
}

} // namespace
