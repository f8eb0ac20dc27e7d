#pragma once

#include <PostInstall/PluginEntry.h>
#include <support/TemporaryFolder.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

/// Loads the built bundle as the installer does, once a program, and delivers events to it on a startup
/// volume of the test's own. Notes in order what the plug-in does to the outside.
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
    ~InstallerHost() override; ///< Fails the test when a platform object is left or an ordered fault unused.

    static CFUUIDRef Factory(); ///< The one that the property list names; lent.
    static XCodInstance* NewInstance();
    static void* Exported(const char* name);

    /// Calls `XCodMain` of a fresh instance, or the given step itself, with a block at an odd address.
    /// Answers the error flags; fails the test when anything else of the block has changed.
    static std::uint32_t Deliver(const Event& event, Step step = nullptr);

    /// What the preferences of a domain say, as "KEY = VALUE"; empty without a file.
    Texts Preferences(const std::string& domain) const;
    std::string OnVolume(const std::string& macPath) const { return volume.Path().string() + macPath; }

    static constexpr CFUUIDBytes kPlugInType = {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2,
                                                0xA7, 0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8};

    TemporaryFolder volume;
    Texts effects; ///< One line each: values set, synchronisations, files opened, alerts, Finder flags.
    Texts calls;   ///< Every platform call by its name.

private:
    std::size_t liveBefore = 0;
};
