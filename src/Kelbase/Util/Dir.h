#pragma once

#include <Kelbase/Util/FileTime.h>
#include <Kelbase/common/common_path.h>

#include <vector>

namespace Util {

/// Creates, removes, queries and lists one folder. The object keeps no folder open between calls.
///
/// `Create`, `Remove`, `GetTime` and `SetTime` throw `Util::Exception::FileIO` with the folder's path and
/// error number 0 when they fail. `Exists`, `GetDirInfo` and the listings do not throw if the folder is
/// missing or cannot be read.
///
/// A listing gives the names of the entries that match a pattern, without "." and "..", sorted in ascending
/// byte order. A name matches a pattern with a "*" if it begins with the part of the pattern before the first
/// "*" and ends with the part after this "*". The two parts may overlap in the name. A name matches a pattern
/// without "*" if it begins with the pattern. The empty pattern matches every name. "A"-"Z" are equal to
/// "a"-"z". The type of a symbolic link is the type of its target. An entry that `stat` cannot read, for
/// example a broken link, is omitted. If `append` is false, the list is cleared first. If `append` is true,
/// the new and the old names are sorted together. If the folder cannot be read, no name is added and the list
/// is not sorted.
class Dir {
public:
    /// Information about a volume.
    struct DirInfo {
        unsigned long long availableSpace; ///< In bytes, for unprivileged users. See `GetDirInfo`.
    };

    Dir() = default;
    explicit Dir(const FolderPath& folder) : path(folder) {}  ///< Does not access the disk.
    void SetPath(const FolderPath& folder) { path = folder; } ///< Does not access the disk.

    /// Returns whether the path is a folder or a symbolic link to a folder. Returns false if a folder on the
    /// path cannot be searched.
    bool Exists() const;
    /// Gets the available space of the folder's volume. Returns false and leaves `info` unchanged if the
    /// system call fails. The number is computed in 32 bits and then sign-extended. The number is therefore
    /// correct only below 2 GiB.
    bool GetDirInfo(DirInfo& info) const;
    void GetTime(FileTime* time) const;       ///< Reads the folder's times. Throws `UnexpectedError`.
    void SetTime(const FileTime& time) const; ///< Sets the folder's times. Throws `UnexpectedError`.

    /// Creates the folder unless it exists. The permissions are 0755 without the bits of the process's umask.
    /// If `recursive` is true, also creates each missing parent folder, but creates nothing if the canonical
    /// path is relative (example: "/../x"). Throws `WriteError` with the system's error number in the
    /// message. Parent folders that were created before the failure remain.
    void Create(bool recursive) const;
    /// Removes the folder if it exists. Throws `RemoveError`, for example if the folder is not empty.
    void Remove() const;

    // Listings of this folder

    /// Lists the regular files. If `includeAll` is true, lists all entries.
    void GetFilenames(std::vector<String>& names, const String& pattern, bool append, bool includeAll) const;
    /// Lists all entries that are not regular files: folders, and also devices, pipes and sockets.
    void GetFoldernames(std::vector<String>& names, const String& pattern, bool append) const;

    ///@{
    /// Lists the folder at a path in the form of a text. The path is passed to the system unchanged.
    static void GetFilenames(const String& folder, std::vector<String>& names, const String& pattern,
                             bool append, bool includeAll);
    static void GetFoldernames(const String& folder, std::vector<String>& names, const String& pattern,
                               bool append);
    ///@}

    /// Returns the path of the first regular file whose name is the last name of `name`, with "A"-"Z" equal
    /// to "a"-"z". If `recursive` is true, searches the subfolders after the files of the folder. Files and
    /// subfolders are searched in sorted order. A recursive search reads a folder once, even if several links
    /// refer to the folder. The function adds 1 to `count` for each file that it examines. Several searches
    /// may share one `count`. Returns the empty path if there is no such file, or if `count` becomes larger
    /// than 5000.
    static FilePath FindFile(const String& folder, const String& name, bool recursive, unsigned int& count);

private:
    FolderPath path;
};

} // namespace Util
