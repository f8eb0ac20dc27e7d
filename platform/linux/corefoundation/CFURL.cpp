#include <CoreFoundation/CFURL.h>

#include "CFObject.h"
#include "CFStringObject.h"
#include "CFURLPath.h"

#include <unistd.h>

#include <climits>

using namespace macplatform;

namespace macplatform {
extern const ObjectClass urlClass;
}

struct __CFURL : Object {
    __CFURL(std::string absolutePath, bool directory)
        : Object(urlClass), path(std::move(absolutePath)), isDirectory(directory) {}
    std::string path;
    bool isDirectory;
};

namespace {

const __CFURL& ToUrl(const Object& object) { return static_cast<const __CFURL&>(object); }

std::string DescribeUrl(const Object& object) {
    const __CFURL& url = ToUrl(object);
    return Quoted(url.path + (url.isDirectory && url.path != "/" ? "/" : ""));
}

bool EqualUrls(const Object& left, const Object& right) {
    return ToUrl(left).path == ToUrl(right).path && ToUrl(left).isDirectory == ToUrl(right).isDirectory;
}

void FinaliseUrl(Object& object) { static_cast<__CFURL&>(object).~__CFURL(); }

/// Empty when there is no such path: no text, a NUL in it, or no current folder to start at.
std::string AbsolutePath(std::string path) {
    if (path.empty() || path.find('\0') != std::string::npos) return {};
    if (path.front() != '/') {
        char folder[PATH_MAX];
        if (!getcwd(folder, sizeof folder)) return {};
        path = std::string(folder) + '/' + path;
    }
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

CFURLRef NewUrl(CFStringRef text, CFURLPathStyle style, bool isDirectory) {
    const auto utf8 = Utf8(text, "CFURLCreateWithFileSystemPath");
    std::string path = utf8 && style == kCFURLPOSIXPathStyle ? AbsolutePath(*utf8) : std::string();
    if (path.empty()) return nullptr;
    const bool isRoot = path == "/";
    return MakeObject<__CFURL>(0, std::move(path), isDirectory || isRoot);
}

std::string StyleName(CFURLPathStyle style) {
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

const ObjectClass macplatform::urlClass = {16, "URL", &DescribeUrl, &EqualUrls, &FinaliseUrl};

const std::string& macplatform::UrlPath(CFURLRef url) {
    return ToUrl(CheckedObject(url, "CFURL", urlClass)).path;
}

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path, CFURLPathStyle style,
                                       Boolean isDirectory) try {
    PlatformCall call("CFURLCreateWithFileSystemPath");
    CheckedObject(path, "CFURLCreateWithFileSystemPath", stringClass);
    if (call.IsTold()) {
        Tell(call, allocator, path, StyleName(style), std::string(isDirectory ? "true" : "false"));
    }
    return ObjectResult(call, call.TakeFault() ? nullptr : NewUrl(path, style, isDirectory));
} catch (const std::bad_alloc&) {
    return nullptr;
}
