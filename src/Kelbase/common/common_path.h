#pragma once

#include <Kelbase/common/common_string.h>

/// @file
/// Names of files and folders, as text: nothing here looks at the disk.
///
/// A path is made absolute when it is made, against the working folder or, after "~/", the environment's
/// HOME; for the rest it is kept as given (`GetInternal`). "/" separates names, and "\" is read as "/".
/// `ToString` and the comparisons clean it: "\" made "/", doubled separators collapsed except two at the
/// start, a name followed by ".." dropped. Of two ".." in a row only the first takes a name away
/// ("/a/b/../../c" is "/a/../c"), and
/// "." stays. The `bool` of the constructors has no meaning on this platform.
///
/// Paths are equal, and sort, by their clean form, with "A"-"Z" read as "a"-"z".

class FolderPath;

/// The name of a file; separators at its end do not count.
class FilePath {
public:
    FilePath() = default;
    /// As `construct`.
    FilePath(const String& text, bool flag) { construct(text, flag); }
    /// Makes this the path of `text`; empty when there is nothing but white space.
    void construct(const String& text, bool flag);

    bool IsEmpty() const { return internal.GetLength() == 0; } ///< No path at all; "/" is one.
    String GetInternal() const { return internal; }            ///< Absolute, not cleaned.
    static bool IsRelative(const String& text); ///< Begins with no separator; empty text is not relative.

    String GetFilename() const;  ///< The last name.
    String GetExtension() const; ///< What follows the last "." of the last name.
    String GetBaseName() const;  ///< The last name up to its last ".".
    /// What stands before the last name: the working folder where there is no name, as in "/"; empty only for
    /// the empty path.
    FolderPath GetFolder() const;

    String ToString() const; ///< Clean, with no separator at the end; "" for the empty path and for "/".

private:
    String internal;
};

/// The name of a folder. Its internal form ends with a separator, so that a name joins it as it is.
class FolderPath {
public:
    FolderPath() = default;
    /// Empty when there is nothing but white space in the text.
    FolderPath(const String& text, bool flag);

    bool IsEmpty() const { return internal.GetLength() == 0; } ///< No path at all; "/" is one.
    String GetInternal() const { return internal; }            ///< Ends with a separator unless it is empty.
    /// Begins with no separator; empty text is not relative.
    static bool IsRelative(const String& text) { return FilePath::IsRelative(text); }

    bool IsTopLevel() const;      ///< Also true of the empty path.
    String GetFolderName() const; ///< The last name; "" at top level.
    FolderPath GetParent() const; ///< Empty at top level.

    String ToString() const; ///< Clean, with one "/" at the end; "/" for the empty path.

private:
    friend class FilePath;

    String internal;
};

/// `name` inside `folder`; a name with separators in it leads deeper.
FilePath operator+(const FolderPath& folder, const String& name);

///@{
/// By the clean forms, "A"-"Z" read as "a"-"z", up to the first NUL; the disk is not asked.
bool operator==(const FilePath& a, const FilePath& b);
bool operator<(const FilePath& a, const FilePath& b);
bool operator<=(const FilePath& a, const FilePath& b);
bool operator==(const FolderPath& a, const FolderPath& b);
bool operator<(const FolderPath& a, const FolderPath& b);
bool operator<=(const FolderPath& a, const FolderPath& b);
///@}
