#include "OutsideWrites.h"

#include "DisplayText.h"
#include "WritingCalls.h"
#include "process/Interruption.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace xcodhost {

namespace fs = std::filesystem;

namespace {

using Stop = __ptrace_syscall_info;

/// Installs a filter with which the kernel stops this process at each writing call. Other calls run at full
/// speed. Returns false if the kernel rejects the filter.
bool stopAtWritingCalls() {
    std::vector<sock_filter> program = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const WritingCall& call : WritingCalls()) {
        program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call.number), 0, 1));
        program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
    }
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &filter) == 0;
}

std::string linkOf(pid_t process, const std::string& what) {
    std::error_code ignored;
    return fs::read_symlink("/proc/" + std::to_string(process) + '/' + what, ignored).string();
}

/// Supervises a traced child and its descendants, and records their writes outside the allowed directory.
class Watch {
public:
    Watch(pid_t tracedChild, std::string allowedFolder)
        : child(tracedChild), allowed(std::move(allowedFolder)) {}

    /// Serves the stops until the child ends. Returns the child's status from waitpid.
    int Serve() {
        constexpr long options = PTRACE_O_TRACESECCOMP | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                                 PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL;
        while (true) {
            int status = 0;
            const pid_t process = waitpid(-1, &status, __WALL);
            if (process < 0 && errno == EINTR) continue;
            if (process < 0 || (process == child && !WIFSTOPPED(status))) return status;
            if (!WIFSTOPPED(status)) continue;
            const int event = status >> 16;
            int signal = event != 0 || WSTOPSIG(status) == SIGSTOP ? 0 : WSTOPSIG(status);
            if (!isOn && process == child) {
                isOn = ptrace(PTRACE_SETOPTIONS, process, 0, options) == 0;
            } else if (event == PTRACE_EVENT_SECCOMP) {
                Inspect(process);
            }
            ptrace(PTRACE_CONT, process, 0, signal);
        }
    }

    std::vector<std::string> calls;

private:
    void Inspect(pid_t process) {
        Stop stop{};
        if (ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof stop, &stop) <= 0) return;
        const auto& all = WritingCalls();
        const auto call = std::find_if(all.begin(), all.end(), [&](const WritingCall& one) {
            return static_cast<std::uint64_t>(one.number) == stop.seccomp.nr;
        });
        if (call == all.end()) return;
        if (call->flags >= 0 && !Writes(static_cast<int>(Argument(stop, call->flags)))) return;
        const std::string path = PathOf(process, stop, call->first);
        if (CanChange(*call, path)) VerdictOf(*call, path);
        VerdictOf(*call, PathOf(process, stop, call->second));
    }

    static bool Writes(int flags) {
        return (flags & O_ACCMODE) != O_RDONLY || (flags & (O_CREAT | O_TRUNC)) != 0;
    }
    static std::uint64_t Argument(const Stop& stop, int place) { return stop.seccomp.args[place]; }

    /// Records the call if its path is outside the allowed directory. Records equal calls once.
    void VerdictOf(const WritingCall& call, const std::string& path) {
        if (path.empty() || IsAllowed(path)) return;
        std::string text = std::string(call.name) + ' ' + PrintableQuoted(path);
        if (std::find(calls.begin(), calls.end(), text) == calls.end()) calls.push_back(std::move(text));
    }

    /// Returns whether the call can change the item, which depends on whether the item exists.
    static bool CanChange(const WritingCall& call, const std::string& path) {
        struct stat status {};
        const bool exists = lstat(path.c_str(), &status) == 0;
        using Effect = WritingCall::Effect;
        return call.effect == Effect::kAlways || exists == (call.effect == Effect::kOnItem);
    }

    /// Returns the absolute path of a target. Returns an empty string if the call has no such target.
    static std::string PathOf(pid_t process, const Stop& stop, const WritingCall::Target& target) {
        if (target.folder < 0 && target.path < 0) return {};
        const auto folder = [&]() -> std::string {
            const int number = target.folder < 0 ? AT_FDCWD : static_cast<int>(Argument(stop, target.folder));
            return linkOf(process, number == AT_FDCWD ? "cwd" : "fd/" + std::to_string(number));
        };
        if (target.path < 0) return folder();
        const std::string path = ReadText(process, Argument(stop, target.path));
        return path.empty() || path.front() == '/' ? path : folder() + '/' + path;
    }

    static std::string ReadText(pid_t process, std::uint64_t address) {
        std::string text(PATH_MAX, '\0');
        iovec here{text.data(), text.size()};
        // NOLINTNEXTLINE(performance-no-int-to-ptr): an address of the other process
        iovec there{reinterpret_cast<void*>(static_cast<std::uintptr_t>(address)), text.size()};
        ssize_t count = process_vm_readv(process, &here, 1, &there, 1, 0);
        // Reads less if the next page is not mapped.
        for (std::size_t size = 256; count < 0 && size > 0; size /= 2) {
            there.iov_len = size;
            count = process_vm_readv(process, &here, 1, &there, 1, 0);
        }
        return text.substr(0, strnlen(text.c_str(), count < 0 ? 0 : static_cast<std::size_t>(count)));
    }

    /// Resolves links in the directory of the path, but not the last name: the call may create
    /// or remove a link.
    bool IsAllowed(const std::string& path) const {
        if (path == "/dev/null" || path == "/dev/tty") return true;
        std::error_code error;
        const fs::path named = fs::path(path).lexically_normal();
        const fs::path real = fs::weakly_canonical(named.parent_path(), error) / named.filename();
        const std::string text = error ? named.string() : real.string();
        return text == allowed || text.compare(0, allowed.size() + 1, allowed + '/') == 0;
    }

    pid_t child;
    std::string allowed;
    bool isOn = false;
};

[[noreturn]] void dieAs(int status) {
    if (WIFSIGNALED(status)) EndBySignal(WTERMSIG(status));
    _exit(WEXITSTATUS(status));
}

// Exit statuses of the child that only this file uses.
constexpr int kBodyDone = 86;
constexpr int kCannotWatch = 87;

} // namespace

WatchedRun WatchWrites(const std::string& folder, const Channel& channel, const WatchedBody& run) {
    const pid_t child = fork();
    if (child < 0) return {{}, std::string("fork: ") + std::strerror(errno)};
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, 0, 0) < 0) _exit(kCannotWatch);
        if (raise(SIGSTOP) != 0) _exit(kCannotWatch);
        run(channel.OfThisProcess(), [] {
            if (!stopAtWritingCalls()) _exit(kCannotWatch);
        });
        _exit(kBodyDone);
    }
    std::error_code ignored;
    Watch watch(child, fs::canonical(folder, ignored).string());
    const int status = watch.Serve();
    if (WIFEXITED(status) && WEXITSTATUS(status) == kCannotWatch) {
        return {{}, "ptrace and seccomp: this machine does not permit tracing"};
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != kBodyDone) dieAs(status);
    return {std::move(watch.calls), {}};
}

} // namespace xcodhost
