#pragma once

#include <Kelbase/common/common_string.h>

/// @file
/// Declares the paths of files and folders. Only the constructors and `construct` call the system: they read
/// the working directory and HOME.
///
/// The constructors make a path absolute. A relative path starts at the working directory, or at "/" if the
/// working directory is unknown or longer than 1022 bytes. "~" and a leading "~/" are replaced by the value
/// of HOME and a "/", or by "/" if HOME is not set. `GetInternal` returns the result without further changes.
/// Both "/" and "\" separate names.
///
/// `ToString` and the comparisons use the canonical form. The canonical form is computed in these steps. Each
/// "\" becomes "/". A sequence of separators becomes one "/". Two or more separators at the start of the path
/// become "//". Each ".." is removed together with the name before it. One "/" is appended. The name after a
/// removed ".." is not examined: of two consecutive ".." only the first removes a name ("/a/b/../../c" gives
/// "/a/../c/"). A ".." directly after the root removes the root ("/../x" gives "x/"). A "." is not removed.
/// The canonical form of the empty path is "/".
///
/// Comparisons compare the canonical forms up to the first NUL and treat "A"-"Z" as equal to "a"-"z".
///
/// The `bool` of the constructors has no meaning on this platform.

class FolderPath;

/// The path of a file. Separators at its end are ignored.
class FilePath {
public:
    FilePath() = default;
    /// Calls `construct`.
    FilePath(const String& text, bool flag) { construct(text, flag); }
    /// Sets the path to `text` and makes it absolute. The path becomes empty if `text` is empty or contains
    /// only white space.
    void construct(const String& text, bool flag);

    bool IsEmpty() const { return internal.GetLength() == 0; } ///< Returns false for "/".
    /// Returns the path before canonicalization. The path is absolute unless HOME is relative.
    String GetInternal() const { return internal; }
    /// Returns whether a text does not begin with a separator. Returns false for an empty text.
    static bool IsRelative(const String& text);

    String GetFilename() const;  ///< Returns the last name.
    String GetExtension() const; ///< Returns the part after the last "." of the last name, or "".
    String GetBaseName() const;  ///< Returns the last name up to its last ".".
    /// Returns the folder of the last name. Returns the working directory for a path without a name, for
    /// example "/". Returns the empty path for the empty path.
    FolderPath GetFolder() const;

    /// Returns the canonical form without the "/" at its end. Returns "" for "/" and for the empty path.
    String ToString() const;

private:
    String internal;
};

/// The path of a folder. The internal form ends with a separator, so that a name can be appended directly.
class FolderPath {
public:
    FolderPath() = default;
    /// Makes `text` absolute and appends a "/" if the last byte is not a separator. The path is empty if
    /// `text` is empty or contains only white space.
    FolderPath(const String& text, bool flag);

    bool IsEmpty() const { return internal.GetLength() == 0; } ///< Returns false for "/".
    /// Returns the path before canonicalization. A path that is not empty ends with a separator.
    String GetInternal() const { return internal; }
    /// Returns the same as `FilePath::IsRelative`.
    static bool IsRelative(const String& text) { return FilePath::IsRelative(text); }

    bool IsTopLevel() const;      ///< Returns whether the canonical form is "/" or "./".
    String GetFolderName() const; ///< Returns the last name, or "" if `IsTopLevel()`.
    FolderPath GetParent() const; ///< Returns the empty path if `IsTopLevel()`.

    String ToString() const; ///< Returns the canonical form.

private:
    friend class FilePath;

    String internal;
};

/// Returns the path of `name` in `folder`. `name` may contain separators. If `folder` is empty, returns
/// `FilePath(name, false)`.
FilePath operator+(const FolderPath& folder, const String& name);

///@{
/// Compares the canonical forms up to the first NUL. Treats "A"-"Z" as equal to "a"-"z".
bool operator==(const FilePath& a, const FilePath& b);
bool operator<(const FilePath& a, const FilePath& b);
bool operator<=(const FilePath& a, const FilePath& b);
bool operator==(const FolderPath& a, const FolderPath& b);
bool operator<(const FolderPath& a, const FolderPath& b);
bool operator<=(const FolderPath& a, const FolderPath& b);
///@}
