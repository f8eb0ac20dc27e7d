#pragma once

/// Temporary bundles around the code of the test plug-ins.

#include "InfoPlist.h"
#include "TemporaryFolder.h"

#include <filesystem>
#include <string>

/// A bundle in a temporary directory. The bundle has no property list if `infoList` is empty, and no
/// executable if `code` is empty. The code "plug-in" is the executable of the misbehaving plug-in.
class TestBundle {
public:
    explicit TestBundle(const std::string& infoPlist = InfoPlist("Make"),
                        const std::string& code = "plug-in") {
        folder.Write("Test.bundle/keep");
        if (!infoPlist.empty()) folder.Write("Test.bundle/Contents/Info.plist", infoPlist);
        if (code == "plug-in") {
            Link(TEST_PLUGIN, "Test");
        } else if (!code.empty()) {
            folder.Write("Test.bundle/Contents/Linux/Test", code);
        }
    }
    std::string Path() const { return (folder / "Test.bundle").string(); }

protected:
    void Link(const std::string& code, const std::string& name) const {
        std::filesystem::create_directories(folder / "Test.bundle/Contents/Linux");
        std::filesystem::create_symlink(code, folder / ("Test.bundle/Contents/Linux/" + name));
    }

private:
    TemporaryFolder folder;
};

/// A bundle around a plug-in of the corpus. The name of its executable selects the fault.
class CorpusBundle : public TestBundle {
public:
    explicit CorpusBundle(const std::string& fault, const std::string& factory = "MyFactory")
        : TestBundle(InfoPlist(factory, kPluginType, fault), "") {
        const std::string own = std::string(CORPUS) + '/' + fault;
        Link(std::filesystem::exists(own) ? own : CORPUS "/PlugIn", fault);
    }
};
