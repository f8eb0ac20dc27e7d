#pragma once

#include <Kelbase/Util/FileTime.h>
#include <Kelbase/common/common_checked_types.h>
#include <Kelbase/common/common_path.h>
#include <Kelbase/common/common_types.h>

#include <cstdio>

namespace Util {

/// Opens, reads, writes, queries, renames and removes one file.
///
/// A failed operation throws `Util::Exception::FileIO`. Its error number is the system's `errno` where the
/// comment of the operation says so, and 0 elsewhere. `Exists`, `IsReadable`, `IsWritable`, `AtEnd`, `At()`,
/// `Size`, `Remaining`, `GetOSXFileType`, `Flush` and `Recycle` never throw it. Reading and writing are
/// buffered: `Size` does not include bytes that `Flush` or `Close` has yet to write.
class File : private noncopyable {
public:
    /// Bits for `Open`. Text mode translates nothing on this platform.
    enum OpenMode : unsigned int {
        Read = 0x02,
        Write = 0x04,
        ReadWrite = 0x08,
        Append = 0x10,   ///< Writes at the end, at any position. See `Open` for combinations.
        Truncate = 0x20, ///< With `Read` and write access: empties the file.
        Text = 0x40,
    };

    File() = default;
    explicit File(const FilePath& path); ///< Does not open the file and does not access the disk.
    ~File(); ///< Closes the file and ignores a failure. Call `Close` after writing to notice a failure.

    /// Closes the file as the destructor does, and sets the path.
    void SetPath(const FilePath& path);
    /// Returns whether the path is empty. `Open` then fails.
    bool IsNull() const { return path.IsEmpty(); }
    /// Returns whether the file is open. A failed read or write leaves it open.
    bool IsOpen() const { return handle != nullptr; }

    // Opening and closing

    /// Opens the file with bits of `OpenMode`; no access bit means `Read`. Throws `OpenError` with `errno`
    /// and then leaves the object unchanged.
    ///
    /// `Write`, `ReadWrite` and `Append` give write access.
    /// - `Write` and `ReadWrite` without `Read` create the file or empty it. `ReadWrite` does so with
    ///   `Append` too, and the writes then go to the position.
    /// - `Append`, also with `Write`, creates a missing file, keeps an existing one and writes at its end.
    /// - `Read` with write access requires the file and keeps its contents. With `Append` too, it creates a
    ///   missing file and writes at the end. With `Truncate` too, it creates the file or empties it, and the
    ///   writes go to the position.
    ///
    /// An open file must be closed first: otherwise its stream stays open and cannot be reached any more.
    void Open(unsigned int mode);
    /// Closes the file. Does nothing if it is not open. Throws `CloseError` with `errno`, and the file is
    /// closed then too.
    void Close();
    /// Hands written bytes to the system. A failure is not reported, and a later `Close` may not report it
    /// either. To notice a full disk, call `Close` without `Flush`.
    void Flush();

    // Position and size, in bytes

    /// Returns the position. Returns absent if the file is not open or has no positions, as a pipe.
    checked_value<unsigned long long> At() const;
    /// Sets the position, which may lie past the end. Throws `UnexpectedError`, with `errno` if the file is
    /// open.
    void At(unsigned long long position);
    bool AtEnd() const; ///< Returns whether a read has reached the end.
    /// Returns the size of the file on its disk, open or not. Returns absent if the path is empty or the
    /// system call fails.
    checked_value<unsigned long long> Size() const;
    /// Returns the number of bytes from the position to the end, 0 past the end. Returns absent if the file
    /// is not open or if `Size` or `At` is absent.
    checked_value<unsigned long long> Remaining() const;

    // Blocks

    /// Reads `count` bytes, or throws `ReadError` with `errno`. A read past the end of the file throws with
    /// `errno` 0; the remaining bytes are then in the buffer. In text mode the change of the position is
    /// compared with `count`, not the number of bytes in the buffer. A null buffer or a count of 0 does
    /// nothing.
    void ReadBlock(char* buffer, unsigned int count);
    /// Writes `count` bytes into the buffer of the stream. Throws `WriteError` with `errno`. A failure may be
    /// reported only by `Close`. A null buffer or a count of 0 does nothing.
    void WriteBlock(const char* buffer, unsigned int count);

    // The file on its disk

    bool Exists() const; ///< Returns true for an item of any type, also for a folder.
    ///@{
    /// Returns whether this process has access. The access may have changed by the time the file is opened.
    bool IsReadable() const;
    bool IsWritable() const;
    ///@}
    void SetMode(unsigned short permissions); ///< Sets POSIX permission bits. Throws `UnexpectedError`.
    void SetTime(const FileTime& time);       ///< Sets the file's times. Throws `UnexpectedError`.
    void GetTime(FileTime* time);             ///< Reads the file's times. Throws `UnexpectedError`.
    /// Closes and removes the file. A failure to close always throws. A failure to remove throws
    /// `RemoveError` with `errno` if `throwOnFailure` is true, and is ignored otherwise.
    void Remove(bool throwOnFailure);

    /// Renames a file and replaces an item at `to`. If the volume can exchange files, references to the item
    /// at `to` stay valid and refer to the new contents. Throws `RenameError` with `errno`.
    static void Rename(const FilePath& from, const FilePath& to);

    // Finder

    /// Asks the Finder to move an item to the Trash and waits for its reply. Returns 0 or the platform's
    /// result code. 0 does not say that the item was moved: a refusal of the Finder, an event that could not
    /// be created and one that could not be sent give 0 too.
    static int Recycle(const String& path);
    /// Returns the four-character code of the file's type, or 0 if it cannot be read.
    unsigned int GetOSXFileType() const;

private:
    enum class Transfer { kNone, kRead, kWrite };

    void Release(); // closes and ignores a failure
    void Turn(Transfer next);

    FilePath path;
    std::FILE* handle = nullptr;
    checked_value<unsigned int> openMode;
    Transfer last = Transfer::kNone; // since the last positioning of the stream
};

} // namespace Util
