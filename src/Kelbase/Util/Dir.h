#pragma once

#include <Kelbase/Util/FileTime.h>
#include <Kelbase/common/common_path.h>

#include <vector>

namespace Util {

/// Creates, removes, queries and lists one folder. Nothing is open between calls.
///
/// `Create`, `Remove`, `GetTime` and `SetTime` throw `Util::Exception::FileIO` with the folder's path and
/// error number 0 when they fail. `Exists`, `GetDirInfo` and the listings never throw for what is on the
/// disk.
///
/// A listing gives the names of the entries that match a pattern, without "." and "..", sorted in ascending
/// byte order. The first "*" of a pattern matches any bytes: a name matches if it begins with the part before
/// and ends with the part after the "*", with "A"-"Z" equal to "a"-"z". A pattern without "*" matches the
/// names that begin with it. The empty pattern matches every name. A link counts as its target. An entry that
/// `stat` cannot read, such as a dead link, is left out. Without `append` the list is cleared first. With
/// `append` the whole list is sorted. A folder that cannot be read adds nothing and leaves the order of the
/// list.
class Dir {
public:
    /// Information about a volume.
    struct DirInfo {
        unsigned long long availableSpace; ///< Bytes available to unprivileged users. See `GetDirInfo`.
    };

    Dir() = default;
    explicit Dir(const FolderPath& folder) : path(folder) {}  ///< Does not access the disk.
    void SetPath(const FolderPath& folder) { path = folder; } ///< Does not access the disk.

    /// Returns whether there is a folder, or a link to one. Returns false if the path cannot be searched.
    bool Exists() const;
    /// Gets the available space of the folder's volume. Returns false and leaves `info` unchanged if the
    /// system call fails. The number is computed in 32 bits and then sign-extended, so it is right below 2
    /// GiB only.
    bool GetDirInfo(DirInfo& info) const;
    void GetTime(FileTime* time) const;       ///< Reads the folder's times. Throws `UnexpectedError`.
    void SetTime(const FileTime& time) const; ///< Sets the folder's times. Throws `UnexpectedError`.

    /// Creates the folder unless it exists, with permissions 0755 less the process's mask. With `recursive`,
    /// also creates each missing folder above it, but creates nothing if the canonical path is relative, as
    /// that of "/../x". Throws `WriteError` with the system's error number in the message. Folders that were
    /// created stay.
    void Create(bool recursive) const;
    /// Removes the folder if it exists. Throws `RemoveError`, for instance if the folder is not empty.
    void Remove() const;

    // Listings of this folder

    /// Lists the regular files, or all entries with `includeAll`.
    void GetFilenames(std::vector<String>& names, const String& pattern, bool append, bool includeAll) const;
    /// Lists all entries that are no regular files: also devices, pipes and sockets.
    void GetFoldernames(std::vector<String>& names, const String& pattern, bool append) const;

    ///@{
    /// Lists a folder given as text. The text is used as it is, neither cleaned nor made absolute.
    static void GetFilenames(const String& folder, std::vector<String>& names, const String& pattern,
                             bool append, bool includeAll);
    static void GetFoldernames(const String& folder, std::vector<String>& names, const String& pattern,
                               bool append);
    ///@}

    /// Finds the first regular file whose name is the last name of `name`, with "A"-"Z" equal to "a"-"z". The
    /// files of a folder come before the files of its subfolders, which are searched if `recursive`. Each
    /// group is in sorted order. A recursive search enters a folder once, also if several links lead to it.
    /// Every file examined adds 1 to `count`, which several searches may share. Returns the empty path if
    /// there is no such file or `count` exceeds 5000.
    static FilePath FindFile(const String& folder, const String& name, bool recursive, unsigned int& count);

private:
    FolderPath path;
};

} // namespace Util
