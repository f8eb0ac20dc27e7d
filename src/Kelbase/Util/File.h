#pragma once

#include <Kelbase/Util/FileTime.h>
#include <Kelbase/common/common_checked_types.h>
#include <Kelbase/common/common_path.h>
#include <Kelbase/common/common_types.h>

#include <cstdio>

namespace Util {

/// One file by its name: opened, read and written in blocks, asked about, renamed and thrown away.
///
/// Failed operations throw `Util::Exception::FileIO`, with the system's `errno` where the operation's comment
/// says so and with 0 elsewhere. `Exists`, `IsReadable`, `IsWritable`, `AtEnd`, `At()`, `Size`, `Remaining`,
/// `GetOSXFileType`, `Flush` and `Recycle` never throw it. Reading and writing are buffered: `Size` does not
/// include bytes that `Flush` or `Close` has yet to write.
class File : private noncopyable {
public:
    /// Bits for `Open`. Nothing is translated in text mode on this platform.
    enum OpenMode : unsigned int {
        Read = 0x02,
        Write = 0x04,
        ReadWrite = 0x08,
        Append = 0x10,   ///< Writes at the end, whatever the position. See `Open` for combinations.
        Truncate = 0x20, ///< Together with `Read` and write access: empties the file.
        Text = 0x40,
    };

    File() = default;
    explicit File(const FilePath& path); ///< Not open; the disk is not asked yet.
    ~File(); ///< Closes; a failure of that is lost, so what was written should be closed by `Close`.

    void SetPath(const FilePath& path);               ///< Closes first, as the destructor does.
    bool IsNull() const { return path.IsEmpty(); }    ///< Without a path: opening then fails.
    bool IsOpen() const { return handle != nullptr; } ///< Also after a failed transfer.

    // Opening and closing

    /// Opens by bits of `OpenMode`; none of them means `Read`. Throws `OpenError` with `errno`, and is then
    /// as before.
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
    void Close(); ///< Throws `CloseError` with `errno`, and is closed all the same. Nothing when not open.
    /// Hands written bytes to the system. A failure is not reported, and a later `Close` need not report it:
    /// to notice a full disk, call `Close` without `Flush`.
    void Flush();

    // Position and size, in bytes

    checked_value<unsigned long long>
    At() const; ///< Absent when not open or without positions, as a pipe is.
    /// Throws `UnexpectedError`, with `errno` when open. May lie past the end.
    void At(unsigned long long position);
    bool AtEnd() const; ///< Whether a read has met the end.
    /// Of the file on its disk, open or not; absent when it has no path or cannot be asked.
    checked_value<unsigned long long> Size() const;
    checked_value<unsigned long long>
    Remaining() const; ///< From the position to the end; absent when not open.

    // Blocks

    /// Fills `buffer`, or throws `ReadError` with `errno`: also at the end of the file, with `errno` 0 and
    /// with the bytes that were left in the buffer. In text mode the positions passed are counted, not the
    /// bytes delivered. A null buffer or a count of 0 does nothing.
    void ReadBlock(char* buffer, unsigned int count);
    /// Throws `WriteError` with `errno`. A null buffer or a count of 0 does nothing.
    void WriteBlock(const char* buffer, unsigned int count);

    // The file on its disk

    bool Exists() const; ///< Whatever it is, a folder too.
    ///@{
    /// Whether this process may; the answer may be out of date when the file is opened.
    bool IsReadable() const;
    bool IsWritable() const;
    ///@}
    void SetMode(unsigned short permissions); ///< POSIX bits. Throws `UnexpectedError`.
    void SetTime(const FileTime& time);       ///< Throws `UnexpectedError`.
    void GetTime(FileTime* time);             ///< Throws `UnexpectedError`.
    /// Closes and removes. A file that cannot be closed throws always, one that cannot be removed throws
    /// `RemoveError` with `errno` or is ignored.
    void Remove(bool throwOnFailure);

    /// Replaces what is at `to`, keeping its identity for those who hold references to it where the volume
    /// can. Throws `RenameError` with `errno`.
    static void Rename(const FilePath& from, const FilePath& to);

    // What the Finder knows

    /// Asks the Finder to move an item to the Trash and waits for its reply. Returns 0 or the platform's
    /// result code. 0 does not say that the item was moved: a refusal of the Finder, an event that could not
    /// be created and one that could not be sent give 0 too.
    static int Recycle(const String& path);
    /// Four-character code of the file's type; 0 when it cannot be read.
    unsigned int GetOSXFileType() const;

private:
    enum class Transfer { None, Read, Write };

    void Release(); // closes, whatever comes of it
    void Turn(Transfer next);

    FilePath path;
    std::FILE* handle = nullptr;
    checked_value<unsigned int> openMode;
    Transfer last = Transfer::None; // since the stream was last positioned
};

} // namespace Util
