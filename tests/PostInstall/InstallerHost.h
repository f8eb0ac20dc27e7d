#pragma once

#include <PostInstall/PluginEntry.h>
#include <support/TemporaryFolder.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

/// Loads the built bundle as the installer does, once for each program. Delivers events to the bundle on a
/// startup volume that belongs to the test. Records the platform calls of the plug-in in order.
class InstallerHost : public testing::Test {
protected:
    struct Event {
        int message = 0;
        std::int32_t productCode = 4900;
        std::int32_t languageCode = 0;
        int selector = kXCodSelector;
        std::uint32_t errorFlags = 0;
    };
    using Texts = std::vector<std::string>;
    using Step = void (*)(XCodParamBlock*);

    InstallerHost();
    /// Fails the test if a platform object leaks or an injected fault did not occur.
    ~InstallerHost() override;

    static CFUUIDRef Factory(); ///< The factory that the property list names. Not retained.
    static XCodInstance* NewInstance();
    static void* Exported(const char* name);

    /// Calls `XCodMain` of a new instance, or `step` if it is given, with a block at an odd address. Returns
    /// the error flags. Fails the test if any other byte of the block changes.
    static std::uint32_t Deliver(const Event& event, Step step = nullptr);

    /// Returns the preferences of a domain as "KEY = VALUE". Returns no texts if there is no file.
    Texts Preferences(const std::string& domain) const;
    std::string OnVolume(const std::string& macPath) const { return volume.Path().string() + macPath; }

    static constexpr CFUUIDBytes kPlugInType = {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2,
                                                0xA7, 0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8};

    TemporaryFolder volume;
    Texts effects; ///< Set values, synchronisations, opened files, alerts and set Finder flags.
    Texts calls;   ///< The names of all platform calls.

private:
    std::size_t liveBefore = 0;
};
