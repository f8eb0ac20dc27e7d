// Tests with a system call tracer that a run changes nothing outside its volume and reads nothing that a link
// on the volume points to.

#include "support/FaultTally.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <regex>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

const char kUpdater[] = "Library/Preferences/com.korvane.updater.plist";
const char kStatusFolder[] = "Library/Application Support/Korvane/Updater";

bool isBelow(const std::string& path, const std::string& folder) {
    return path.rfind(folder + '/', 0) == 0 || path == folder;
}

/// One line of the trace. The other members are empty unless the call succeeded.
struct Call {
    std::string line, name, arguments, opened;

    explicit Call(const std::string& traced) : line(traced) {
        static const std::regex pattern(R"re(^\d+ +(\w+)\((.*)\) += \d+(?:<(.*)>)?$)re");
        std::smatch parts;
        if (!std::regex_match(line, parts, pattern)) return;
        name = parts[1];
        arguments = parts[2];
        opened = parts[3];
    }

    /// Returns the paths among the arguments as absolute paths. A relative path is appended to the path of
    /// its directory descriptor.
    std::vector<std::string> Paths() const {
        static const std::regex path(R"re((?:<([^<>]*)>, )?"([^"]*)")re");
        std::vector<std::string> paths;
        for (std::sregex_iterator it(arguments.begin(), arguments.end(), path), end; it != end; ++it) {
            const std::string text = (*it)[2];
            paths.push_back(text.rfind('/', 0) == 0 ? text : (*it)[1].str() + '/' + text);
        }
        const bool hasOnePath = name.rfind("readlink", 0) == 0 || name.find("xattr") != name.npos;
        if (hasOnePath && !paths.empty()) paths.resize(1); // the other strings are results or values
        return paths;
    }

    /// Returns whether the call can change an item.
    bool Changes() const {
        static const std::regex changing("mkdir.*|rmdir|unlink.*|rename.*|.*link|linkat|symlinkat|.*chmod.*|."
                                         "*chown.*|truncate|mknod.*|utime.*|.*setxattr|.*removexattr");
        if (name.rfind("open", 0) == 0)
            return std::regex_search(arguments, std::regex("O_WRONLY|O_RDWR|O_CREAT"));
        return name.rfind("readlink", 0) != 0 && std::regex_match(name, changing);
    }
};

class HostileVolume : public testing::Test {
protected:
    HostileVolume() {
        folder.Write("outside/secret", "<plist><dict><key>Lang</key><string>secret</string></dict></plist>");
        folder.Write("outside/install_status.txt", "disabled");
        folder.Write("volume/Applications/other");
        folder.Write("volume/Library/other");
    }

    /// Runs the plug-in on the volume and returns the trace.
    std::string Trace() const {
        const std::string trace = (folder / "trace").string(), out = (folder / "out").string();
        // The leak checker is a tracer, too, and a process can have one tracer only.
        const std::string command =
            "ASAN_OPTIONS=detect_leaks=0 strace -f -y -s 4096 -e trace=%file -o '" + trace +
            "' '" XCODHOST "' run '" POSTINSTALL_BUNDLE "' --product 4900 --language 11 --volume '" + volume +
            "' > '" + out + "' 2>&1";
        const int status = std::system(command.c_str());
        const std::string report = ReadBytes(out);
        EXPECT_EQ(status, 0) << report;
        EXPECT_THAT(report, testing::HasSubstr("\nDONE "));
        return ReadBytes(trace);
    }

    /// Returns the calls that accessed `outside`, or changed an item that is not on the volume.
    std::vector<std::string> Stray() const {
        std::vector<std::string> stray;
        std::istringstream trace(Trace());
        for (std::string line; std::getline(trace, line);) {
            const Call call(line);
            if (call.name.empty() || call.name == "execve") continue;
            std::vector<std::string> paths = call.Paths();
            if (!call.opened.empty()) paths.push_back(call.opened);
            for (const std::string& path : paths) {
                const bool isChange = call.Changes() && !isBelow(path, volume) && !isBelow(path, "/dev");
                if (isChange || isBelow(path, outside)) stray.push_back(line);
            }
        }
        return stray;
    }

    const TemporaryFolder folder;
    const std::string volume = folder / "volume", outside = folder / "outside";
};

} // namespace

TEST_F(HostileVolume, CannotMakeARunAccessItemsOutside) {
    if (std::system("strace -o /dev/null true 2>/dev/null") != 0)
        GTEST_SKIP() << "strace cannot trace a process";
    const std::pair<const char*, std::string> links[] = {
        {kUpdater, outside + "/secret"},
        {kUpdater, "../../../outside/secret"},
        {kUpdater, "/proc/self/root" + outside + "/secret"},
        {kStatusFolder, outside},
        {kStatusFolder, "../../../../../outside"},
        {"Library/Preferences", outside},
        {"Applications/Korvane", outside},
        {"Applications", "../outside"},
        {"Library", outside},
    };
    unsigned lost = 0;
    for (const auto& [place, target] : links) {
        SCOPED_TRACE(place + (" -> " + target));
        const fs::path path = fs::path(volume) / place;
        fs::remove_all(path);
        fs::create_directories(path.parent_path());
        fs::create_symlink(target, path);
        const std::vector<std::string> stray = Stray();
        EXPECT_THAT(stray, testing::IsEmpty());
        lost += static_cast<unsigned>(stray.size());
        fs::remove_all(path);
    }
    EXPECT_EQ(ReadBytes(outside + "/secret").size(), 66U);
    EXPECT_EQ(std::distance(fs::directory_iterator(outside), {}), 2);
    PrintFaultTally("link on the volume that points outside the volume", std::size(links), lost);
}
