#pragma once

/// A small plug-in that fulfils the whole contract. If its executable has the name of a fault, the plug-in
/// breaks the contract in the one place that tests for this fault.

#include "support/NewText.h"

#include <Carbon/Carbon.h>
#include <CoreFoundation/CFPlugInCOM.h>

#include <cstdint>
#include <cstring>
#include <string>

extern "C" void PreInstall(char* block);
extern "C" void PostInstall(char* block);

namespace plugin {

/// Returns whether the executable has the name of this fault.
bool Is(const char* fault);

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

struct Product {
    const char* domain;
    const char* name;
};
const Product* Find(std::int32_t code); ///< Null for an unknown product.

void Main(char* block);
void ShowAlert();
void MakeRawCalls();

void StoreVersion(const Product& product);
void SetInterval(const Product& product);
void StoreInterval(int interval);
void StoreLanguage(const Product& product, std::int32_t language);
void SetText(const char* domain, const char* key, const char* text); ///< Also synchronises the domain.

void SetFolderFlags(bool isKnownProduct);
void SetIconFlags();
void LeaveTraces(); ///< Does nothing without a fault.

void ChangeFunctionBlock();
bool LacksItsInstance(); ///< Whether the instance that was in use at the start of the event is freed.
void NoteInstance();     ///< Records the instance that is in use at the start of an event.

constexpr const char* kUpdater = "com.korvane.updater";
constexpr const char* kFolder = "/Applications/Korvane";
constexpr const char* kIcon = "/Applications/Korvane/Icon\r";

} // namespace plugin
