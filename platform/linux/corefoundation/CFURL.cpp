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
    __CFURL(std::string absolutePath, bool directory)
        : Object(kUrlClass), path(std::move(absolutePath)), isDirectory(directory) {}
    std::string path;
    bool isDirectory;
};

namespace {

const __CFURL& toUrl(const Object& object) { return static_cast<const __CFURL&>(object); }

std::string describeUrl(const Object& object) {
    const __CFURL& url = toUrl(object);
    return Quoted(url.path + (url.isDirectory && url.path != "/" ? "/" : ""));
}

bool equalUrls(const Object& left, const Object& right) {
    return toUrl(left).path == toUrl(right).path && toUrl(left).isDirectory == toUrl(right).isDirectory;
}

void finaliseUrl(Object& object) { static_cast<__CFURL&>(object).~__CFURL(); }

/// Returns the absolute path without a trailing "/". Returns an empty string if the path is empty, contains a
/// NUL, or is relative and the process has no current directory.
std::string toAbsolutePath(std::string path) {
    if (path.empty() || path.find('\0') != std::string::npos) return {};
    if (path.front() != '/') {
        char folder[PATH_MAX];
        if (!getcwd(folder, sizeof folder)) return {};
        path = std::string(folder) + '/' + path;
    }
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

CFURLRef newUrl(CFStringRef text, CFURLPathStyle style, bool isDirectory) {
    const auto utf8 = Utf8(text, "CFURLCreateWithFileSystemPath");
    std::string path = utf8 && style == kCFURLPOSIXPathStyle ? toAbsolutePath(*utf8) : std::string();
    if (path.empty()) return nullptr;
    const bool isRoot = path == "/";
    return MakeObject<__CFURL>(0, std::move(path), isDirectory || isRoot);
}

std::string styleName(CFURLPathStyle style) {
    switch (style) {
    case kCFURLPOSIXPathStyle:
        return "kCFURLPOSIXPathStyle";
    case kCFURLHFSPathStyle:
        return "kCFURLHFSPathStyle";
    case kCFURLWindowsPathStyle:
        return "kCFURLWindowsPathStyle";
    }
    return std::to_string(style);
}

} // namespace

const ObjectClass macplatform::kUrlClass = {16, "URL", &describeUrl, &equalUrls, &finaliseUrl};

const std::string& macplatform::UrlPath(CFURLRef url) {
    return toUrl(CheckedObject(url, "CFURL", kUrlClass)).path;
}

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path, CFURLPathStyle style,
                                       Boolean isDirectory) try {
    PlatformCall call("CFURLCreateWithFileSystemPath");
    CheckedObject(path, "CFURLCreateWithFileSystemPath", kStringClass);
    if (call.IsRecorded()) {
        RecordArguments(call, allocator, path, styleName(style), std::string(isDirectory ? "true" : "false"));
    }
    return ObjectResult(call, call.ConsumeFault() ? nullptr : newUrl(path, style, isDirectory));
} catch (const std::bad_alloc&) {
    return nullptr;
}
