#include <Kelbase/Util/File.h>

#include <Kelbase/Util/Exception/FailureSite.h>

#include <Carbon/Carbon.h>

#include <cerrno>
#include <cstring>

namespace Util {

namespace {

constexpr Exception::FailureSite kRenameFailed = {"src/Kelbase/Util/File", 547,
                                                  Exception::FileIO::RenameError, "Rename failed"};

OSStatus makeRef(const String& path, FSRef& ref) {
    return FSPathMakeRef(reinterpret_cast<const UInt8*>(path.Latin1()), &ref, nullptr);
}

/// Exchanges the contents of two files. Their names and attributes do not change.
bool exchangeContents(const FilePath& a, const FilePath& b) {
    FSRef refA, refB;
    return makeRef(a.ToString(), refA) == noErr && makeRef(b.ToString(), refB) == noErr &&
           FSExchangeObjects(&refA, &refB) == noErr;
}

/// Owns an Apple-event descriptor. The destructor disposes of the descriptor.
class Descriptor : private noncopyable {
public:
    ~Descriptor() {
        if (desc.descriptorType != typeNull) Dispose();
    }

    AEDesc* Get() { return &desc; }
    OSErr Make(DescType type, const void* data, std::size_t size) {
        return AECreateDesc(type, data, static_cast<Size>(size), &desc);
    }
    OSErr Dispose() { return AEDisposeDesc(&desc); }

private:
    AEDesc desc = {typeNull, nullptr};
};

/// Adds the item to move to the event.
OSErr putDirectObject(AppleEvent* event, const FSRef& ref) {
    Descriptor item;
    const OSErr made = item.Make(typeFSRef, &ref, sizeof ref);
    return made != noErr ? made : AEPutParamDesc(event, keyDirectObject, item.Get());
}

/// Adds the destination to the event: the property "trash" of the Finder.
OSErr putTrash(AppleEvent* event) {
    const OSType trash = 'trsh';
    Descriptor finder, property, place;
    OSErr result = property.Make(typeType, &trash, sizeof trash);
    if (result == noErr)
        result =
            CreateObjSpecifier(cObject, finder.Get(), formPropertyID, property.Get(), false, place.Get());
    return result != noErr ? result : AEPutParamDesc(event, keyAEInsertHere, place.Get());
}

} // namespace

void File::Rename(const FilePath& from, const FilePath& to) {
    if (File(to).Exists() && exchangeContents(from, to)) {
        File(from).Remove(false); // `from` now has the old contents of `to`
        return;
    }
    const String fromName = from.ToString();
    const String toName = to.ToString();
    if (std::rename(fromName.Latin1(), toName.Latin1()) != 0) Exception::Throw(kRenameFailed, from, errno);
}

int File::Recycle(const String& path) {
    FSRef ref;
    const OSStatus found = makeRef(path, ref);
    if (found != noErr) return static_cast<int>(found);

    const OSType signature = 'MACS';
    Descriptor finder, event, reply;
    const OSErr addressed = finder.Make(typeApplSignature, &signature, sizeof signature);
    if (addressed != noErr) return addressed;
    const OSErr created = AECreateAppleEvent(kAECoreSuite, kAEMove, finder.Get(), kAutoGenerateReturnID,
                                             kAnyTransactionID, event.Get());
    const OSErr disposed = finder.Dispose();
    if (created != noErr) return disposed; // the failure to create the event is not reported

    if (const OSErr put = putDirectObject(event.Get(), ref); put != noErr) return put;
    if (const OSErr put = putTrash(event.Get()); put != noErr) return put;
    AESend(event.Get(), reply.Get(), kAEWaitReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr);
    event.Dispose();
    return reply.Dispose();
}

unsigned int File::GetOSXFileType() const {
    FSRef ref;
    if (makeRef(path.ToString(), ref) != noErr) return 0;
    FSCatalogInfo catalog = {};
    if (FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo, &catalog, nullptr, nullptr, nullptr) != noErr) return 0;
    FileInfo info;
    static_assert(sizeof info == sizeof catalog.finderInfo);
    std::memcpy(&info, catalog.finderInfo, sizeof info);
    return static_cast<unsigned int>(info.fileType);
}

} // namespace Util
