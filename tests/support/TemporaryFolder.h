#pragma once

/// Declares temporary directories and files of a test.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

/// A temporary directory. The destructor removes the directory and its contents.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kelbase.XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error(name + ": cannot create the temporary directory");
        folder = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    const std::filesystem::path& Path() const { return folder; }
    std::filesystem::path operator/(const std::string& name) const { return folder / name; }

    /// Writes a file and creates its parent directories. Returns the path of the file. Ignores errors of the
    /// write.
    std::string Write(const std::string& name, const std::string& bytes = {}) const {
        const std::filesystem::path path = folder / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
        return path.string();
    }

private:
    std::filesystem::path folder;
};

/// Returns the bytes of a file. Returns an empty string if the file cannot be read.
inline std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
