#pragma once

#include <Kelbase/Util/FileTime.h>
#include <Kelbase/common/common_path.h>

#include <vector>

namespace Util {

/// One folder by its name: made, removed, asked about and listed. Nothing is held open between calls.
///
/// `Create`, `Remove`, `GetTime` and `SetTime` throw `Util::Exception::FileIO` with the folder's path and
/// error number 0 when they fail. `Exists`, `GetDirInfo` and the listings never throw for what is on the
/// disk.
///
/// A listing names the entries that a pattern fits, never "." and "..", in ascending order of bytes. A
/// pattern is split at its first "*": a name fits that begins with what stands before and ends with what
/// stands after, "A"-"Z" read as "a"-"z". Without "*" it is a beginning, and the empty pattern fits every
/// name. Links count as what they lead to; an entry that cannot be asked what it is (a dead link, say) is
/// left out. Without `append` the list is cleared first; with it, the old names are sorted in. A folder that
/// cannot be read adds nothing and leaves the order of the old names.
class Dir {
public:
    /// What a volume tells.
    struct DirInfo {
        unsigned long long availableSpace; ///< For unprivileged users, in bytes. See `GetDirInfo`.
    };

    Dir() = default;
    explicit Dir(const FolderPath& folder) : path(folder) {}  ///< The disk is not asked yet.
    void SetPath(const FolderPath& folder) { path = folder; } ///< The disk is not asked yet.

    bool Exists() const; ///< As a folder, or as a link to one; false too where the way to it is barred.
    /// Free space of the folder's volume; false, and `info` as it was, when the system does not tell.
    /// Reckoned in 32 bits and then sign-extended, so that only an amount below 2 GiB is to be trusted.
    bool GetDirInfo(DirInfo& info) const;
    void GetTime(FileTime* time) const;       ///< Throws `UnexpectedError`.
    void SetTime(const FileTime& time) const; ///< Throws `UnexpectedError`.

    /// Creates the folder unless it exists, with permissions 0755 less the process's mask. With `recursive`
    /// it also creates each missing folder on the way, but nothing at all if the clean path is relative, as
    /// that of "/../x" is. Throws `WriteError`, with the system's error number in the message; created
    /// folders stay.
    void Create(bool recursive) const;
    /// Removes the folder if it exists. Throws `RemoveError`, for instance when something is in it.
    void Remove() const;

    // Listings of this folder

    /// Regular files, or with `includeAll` all entries.
    void GetFilenames(std::vector<String>& names, const String& pattern, bool append, bool includeAll) const;
    /// All entries but regular files: also devices, pipes and sockets.
    void GetFoldernames(std::vector<String>& names, const String& pattern, bool append) const;

    ///@{
    /// The same of a folder given as text, which is used as it is: not cleaned, not made absolute.
    static void GetFilenames(const String& folder, std::vector<String>& names, const String& pattern,
                             bool append, bool includeAll);
    static void GetFoldernames(const String& folder, std::vector<String>& names, const String& pattern,
                               bool append);
    ///@}

    /// The first file with the last name of `name`, whatever its case: among a folder's own files before
    /// those of its subfolders (if `recursive`), each in sorted order. Empty when there is none, or when
    /// `count` passes 5000, which grows by one for each file looked at and may be shared by several searches.
    /// A `recursive` search searches a folder to which several links lead once.
    static FilePath FindFile(const String& folder, const String& name, bool recursive, unsigned int& count);

private:
    FolderPath path;
};

} // namespace Util
