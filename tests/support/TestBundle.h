#pragma once

/// Declares temporary bundles with the code of the test plug-ins.

#include "InfoPlist.h"
#include "TemporaryFolder.h"

#include <filesystem>
#include <string>

/// A bundle in a temporary directory. If `infoPlist` is empty, the bundle has no property list. If `code` is
/// empty, the bundle has no executable. If `code` is "plug-in", the executable is a link to the test plug-in.
/// Otherwise `code` is the contents of the executable.
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

/// A bundle with a plug-in of the corpus of faulty plug-ins. The name of the executable selects the fault.
class CorpusBundle : public TestBundle {
public:
    explicit CorpusBundle(const std::string& fault, const std::string& factory = "MyFactory")
        : TestBundle(InfoPlist(factory, kPluginType, fault), "") {
        const std::string own = std::string(CORPUS) + '/' + fault;
        Link(std::filesystem::exists(own) ? own : CORPUS "/PlugIn", fault);
    }
};
