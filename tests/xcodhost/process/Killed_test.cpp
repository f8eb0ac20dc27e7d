// Tests that the tool leaves no processes and no files if a signal kills the tool during its work.

#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <poll.h>
#include <sys/syscall.h>

namespace {

std::vector<pid_t> childrenOf(pid_t process) {
    const std::string id = std::to_string(process);
    std::ifstream list("/proc/" + id + "/task/" + id + "/children");
    return {std::istream_iterator<pid_t>(list), {}};
}

std::vector<pid_t> descendantsOf(pid_t process) {
    std::vector<pid_t> all = childrenOf(process);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::vector<pid_t> children = childrenOf(all[i]);
        all.insert(all.end(), children.begin(), children.end());
    }
    return all;
}

/// Starts the tool with a bundle that starts a process in another session and hangs. Waits until all
/// processes exist. Returns the process of the tool and sets `descendants` to the other processes.
pid_t startHanging(const std::string& bundle, const std::string& scratch, std::vector<pid_t>& descendants) {
    const pid_t tool =
        StartHost({"validate", bundle, "--include", "dispatch.post-install", "--timeout", "600"},
                  {"/dev/null", "/dev/null", "/dev/null"}, scratch);
    constexpr std::size_t supervisorCheckAndOrphan = 3;
    while (descendants.size() < supervisorCheckAndOrphan && waitpid(tool, nullptr, WNOHANG) == 0) {
        descendants = descendantsOf(tool);
        sched_yield();
    }
    return tool;
}

class AKilledTool : public testing::TestWithParam<int> {};

TEST_P(AKilledTool, LeavesNoProcessAndNoFile) {
    const CorpusBundle bundle("Hang");
    const TemporaryFolder scratch;
    std::vector<pid_t> descendants;
    const pid_t tool = startHanging(bundle.Path(), scratch.Path(), descendants);
    std::vector<pollfd> ends;
    for (const pid_t process : descendants) {
        ends.push_back({static_cast<int>(syscall(SYS_pidfd_open, process, 0)), POLLIN, 0});
        ASSERT_GE(ends.back().fd, 0);
    }
    kill(tool, GetParam());
    int status = 0;
    waitpid(tool, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == GetParam()) << status;
    for (pollfd& end : ends) {
        EXPECT_EQ(poll(&end, 1, 60'000), 1) << "a process still runs";
        close(end.fd);
    }
    EXPECT_TRUE(std::filesystem::is_empty(scratch.Path())) << "the scratch volume still exists";
}

INSTANTIATE_TEST_SUITE_P(Killed, AKilledTool, testing::Values(SIGKILL, SIGTERM, SIGINT),
                         [](const auto& row) { return "By" + std::string(sigabbrev_np(row.param)); });

} // namespace
