// Replaces MachOLoader.cpp in builds for processors other than 32-bit x86.

#include "MachOLoader.h"

namespace macplatform {

bool CanRunMachO() { return false; }

MachOCode* LoadMachO(const std::string& path, BundleFailure& failure) {
    failure = {BundleFault::kWrongArchitecture,
               path + ": code for the Mac; use the 32-bit build of this tool to run it"};
    return nullptr;
}

} // namespace macplatform
