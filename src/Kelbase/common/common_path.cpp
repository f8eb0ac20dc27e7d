#include <Kelbase/common/common_path.h>

#include <Kelbase/common/detail/common_string_builder.h>
#include <Kelbase/common/detail/common_string_scan.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <unistd.h>

namespace {

using text_scan::IsSeparator;

std::string_view view(const String& s) { return {s.Latin1(), s.GetLength()}; }

/// Returns the text unchanged. A platform with short file names expands them here.
const String& convertToLongPath(const String& s) { return s; }

char slashify(char c) { return c == '\\' ? '/' : c; }

/// Copies the text to `out` and replaces every "\" by "/". Returns the copy.
std::string_view convertSeparators(std::string_view s, char* out) {
    std::transform(s.begin(), s.end(), out, slashify);
    return {out, s.size()};
}

bool isRelative(const String& s) { return s.GetLength() > 0 && slashify(*s.Latin1()) != '/'; }

/// Returns whether the text is empty or contains only white space.
bool isBlank(std::string_view s) {
    return std::all_of(s.begin(), s.end(), [](char c) { return Char(c).IsSpace(); });
}

/// Returns the absolute path. The flag has no meaning on this platform.
String convertRelative(const String& s, bool /*flag*/) {
    if (!isRelative(s)) return s;
    const char* const text = s.Latin1();
    if (text[0] == '~' && (text[1] == '\0' || IsSeparator(text[1]))) {
        const char* home = std::getenv("HOME");
        return String(home ? home : "") + "/" + (text[1] ? s.Mid(2) : String());
    }
    char folder[1024];
    return (getcwd(folder, sizeof folder - 1) ? String(folder) + "/" : String("/")) + s;
}

/// Returns whether the name before its first NUL is "..". The comparisons of `String` end at the first NUL
/// too.
bool isParent(std::string_view name) {
    return name.substr(0, 2) == ".." && (name.size() == 2 || name[2] == '\0');
}

std::string_view withoutTrailingSeparators(std::string_view s) {
    while (!s.empty() && IsSeparator(s.back())) s.remove_suffix(1);
    return s;
}

std::size_t leadingSeparators(std::string_view s) {
    return static_cast<std::size_t>(std::find_if_not(s.begin(), s.end(), IsSeparator) - s.begin());
}

/// Memory for one path. A short path is stored in the object, a long path on the heap.
class PathMemory {
public:
    char* Take(std::size_t n) {
        if (n <= sizeof small) return small;
        large = std::make_unique<char[]>(n);
        return large.get();
    }

private:
    char small[512];
    std::unique_ptr<char[]> large;
};

/// A list of names, stored as one text with "/" between two names. The caller owns the memory of the text.
class JoinedNames {
public:
    /// Creates a list of `emptyNames` empty names: 0, 1 or 2. Writes the text to `out`.
    JoinedNames(char* out, std::size_t emptyNames) : begin(out), end(out), count(emptyNames) {
        if (count == 2) *end++ = '/';
    }

    std::size_t Count() const { return count; }
    std::string_view Text() const { return {begin, static_cast<std::size_t>(end - begin)}; }

    /// Appends the first name of `text`. Returns the appended name.
    std::string_view Append(std::string_view text) {
        if (count > 0) *end++ = '/';
        ++count;
        char* const name = end;
        end += text_scan::CopyName(text, name);
        return {name, static_cast<std::size_t>(end - name)};
    }
    void RemoveLast() {
        --count;
        end = begin + (count > 0 ? text_scan::LastSeparator(Text()) : 0);
    }

private:
    char* const begin;
    char* end;
    std::size_t count;
};

/// Writes the names of `s` to `out` with one "/" between two names. Omits each ".." and the name before it.
/// `out` must hold one byte more than the text.
///
/// A path with one separator at its start begins with one empty name. A path with two or more separators at
/// its start begins with two empty names. A ".." also removes an empty name. The name after a removed ".." is
/// not examined: the second of two consecutive ".." stays.
std::string_view cleanDirPath(std::string_view s, char* const out) {
    if (s.empty()) return {};
    s = withoutTrailingSeparators(s);
    if (s.empty()) return "/";

    JoinedNames names(out, std::min<std::size_t>(leadingSeparators(s), 2));
    s.remove_prefix(leadingSeparators(s));
    const auto takeName = [&names, &s] {
        const std::string_view name = names.Append(s);
        s.remove_prefix(name.size());
        s.remove_prefix(leadingSeparators(s));
        return name;
    };
    while (!s.empty()) {
        if (!isParent(takeName()) || names.Count() == 1) continue;
        names.RemoveLast();
        names.RemoveLast();
        if (!s.empty()) takeName(); // without examining it
    }
    return names.Text();
}

/// Returns the canonical form of `s` without the "/" at its end. The result is a view of `s` or of `memory`.
std::string_view canonicalize(const String& s, PathMemory& memory) {
    const auto withoutSlashes = [](std::string_view text) {
        while (!text.empty() && text.back() == '/') text.remove_suffix(1);
        return text;
    };
    const std::string_view text = view(s);
    const std::string_view stem = withoutSlashes(text);
    if (!text_scan::HasDirtyPath(stem)) return stem;
    PathMemory converted;
    const std::string_view slashed = convertSeparators(text, converted.Take(text.size()));
    return withoutSlashes(cleanDirPath(slashed, memory.Take(text.size() + 1)));
}

/// Compares the canonical forms of two paths as strcmp does. Treats "A"-"Z" as "a"-"z".
int compare(const String& a, const String& b) {
    PathMemory memoryA, memoryB;
    const std::string_view stemA = canonicalize(convertToLongPath(a), memoryA);
    const std::string_view stemB = canonicalize(convertToLongPath(b), memoryB);
    const auto at = [](std::string_view stem, std::size_t i) -> int {
        if (i >= stem.size()) return i == stem.size() ? '/' : '\0';
        return static_cast<unsigned char>(Char(stem[i]).ToLower());
    };
    for (std::size_t i = 0;; ++i) {
        const int byteA = at(stemA, i);
        const int byteB = at(stemB, i);
        if (byteA != byteB || byteA == '\0') return byteA - byteB;
    }
}

bool areEqual(const String& a, const String& b) {
    PathMemory memoryA, memoryB;
    const std::string_view stemA = canonicalize(convertToLongPath(a), memoryA);
    const std::string_view stemB = canonicalize(convertToLongPath(b), memoryB);
    if (stemA.size() == stemB.size()) return text_scan::EqualFolded(stemA.data(), stemB.data(), stemA.size());
    const auto hasNul = [](std::string_view s) { return s.find('\0') != s.npos; };
    return (hasNul(stemA) || hasNul(stemB)) && compare(a, b) == 0;
}

bool hasDrive(std::string_view s) { return s.size() >= 2 && s[1] == ':'; }

/// Returns the last name of a path.
std::string_view getFile(std::string_view s) {
    s = withoutTrailingSeparators(s);
    const std::size_t p = text_scan::LastSeparator(s);
    return s.substr(p != s.npos ? p + 1 : hasDrive(s) ? 2 : 0);
}

/// Returns the part of a name after its last ".". Returns an empty text if there is no ".".
std::string_view getFileExtension(std::string_view file) {
    const std::size_t dot = file.rfind('.');
    return dot == file.npos ? std::string_view() : file.substr(dot + 1);
}

std::string_view getFileBaseName(std::string_view file) { return file.substr(0, file.rfind('.')); }

/// Returns a part of `s` as a `String`. `part` must be a view into `s`.
String slice(const String& s, std::string_view part) {
    return s.Mid(static_cast<unsigned int>(part.data() - s.Latin1()), static_cast<unsigned int>(part.size()));
}

/// Returns the part of a path before its last name.
String getDirectory(const String& s) {
    const std::string_view text = withoutTrailingSeparators(view(s));
    const std::size_t p = text_scan::LastSeparator(text);
    if (p == text.npos) return hasDrive(text) ? s.Left(2) + "/" : String(".");
    if (p == 0) return "/";
    if (p == 2 && hasDrive(text)) return s.Left(3);
    return s.Left(static_cast<unsigned int>(p));
}

} // namespace

void FilePath::construct(const String& text, bool flag) {
    internal = isBlank(view(text)) ? String() : convertRelative(text, flag);
}

bool FilePath::IsRelative(const String& text) { return isRelative(text); }

String FilePath::GetFilename() const { return slice(internal, getFile(view(internal))); }

String FilePath::GetExtension() const { return slice(internal, getFileExtension(getFile(view(internal)))); }

String FilePath::GetBaseName() const { return slice(internal, getFileBaseName(getFile(view(internal)))); }

FolderPath FilePath::GetFolder() const {
    const std::string_view path = view(internal);
    const std::string_view file = getFile(path);
    const std::size_t end = static_cast<std::size_t>(file.data() - path.data());
    // Fast path: the path is absolute and has one "/" before the file name. The folder is the part
    // up to this "/".
    if (end > 1 && IsSeparator(path[0]) && path[end - 1] == '/' && !IsSeparator(path[end - 2])) {
        FolderPath folder;
        folder.internal = internal.Left(static_cast<unsigned int>(end));
        return folder;
    }
    return IsEmpty() ? FolderPath() : FolderPath(getDirectory(internal), false);
}

String FilePath::ToString() const {
    const String& path = convertToLongPath(internal);
    PathMemory memory;
    const std::string_view stem = canonicalize(path, memory);
    if (stem.data() == path.Latin1() && stem.size() == path.GetLength()) return path;
    return StringBuilder(stem.size()).Add(stem).Finish();
}

FolderPath::FolderPath(const String& text, bool flag) : internal(FilePath(text, flag).GetInternal()) {
    if (!IsEmpty() && !IsSeparator(view(internal).back())) internal += '/';
}

bool FolderPath::IsTopLevel() const {
    PathMemory memory;
    const std::string_view stem = canonicalize(internal, memory);
    return stem.empty() || stem == ".";
}

String FolderPath::GetFolderName() const {
    return IsTopLevel() ? String() : FilePath(internal, false).GetFilename();
}

FolderPath FolderPath::GetParent() const {
    return IsTopLevel() ? FolderPath() : FilePath(internal, false).GetFolder();
}

String FolderPath::ToString() const {
    const String& path = convertToLongPath(internal);
    PathMemory memory;
    const std::string_view stem = canonicalize(path, memory);
    if (stem.data() == path.Latin1() && stem.size() + 1 == path.GetLength()) return path;
    return StringBuilder(stem.size() + 1).Add(stem).Add('/').Finish();
}

FilePath operator+(const FolderPath& folder, const String& name) {
    return FilePath(folder.GetInternal() + name, false);
}

bool operator==(const FilePath& a, const FilePath& b) { return areEqual(a.GetInternal(), b.GetInternal()); }
bool operator<(const FilePath& a, const FilePath& b) { return compare(a.GetInternal(), b.GetInternal()) < 0; }
bool operator<=(const FilePath& a, const FilePath& b) {
    return compare(a.GetInternal(), b.GetInternal()) <= 0;
}
bool operator==(const FolderPath& a, const FolderPath& b) {
    return areEqual(a.GetInternal(), b.GetInternal());
}
bool operator<(const FolderPath& a, const FolderPath& b) {
    return compare(a.GetInternal(), b.GetInternal()) < 0;
}
bool operator<=(const FolderPath& a, const FolderPath& b) {
    return compare(a.GetInternal(), b.GetInternal()) <= 0;
}
