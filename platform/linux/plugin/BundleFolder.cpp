#include "BundleFolder.h"

#include "MachOLoader.h"
#include "trace/PlatformCall.h"

#include <macplatform/FileDescriptor.h>

#include <cerrno>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace macplatform {

namespace {
constexpr unsigned char kOwnClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;

BundleFailure failure(BundleFault fault, const std::string& text) { return {fault, text}; }

bool isFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string lastName(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path.substr(path.rfind('/') + 1);
}

bool gPrefersMacCode = false;

/// Returns the path of the executable to load. The Mac executable is chosen if this process can run it, and
/// if it is preferred or there is no Linux executable. Otherwise the Linux executable is chosen, even if it
/// is missing.
std::string chosenExecutable(const std::string& own, const std::string& mac) {
    if (!CanRunMachO() || access(mac.c_str(), F_OK) != 0) return own;
    return gPrefersMacCode || access(own.c_str(), F_OK) != 0 ? mac : own;
}

/// Returns the name of the executable: CFBundleExecutable, or the name of the bundle without its extension if
/// that key is missing. Returns an empty string if the name is not a file name.
std::string executableName(const BundleFolder& bundle) {
    std::string name;
    if (const PropertyValue* const named = bundle.info.Find("CFBundleExecutable")) {
        name = named->text;
    } else {
        name = lastName(bundle.path);
        name.erase(std::min(name.size(), name.rfind('.')));
    }
    const bool leaves = name.find('/') != std::string::npos || name.find('\0') != std::string::npos ||
                        name == "." || name == "..";
    return leaves ? std::string() : name;
}

const char* machineName(unsigned machine, unsigned char fileClass) {
    if (machine == EM_X86_64) return fileClass == ELFCLASS64 ? "x86-64" : "x86-64 with 32-bit pointers";
    if (machine == EM_386) return "32-bit x86";
    if (machine == EM_AARCH64) return "64-bit ARM";
    return "another processor";
}

unsigned ownMachine() {
    Elf64_Ehdr own{}; // `e_machine` has the same offset in 32-bit and 64-bit headers.
    const FileDescriptor self(open("/proc/self/exe", O_RDONLY | O_CLOEXEC));
    return self && read(self.Get(), &own, sizeof own) == static_cast<ssize_t>(sizeof own)
               ? own.e_machine
               : static_cast<unsigned>(EM_NONE);
}

bool hasMachOMagic(const unsigned char* bytes) {
    static const unsigned char magics[][4] = {{0xFE, 0xED, 0xFA, 0xCE},
                                              {0xCE, 0xFA, 0xED, 0xFE},
                                              {0xFE, 0xED, 0xFA, 0xCF},
                                              {0xCF, 0xFA, 0xED, 0xFE},
                                              {0xCA, 0xFE, 0xBA, 0xBE}};
    for (const auto& magic : magics) {
        if (std::memcmp(bytes, magic, sizeof magic) == 0) return true;
    }
    return false;
}

BundleFailure checkHeader(const std::string& file, const Elf64_Ehdr& header, std::size_t length) {
    if (length < sizeof header || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        return failure(BundleFault::kWrongArchitecture, file + ": not an executable file");
    }
    const unsigned own = ownMachine();
    if (header.e_ident[EI_CLASS] == kOwnClass && header.e_machine == own) return {};
    return failure(BundleFault::kWrongArchitecture,
                   file + ": built for " + machineName(header.e_machine, header.e_ident[EI_CLASS]) +
                       ", but this process runs code for " + machineName(own, kOwnClass));
}

} // namespace

bool SetPrefersMacCode(bool preferred) {
    if (preferred && !CanRunMachO()) return false;
    gPrefersMacCode = preferred;
    return true;
}

bool PrefersMacCode() { return gPrefersMacCode; }

BundleFailure OpenBundleFolder(const std::string& path, BundleFolder& bundle) {
    const InternalCallScope internalCalls;
    if (!isFolder(path))
        return failure(BundleFault::kNoBundle, path + ": not a bundle: the directory does not exist");
    const std::string plistPath = path + "/Contents/Info.plist";
    PropertyListFile plist = ReadPropertyList(plistPath);
    if (plist.errorNumber == ENOENT || plist.errorNumber == ENOTDIR) {
        return failure(BundleFault::kNoBundle, path + ": not a bundle: Contents/Info.plist is missing");
    }
    if (!plist.error.empty())
        return failure(BundleFault::kBrokenPropertyList, plistPath + ": " + plist.error);
    if (plist.root.kind != PropertyValue::Kind::kDictionary) {
        return failure(BundleFault::kBrokenPropertyList,
                       plistPath + ": the root of the property list is not a dictionary");
    }
    bundle.path = path;
    bundle.info = std::move(plist.root);
    const std::string name = executableName(bundle);
    if (name.empty())
        return failure(BundleFault::kMissingKey, plistPath + ": CFBundleExecutable is not a file name");
    bundle.executable = chosenExecutable(path + "/Contents/Linux/" + name, path + "/Contents/MacOS/" + name);
    return {};
}

BundleFailure CheckExecutable(BundleFolder& bundle) {
    const InternalCallScope internalCalls;
    const std::string& file = bundle.executable;
    const FileDescriptor code(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!code) {
        const int error = errno;
        const std::string forMac = bundle.path + "/Contents/MacOS" + file.substr(file.rfind('/'));
        if (error == ENOENT && access(forMac.c_str(), F_OK) == 0) {
            return failure(BundleFault::kNoExecutable, file +
                                                           ": missing: the bundle has only code for the Mac; "
                                                           "use the 32-bit build of this tool to run it");
        }
        return failure(BundleFault::kNoExecutable, file + ": " + std::strerror(error));
    }
    struct stat status {};
    if (fstat(code.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return failure(BundleFault::kNoExecutable, file + ": not a regular file");
    }
    Elf64_Ehdr header{};
    const ssize_t read = ::read(code.Get(), &header, sizeof header);
    const std::size_t length = read < 0 ? 0 : static_cast<std::size_t>(read);
    bundle.isMachO = length >= 4 && hasMachOMagic(header.e_ident);
    // LoadMachO checks a Mach-O file.
    return bundle.isMachO ? BundleFailure() : checkHeader(file, header, length);
}

} // namespace macplatform
