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

/// The hook of platforms that keep short names beside the long ones.
const String& convertToLongPath(const String& s) { return s; }

bool isRelative(const String& s) { return s.GetLength() > 0 && !IsSeparator(*s.Latin1()); }

/// Whether simplifying its white space would leave nothing.
bool isBlank(std::string_view s) {
    return std::all_of(s.begin(), s.end(), [](char c) { return Char(c).IsSpace(); });
}

String convertRelative(const String& s) {
    if (!isRelative(s)) return s;
    const char* const text = s.Latin1();
    if (text[0] == '~' && (text[1] == '\0' || IsSeparator(text[1]))) {
        const char* home = std::getenv("HOME");
        return String(home ? home : "") + "/" + (text[1] ? s.Mid(2) : String());
    }
    char folder[1024];
    return (getcwd(folder, sizeof folder - 1) ? String(folder) + "/" : String("/")) + s;
}

/// Whether the name reads as "..": up to a NUL, as texts compare.
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

/// Memory for the clean form of one path: that of the caller's stack unless the path is long.
class Scratch {
public:
    char* Room(std::size_t n) {
        if (n <= sizeof small) return small;
        large = std::make_unique<char[]>(n);
        return large.get();
    }

private:
    char small[512];
    std::unique_ptr<char[]> large;
};

/// Names between single "/", each ".." gone together with the name before it. Written to `out`, which has
/// room for one byte more than the text.
///
/// The name that follows such a ".." is taken over unseen, so that of two in a row the second one stays. A
/// separator at the start stands behind an empty name, two or more behind two; a ".." takes these away as
/// well. What has been written is never longer than what has been read.
std::string_view cleanDirPath(std::string_view s, char* const out) {
    if (s.empty()) return {};
    s = withoutTrailingSeparators(s);
    if (s.empty()) return "/";

    const char* p = s.data() + leadingSeparators(s);
    const char* const last = s.data() + s.size();
    std::size_t count = std::min<std::size_t>(leadingSeparators(s), 2);
    char* end = out;
    if (count == 2) *end++ = '/'; // `count` names joined
    for (bool examine = true; p < last;) {
        const std::string_view before(out, static_cast<std::size_t>(end - out));
        if (count > 0) *end++ = '/';
        const std::size_t size = text_scan::CopyName({p, static_cast<std::size_t>(last - p)}, end);
        const std::string_view name(end, size);
        end += size;
        p += size;
        while (p < last && IsSeparator(*p)) ++p;
        if (examine && count > 0 && isParent(name)) {
            end = out + (--count > 0 ? text_scan::LastSeparator(before) : 0);
            examine = false;
        } else {
            ++count;
            examine = true;
        }
    }
    return {out, static_cast<std::size_t>(end - out)};
}

/// The canonical form of `s` less the "/" that ends it: a part of `s` where that is clean, else in `scratch`.
std::string_view canonicalStem(const String& s, Scratch& scratch) {
    const auto withoutSlashes = [](std::string_view text) {
        while (!text.empty() && text.back() == '/') text.remove_suffix(1);
        return text;
    };
    const std::string_view stem = withoutSlashes(view(s));
    if (!text_scan::HasDirtyPath(stem)) return stem; // some clean ones are not recognised
    return withoutSlashes(cleanDirPath(view(s), scratch.Room(s.GetLength() + std::size_t{1})));
}

/// As strcmp orders the canonical forms of two paths, capital letters read as small ones.
int compare(const String& a, const String& b) {
    Scratch scratchA, scratchB;
    const std::string_view stemA = canonicalStem(convertToLongPath(a), scratchA);
    const std::string_view stemB = canonicalStem(convertToLongPath(b), scratchB);
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
    Scratch scratchA, scratchB;
    const std::string_view stemA = canonicalStem(convertToLongPath(a), scratchA);
    const std::string_view stemB = canonicalStem(convertToLongPath(b), scratchB);
    if (stemA.size() == stemB.size()) return text_scan::EqualFolded(stemA.data(), stemB.data(), stemA.size());
    const auto hasNul = [](std::string_view s) { return s.find('\0') != s.npos; };
    return (hasNul(stemA) || hasNul(stemB)) && compare(a, b) == 0;
}

bool hasDrive(std::string_view s) { return s.size() >= 2 && s[1] == ':'; }

/// The last name.
std::string_view getFile(std::string_view s) {
    s = withoutTrailingSeparators(s);
    const std::size_t p = text_scan::LastSeparator(s);
    return s.substr(p != s.npos ? p + 1 : hasDrive(s) ? 2 : 0);
}

/// What follows the last "." of the last name; empty when it has none.
std::string_view getFileExtension(std::string_view file) {
    const std::size_t dot = file.rfind('.');
    return dot == file.npos ? std::string_view() : file.substr(dot + 1);
}

std::string_view getFileBaseName(std::string_view file) { return file.substr(0, file.rfind('.')); }

/// A part of the text as a text.
String slice(const String& s, std::string_view part) {
    return s.Mid(static_cast<unsigned int>(part.data() - s.Latin1()), static_cast<unsigned int>(part.size()));
}

/// Everything before the last name.
String getDirectory(const String& s) {
    const std::string_view text = withoutTrailingSeparators(view(s));
    const std::size_t p = text_scan::LastSeparator(text);
    if (p == text.npos) return hasDrive(text) ? s.Left(2) + "/" : String(".");
    if (p == 0) return "/";
    if (p == 2 && hasDrive(text)) return s.Left(3);
    return s.Left(static_cast<unsigned int>(p));
}

} // namespace

void FilePath::construct(const String& text, bool) {
    internal = isBlank(view(text)) ? String() : convertRelative(text);
}

bool FilePath::IsRelative(const String& text) { return isRelative(text); }

String FilePath::GetFilename() const { return slice(internal, getFile(view(internal))); }

String FilePath::GetExtension() const { return slice(internal, getFileExtension(getFile(view(internal)))); }

String FilePath::GetBaseName() const { return slice(internal, getFileBaseName(getFile(view(internal)))); }

FolderPath FilePath::GetFolder() const {
    const std::string_view path = view(internal);
    const std::string_view file = getFile(path);
    const std::size_t end = static_cast<std::size_t>(file.data() - path.data());
    // In most paths the folder ends with the separator before the file, and is absolute as it stands.
    if (end > 1 && IsSeparator(path[0]) && path[end - 1] == '/' && !IsSeparator(path[end - 2])) {
        FolderPath folder;
        folder.internal = internal.Left(static_cast<unsigned int>(end));
        return folder;
    }
    return IsEmpty() ? FolderPath() : FolderPath(getDirectory(internal), false);
}

String FilePath::ToString() const {
    const String& path = convertToLongPath(internal);
    Scratch scratch;
    const std::string_view stem = canonicalStem(path, scratch);
    if (stem.data() == path.Latin1() && stem.size() == path.GetLength()) return path;
    return StringBuilder(stem.size()).Add(stem).Finish();
}

FolderPath::FolderPath(const String& text, bool flag) : internal(FilePath(text, flag).GetInternal()) {
    if (!IsEmpty() && !IsSeparator(view(internal).back())) internal += '/';
}

bool FolderPath::IsTopLevel() const {
    Scratch scratch;
    const std::string_view stem = canonicalStem(internal, scratch);
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
    Scratch scratch;
    const std::string_view stem = canonicalStem(path, scratch);
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
