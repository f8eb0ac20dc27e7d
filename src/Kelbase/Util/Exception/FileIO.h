#pragma once

#include <Kelbase/common/common_exception_base.h>
#include <Kelbase/common/common_path.h>

namespace Util::Exception {

/// A failed access to a file or a folder.
class FileIO : public ::Exception::Base {
public:
    /// What failed; the numbers are part of the interface.
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
    /// `errorNumber` is the `errno` of the failed call, 0 where none was recorded.
    FileIO(const String& message, const FilePath& file, ErrorKind kind, int errorNumber);
    FileIO(const String& message, const FolderPath& folder, ErrorKind kind, int errorNumber);
    ///@}
    ///@{
    /// Shares the texts of the other one.
    FileIO(const FileIO&) = default;
    FileIO& operator=(const FileIO&) = default;
    ///@}
    ~FileIO() override;

    /// Returns the text of the base class, followed by the path and the description of the kind. No line feed
    /// ends it.
    String ToString() const override;

    /// Returns the kind in words; " Unknown error" for a number that is no `ErrorKind`.
    String GetErrorDescription() const;
    FilePath GetFilePath() const { return filePath; }       ///< Empty where it was a folder.
    FolderPath GetFolderPath() const { return folderPath; } ///< Empty where it was a file.
    ErrorKind GetErrorKind() const { return kind; }         ///< As the thrower gave it.
    int GetErrorNumber() const { return errorNumber; }      ///< `errno`, 0 where none was recorded.

private:
    FilePath filePath; // the one that does not apply stays empty
    FolderPath folderPath;
    ErrorKind kind;
    int errorNumber;
};

} // namespace Util::Exception
