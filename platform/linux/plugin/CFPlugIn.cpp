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
extern const ObjectClass kBundleClass;
}

struct __CFBundle : Object {
    explicit __CFBundle(BundleFolder&& opened) : Object(kBundleClass), folder(std::move(opened)) {}

    BundleFolder folder;
    std::map<UuidBytes, std::string> factories;        ///< The function name of each factory.
    std::map<UuidBytes, std::vector<UuidBytes>> types; ///< The factories of each type.
    void* code = nullptr;                              ///< From `dlopen`; never closed.
    MachOCode* macCode = nullptr;                      ///< Set instead of `code`; never unmapped.
    std::size_t instances = 0;                         ///< Each instance has one reference to the bundle.
};

namespace {

using Bundle = __CFBundle;

/// Returns the bundles that are open in this process. `finaliseBundle` removes a freed bundle from the list.
std::vector<Bundle*>& openBundles() {
    // The vector is never destroyed: bundles may still be released when the process exits.
    static std::vector<Bundle*>& gBundles = *new std::vector<Bundle*>;
    return gBundles;
}

BundleFailure& lastFailure() {
    static BundleFailure gFailure;
    return gFailure;
}

bool fail(BundleFault fault, const std::string& text) {
    lastFailure() = {fault, text};
    return false;
}

void finaliseBundle(Object& object) {
    auto& bundle = static_cast<Bundle&>(object);
    auto& bundles = openBundles();
    bundles.erase(std::remove(bundles.begin(), bundles.end(), &bundle), bundles.end());
    bundle.~Bundle();
}

Bundle& checkedBundle(const void* plugIn, const char* function) {
    return static_cast<Bundle&>(CheckedObject(plugIn, function, kBundleClass));
}

std::string plistPath(const Bundle& bundle) { return bundle.folder.path + "/Contents/Info.plist"; }

/// Reads the factories and the types from the property list. Ignores a factory or type whose key is not a
/// UUID, and a factory whose function name is neither a string nor a number.
void readTables(Bundle& bundle) {
    if (const PropertyValue* const factories = bundle.folder.info.Find("CFPlugInFactories")) {
        for (std::size_t i = 0; i < factories->keys.size(); ++i) {
            const auto factory = ParseUuid(factories->keys[i]);
            const PropertyValue& function = factories->values[i];
            const bool isName = function.kind == PropertyValue::Kind::kString ||
                                function.kind == PropertyValue::Kind::kInteger ||
                                function.kind == PropertyValue::Kind::kReal;
            if (factory && isName) bundle.factories[*factory] = function.text;
        }
    }
    const PropertyValue* const types = bundle.folder.info.Find("CFPlugInTypes");
    for (std::size_t i = 0; types && i < types->keys.size(); ++i) {
        const auto type = ParseUuid(types->keys[i]);
        if (!type) continue;
        auto& listed = bundle.types[*type];
        const PropertyValue& value = types->values[i];
        // The value may be one factory instead of an array of factories.
        for (const PropertyValue& item :
             value.kind == PropertyValue::Kind::kArray ? value.items : std::vector{value}) {
            if (const auto factory = ParseUuid(item.text)) listed.push_back(*factory);
        }
    }
}

/// Records a failure for each missing CFPlugIn dictionary. The bundle stays open.
void recordMissingKeys(const Bundle& bundle) {
    for (const char* const key : {"CFPlugInTypes", "CFPlugInFactories"}) {
        const PropertyValue* const value = bundle.folder.info.Find(key);
        if (!value || value->kind != PropertyValue::Kind::kDictionary) {
            fail(BundleFault::kMissingKey, plistPath(bundle) + ": the dictionary " + key + " is missing");
        }
    }
}

Bundle* openBundle(const std::string& macPath) {
    lastFailure() = {};
    const std::string path = HostPath(macPath);
    if (path.empty()) {
        fail(BundleFault::kNoBundle, macPath + ": " + std::strerror(errno));
        return nullptr;
    }
    for (Bundle* const known : openBundles()) {
        if (known->folder.path == path && TryRetain(*known)) return known;
    }
    BundleFolder folder;
    if (BundleFailure failure = OpenBundleFolder(path, folder); failure.fault != BundleFault::kNone) {
        lastFailure() = std::move(failure);
        return nullptr;
    }
    openBundles().reserve(openBundles().size() + 1);
    Bundle* const bundle = MakeObject<Bundle>(0, std::move(folder));
    openBundles().push_back(bundle);
    readTables(*bundle);
    recordMissingKeys(*bundle);
    return bundle;
}

bool loadCode(Bundle& bundle) {
    if (bundle.code || bundle.macCode) return true;
    if (BundleFailure failure = CheckExecutable(bundle.folder); failure.fault != BundleFault::kNone) {
        lastFailure() = std::move(failure);
        return false;
    }
    const BundleCodeScope initialisers;
    if (bundle.folder.isMachO) {
        bundle.macCode = LoadMachO(bundle.folder.executable, lastFailure());
        return bundle.macCode != nullptr;
    }
    bundle.code = dlopen(bundle.folder.executable.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (bundle.code) return true;
    const char* const reason = dlerror();
    return fail(BundleFault::kCannotLoad, reason ? reason : bundle.folder.executable + " cannot be loaded");
}

void* findSymbol(Bundle& bundle, const std::string& name) {
    if (!loadCode(bundle)) return nullptr;
    void* const symbol = bundle.macCode ? bundle.macCode->Symbol(name) : dlsym(bundle.code, name.c_str());
    if (!symbol) fail(BundleFault::kSymbolMissing, bundle.folder.executable + " does not export " + name);
    return symbol;
}

Bundle* bundleOfFactory(const UuidBytes& factory) {
    for (Bundle* const bundle : openBundles()) {
        if (bundle->factories.count(factory) > 0) return bundle;
    }
    return nullptr;
}

/// Loads the code of the factory's bundle and returns the factory function. Returns null and records the
/// failure if the code cannot be loaded, or if no bundle has this factory for the type.
CFPlugInFactoryFunction findFactoryFunction(const UuidBytes& factory, const UuidBytes& type) {
    lastFailure() = {};
    Bundle* const bundle = bundleOfFactory(factory);
    if (!bundle) {
        fail(BundleFault::kMissingKey, "no bundle has the factory " + UuidText(factory));
        return nullptr;
    }
    const auto listed = bundle->types.find(type);
    if (listed == bundle->types.end() ||
        std::find(listed->second.begin(), listed->second.end(), factory) == listed->second.end()) {
        fail(BundleFault::kMissingKey, plistPath(*bundle) +
                                           ": CFPlugInTypes does not list this factory for the type " +
                                           UuidText(type));
        return nullptr;
    }
    return reinterpret_cast<CFPlugInFactoryFunction>(findSymbol(*bundle, bundle->factories[factory]));
}

/// Returns whether an open bundle lists a registered factory for the type.
bool isRegisteredType(const UuidBytes& type) {
    return std::any_of(openBundles().begin(), openBundles().end(), [&type](const Bundle* bundle) {
        const auto listed = bundle->types.find(type);
        return listed != bundle->types.end() &&
               std::any_of(listed->second.begin(), listed->second.end(), &bundleOfFactory);
    });
}

CFArrayRef factoriesInPlugIn(const UuidBytes& type, const Bundle& bundle) {
    if (!isRegisteredType(type)) return nullptr;
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

const ObjectClass kBundleClass = {
    34, "bundle", [](const Object& object) { return Quoted(static_cast<const Bundle&>(object).folder.path); },
    nullptr, &finaliseBundle};

const BundleFailure& LastBundleFailure() { return lastFailure(); }

void* BundleSymbol(const void* plugIn, const std::string& name) {
    const InternalCallScope internalCalls;
    lastFailure() = {};
    return findSymbol(checkedBundle(plugIn, "BundleSymbol"), name);
}

} // namespace macplatform

CFPlugInRef CFPlugInCreate(CFAllocatorRef allocator, CFURLRef url) {
    const std::string& path = UrlPath(url, "CFPlugInCreate");
    return MakeObjectCall("CFPlugInCreate", Shown(allocator, url),
                          [&] { return CFPlugInRef{openBundle(path)}; });
}

CFArrayRef CFPlugInFindFactoriesForPlugInTypeInPlugIn(CFUUIDRef type, CFPlugInRef plugIn) {
    constexpr char name[] = "CFPlugInFindFactoriesForPlugInTypeInPlugIn";
    auto& bundle = checkedBundle(plugIn, name);
    const UuidBytes& bytes = BytesOf(type, name);
    return MakeObjectCall(name, Shown(type, plugIn), [&] { return factoriesInPlugIn(bytes, bundle); });
}

void* CFPlugInInstanceCreate(CFAllocatorRef allocator, CFUUIDRef factory, CFUUIDRef type) {
    constexpr char name[] = "CFPlugInInstanceCreate";
    PlatformCall call(name); // MakePlatformCall would catch a std::bad_alloc of the bundle
    call.Record(Shown(allocator, factory, type));
    if (call.ConsumeFault()) return call.Result(static_cast<void*>(nullptr));
    CFPlugInFactoryFunction make = nullptr;
    try {
        make = findFactoryFunction(BytesOf(factory, name), BytesOf(type, name));
    } catch (const std::bad_alloc&) {
        fail(BundleFault::kCannotLoad, "out of memory");
    }
    void* instance = nullptr;
    if (make) {
        const BundleCodeScope factoryFunction;
        instance = make(allocator, type);
    }
    if (make && !instance) {
        fail(BundleFault::kFactoryReturnedNull,
             "the factory function of " + UuidText(BytesOf(factory, name)) + " returned null");
    }
    return call.Result(instance, instance ? "an instance" : "NULL");
}

void CFPlugInAddInstanceForFactory(CFUUIDRef factory) {
    constexpr char name[] = "CFPlugInAddInstanceForFactory";
    const UuidBytes& bytes = BytesOf(factory, name);
    MakePlatformCall<NoFailure>(name, Shown(factory), [&] {
        if (Bundle* const bundle = bundleOfFactory(bytes)) {
            ++bundle->instances;
            Retain(*bundle);
        }
    });
}

void CFPlugInRemoveInstanceForFactory(CFUUIDRef factory) {
    constexpr char name[] = "CFPlugInRemoveInstanceForFactory";
    const UuidBytes& bytes = BytesOf(factory, name);
    MakePlatformCall<NoFailure>(name, Shown(factory), [&] {
        Bundle* const bundle = bundleOfFactory(bytes);
        // Without this check, a call without a preceding call of CFPlugInAddInstanceForFactory would
        // release the reference of another owner.
        if (!bundle || bundle->instances == 0) return;
        --bundle->instances;
        Release(*bundle);
    });
}
