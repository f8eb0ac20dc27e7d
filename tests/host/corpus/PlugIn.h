#pragma once

/// A small plug-in of its own that keeps the whole contract. Every function here can be replaced: a file that
/// defines one of them and is linked with PlugIn.cpp makes a bundle with that fault.

#include <Carbon/Carbon.h>
#include <CoreFoundation/CFPlugInCOM.h>
#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace plugin {

/// The installer's parameter block, at any address.
class Block {
public:
    explicit Block(char* blockBytes) : bytes(blockBytes) {}
    std::uint16_t Selector() const { return Field<std::uint16_t>(0); }
    std::uint16_t Message() const { return Field<std::uint16_t>(2); }
    std::int32_t Product() const { return Field<std::int32_t>(4); }
    std::uint32_t Flags() const { return Field<std::uint32_t>(8); }
    std::int32_t Language() const { return Field<std::int32_t>(610); }
    void SetFlags(std::uint32_t flags) { std::memcpy(bytes + 8, &flags, sizeof flags); }
    char* Bytes() { return bytes; }

private:
    template <typename T>
    T Field(std::size_t offset) const {
        T value;
        std::memcpy(&value, bytes + offset, sizeof value);
        return value;
    }
    char* bytes;
};

struct Functions {
    IUNKNOWN_C_GUTS;
    void (*main)(char*);
};
extern Functions functions;

struct Instance {
    Functions* block;
    SInt32 count;
};

struct Product {
    const char* domain;
    const char* name;
};

bool IsPlugInType(CFUUIDRef type);
bool IsAllocator(CFAllocatorRef allocator);
Instance* Allocate();
void Dispose(Instance* instance);
bool IsInterface(REFIID identifier);
HRESULT Refuse(LPVOID* place);
void AddReference(Instance* instance);
/// The new count.
SInt32 Count(Instance* instance, int change);

bool IsNull(const char* block);
void AtEvent(Block& block); ///< Called first in each event that is carried out; does nothing.
bool IsSelector(std::uint16_t selector);
void RefuseMain(Block& block);
void Dispatch(Block& block);
void ShowAlert();
void AddButtons(void* alert); ///< Adds none.
void AddButton(void* alert, CFStringRef title);
void ShowStopAlert();
void SetErrorBit(Block& block);

/// Null for an unknown product.
const Product* Find(std::int32_t code);
void StoreVersion(const Product& product);
const char* Tag(std::int32_t language);
/// 14 bytes of the file: true and `isEnabled`; false when it is not there; throws `Unreadable`.
struct Unreadable {};
bool ReadStatus(bool& isEnabled);
void SetInterval(const Product& product);
void StoreInterval(int interval);
void StoreFailure();
void StoreLanguage(const Product& product, const char* tag);
void DressFolder();
void DressIcon();
std::uint16_t Dressed(std::uint16_t flags, bool invisible, bool customIcon);

void SetText(const char* domain, const std::string& key, const char* text);
void Synchronise(const char* domain);
void Release(CFTypeRef object);
void Dress(const char* path, bool invisible, bool customIcon);

constexpr const char* kUpdater = "com.korvane.updater";
constexpr const char* kStatusFile = "/Library/Application Support/Korvane/Updater/install_status.txt";

} // namespace plugin
