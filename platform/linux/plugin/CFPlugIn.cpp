#include <CoreFoundation/CFPlugIn.h>

#include <macplatform/Bundles.h>
#include <macplatform/StartupVolume.h>

#include "BundleFolder.h"
#include "MachOLoader.h"
#include "corefoundation/CFArrayObject.h"
#include "corefoundation/CFObject.h"
#include "corefoundation/CFURLPath.h"
#include "corefoundation/CFUUIDObject.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <map>
#include <vector>

using namespace macplatform;

namespace macplatform {
extern const ObjectClass bundleClass;
}

struct __CFBundle : Object {
    explicit __CFBundle(BundleFolder&& opened) : Object(bundleClass), folder(std::move(opened)) {}

    BundleFolder folder;
    std::map<UuidBytes, std::string> factories;        ///< Function names.
    std::map<UuidBytes, std::vector<UuidBytes>> types; ///< Their factories.
    void* code = nullptr;                              ///< Of the dynamic linker; never closed.
    MachOCode* macCode = nullptr;                      ///< In its place; never unmapped.
    std::size_t instances = 0;                         ///< Each holds a reference.
};

namespace {

using Bundle = __CFBundle;

/// The bundles of the process; each takes itself off when it is freed.
std::vector<Bundle*>& Bundles() {
    static std::vector<Bundle*>& bundles = *new std::vector<Bundle*>; // released objects may be freed at exit
    return bundles;
}

BundleFailure& LastFailure() {
    static BundleFailure failure;
    return failure;
}

bool Fail(BundleFault fault, const std::string& text) {
    LastFailure() = {fault, text};
    return false;
}

void FinaliseBundle(Object& object) {
    auto& bundle = static_cast<Bundle&>(object);
    auto& bundles = Bundles();
    bundles.erase(std::remove(bundles.begin(), bundles.end(), &bundle), bundles.end());
    bundle.~Bundle();
}

Bundle& CheckedBundle(const void* plugIn, const char* function) {
    return static_cast<Bundle&>(CheckedObject(plugIn, function, bundleClass));
}

std::string ListPath(const Bundle& bundle) { return bundle.folder.path + "/Contents/Info.plist"; }

/// Factories and types out of the property list; what is no UUID or no name is left out.
void ReadTables(Bundle& bundle) {
    if (const PropertyValue* const factories = bundle.folder.info.Find("CFPlugInFactories")) {
        for (std::size_t i = 0; i < factories->keys.size(); ++i) {
            const auto factory = ParseUuid(factories->keys[i]);
            const PropertyValue& function = factories->values[i];
            if (factory && function.kind == PropertyValue::Kind::Text) {
                bundle.factories[*factory] = function.text;
            }
        }
    }
    const PropertyValue* const types = bundle.folder.info.Find("CFPlugInTypes");
    for (std::size_t i = 0; types && i < types->keys.size(); ++i) {
        const auto type = ParseUuid(types->keys[i]);
        if (!type) continue;
        auto& listed = bundle.types[*type];
        const PropertyValue& value = types->values[i];
        // One factory may stand there without an array around it.
        for (const PropertyValue& item :
             value.kind == PropertyValue::Kind::Array ? value.items : std::vector{value}) {
            if (const auto factory = ParseUuid(item.text)) listed.push_back(*factory);
        }
    }
}

void NoteMissingKeys(const Bundle& bundle) {
    for (const char* const key : {"CFPlugInTypes", "CFPlugInFactories"}) {
        const PropertyValue* const value = bundle.folder.info.Find(key);
        if (!value || value->kind != PropertyValue::Kind::Dictionary) {
            Fail(BundleFault::MissingKey, ListPath(bundle) + ": the dictionary " + key + " is missing");
        }
    }
}

Bundle* OpenBundle(const std::string& macPath) {
    LastFailure() = {};
    const std::string path = HostPath(macPath);
    if (path.empty()) {
        Fail(BundleFault::NoBundle, macPath + ": " + std::strerror(errno));
        return nullptr;
    }
    for (Bundle* const known : Bundles()) {
        if (known->folder.path == path && TryRetain(*known)) return known;
    }
    BundleFolder folder;
    if (BundleFailure failure = OpenBundleFolder(path, folder); failure.fault != BundleFault::None) {
        LastFailure() = std::move(failure);
        return nullptr;
    }
    Bundles().reserve(Bundles().size() + 1);
    Bundle* const bundle = MakeObject<Bundle>(0, std::move(folder));
    Bundles().push_back(bundle);
    ReadTables(*bundle);
    NoteMissingKeys(*bundle);
    return bundle;
}

bool LoadCode(Bundle& bundle) {
    if (bundle.code || bundle.macCode) return true;
    if (BundleFailure failure = CheckExecutable(bundle.folder); failure.fault != BundleFault::None) {
        LastFailure() = std::move(failure);
        return false;
    }
    const BundleCodeRuns initialisers;
    if (bundle.folder.isMachO) {
        bundle.macCode = LoadMachO(bundle.folder.executable, LastFailure());
        return bundle.macCode != nullptr;
    }
    bundle.code = dlopen(bundle.folder.executable.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (bundle.code) return true;
    const char* const reason = dlerror();
    return Fail(BundleFault::CannotLoad, reason ? reason : bundle.folder.executable + " cannot be loaded");
}

void* FindSymbol(Bundle& bundle, const std::string& name) {
    if (!LoadCode(bundle)) return nullptr;
    void* const symbol = bundle.macCode ? bundle.macCode->Symbol(name) : dlsym(bundle.code, name.c_str());
    if (!symbol) Fail(BundleFault::SymbolMissing, bundle.folder.executable + " does not export " + name);
    return symbol;
}

Bundle* BundleOfFactory(const UuidBytes& factory) {
    for (Bundle* const bundle : Bundles()) {
        if (bundle->factories.count(factory) > 0) return bundle;
    }
    return nullptr;
}

/// The function of a factory for a type, its code loaded; null with the failure noted.
CFPlugInFactoryFunction FindFactoryFunction(const UuidBytes& factory, const UuidBytes& type) {
    LastFailure() = {};
    Bundle* const bundle = BundleOfFactory(factory);
    if (!bundle) {
        Fail(BundleFault::MissingKey, "no bundle has the factory " + UuidText(factory));
        return nullptr;
    }
    const auto listed = bundle->types.find(type);
    if (listed == bundle->types.end() ||
        std::find(listed->second.begin(), listed->second.end(), factory) == listed->second.end()) {
        Fail(BundleFault::MissingKey,
             ListPath(*bundle) + ": CFPlugInTypes does not list this factory for the type " + UuidText(type));
        return nullptr;
    }
    return reinterpret_cast<CFPlugInFactoryFunction>(FindSymbol(*bundle, bundle->factories[factory]));
}

CFArrayRef FactoriesInPlugIn(const UuidBytes& type, const Bundle& bundle) {
    const auto hasType = [&type](const Bundle* candidate) { return candidate->types.count(type) > 0; };
    if (std::none_of(Bundles().begin(), Bundles().end(), hasType)) return nullptr;
    std::vector<Owned<Object>> owned;
    std::vector<CFTypeRef> items;
    if (const auto listed = bundle.types.find(type); listed != bundle.types.end()) {
        for (const UuidBytes& factory : listed->second) {
            if (bundle.factories.count(factory) == 0) continue;
            items.push_back(NewUuid(factory));
            owned.emplace_back(static_cast<const Object*>(items.back()));
        }
    }
    return NewArray(std::move(items));
}

} // namespace

namespace macplatform {

const ObjectClass bundleClass = {
    34, "bundle", [](const Object& object) { return Quoted(static_cast<const Bundle&>(object).folder.path); },
    nullptr, &FinaliseBundle};

const BundleFailure& LastBundleFailure() { return LastFailure(); }

void* BundleSymbol(const void* plugIn, const std::string& name) {
    const PlatformInside inside;
    LastFailure() = {};
    return FindSymbol(CheckedBundle(plugIn, "BundleSymbol"), name);
}

} // namespace macplatform

CFPlugInRef CFPlugInCreate(CFAllocatorRef allocator, CFURLRef url) {
    PlatformCall call("CFPlugInCreate");
    Tell(call, allocator, url);
    if (call.TakeFault()) return ObjectResult(call, CFPlugInRef{nullptr});
    try {
        return ObjectResult(call, CFPlugInRef{OpenBundle(UrlPath(url))});
    } catch (const std::bad_alloc&) {
        return ObjectResult(call, CFPlugInRef{nullptr});
    }
}

CFArrayRef CFPlugInFindFactoriesForPlugInTypeInPlugIn(CFUUIDRef type, CFPlugInRef plugIn) {
    constexpr char name[] = "CFPlugInFindFactoriesForPlugInTypeInPlugIn";
    PlatformCall call(name);
    Tell(call, type, plugIn);
    if (call.TakeFault()) return ObjectResult(call, CFArrayRef{nullptr});
    try {
        return ObjectResult(call, FactoriesInPlugIn(BytesOf(type, name), CheckedBundle(plugIn, name)));
    } catch (const std::bad_alloc&) {
        return ObjectResult(call, CFArrayRef{nullptr});
    }
}

void* CFPlugInInstanceCreate(CFAllocatorRef allocator, CFUUIDRef factory, CFUUIDRef type) {
    constexpr char name[] = "CFPlugInInstanceCreate";
    PlatformCall call(name);
    Tell(call, allocator, factory, type);
    if (call.TakeFault()) return call.Result(static_cast<void*>(nullptr));
    CFPlugInFactoryFunction make = nullptr;
    try {
        make = FindFactoryFunction(BytesOf(factory, name), BytesOf(type, name));
    } catch (const std::bad_alloc&) {
        Fail(BundleFault::CannotLoad, "out of memory");
    }
    void* instance = nullptr;
    if (make) {
        const BundleCodeRuns factoryFunction;
        instance = make(allocator, type);
    }
    if (make && !instance) {
        Fail(BundleFault::FactoryRefused,
             "the factory function of " + UuidText(BytesOf(factory, name)) + " answered null");
    }
    return call.Result(instance, instance ? "an instance" : "NULL");
}

void CFPlugInAddInstanceForFactory(CFUUIDRef factory) {
    constexpr char name[] = "CFPlugInAddInstanceForFactory";
    PlatformCall call(name);
    Tell(call, factory);
    if (Bundle* const bundle = BundleOfFactory(BytesOf(factory, name))) {
        ++bundle->instances;
        Retain(*bundle);
    }
}

void CFPlugInRemoveInstanceForFactory(CFUUIDRef factory) {
    constexpr char name[] = "CFPlugInRemoveInstanceForFactory";
    PlatformCall call(name);
    Tell(call, factory);
    Bundle* const bundle = BundleOfFactory(BytesOf(factory, name));
    // A count that was never raised would free the bundle under its owner.
    if (!bundle || bundle->instances == 0) return;
    --bundle->instances;
    Release(*bundle);
}
