#include <Carbon/Files.h>
#include <Carbon/MacErrors.h>
#include <CoreFoundation/CFURL.h>

#include "FileReference.h"
#include "FinderInfo.h"
#include "ResultCodes.h"
#include "corefoundation/CFURLPath.h"
#include "trace/PlatformFunction.h"

#include <algorithm>
#include <cstdio>

using namespace macplatform;

namespace {

std::string describeBitmap(FSCatalogInfoBitmap bitmap) {
    if (bitmap == kFSCatInfoFinderInfo) return "FinderInfo";
    if (bitmap == kFSCatInfoNodeFlags) return "NodeFlags";
    char text[16];
    (void)std::snprintf(text, sizeof text, "0x%lX", static_cast<unsigned long>(bitmap));
    return text;
}

std::string describeFlags(const FSCatalogInfo* info, FSCatalogInfoBitmap bitmap) {
    if (!info || (bitmap & kFSCatInfoFinderInfo) == 0) return "no Finder flags";
    UInt16 flags;
    std::copy_n(&info->finderInfo[8], sizeof flags, reinterpret_cast<UInt8*>(&flags));
    char text[32];
    (void)std::snprintf(text, sizeof text, "Finder flags 0x%04X", static_cast<unsigned>(flags));
    return text;
}

OSErr getInfo(const FSRef& ref, FSCatalogInfoBitmap bitmap, FSCatalogInfo* info) {
    const Item item = FindItem(ref);
    if (item.result != noErr) return item.result;
    if ((bitmap & kFSCatInfoFinderInfo) != 0) {
        FinderInfo stored;
        if (const int failed = ReadFinderInfo(item.path, stored)) return ResultCode(failed);
        SwapBasicFinderInfo(stored.data(), info->finderInfo, item.isFolder);
    }
    if ((bitmap & kFSCatInfoNodeFlags) != 0)
        info->nodeFlags = static_cast<UInt16>(item.isFolder ? kFSNodeIsDirectoryMask : 0);
    return noErr;
}

OSErr setInfo(const FSRef& ref, const FSCatalogInfo& info) {
    const Item item = FindItem(ref);
    FinderInfo stored;
    if (item.result != noErr) return item.result;
    if (const int failed = ReadFinderInfo(item.path, stored)) return ResultCode(failed);
    SwapBasicFinderInfo(info.finderInfo, stored.data(), item.isFolder);
    return ResultCode(WriteFinderInfo(item.path, stored));
}

} // namespace

OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) {
    const char* const text = reinterpret_cast<const char*>(path);
    const auto show = [text] { return Texts{Quoted(text)}; };
    return MakePlatformCall("FSPathMakeRef", show, [&]() -> OSStatus {
        if (!path || !ref) return paramErr;
        const Item item = FindItem(std::string(text));
        if (item.result != noErr) return item.result;
        *ref = MakeReference(item);
        if (isDirectory) *isDirectory = item.isFolder ? 1 : 0;
        return noErr;
    });
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* ref) {
    const std::string& path = UrlPath(url, "CFURLGetFSRef");
    const auto show = [&path] { return Texts{Quoted(path)}; };
    return MakePlatformCall("CFURLGetFSRef", show, [&](PlatformCall& call) -> Boolean {
        if (!ref) return 0;
        const Item item = FindItem(path);
        if (item.result != noErr) {
            call.SetNote("result code " + std::to_string(item.result));
            return 0;
        }
        *ref = MakeReference(item);
        return 1;
    });
}

OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap bitmap, FSCatalogInfo* info, HFSUniStr255* name,
                       FSSpec* spec, FSRef* parent) {
    const auto show = [&] { return Texts{DescribeReference(ref), describeBitmap(bitmap)}; };
    return MakePlatformCall("FSGetCatalogInfo", show, [&](PlatformCall& call) -> OSErr {
        if (!ref || name || spec || parent || (!info && bitmap != kFSCatInfoNone)) return paramErr;
        if ((bitmap & ~(kFSCatInfoFinderInfo | kFSCatInfoNodeFlags)) != 0) return errFSBadInfoBitmap;
        const OSErr result = getInfo(*ref, bitmap, info);
        if (result != noErr || !call.IsRecorded()) return result;
        return call.Result(result, "0, " + describeFlags(info, bitmap));
    });
}

OSErr FSSetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap bitmap, const FSCatalogInfo* info) {
    const auto show = [&] {
        return Texts{DescribeReference(ref), describeBitmap(bitmap), describeFlags(info, bitmap)};
    };
    return MakePlatformCall("FSSetCatalogInfo", show, [&]() -> OSErr {
        if (!ref || (!info && bitmap != kFSCatInfoNone)) return paramErr;
        if ((bitmap & ~kFSCatInfoFinderInfo) != 0) return errFSBadInfoBitmap;
        return bitmap == kFSCatInfoNone ? FindItem(*ref).result : setInfo(*ref, *info);
    });
}

OSErr FSExchangeObjects(const FSRef* ref, const FSRef* other) {
    const auto show = [&] { return Texts{DescribeReference(ref), DescribeReference(other)}; };
    return MakePlatformCall("FSExchangeObjects", show, [&]() -> OSErr {
        if (!ref || !other) return paramErr;
        for (const FSRef* each : {ref, other}) {
            if (const OSErr result = FindItem(*each).result; result != noErr) return result;
        }
        return errFSOperationNotSupported;
    });
}
