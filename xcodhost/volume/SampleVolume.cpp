#include "SampleVolume.h"

#include "DisplayText.h"
#include "ExitStatus.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

namespace xcodhost {

namespace fs = std::filesystem;

namespace {

constexpr std::array<std::string_view, 6> kVolumeFolders = {
    "/Applications", "/Library", "/Library/Preferences", "/System", "/Users", "/Volumes"};
constexpr const char* kStatusFolder = "/Library/Application Support/Korvane/Updater";
constexpr const char* kVendorFolder = "/Applications/Korvane";

std::size_t makeFolders(const std::string& path) {
    std::error_code error;
    const bool isNew = fs::create_directories(path, error);
    if (error) throw ToolFault(Printable(path) + ": " + error.message());
    return isNew ? 1 : 0;
}

/// Makes a file and returns 1. Returns 0 and changes nothing if the file exists.
std::size_t makeFile(const std::string& path, const std::string& bytes) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wx"), &std::fclose);
    if (!file && errno == EEXIST) return 0;
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
        std::fflush(file.get()) != 0) {
        throw ToolFault::FromErrno(Printable(path));
    }
    return 1;
}

} // namespace

bool LooksLikeVolume(const std::string& folder) {
    return std::all_of(kVolumeFolders.begin(), kVolumeFolders.end(), [&](std::string_view name) {
        std::error_code ignored;
        return fs::is_directory(folder + std::string(name), ignored);
    });
}

std::size_t MakeSampleVolume(const std::string& folder, const SampleVolume& sample) {
    std::error_code error;
    const fs::file_status status = fs::status(folder, error);
    if (fs::exists(status)) {
        if (!fs::is_directory(status)) throw UsageError(Printable(folder) + ": not a folder");
        const bool isEmpty = fs::is_empty(folder, error);
        if (error) throw UsageError(Printable(folder) + ": " + error.message());
        if (!isEmpty && !LooksLikeVolume(folder)) {
            throw UsageError(Printable(folder) + ": not empty and not a sample volume; nothing was changed");
        }
    }
    std::size_t made = makeFolders(folder);
    for (const std::string_view name : kVolumeFolders) made += makeFolders(folder + std::string(name));
    made += makeFolders(folder + kStatusFolder);
    if (sample.status) made += makeFile(folder + kStatusFolder + "/install_status.txt", *sample.status);
    if (sample.hasFolder) {
        made += makeFolders(folder + kVendorFolder);
        if (sample.hasIcon) made += makeFile(folder + kVendorFolder + "/Icon\r", {});
    }
    return made;
}

} // namespace xcodhost
