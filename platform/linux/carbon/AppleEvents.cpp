#include <Carbon/AEObjects.h>
#include <Carbon/AppleEvents.h>
#include <Carbon/Files.h>
#include <Carbon/MacErrors.h>

#include "FileReference.h"
#include "ResultCodes.h"
#include "Trash.h"
#include "trace/LiveRegistry.h"
#include "trace/PlatformCall.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

using namespace macplatform;

/// What a descriptor holds: bytes, or parameters by their keywords. Freed with its descriptor.
struct OpaqueAEDataStorageType : LiveThing {
    struct Parameter {
        AEKeyword keyword;
        DescType type;
        OpaqueAEDataStorageType* data; ///< Owned; null for a null descriptor.
    };

    explicit OpaqueAEDataStorageType(DescType ofType) : type(ofType) {
        Enlist([](const LiveThing& thing) {
            return "Apple-event descriptor " +
                   CodeText(static_cast<const OpaqueAEDataStorageType&>(thing).type);
        });
    }
    OpaqueAEDataStorageType(const OpaqueAEDataStorageType& other) : OpaqueAEDataStorageType(other.type) {
        bytes = other.bytes;
        for (const Parameter& parameter : other.parameters)
            Put(parameter.keyword, parameter.type, parameter.data);
    }
    OpaqueAEDataStorageType& operator=(const OpaqueAEDataStorageType&) = delete;
    ~OpaqueAEDataStorageType() {
        for (const Parameter& parameter : parameters) delete parameter.data;
        Delist();
    }

    static std::string CodeText(FourCharCode code) {
        std::string text = "'....'";
        for (int i = 0; i < 4; ++i)
            text[static_cast<std::size_t>(4 - i)] = static_cast<char>(code >> (8 * i) & 0xFF);
        return text;
    }

    /// Copies the data; an equal keyword is replaced.
    void Put(AEKeyword keyword, DescType ofType, const OpaqueAEDataStorageType* data) {
        Parameter fresh{keyword, ofType, data ? new OpaqueAEDataStorageType(*data) : nullptr};
        for (Parameter& parameter : parameters) {
            if (parameter.keyword != keyword) continue;
            std::swap(parameter, fresh);
            delete fresh.data;
            return;
        }
        try {
            parameters.push_back(fresh);
        } catch (...) {
            delete fresh.data;
            throw;
        }
    }

    const Parameter* Find(AEKeyword keyword) const {
        const auto found =
            std::find_if(parameters.begin(), parameters.end(),
                         [keyword](const Parameter& parameter) { return parameter.keyword == keyword; });
        return found == parameters.end() ? nullptr : &*found;
    }

    DescType type;
    std::string bytes;
    std::vector<Parameter> parameters;
};

namespace {

using Storage = OpaqueAEDataStorageType;

constexpr DescType typeAppleEvent = 'aevt';
constexpr AEKeyword keyEventClass = 'evcl', keyEventID = 'evid', keyAddress = 'addr';
constexpr AEKeyword keyClass = 'want', keyContainer = 'from', keyForm = 'form', keyData = 'seld';
constexpr OSType finderSignature = 'MACS';
constexpr DescType trashProperty = 'trsh';

template <typename Code>
void PutCode(Storage& record, AEKeyword keyword, DescType type, Code code) {
    Storage data(type);
    data.bytes.assign(reinterpret_cast<const char*>(&code), sizeof code);
    record.Put(keyword, type, &data);
}

/// A code that a parameter holds; 0 when there is none of that size.
FourCharCode CodeOf(const Storage* data) {
    FourCharCode code = 0;
    if (data && data->bytes.size() == sizeof code) std::memcpy(&code, data->bytes.data(), sizeof code);
    return code;
}
FourCharCode CodeOf(const Storage& record, AEKeyword keyword) {
    const auto* const parameter = record.Find(keyword);
    return parameter ? CodeOf(parameter->data) : 0;
}

/// Hands a record over; the descriptor had nothing of its own.
void GiveTo(AEDesc* result, DescType type, std::unique_ptr<Storage> storage) {
    result->descriptorType = type;
    result->dataHandle = storage.release();
}

/// Does the work of a call that makes a descriptor; running out of memory leaves a null one.
template <typename Work>
OSErr Made(PlatformCall& call, AEDesc* result, Work work) {
    if (!result) return call.Result(OSErr{paramErr});
    *result = {typeNull, nullptr};
    if (const auto fault = call.TakeFault()) return call.Result(static_cast<OSErr>(*fault));
    try {
        return call.Result(OSErr{work()});
    } catch (const std::bad_alloc&) {
        return call.Result(OSErr{memFullErr});
    }
}

std::string Shown(const AEDesc* desc) { return desc ? Storage::CodeText(desc->descriptorType) : "NULL"; }

bool NamesTheTrash(const Storage& event) {
    const auto* const place = event.Find(keyAEInsertHere);
    return place && place->type == typeObjectSpecifier && place->data &&
           CodeOf(*place->data, keyForm) == formPropertyID && CodeOf(*place->data, keyData) == trashProperty;
}

/// What the Finder makes of the event: a result code.
OSErr MoveAsTheFinderDoes(const Storage& event) {
    if (!NamesTheTrash(event)) return errAENoSuchObject;
    const auto* const object = event.Find(keyDirectObject);
    if (!object) return errAEDescNotFound;
    FSRef ref;
    if (object->type != typeFSRef || !object->data || object->data->bytes.size() != sizeof ref)
        return errAECoercionFail;
    std::memcpy(&ref, object->data->bytes.data(), sizeof ref);
    const Item item = FindItem(ref);
    return item.result != noErr ? item.result : ResultCode(MoveToTrash(item.path));
}

OSErr Send(const AppleEvent* event, AppleEvent* reply, PlatformCall& call) {
    if (!event || !event->dataHandle || event->dataHandle->type != typeAppleEvent) return errAENotAEDesc;
    const Storage& record = *event->dataHandle;
    const auto* const target = record.Find(keyAddress);
    if (!target || target->type != typeApplSignature || CodeOf(target->data) != finderSignature)
        return procNotFound;
    if (CodeOf(record, keyEventClass) != kAECoreSuite || CodeOf(record, keyEventID) != kAEMove)
        return errAEEventNotHandled;

    auto answer = std::make_unique<Storage>(typeAppleEvent);
    if (const OSErr failed = MoveAsTheFinderDoes(record)) {
        PutCode(*answer, keyErrorNumber, 'long', SInt32{failed});
        call.SetNote("the Finder answered " + std::to_string(failed));
    }
    GiveTo(reply, typeAppleEvent, std::move(answer));
    return noErr;
}

} // namespace

OSErr AECreateDesc(DescType type, const void* data, Size size, AEDesc* result) try {
    PlatformCall call("AECreateDesc");
    if (call.IsTold()) call.SetArguments({Storage::CodeText(type), std::to_string(size) + " bytes"});
    return Made(call, result, [=]() -> OSErr {
        if (size < 0 || (size > 0 && !data)) return paramErr;
        if (type == typeNull) return noErr;
        auto storage = std::make_unique<Storage>(type);
        if (size > 0) storage->bytes.assign(static_cast<const char*>(data), static_cast<std::size_t>(size));
        GiveTo(result, type, std::move(storage));
        return noErr;
    });
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc* target, AEReturnID,
                         AETransactionID, AppleEvent* result) try {
    PlatformCall call("AECreateAppleEvent");
    if (call.IsTold())
        call.SetArguments({Storage::CodeText(eventClass), Storage::CodeText(eventID), Shown(target)});
    return Made(call, result, [=]() -> OSErr {
        if (!target) return paramErr;
        auto event = std::make_unique<Storage>(typeAppleEvent);
        PutCode(*event, keyEventClass, typeType, eventClass);
        PutCode(*event, keyEventID, typeType, eventID);
        event->Put(keyAddress, target->descriptorType, target->dataHandle);
        GiveTo(result, typeAppleEvent, std::move(event));
        return noErr;
    });
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr AEPutParamDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* value) try {
    PlatformCall call("AEPutParamDesc");
    if (call.IsTold()) call.SetArguments({Shown(event), Storage::CodeText(keyword), Shown(value)});
    if (const auto fault = call.TakeFault()) return call.Result(static_cast<OSErr>(*fault));
    if (!event || !value) return call.Result(OSErr{paramErr});
    if (!event->dataHandle || event->dataHandle->type != typeAppleEvent)
        return call.Result(OSErr{errAENotAEDesc});
    event->dataHandle->Put(keyword, value->descriptorType, value->dataHandle);
    return call.Result(OSErr{noErr});
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container, DescType form, AEDesc* key,
                         Boolean disposeInputs, AEDesc* specifier) try {
    PlatformCall call("CreateObjSpecifier");
    if (call.IsTold())
        call.SetArguments({Storage::CodeText(desiredClass), Storage::CodeText(form), Shown(key)});
    return Made(call, specifier, [=]() -> OSErr {
        if (!container || !key) return paramErr;
        auto record = std::make_unique<Storage>(typeObjectSpecifier);
        PutCode(*record, keyClass, typeType, desiredClass);
        PutCode(*record, keyForm, 'enum', form);
        record->Put(keyContainer, container->descriptorType, container->dataHandle);
        record->Put(keyData, key->descriptorType, key->dataHandle);
        if (disposeInputs) {
            AEDisposeDesc(container);
            AEDisposeDesc(key);
        }
        GiveTo(specifier, typeObjectSpecifier, std::move(record));
        return noErr;
    });
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr AESend(const AppleEvent* event, AppleEvent* reply, AESendMode mode, AESendPriority, long, AEIdleUPP,
             AEFilterUPP) try {
    PlatformCall call("AESend");
    if (call.IsTold()) call.SetArguments({Shown(event), "mode " + std::to_string(mode)});
    return Made(call, reply, [&]() -> OSErr { return Send(event, reply, call); });
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr AEDisposeDesc(AEDesc* desc) try {
    PlatformCall call("AEDisposeDesc");
    if (!desc) return call.Result(OSErr{paramErr});
    const DescType type = desc->descriptorType;
    delete desc->dataHandle;
    *desc = {typeNull, nullptr};
    if (call.IsTold()) call.SetArguments({Storage::CodeText(type)});
    return call.Result(OSErr{noErr});
} catch (const std::bad_alloc&) {
    return memFullErr;
}
