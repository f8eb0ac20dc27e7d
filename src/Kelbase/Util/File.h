#pragma once

#include <Kelbase/Util/FileTime.h>
#include <Kelbase/common/common_checked_types.h>
#include <Kelbase/common/common_path.h>
#include <Kelbase/common/common_types.h>

#include <cstdio>

namespace Util {

/// One file by its name: opened, read and written in blocks, asked about, renamed and thrown away.
///
/// What fails and must not be overlooked throws `Util::Exception::FileIO`, with the system's `errno` where
/// this says so; questions never throw and answer false, absent or 0. Reading and writing are buffered:
/// `Size` does not see what `Flush` or `Close` has yet to write.
class File : private noncopyable {
public:
    /// Bits for `Open`. Nothing is translated in text mode on this platform.
    enum OpenMode : unsigned int {
        Read = 0x02,
        Write = 0x04,
        ReadWrite = 0x08,
        Append = 0x10,   ///< Writes at the end, whatever the position.
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
    /// Without `Read`, write access empties the file, also as `ReadWrite`, unless it is `Append`. `Read` with
    /// write access demands the file and keeps what is in it, except with `Truncate`; with `Append` it is
    /// made when missing. An open file must be closed first: the stream that it has would stay open, out of
    /// reach.
    void Open(unsigned int mode);
    void Close(); ///< Throws `CloseError` with `errno`, and is closed all the same. Nothing when not open.
    void Flush(); ///< Hands what was written to the system; a failure is told by `Close`.

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

    /// Asks the Finder to move an item to the Trash and waits for its answer; 0 or the platform's result
    /// code. 0 says that the Finder was asked, not that it agreed.
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
