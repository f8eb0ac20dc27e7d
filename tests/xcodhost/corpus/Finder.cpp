// The Finder flags of the folder and its icon file, and the faults that leave something in the process.

#include "PlugIn.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace plugin {

namespace {

bool gIsFolderRefused = false;
std::string* volatile gLeaked = nullptr;

std::uint16_t flagsWith(std::uint16_t flags, bool isFolder) {
    int kept = flags & ~0x4400;
    if (Is("LabelLost")) kept &= ~0x000E;
    if (Is("FolderStaysInvisible") && isFolder) kept |= flags & 0x4000;
    if (Is("IconKeepsIconFlag") && !isFolder) kept |= flags & 0x0400;
    return static_cast<std::uint16_t>(kept | (isFolder ? 0x0400 : 0x4000));
}

/// Sets the Finder flags of an existing item. Returns false if its Finder information cannot be read.
bool setFinderFlags(const char* path, bool isFolder) {
    FSRef item;
    if (FSPathMakeRef(reinterpret_cast<const UInt8*>(path), &item, nullptr) != noErr) {
        if (Is("LeakForFailedFinderCall") && isFolder && access(path, F_OK) == 0) NewText("no folder");
        return true;
    }
    FSCatalogInfo catalog = {};
    if (FSGetCatalogInfo(&item, kFSCatInfoFinderInfo, &catalog, nullptr, nullptr, nullptr) != noErr)
        return false;
    FileInfo finder;
    std::memcpy(&finder, catalog.finderInfo, sizeof finder);
    finder.finderFlags = flagsWith(finder.finderFlags, isFolder);
    std::memcpy(catalog.finderInfo, &finder, sizeof finder);
    FSSetCatalogInfo(&item, kFSCatInfoFinderInfo, &catalog);
    return true;
}

[[noreturn]] void waitForEver() {
    while (true) pause();
}

} // namespace

void SetFolderFlags(bool isKnownProduct) {
    if (Is("ExceptionEscapes")) throw std::runtime_error("no folder");
    if (Is("FlagsForKnownProductsOnly") && !isKnownProduct) return;
    if (Is("IconFirst") && access(kIcon, F_OK) != 0) return;
    if (Is("FolderCreated")) mkdir(kFolder, 0755);
    if (Is("IconBeforeFolder")) setFinderFlags(kIcon, false);
    gIsFolderRefused = !setFinderFlags(kFolder, true);
    if (Is("ApplicationsHidden")) setFinderFlags("/Applications", false);
}

void SetIconFlags() {
    if (!Is("IconBeforeFolder") && !(Is("IconAfterFolder") && gIsFolderRefused)) setFinderFlags(kIcon, false);
}

void LeaveTraces() {
    if (Is("TextPrinted")) std::puts("icon hidden");
    for (int place = 3; place < 16 && Is("HostSocketWritten"); ++place) send(place, "?\n", 2, MSG_NOSIGNAL);
    if (Is("ErrorPrinted")) std::fputs("no icon\n", stderr);
    if (Is("CurrentUser"))
        CFPreferencesSynchronize(CFSTR("com.korvane.updater"), kCFPreferencesCurrentUser,
                                 kCFPreferencesAnyHost);
    if (Is("FileLeftOpen")) open(kIcon, O_RDONLY | O_CLOEXEC);
    if (Is("InstanceUsedAfterRelease") && LacksItsInstance()) __builtin_trap();
    if (Is("MemoryLeaked")) gLeaked = new std::string("some text that needs memory of its own");
    if (Is("SignalIgnored")) std::signal(SIGPIPE, SIG_IGN);
    if (Is("StringLeaked")) NewText("left behind");
    if (Is("ThreadLeft")) std::thread(&waitForEver).detach();
    if (Is("WriteOutside")) std::fclose(std::fopen("/tmp/xcodhost-corpus.log", "a"));
    if (Is("WriteOutside")) std::remove("/tmp/xcodhost-corpus.log");
    MakeRawCalls();
    // The host must also end a process of another session.
    const bool isChild = (Is("ProcessLeft") || Is("Hang")) && fork() == 0;
    if (isChild) setsid();
    if (isChild || Is("Hang")) waitForEver();
}

} // namespace plugin
