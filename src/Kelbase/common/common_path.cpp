#include <Kelbase/common/common_path.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include <unistd.h>

namespace {

bool isSeparator(char c) { return c == '/' || c == '\\'; }

std::string_view view(const String& s) { return {s.Latin1(), s.GetLength()}; }

/// The bytes as text, also where there are NULs among them.
String fromBytes(std::string_view bytes) {
    String result;
    while (true) {
        const std::size_t length = std::min(bytes.find('\0'), bytes.size());
        result += String(bytes.data(), static_cast<unsigned int>(length));
        if (length == bytes.size()) return result;
        result += '\0';
        bytes.remove_prefix(length + 1);
    }
}

/// The hook of platforms that keep short names beside the long ones.
const String& convertToLongPath(const String& s) { return s; }

bool isRelative(const String& s) { return s.GetLength() > 0 && !isSeparator(*s.Latin1()); }

/// Whether simplifying its white space would leave nothing.
bool isBlank(std::string_view s) {
    return std::all_of(s.begin(), s.end(), [](char c) { return Char(c).IsSpace(); });
}

String convertRelative(const String& s) {
    if (!isRelative(s)) return s;
    const char* const text = s.Latin1();
    if (text[0] == '~' && (text[1] == '\0' || isSeparator(text[1]))) {
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

/// What cleaning would leave as it is, told by a look at the separators; some clean texts are not recognised.
bool isClean(std::string_view s) {
    if (s.find('\\') != s.npos) return false;
    for (std::size_t p = s.find('/'); p != s.npos; p = s.find('/', p + 1)) {
        const std::string_view rest = s.substr(p + 1, 2);
        if (rest.empty() || rest[0] == '/' || rest == "..") return false;
    }
    return true;
}

std::string_view withoutTrailingSeparators(std::string_view s) {
    while (!s.empty() && isSeparator(s.back())) s.remove_suffix(1);
    return s;
}

std::size_t leadingSeparators(std::string_view s) {
    return static_cast<std::size_t>(std::find_if_not(s.begin(), s.end(), isSeparator) - s.begin());
}

/// Names between single "/", each ".." gone together with the name before it.
///
/// The name that follows such a ".." is taken over unseen, so that of two in a row the second one stays. A
/// separator at the start stands behind an empty name, two or more behind two; a ".." takes these away as
/// well.
std::string cleanDirPath(std::string_view s) {
    if (s.empty()) return {};
    s = withoutTrailingSeparators(s);
    if (s.empty()) return "/";

    std::size_t count = std::min<std::size_t>(leadingSeparators(s), 2);
    std::string clean(count == 2 ? 1 : 0, '/'); // `count` names joined
    bool examine = true;
    for (s.remove_prefix(leadingSeparators(s)); !s.empty(); s.remove_prefix(leadingSeparators(s))) {
        const auto end = static_cast<std::size_t>(std::find_if(s.begin(), s.end(), isSeparator) - s.begin());
        const std::string_view name = s.substr(0, end);
        if (examine && count > 0 && isParent(name)) {
            clean.resize(--count > 0 ? clean.rfind('/') : 0);
            examine = false;
        } else {
            if (count++ > 0) clean += '/';
            clean += name;
            examine = true;
        }
        s.remove_prefix(end);
    }
    return clean;
}

/// The canonical form of `s` less the "/" that ends it: a part of `s` where that is clean, else in `scratch`.
std::string_view canonicalStem(const String& s, std::string& scratch) {
    const auto withoutSlashes = [](std::string_view text) {
        while (!text.empty() && text.back() == '/') text.remove_suffix(1);
        return text;
    };
    const std::string_view stem = withoutSlashes(view(s));
    if (isClean(stem)) return stem;
    scratch = cleanDirPath(view(s));
    return withoutSlashes(scratch);
}

/// As strcmp orders the canonical forms of two paths, capital letters read as small ones.
int compare(const String& a, const String& b) {
    std::string scratchA, scratchB;
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

std::size_t lastSeparator(std::string_view s) { return s.find_last_of("/\\"); }

bool hasDrive(std::string_view s) { return s.size() >= 2 && s[1] == ':'; }

/// The last name.
String getFile(const String& s) {
    const std::string_view text = withoutTrailingSeparators(view(s));
    const std::size_t p = lastSeparator(text);
    const std::size_t start = p != text.npos ? p + 1 : hasDrive(text) ? 2 : 0;
    return s.Mid(static_cast<unsigned int>(start), static_cast<unsigned int>(text.size() - start));
}

/// Everything before the last name.
String getDirectory(const String& s) {
    const std::string_view text = withoutTrailingSeparators(view(s));
    const std::size_t p = lastSeparator(text);
    if (p == text.npos) return hasDrive(text) ? s.Left(2) + "/" : String(".");
    if (p == 0) return "/";
    if (p == 2 && hasDrive(text)) return s.Left(3);
    return s.Left(static_cast<unsigned int>(p));
}

String getFileExtension(const String& s) {
    const checked_value<unsigned int> dot = s.FindRev('.');
    return dot.IsGiven() ? s.Mid(dot + 1) : String();
}

String getFileBaseName(const String& s) {
    const checked_value<unsigned int> dot = s.FindRev('.');
    return dot.IsGiven() ? s.Left(dot) : s;
}

} // namespace

void FilePath::construct(const String& text, bool) {
    internal = isBlank(view(text)) ? String() : convertRelative(text);
}

bool FilePath::IsRelative(const String& text) { return isRelative(text); }

String FilePath::GetFilename() const { return getFile(internal); }

String FilePath::GetExtension() const { return getFileExtension(getFile(internal)); }

String FilePath::GetBaseName() const { return getFileBaseName(getFile(internal)); }

FolderPath FilePath::GetFolder() const {
    return IsEmpty() ? FolderPath() : FolderPath(getDirectory(internal), false);
}

String FilePath::ToString() const {
    const String& path = convertToLongPath(internal);
    std::string scratch;
    const std::string_view stem = canonicalStem(path, scratch);
    return stem == view(path) ? path : fromBytes(stem);
}

FolderPath::FolderPath(const String& text, bool flag) : internal(FilePath(text, flag).GetInternal()) {
    if (!IsEmpty() && !isSeparator(view(internal).back())) internal += '/';
}

bool FolderPath::IsTopLevel() const {
    std::string scratch;
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
    std::string scratch;
    const std::string_view stem = canonicalStem(path, scratch);
    if (stem.data() == path.Latin1() && stem.size() + 1 == path.GetLength()) return path;
    return fromBytes(stem) + "/";
}

FilePath operator+(const FolderPath& folder, const String& name) {
    return FilePath(folder.GetInternal() + name, false);
}

bool operator==(const FilePath& a, const FilePath& b) {
    return compare(a.GetInternal(), b.GetInternal()) == 0;
}
bool operator<(const FilePath& a, const FilePath& b) { return compare(a.GetInternal(), b.GetInternal()) < 0; }
bool operator<=(const FilePath& a, const FilePath& b) {
    return compare(a.GetInternal(), b.GetInternal()) <= 0;
}
bool operator==(const FolderPath& a, const FolderPath& b) {
    return compare(a.GetInternal(), b.GetInternal()) == 0;
}
bool operator<(const FolderPath& a, const FolderPath& b) {
    return compare(a.GetInternal(), b.GetInternal()) < 0;
}
bool operator<=(const FolderPath& a, const FolderPath& b) {
    return compare(a.GetInternal(), b.GetInternal()) <= 0;
}
