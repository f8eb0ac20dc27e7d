#include <CoreFoundation/CFURL.h>

#include "CFObject.h"
#include "CFStringObject.h"
#include "CFURLPath.h"

#include <unistd.h>

#include <climits>

using namespace macplatform;

namespace macplatform {
extern const ObjectClass kUrlClass;
}

struct __CFURL : Object {
    __CFURL(std::string absolutePath, std::string pathText)
        : Object(kUrlClass), path(std::move(absolutePath)), text(std::move(pathText)) {}
    std::string path;
    std::string text; ///< The path as the URL shows it: that of a directory ends with "/".
};

namespace {

const __CFURL& toUrl(const Object& object) { return static_cast<const __CFURL&>(object); }

std::string describeUrl(const Object& object) { return Quoted(toUrl(object).text); }

bool equalUrls(const Object& left, const Object& right) { return toUrl(left).text == toUrl(right).text; }

void finaliseUrl(Object& object) { static_cast<__CFURL&>(object).~__CFURL(); }

/// Removes "." and, with the name before it, ".." from an absolute path. Does not follow links.
std::string withoutDots(std::string_view path) {
    std::string clean;
    while (!path.empty()) {
        path.remove_prefix(1); // the "/"
        const std::string_view name = path.substr(0, path.find('/'));
        path.remove_prefix(name.size());
        if (name == "..") {
            clean.resize(clean.empty() ? 0 : clean.rfind('/'));
        } else if (name != ".") {
            (clean += '/') += name;
        }
    }
    return clean.empty() ? "/" : clean;
}

/// Returns the absolute path. Returns an empty string if the path is empty, contains a NUL, or is relative
/// and the process has no current directory.
std::string toAbsolutePath(const std::string& path) {
    if (path.empty() || path.find('\0') != std::string::npos) return {};
    if (path.front() == '/') return path;
    char folder[PATH_MAX];
    if (!getcwd(folder, sizeof folder)) return {};
    return withoutDots(std::string(folder) + '/' + path);
}

CFURLRef createUrl(CFStringRef text, CFURLPathStyle style, bool isDirectory) {
    const auto utf8 = Utf8(text, "CFURLCreateWithFileSystemPath");
    std::string path = utf8 && style == kCFURLPOSIXPathStyle ? toAbsolutePath(*utf8) : std::string();
    if (path.empty()) return nullptr;
    std::string shown = path.back() == '/' ? path : path + '/';
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    if (!isDirectory) shown = path;
    return MakeObject<__CFURL>(0, std::move(path), std::move(shown));
}

std::string styleName(CFURLPathStyle style) {
    switch (style) {
    case kCFURLPOSIXPathStyle: return "kCFURLPOSIXPathStyle";
    case kCFURLHFSPathStyle: return "kCFURLHFSPathStyle";
    case kCFURLWindowsPathStyle: return "kCFURLWindowsPathStyle";
    }
    return std::to_string(style);
}

} // namespace

const ObjectClass macplatform::kUrlClass = {16, "URL", &describeUrl, &equalUrls, &finaliseUrl};

const std::string& macplatform::UrlPath(CFURLRef url, const char* function) {
    return toUrl(CheckedObject(url, function, kUrlClass)).path;
}

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path, CFURLPathStyle style,
                                       Boolean isDirectory) {
    CheckedObject(path, "CFURLCreateWithFileSystemPath", kStringClass);
    const auto show = [&] {
        return ArgumentTexts(allocator, path, styleName(style), std::string(isDirectory ? "true" : "false"));
    };
    return MakeObjectCall("CFURLCreateWithFileSystemPath", show,
                          [&] { return createUrl(path, style, isDirectory); });
}
