#include <Kelbase/Util/File.h>

#include <Kelbase/Util/Exception/FailureSite.h>

#include <cerrno>
#include <limits>

#include <sys/stat.h>
#include <unistd.h>

namespace Util {

using Exception::FailureSite;
using Exception::FileIO;
using Exception::Throw;

namespace {

constexpr char kSourceFile[] = "src/Kelbase/Util/File";

constexpr FailureSite kModeNotSet = {kSourceFile, 128, FileIO::UnexpectedError,
                                     "Error modifying file permissions"};
constexpr FailureSite kTimeNotSet = {kSourceFile, 148, FileIO::UnexpectedError, "Error setting file time"};
constexpr FailureSite kTimeNotRead = {kSourceFile, 179, FileIO::UnexpectedError, "Error getting file time"};
constexpr FailureSite kNotOpened = {kSourceFile, 288, FileIO::OpenError, "Error opening file"};
constexpr FailureSite kSeekWhenClosed = {kSourceFile, 329, FileIO::UnexpectedError,
                                         "Attempt to seek to %1 when not open"};
constexpr FailureSite kSeekFailed = {kSourceFile, 345, FileIO::UnexpectedError, "Seek to %1 failed"};
constexpr FailureSite kCloseFailed = {kSourceFile, 397, FileIO::CloseError, "Close failed"};
constexpr FailureSite kRemoveFailed = {kSourceFile, 422, FileIO::RemoveError, "Remove failed"};
constexpr FailureSite kReadWhenClosed = {kSourceFile, 577, FileIO::ReadError,
                                         "Attempt to read %1 bytes when not open"};
constexpr FailureSite kShortTextRead = {kSourceFile, 592, FileIO::ReadError,
                                        "Attempt to read %1 bytes, only read %2 bytes"};
constexpr FailureSite kShortRead = {kSourceFile, 608, FileIO::ReadError,
                                    "Attempt to read %1 bytes, only read %2 bytes"};
constexpr FailureSite kWriteWhenClosed = {kSourceFile, 623, FileIO::WriteError,
                                          "Attempt to write %1 bytes when not open"};
constexpr FailureSite kShortWrite = {kSourceFile, 630, FileIO::WriteError,
                                     "Attempt to write %1 bytes, only wrote %2 bytes"};

const char* streamMode(unsigned int mode) {
    const bool writable = mode & (File::Write | File::ReadWrite | File::Append);
    const bool readable = mode & (File::Read | File::ReadWrite) || !writable;
    const bool append = mode & File::Append;
    const bool truncate = !(mode & File::Read) || mode & File::Truncate;
    const bool text = mode & File::Text;
    if (!writable) return text ? "rt" : "rb";
    if (!readable) return append ? (text ? "at" : "ab") : (text ? "wt" : "wb");
    if (truncate) return text ? "w+t" : "w+b";
    if (append) return text ? "a+t" : "a+b";
    return text ? "r+t" : "r+b";
}

} // namespace

File::File(const FilePath& file) : path(file) {}

File::~File() { Release(); }

void File::Release() {
    if (handle) static_cast<void>(std::fclose(handle));
    handle = nullptr;
    openMode = checked_value<unsigned int>();
}

void File::SetPath(const FilePath& file) {
    Release();
    path = file;
}

void File::Open(unsigned int mode) {
    const String name = path.ToString();
    std::FILE* stream = std::fopen(name.Latin1(), streamMode(mode));
    if (!stream) Throw(kNotOpened, path, errno);
    handle = stream;
    openMode = mode;
    last = Transfer::kNone;
}

void File::Close() {
    if (!handle) return;
    std::FILE* stream = handle;
    handle = nullptr;
    openMode = checked_value<unsigned int>();
    if (std::fclose(stream) != 0) Throw(kCloseFailed, path, errno);
}

void File::Flush() {
    if (!handle) return;
    static_cast<void>(std::fflush(handle)); // see the header: failures are not reported
    if (last == Transfer::kWrite) last = Transfer::kNone;
}

checked_value<unsigned long long> File::At() const {
    const off_t position = handle ? ftello(handle) : -1;
    if (position == -1) return {};
    return static_cast<unsigned long long>(position);
}

void File::At(unsigned long long position) {
    if (!handle) Throw(kSeekWhenClosed, path, 0, position);
    if (position > static_cast<unsigned long long>(std::numeric_limits<off_t>::max()))
        Throw(kSeekFailed, path, EINVAL, position);
    if (fseeko(handle, static_cast<off_t>(position), SEEK_SET) != 0)
        Throw(kSeekFailed, path, errno, position);
    last = Transfer::kNone;
}

bool File::AtEnd() const { return handle && std::feof(handle); }

checked_value<unsigned long long> File::Size() const {
    if (IsNull()) return {};
    struct stat status;
    const int result = handle ? fstat(fileno(handle), &status) : stat(path.ToString().Latin1(), &status);
    if (result != 0) return {};
    return static_cast<unsigned long long>(status.st_size);
}

checked_value<unsigned long long> File::Remaining() const {
    if (!handle) return {};
    const checked_value<unsigned long long> size = Size();
    const checked_value<unsigned long long> position = At();
    if (!size.IsGiven() || !position.IsGiven()) return {};
    return size > position ? size - position : 0ULL;
}

/// Prepares the stream for a read or a write. ISO C requires a flush before a read that follows a write, and
/// a positioning before a write that follows a read, unless the read has reached the end of the file. Ignores
/// failures of these calls.
void File::Turn(Transfer next) {
    if (last == Transfer::kWrite && next == Transfer::kRead) static_cast<void>(std::fflush(handle));
    if (last == Transfer::kRead && next == Transfer::kWrite && !std::feof(handle))
        fseeko(handle, 0, SEEK_CUR);
    last = next;
}

void File::ReadBlock(char* buffer, unsigned int count) {
    if (count == 0 || !buffer) return;
    if (!handle) Throw(kReadWhenClosed, path, 0, count);
    Turn(Transfer::kRead);

    const bool text = openMode & Text;
    unsigned long long start = 0;
    if (text) start = At();
    errno = 0; // fread does not set errno at the end of the file
    const std::size_t delivered = std::fread(buffer, 1, count, handle);
    if (text) {
        const unsigned long long passed = At() - start; // an absent position counts as 0
        if (passed != count) Throw(kShortTextRead, path, errno, count, passed);
    } else if (delivered < count) {
        Throw(kShortRead, path, errno, count, static_cast<unsigned int>(delivered));
    }
}

void File::WriteBlock(const char* buffer, unsigned int count) {
    if (count == 0 || !buffer) return;
    if (!handle) Throw(kWriteWhenClosed, path, 0, count);
    Turn(Transfer::kWrite);

    const std::size_t written = std::fwrite(buffer, 1, count, handle);
    if (written < count) Throw(kShortWrite, path, errno, count, static_cast<unsigned int>(written));
}

bool File::Exists() const { return access(path.ToString().Latin1(), F_OK) == 0; }

bool File::IsReadable() const { return access(path.ToString().Latin1(), R_OK) == 0; }

bool File::IsWritable() const { return access(path.ToString().Latin1(), W_OK) == 0; }

void File::SetMode(unsigned short permissions) {
    if (chmod(path.ToString().Latin1(), static_cast<mode_t>(permissions)) == -1) Throw(kModeNotSet, path, 0);
}

void File::SetTime(const FileTime& time) {
    if (!WriteFileTime(path.ToString(), time)) Throw(kTimeNotSet, path, 0);
}

void File::GetTime(FileTime* time) {
    FileTime read;
    if (!ReadFileTime(path.ToString(), read)) Throw(kTimeNotRead, path, 0);
    if (time) *time = read;
}

void File::Remove(bool throwOnFailure) {
    Close();
    const String name = path.ToString();
    if (std::remove(name.Latin1()) != 0 && throwOnFailure) Throw(kRemoveFailed, path, errno);
}

} // namespace Util
