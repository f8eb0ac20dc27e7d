#include <Carbon/AEObjects.h>
#include <Carbon/AppleEvents.h>
#include <Carbon/Files.h>
#include <Carbon/MacErrors.h>

#include "FileReference.h"
#include "ResultCodes.h"
#include "Trash.h"
#include "trace/PlatformFunction.h"
#include "trace/TrackedObject.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

using namespace macplatform;

/// The data of a descriptor: bytes, or parameters with keywords. The descriptor owns the data.
/// `AEDisposeDesc` frees the data.
struct OpaqueAEDataStorageType : TrackedObject {
    struct Parameter {
        AEKeyword keyword;
        DescType type;
        std::unique_ptr<const OpaqueAEDataStorageType> data; ///< Null for a null descriptor.
    };

    explicit OpaqueAEDataStorageType(DescType ofType) : type(ofType) {
        Register([](const TrackedObject& object) {
            return "Apple-event descriptor " +
                   CodeText(static_cast<const OpaqueAEDataStorageType&>(object).type);
        });
    }
    OpaqueAEDataStorageType(const OpaqueAEDataStorageType& other) : OpaqueAEDataStorageType(other.type) {
        bytes = other.bytes;
        for (const Parameter& parameter : other.parameters)
            Put(parameter.keyword, parameter.type, parameter.data.get());
    }
    OpaqueAEDataStorageType& operator=(const OpaqueAEDataStorageType&) = delete;
    ~OpaqueAEDataStorageType() { Unregister(); }

    static std::string CodeText(FourCharCode code) {
        std::string text = "'....'";
        for (int i = 0; i < 4; ++i)
            text[static_cast<std::size_t>(4 - i)] = static_cast<char>(code >> (8 * i) & 0xFF);
        return text;
    }

    /// Returns a predicate for the parameters with the keyword.
    static auto Has(AEKeyword keyword) {
        return [keyword](const Parameter& parameter) { return parameter.keyword == keyword; };
    }

    /// Adds a parameter with a copy of the data. Replaces the existing parameter with the same keyword.
    /// Throws std::bad_alloc.
    void Put(AEKeyword keyword, DescType ofType, const OpaqueAEDataStorageType* data) {
        Parameter fresh{keyword, ofType, data ? std::make_unique<OpaqueAEDataStorageType>(*data) : nullptr};
        const auto place = std::find_if(parameters.begin(), parameters.end(), Has(keyword));
        if (place == parameters.end()) {
            parameters.push_back(std::move(fresh));
        } else {
            *place = std::move(fresh);
        }
    }

    const Parameter* Find(AEKeyword keyword) const {
        const auto place = std::find_if(parameters.begin(), parameters.end(), Has(keyword));
        return place == parameters.end() ? nullptr : &*place;
    }

    DescType type;
    std::string bytes;
    std::vector<Parameter> parameters;
};

namespace {

using Storage = OpaqueAEDataStorageType;

constexpr DescType kTypeAppleEvent = 'aevt';
constexpr AEKeyword kKeyEventClass = 'evcl', kKeyEventID = 'evid', kKeyAddress = 'addr';
constexpr AEKeyword kKeyClass = 'want', kKeyContainer = 'from', kKeyForm = 'form', kKeyData = 'seld';
constexpr OSType kFinderSignature = 'MACS';
constexpr DescType kTrashProperty = 'trsh';

template <typename Code>
void putCode(Storage& record, AEKeyword keyword, DescType type, Code code) {
    Storage data(type);
    data.bytes.assign(reinterpret_cast<const char*>(&code), sizeof code);
    record.Put(keyword, type, &data);
}

/// Returns the four-character code in the data of a parameter, or 0 if the data has another size.
FourCharCode codeOf(const Storage* data) {
    FourCharCode code = 0;
    if (data && data->bytes.size() == sizeof code) std::memcpy(&code, data->bytes.data(), sizeof code);
    return code;
}
FourCharCode codeOf(const Storage& record, AEKeyword keyword) {
    const auto* const parameter = record.Find(keyword);
    return parameter ? codeOf(parameter->data.get()) : 0;
}

/// Transfers the ownership of the storage to the descriptor, which must be empty.
void giveTo(AEDesc* result, DescType type, std::unique_ptr<Storage> storage) {
    result->descriptorType = type;
    result->dataHandle = storage.release();
}

/// Makes a platform call whose body creates a descriptor in `result`, which is the null descriptor before.
/// Fails with `paramErr` if `result` is null.
template <typename Show, typename Body>
OSErr makeDescriptor(const char* name, AEDesc* result, Show show, Body body) {
    if (result) *result = {typeNull, nullptr};
    return MakePlatformCall(name, show,
                            [&](PlatformCall& call) { return result ? body(call) : OSErr{paramErr}; });
}

std::string shown(const AEDesc* desc) { return desc ? Storage::CodeText(desc->descriptorType) : "NULL"; }

/// Returns whether the destination of a move event is the Trash.
bool namesTheTrash(const Storage& event) {
    const auto* const place = event.Find(keyAEInsertHere);
    return place && place->type == typeObjectSpecifier && place->data &&
           codeOf(*place->data, kKeyForm) == formPropertyID &&
           codeOf(*place->data, kKeyData) == kTrashProperty;
}

/// Handles a move event as the Finder does: moves the item to the Trash. Returns the Finder's result code.
OSErr handleMoveEvent(const Storage& event) {
    if (!namesTheTrash(event)) return errAENoSuchObject;
    const auto* const object = event.Find(keyDirectObject);
    if (!object) return errAEDescNotFound;
    FSRef ref;
    if (object->type != typeFSRef || !object->data || object->data->bytes.size() != sizeof ref)
        return errAECoercionFail;
    std::memcpy(&ref, object->data->bytes.data(), sizeof ref);
    const Item item = FindItem(ref);
    return item.result != noErr ? item.result : ResultCode(MoveToTrash(item.path));
}

OSErr sendEvent(const AppleEvent* event, AppleEvent* reply, PlatformCall& call) {
    if (!event || !event->dataHandle || event->dataHandle->type != kTypeAppleEvent) return errAENotAEDesc;
    const Storage& record = *event->dataHandle;
    const auto* const target = record.Find(kKeyAddress);
    if (!target || target->type != typeApplSignature || codeOf(target->data.get()) != kFinderSignature)
        return procNotFound;
    if (codeOf(record, kKeyEventClass) != kAECoreSuite || codeOf(record, kKeyEventID) != kAEMove)
        return errAEEventNotHandled;

    auto replyRecord = std::make_unique<Storage>(kTypeAppleEvent);
    if (const OSErr failed = handleMoveEvent(record)) {
        putCode(*replyRecord, keyErrorNumber, 'long', SInt32{failed});
        call.SetNote("the Finder returned " + std::to_string(failed));
    }
    giveTo(reply, kTypeAppleEvent, std::move(replyRecord));
    return noErr;
}

} // namespace

OSErr AECreateDesc(DescType type, const void* data, Size size, AEDesc* result) {
    const auto show = [&] { return Texts{Storage::CodeText(type), std::to_string(size) + " bytes"}; };
    return makeDescriptor("AECreateDesc", result, show, [&](PlatformCall&) -> OSErr {
        if (size < 0 || (size > 0 && !data)) return paramErr;
        if (type == typeNull) return noErr;
        auto storage = std::make_unique<Storage>(type);
        if (size > 0) storage->bytes.assign(static_cast<const char*>(data), static_cast<std::size_t>(size));
        giveTo(result, type, std::move(storage));
        return noErr;
    });
}

OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc* target, AEReturnID,
                         AETransactionID, AppleEvent* result) {
    const auto show = [&] {
        return Texts{Storage::CodeText(eventClass), Storage::CodeText(eventID), shown(target)};
    };
    return makeDescriptor("AECreateAppleEvent", result, show, [&](PlatformCall&) -> OSErr {
        if (!target) return paramErr;
        auto event = std::make_unique<Storage>(kTypeAppleEvent);
        putCode(*event, kKeyEventClass, typeType, eventClass);
        putCode(*event, kKeyEventID, typeType, eventID);
        event->Put(kKeyAddress, target->descriptorType, target->dataHandle);
        giveTo(result, kTypeAppleEvent, std::move(event));
        return noErr;
    });
}

OSErr AEPutParamDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* value) {
    const auto show = [&] { return Texts{shown(event), Storage::CodeText(keyword), shown(value)}; };
    return MakePlatformCall("AEPutParamDesc", show, [&]() -> OSErr {
        if (!event || !value) return paramErr;
        if (!event->dataHandle || event->dataHandle->type != kTypeAppleEvent) return errAENotAEDesc;
        event->dataHandle->Put(keyword, value->descriptorType, value->dataHandle);
        return noErr;
    });
}

OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container, DescType form, AEDesc* key,
                         Boolean disposeInputs, AEDesc* specifier) {
    const auto show = [&] {
        return Texts{Storage::CodeText(desiredClass), Storage::CodeText(form), shown(key)};
    };
    return makeDescriptor("CreateObjSpecifier", specifier, show, [&](PlatformCall&) -> OSErr {
        if (!container || !key) return paramErr;
        auto record = std::make_unique<Storage>(typeObjectSpecifier);
        putCode(*record, kKeyClass, typeType, desiredClass);
        putCode(*record, kKeyForm, 'enum', form);
        record->Put(kKeyContainer, container->descriptorType, container->dataHandle);
        record->Put(kKeyData, key->descriptorType, key->dataHandle);
        if (disposeInputs) {
            AEDisposeDesc(container);
            AEDisposeDesc(key);
        }
        giveTo(specifier, typeObjectSpecifier, std::move(record));
        return noErr;
    });
}

OSErr AESend(const AppleEvent* event, AppleEvent* reply, AESendMode mode, AESendPriority, long, AEIdleUPP,
             AEFilterUPP) {
    const auto show = [&] { return Texts{shown(event), "mode " + std::to_string(mode)}; };
    return makeDescriptor("AESend", reply, show,
                          [&](PlatformCall& call) { return sendEvent(event, reply, call); });
}

OSErr AEDisposeDesc(AEDesc* desc) {
    return MakePlatformCall<NoFailure>(
        "AEDisposeDesc", [desc] { return Texts{shown(desc)}; },
        [&]() -> OSErr {
            if (!desc) return paramErr;
            const std::unique_ptr<Storage> owned(desc->dataHandle);
            *desc = {typeNull, nullptr};
            return noErr;
        });
}
