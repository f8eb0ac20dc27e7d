#pragma once

#include <Kelbase/common/common_string.h>

/// @file
/// Paths of files and folders, as text. Only the constructors call the system, to get the working directory.
///
/// The constructors make a path absolute. A relative path starts at the working directory, or at "/" if the
/// working directory is unknown or longer than 1022 bytes. "~" and a leading "~/" stand for the value of HOME
/// and a "/", or for "/" if HOME is not set. `GetInternal` returns the result without further changes. "/"
/// separates names, and "\" is read as "/".
///
/// `ToString` and the comparisons use the canonical form. The canonical form has "/" for each "\", has
/// repeated separators collapsed except two at the start, has each ".." removed together with the name before
/// it, and ends with one "/". The name after a removed ".." is not examined: of two ".." in a row only the
/// first removes a name ("/a/b/../../c" gives "/a/../c/"). A ".." directly after the root removes the root
/// ("/../x" gives "x/"). "." stays. The canonical form of the empty path is "/".
///
/// Paths are equal if their canonical forms are equal up to the first NUL, with "A"-"Z" equal to "a"-"z". The
/// canonical forms also give the order.
///
/// The `bool` of the constructors has no meaning on this platform.

class FolderPath;

/// The path of a file. Separators at its end are ignored.
class FilePath {
public:
    FilePath() = default;
    /// Calls `construct`.
    FilePath(const String& text, bool flag) { construct(text, flag); }
    /// Sets the path to `text`, made absolute. The path is empty if `text` holds nothing but white space.
    void construct(const String& text, bool flag);

    bool IsEmpty() const { return internal.GetLength() == 0; } ///< Returns false for "/".
    /// Returns the path without cleaning. It is absolute unless HOME is relative.
    String GetInternal() const { return internal; }
    /// Returns whether a text does not begin with a separator. Returns false for an empty text.
    static bool IsRelative(const String& text);

    String GetFilename() const;  ///< Returns the last name.
    String GetExtension() const; ///< Returns the part after the last "." of the last name, or "".
    String GetBaseName() const;  ///< Returns the last name up to its last ".".
    /// Returns the folder before the last name. Returns the working directory if the path has no name, as
    /// "/", and the empty path for the empty path.
    FolderPath GetFolder() const;

    /// Returns the canonical form without the "/" at its end, "" for "/" and for the empty path.
    String ToString() const;

private:
    String internal;
};

/// The path of a folder. The internal form ends with a separator, so that a name can be appended directly.
class FolderPath {
public:
    FolderPath() = default;
    /// The path is empty if `text` holds nothing but white space.
    FolderPath(const String& text, bool flag);

    bool IsEmpty() const { return internal.GetLength() == 0; } ///< Returns false for "/".
    /// Returns the path without cleaning. It ends with a separator unless the path is empty.
    String GetInternal() const { return internal; }
    /// Returns the same as `FilePath::IsRelative`.
    static bool IsRelative(const String& text) { return FilePath::IsRelative(text); }

    bool IsTopLevel() const;      ///< Returns whether the canonical form is "/" or "./".
    String GetFolderName() const; ///< Returns the last name, "" at top level.
    FolderPath GetParent() const; ///< Returns the empty path at top level.

    String ToString() const; ///< Returns the canonical form.

private:
    friend class FilePath;

    String internal;
};

/// Returns the path of `name` inside `folder`. A name with separators names a file in a subfolder. With an
/// empty folder, the result is the path of `name` alone.
FilePath operator+(const FolderPath& folder, const String& name);

///@{
/// Compares the canonical forms up to the first NUL, with "A"-"Z" equal to "a"-"z".
bool operator==(const FilePath& a, const FilePath& b);
bool operator<(const FilePath& a, const FilePath& b);
bool operator<=(const FilePath& a, const FilePath& b);
bool operator==(const FolderPath& a, const FolderPath& b);
bool operator<(const FolderPath& a, const FolderPath& b);
bool operator<=(const FolderPath& a, const FolderPath& b);
///@}
