#pragma once

#include <Kelbase/Util/FileTime.h>
#include <Kelbase/common/common_checked_types.h>
#include <Kelbase/common/common_path.h>
#include <Kelbase/common/common_types.h>

#include <cstdio>

namespace Util {

/// Opens, reads, writes, queries, renames and removes one file.
///
/// A failed operation throws `Util::Exception::FileIO`. The error number of the exception is the system's
/// `errno` if the comment of the operation says so, and 0 otherwise. `Exists`, `IsReadable`, `IsWritable`,
/// `AtEnd`, `At()`, `Size`, `Remaining`, `GetOSXFileType`, `Flush` and `Recycle` never throw this exception.
/// Reading and writing are buffered: `Size` does not include bytes that are still in the buffer.
class File : private noncopyable {
public:
    /// The bits of the mode of `Open`. On this platform `Text` does not change any bytes.
    enum OpenMode : unsigned int {
        Read = 0x02,
        Write = 0x04,
        ReadWrite = 0x08,
        Append = 0x10,   ///< Every write appends to the file. `Open` describes the combinations.
        Truncate = 0x20, ///< Together with `Read` and write access: empties the file.
        Text = 0x40,
    };

    File() = default;
    explicit File(const FilePath& path); ///< Does not open the file and does not access the disk.
    ~File(); ///< Closes the file and ignores a failure. `Close` reports a failure.

    /// Closes the file as the destructor does, and sets the path.
    void SetPath(const FilePath& path);
    /// Returns whether the path is empty. `Open` fails for an empty path.
    bool IsNull() const { return path.IsEmpty(); }
    /// Returns whether the file is open. The file stays open after a failed read or write.
    bool IsOpen() const { return handle != nullptr; }

    // Opening and closing

    /// Opens the file. `mode` consists of bits of `OpenMode`. Without an access bit, `mode` means `Read`.
    /// Throws `OpenError` with `errno`. The object is then unchanged.
    ///
    /// `Write`, `ReadWrite` and `Append` give write access.
    /// - `Write` and `ReadWrite` without `Read` create the file or empty it. `ReadWrite` with `Append` also
    ///   empties the file, and writes at the position.
    /// - `Append`, also with `Write`, creates a missing file, keeps the contents of an existing file and
    ///   writes at its end.
    /// - `Read` with write access requires an existing file and keeps its contents. With `Append`, the mode
    ///   also creates a missing file, and writes at the end. With `Truncate`, the mode creates the file or
    ///   empties it, and writes at the position. `Truncate` has precedence over `Append`.
    ///
    /// The file must not be open. If the file is open, its old stream is leaked.
    void Open(unsigned int mode);
    /// Closes the file. Does nothing if the file is not open. Throws `CloseError` with `errno`. The file is
    /// closed even if this function throws.
    void Close();
    /// Passes the buffered bytes to the system. Does not report a failure, and a later `Close` may not report
    /// the failure either. To detect a full disk, call `Close` without `Flush`.
    void Flush();

    // Position and size, in bytes

    /// Returns the position. Returns absent if the file is not open, and if it has no positions, for example
    /// a pipe.
    checked_value<unsigned long long> At() const;
    /// Sets the position. The position may be past the end of the file. Throws `UnexpectedError` with
    /// `errno`. The error number is 0 if the file is not open, and EINVAL if the system cannot represent the
    /// position.
    void At(unsigned long long position);
    bool AtEnd() const; ///< Returns whether a read has reached the end.
    /// Returns the size of the file on its disk. The file need not be open. Returns absent if the path is
    /// empty or the system call fails.
    checked_value<unsigned long long> Size() const;
    /// Returns the number of bytes from the position to the end. Returns 0 if the position is past the end.
    /// Returns absent if the file is not open or if `Size` or `At` is absent.
    checked_value<unsigned long long> Remaining() const;

    // Reading and writing

    /// Reads `count` bytes. Does nothing for a null buffer and for a count of 0. Throws `ReadError` with
    /// `errno` if fewer bytes could be read. The bytes that were read are then in the buffer. The error
    /// number is 0 if the file is not open, and if the file has fewer bytes. In text mode the function
    /// compares `count` with the change of the position, not with the number of bytes that were read. In text
    /// mode every read from a pipe therefore throws.
    void ReadBlock(char* buffer, unsigned int count);
    /// Writes `count` bytes to the buffer of the stream. Does nothing for a null buffer and for a count of 0.
    /// Throws `WriteError` with `errno`. The error number is 0 if the file is not open. Some failures are
    /// reported only by `Close`.
    void WriteBlock(const char* buffer, unsigned int count);

    // The file on its disk

    bool Exists() const; ///< Returns whether there is an item of any type, also a folder.
    ///@{
    /// Returns whether this process may read or write the file. The result can be outdated when the file is
    /// opened.
    bool IsReadable() const;
    bool IsWritable() const;
    ///@}
    void SetMode(unsigned short permissions); ///< Sets POSIX permission bits. Throws `UnexpectedError`.
    void SetTime(const FileTime& time);       ///< Sets the file's times. Throws `UnexpectedError`.
    void GetTime(FileTime* time);             ///< Reads the file's times. Throws `UnexpectedError`.
    /// Closes and removes the file. Throws as `Close` does. If the file cannot be removed, throws
    /// `RemoveError` with `errno` if `throwOnFailure` is true. Ignores this failure if `throwOnFailure` is
    /// false.
    void Remove(bool throwOnFailure);

    /// Renames a file and replaces an item at `to`. If the item at `to` exists and the volume can exchange
    /// the contents of files, the function exchanges the contents and removes `from`: references to the item
    /// at `to` then refer to the new contents. Ignores a failure of this removal. Throws `RenameError` with
    /// the path `from` and `errno`.
    static void Rename(const FilePath& from, const FilePath& to);

    // Finder

    /// Asks the Finder to move an item to the Trash and waits for its reply. Returns 0 or the platform's
    /// result code. The result 0 does not mean that the item was moved. The function also returns 0 if the
    /// event cannot be created or sent, and if the Finder refuses to move the item.
    static int Recycle(const String& path);
    /// Returns the four-character code of the file's type, or 0 if it cannot be read.
    unsigned int GetOSXFileType() const;

private:
    enum class Transfer { kNone, kRead, kWrite };

    void Release(); // closes the file and ignores a failure
    void Turn(Transfer next);

    FilePath path;
    std::FILE* handle = nullptr;
    checked_value<unsigned int> openMode;
    Transfer last = Transfer::kNone; // the last transfer since the stream was last positioned
};

} // namespace Util
