#include <Kelbase/Util/Exception/FileIO.h>

namespace Util::Exception {

FileIO::FileIO(const String& text, const FilePath& file, ErrorKind errorKind, int number)
    : Base(text), filePath(file), kind(errorKind), errorNumber(number) {}

FileIO::FileIO(const String& text, const FolderPath& folder, ErrorKind errorKind, int number)
    : Base(text), folderPath(folder), kind(errorKind), errorNumber(number) {}

FileIO::~FileIO() = default;

String FileIO::GetErrorDescription() const {
    switch (kind) {
    case FileNotFound: return "File not found";
    case OpenError: return "Open error";
    case ReadError: return "Read error";
    case WriteError: return "Write error";
    case CloseError: return "Close error";
    case RemoveError: return "Remove error";
    case RenameError: return "Rename error";
    case UnexpectedError: return "Unexpected error";
    }
    return " Unknown error"; // programs that read these texts expect the blank
}

String FileIO::ToString() const {
    const String path = folderPath.IsEmpty() ? filePath.GetInternal() : folderPath.GetInternal();
    return Base::ToString() + "\nFileIO:\n" + path + ": " + GetErrorDescription();
}

} // namespace Util::Exception
