#include <Carbon/Files.h>
#include <Carbon/MacErrors.h>
#include <CoreFoundation/CFURL.h>

#include "FileReference.h"
#include "FinderInfo.h"
#include "ResultCodes.h"
#include "corefoundation/CFURLPath.h"
#include "trace/PlatformCall.h"

#include <algorithm>
#include <cstdio>
#include <new>

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

OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) try {
    const char* const text = reinterpret_cast<const char*>(path);
    PlatformCall call("FSPathMakeRef");
    if (call.IsRecorded()) call.SetArguments({Quoted(text)});
    if (const auto code = call.ConsumeFault()) return call.Result(static_cast<OSStatus>(*code));
    if (!path || !ref) return call.Result(OSStatus{paramErr});
    const Item item = FindItem(std::string(text));
    if (item.result != noErr) return call.Result(OSStatus{item.result});
    *ref = MakeReference(item);
    if (isDirectory) *isDirectory = item.isFolder ? 1 : 0;
    return call.Result(OSStatus{noErr});
} catch (const std::bad_alloc&) {
    return memFullErr;
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* ref) try {
    PlatformCall call("CFURLGetFSRef");
    const std::string& path = UrlPath(url, "CFURLGetFSRef");
    if (call.IsRecorded()) call.SetArguments({Quoted(path)});
    if (call.ConsumeFault() || !ref) return call.Result(Boolean{0});
    const Item item = FindItem(path);
    if (item.result != noErr) {
        call.SetNote("result code " + std::to_string(item.result));
        return call.Result(Boolean{0});
    }
    *ref = MakeReference(item);
    return call.Result(Boolean{1});
} catch (const std::bad_alloc&) {
    return 0;
}

OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap bitmap, FSCatalogInfo* info, HFSUniStr255* name,
                       FSSpec* spec, FSRef* parent) try {
    PlatformCall call("FSGetCatalogInfo");
    if (call.IsRecorded()) call.SetArguments({DescribeReference(ref), describeBitmap(bitmap)});
    if (const auto code = call.ConsumeFault()) return call.Result(static_cast<OSErr>(*code));
    if (!ref || name || spec || parent || (!info && bitmap != kFSCatInfoNone))
        return call.Result(OSErr{paramErr});
    if ((bitmap & ~(kFSCatInfoFinderInfo | kFSCatInfoNodeFlags)) != 0)
        return call.Result(OSErr{errFSBadInfoBitmap});
    const OSErr result = getInfo(*ref, bitmap, info);
    if (result != noErr || !call.IsRecorded()) return call.Result(result);
    return call.Result(result, "0, " + describeFlags(info, bitmap));
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSSetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap bitmap, const FSCatalogInfo* info) try {
    PlatformCall call("FSSetCatalogInfo");
    if (call.IsRecorded())
        call.SetArguments({DescribeReference(ref), describeBitmap(bitmap), describeFlags(info, bitmap)});
    if (const auto code = call.ConsumeFault()) return call.Result(static_cast<OSErr>(*code));
    if (!ref || (!info && bitmap != kFSCatInfoNone)) return call.Result(OSErr{paramErr});
    if ((bitmap & ~kFSCatInfoFinderInfo) != 0) return call.Result(OSErr{errFSBadInfoBitmap});
    return call.Result(bitmap == kFSCatInfoNone ? FindItem(*ref).result : setInfo(*ref, *info));
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSExchangeObjects(const FSRef* ref, const FSRef* other) try {
    PlatformCall call("FSExchangeObjects");
    if (call.IsRecorded()) call.SetArguments({DescribeReference(ref), DescribeReference(other)});
    if (const auto code = call.ConsumeFault()) return call.Result(static_cast<OSErr>(*code));
    if (!ref || !other) return call.Result(OSErr{paramErr});
    for (const FSRef* each : {ref, other}) {
        if (const OSErr result = FindItem(*each).result; result != noErr) return call.Result(result);
    }
    return call.Result(OSErr{errFSOperationNotSupported});
} catch (const std::bad_alloc&) {
    return memFullErr;
}
