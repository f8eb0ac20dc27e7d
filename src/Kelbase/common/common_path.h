#pragma once

#include <Kelbase/common/common_string.h>

/// @file
/// Paths of files and folders, as text. Only the constructors ask the system, for the working directory.
///
/// The constructors make a path absolute. A relative path starts at the working directory, or at "/" if the
/// working directory is unknown or longer than 1022 bytes. "~" and a leading "~/" stand for the value of HOME
/// and a "/", or for "/" if HOME is not set. `GetInternal` returns the result without further changes. "/"
/// separates names, and "\" is read as "/".
///
/// `ToString` and the comparisons clean the path. Cleaning turns "\" into "/", collapses repeated separators
/// except two at the start, and removes a ".." together with the name before it. The name after such a ".."
/// is not examined: of two ".." in a row only the first removes a name ("/a/b/../../c" is "/a/../c"). A ".."
/// directly after the root removes the root ("/../x" is "x"). "." stays. The `bool` of the constructors has
/// no meaning on this platform.
///
/// Paths are equal and sort by their clean form with one "/" at the end, with "A"-"Z" read as "a"-"z". So the
/// empty path equals "/".

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
    String GetInternal() const { return internal; } ///< Not cleaned; absolute unless HOME is relative.
    static bool IsRelative(const String& text);     ///< Begins with no separator; empty text is not relative.

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

    bool IsTopLevel() const;      ///< True for the empty path and for a clean form of "/" or "./".
    String GetFolderName() const; ///< The last name; "" at top level.
    FolderPath GetParent() const; ///< Empty at top level.

    String ToString() const; ///< Clean, with one "/" at the end; "/" for the empty path.

private:
    friend class FilePath;

    String internal;
};

/// `name` inside `folder`. A name with separators leads deeper. An empty folder gives the path of `name`
/// alone.
FilePath operator+(const FolderPath& folder, const String& name);

///@{
/// Compare the clean forms with one "/" at the end, up to the first NUL, with "A"-"Z" read as "a"-"z".
bool operator==(const FilePath& a, const FilePath& b);
bool operator<(const FilePath& a, const FilePath& b);
bool operator<=(const FilePath& a, const FilePath& b);
bool operator==(const FolderPath& a, const FolderPath& b);
bool operator<(const FolderPath& a, const FolderPath& b);
bool operator<=(const FolderPath& a, const FolderPath& b);
///@}
