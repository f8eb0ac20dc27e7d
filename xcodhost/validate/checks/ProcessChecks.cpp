#include "Groups.h"

#include "DisplayText.h"
#include "process/ChildProcess.h"
#include "sandbox/OutsideWrites.h"
#include "validate/CheckRun.h"

#include <macplatform/FileDescriptor.h>

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace xcodhost {

namespace fs = std::filesystem;

namespace {

/// Uses one instance from its creation to its last Release: both events for known and unknown products,
/// and a rejected call.
void liveOnce(CheckRun& run) {
    run.WatchVolume(false);
    for (const std::int32_t product : {4900, 3100, 1234}) {
        for (const std::uint16_t message : {kPreInstall, kPostInstall}) run.Deliver(Event(message, product));
    }
    run.Deliver({std::uint16_t{7}, kPostInstall, 4900, 0});
    run.ReleaseInterface();
}

/// The first runs may allocate memory that stays, for example buffers of the C library.
void noMemoryGrows(CheckRun& run) {
    constexpr std::size_t lives = 50;
    constexpr std::size_t smallestBlock = 32; // caches of the C library may grow by a few blocks of this size
    for (std::size_t i = 0; i < lives; ++i) liveOnce(run);
    run.ForgetObjects();
    const std::size_t before = mallinfo2().uordblks;
    for (std::size_t i = 0; i < lives; ++i) liveOnce(run);
    const std::size_t after = mallinfo2().uordblks;
    const auto left = run.ObjectsLeft();
    run.Expect(left.empty(), std::to_string(lives) + " further runs leave no platform object",
               Counted(left.size(), "object"));
    run.Expect(after < before + lives * smallestBlock,
               std::to_string(lives) + " further runs leave no memory allocated",
               Counted(after - before, "byte") + " left");
}

std::size_t entriesOf(const char* folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

void noProcessIsLeft(CheckRun& run) {
    liveOnce(run);
    const std::size_t children = ChildrenOfThisProcess().size();
    run.Expect(children == 0, "no process is started",
               std::to_string(children) + (children == 1 ? " process" : " processes"));
}

void noThreadIsLeft(CheckRun& run) {
    run.Interface();
    const std::size_t before = entriesOf("/proc/self/task");
    liveOnce(run);
    const std::size_t after = entriesOf("/proc/self/task");
    run.Expect(after == before, "no thread is started", Counted(after - before, "thread") + " started");
}

/// Returns the numbers of the open descriptors. They include the descriptor that reads the directory.
std::set<std::string> descriptors() {
    std::set<std::string> numbers;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) numbers.insert(entry.path().filename());
    return numbers;
}

void descriptorsAreClosed(CheckRun& run) {
    run.Interface();
    const auto before = descriptors();
    liveOnce(run);
    const auto after = descriptors();
    run.Expect(after == before, Counted(before.size(), "open file descriptor"), std::to_string(after.size()));
}

struct ProcessState {
    std::string folder = fs::current_path().string();
    mode_t mask = umask(0);
    std::string locale = std::setlocale(LC_ALL, nullptr);
    std::vector<struct sigaction> signals;

    ProcessState() {
        umask(mask);
        for (int number = 1; number < 32; ++number) {
            signals.emplace_back();
            sigaction(number, nullptr, &signals.back());
        }
    }
};

void processStateStays(CheckRun& run) {
    run.Interface();
    const ProcessState before;
    liveOnce(run);
    const ProcessState after;
    run.Expect(after.folder == before.folder, "working directory " + before.folder, after.folder);
    run.Expect(after.mask == before.mask, "file mode mask " + Hex(before.mask, 4), Hex(after.mask, 4));
    run.Expect(after.locale == before.locale, "locale " + before.locale, after.locale);
    for (std::size_t i = 0; i < before.signals.size(); ++i) {
        run.Expect(after.signals[i].sa_handler == before.signals[i].sa_handler, "unchanged signal handlers",
                   "another handler for signal " + std::to_string(i + 1));
    }
}

/// Redirects standard output and standard error to a file. The destructor restores both.
class CapturedOutput {
public:
    explicit CapturedOutput(std::string path) : file(std::move(path)) {
        (void)std::fflush(nullptr);
        const macplatform::FileDescriptor target(
            open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
        output = macplatform::FileDescriptor(dup(STDOUT_FILENO));
        error = macplatform::FileDescriptor(dup(STDERR_FILENO));
        dup2(target.Get(), STDOUT_FILENO);
        dup2(target.Get(), STDERR_FILENO);
    }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    ~CapturedOutput() {
        (void)std::fflush(nullptr);
        dup2(output.Get(), STDOUT_FILENO);
        dup2(error.Get(), STDERR_FILENO);
    }

private:
    std::string file;
    macplatform::FileDescriptor output;
    macplatform::FileDescriptor error;
};

void nothingIsPrinted(CheckRun& run) {
    const std::string file = run.Volume() + " output";
    {
        const CapturedOutput captured(file);
        liveOnce(run);
    }
    const auto size = static_cast<std::size_t>(fs::file_size(file));
    std::string start(std::min<std::size_t>(size, 200), '\0');
    std::ifstream(file, std::ios::binary).read(start.data(), static_cast<std::streamsize>(start.size()));
    run.Expect(size == 0, "nothing is printed", Counted(size, "byte") + ": " + PrintableQuoted(start));
}

void nothingIsWrittenOutside(CheckRun& run) {
    const std::string folder = run.Volume() + " watched";
    fs::create_directory(folder);
    const auto runWatched = [&](const Channel& channel, const std::function<void()>& watch) {
        try {
            CheckRun inner({run.BundlePath(), folder, run.Place().isTraced}, channel);
            watch();
            liveOnce(inner);
        } catch (const RunStopped&) { // the finding is already reported
        }
    };
    const WatchedRun watched = WatchWrites(folder, run.Parent(), runWatched);
    if (!watched.problem.empty()) run.Skip(watched.problem);
    for (const std::string& call : watched.calls) run.Fail("nothing is written outside the volume", call);
}

} // namespace

void NoObjectIsLeft(CheckRun& run) {
    run.Bundle();
    run.ForgetObjects();
    liveOnce(run);
    for (const std::string& object : run.ObjectsLeft()) {
        run.Fail("every platform object is released", object);
    }
}

const std::vector<Check::Body> kNeedsEvents = {&PreInstallReturns, &PostInstallReturns,
                                               &LastReleaseReturnsZero};

const CheckGroup kProcessChecks = {
    "process",
    {
        Check("objects", &NoObjectIsLeft,
              {&PreInstallReturns, &PostInstallReturns, &LastReleaseReturnsZero, &LastReleaseFrees})
            .Claim("The plug-in releases every platform object by the time of its last Release.")
            .Reason("Platform objects are strings, numbers, URLs, Memory Manager blocks and others. The "
                    "report names each object that is left."),
        Check("growth", &noMemoryGrows, {&NoObjectIsLeft, &noThreadIsLeft})
            .Claim("Further runs in the same process leak no object and no memory.")
            .Reason("Installers of several products call the plug-in many times."),
        Check("processes", &noProcessIsLeft, kNeedsEvents)
            .Claim("The plug-in starts no process.")
            .Reason("A process would outlive the installation."),
        Check("threads", &noThreadIsLeft, kNeedsEvents)
            .Claim("The plug-in starts no thread.")
            .Reason("The installer unloads the code that the thread runs."),
        Check("descriptors", &descriptorsAreClosed, kNeedsEvents)
            .Claim("The plug-in closes every file that it opens.")
            .Reason("The installer's process continues to run."),
        Check("state", &processStateStays, kNeedsEvents)
            .Claim("The plug-in keeps the working directory, the file mode mask, the locale and the signal "
                   "handlers.")
            .Reason("They belong to the installer and to its other plug-ins."),
        Check("silent", &nothingIsPrinted, kNeedsEvents)
            .Claim("The plug-in prints nothing.")
            .Reason("The output streams belong to the installer."),
    }};

const CheckGroup kVolumeChecks = {
    "volume",
    {
        Check("nothing-outside", &nothingIsWrittenOutside, kNeedsEvents)
            .Claim("The plug-in writes nothing outside the startup volume.")
            .Reason("The check examines every system call of the plug-in and its child processes that "
                    "creates, changes or removes an item."),
    }};

} // namespace xcodhost
