#pragma once

#include <Kelbase/common/common_exception_base.h>
#include <Kelbase/common/common_path.h>

namespace Util::Exception {

/// A failed access to a file or a folder.
class FileIO : public ::Exception::Base {
public:
    /// The operation that failed. The numbers are part of the interface.
    enum ErrorKind : unsigned int {
        FileNotFound = 0,
        OpenError = 1,
        ReadError = 2,
        WriteError = 3,
        CloseError = 4,
        RemoveError = 5,
        RenameError = 6,
        UnexpectedError = 7,
    };

    ///@{
    /// `errorNumber` is the `errno` of the failed call, or 0 if none was recorded.
    FileIO(const String& message, const FilePath& file, ErrorKind kind, int errorNumber);
    FileIO(const String& message, const FolderPath& folder, ErrorKind kind, int errorNumber);
    ///@}
    ///@{
    /// Shares the texts of the other object.
    FileIO(const FileIO&) = default;
    FileIO& operator=(const FileIO&) = default;
    ///@}
    ~FileIO() override;

    /// Returns the text of the base class, followed by the path and the description of the kind, without a
    /// line feed at the end.
    String ToString() const override;

    /// Returns the kind in words, " Unknown error" for a number that is no `ErrorKind`.
    String GetErrorDescription() const;
    FilePath GetFilePath() const { return filePath; }       ///< Returns the empty path for a folder.
    FolderPath GetFolderPath() const { return folderPath; } ///< Returns the empty path for a file.
    ErrorKind GetErrorKind() const { return kind; }         ///< Returns the number of the constructor.
    int GetErrorNumber() const { return errorNumber; }      ///< Returns `errno`, or 0 if none was recorded.

private:
    FilePath filePath;     // empty for a folder
    FolderPath folderPath; // empty for a file
    ErrorKind kind;
    int errorNumber;
};

} // namespace Util::Exception
