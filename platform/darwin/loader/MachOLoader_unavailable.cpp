// On processors other than 32-bit x86.

#include "MachOLoader.h"

namespace macplatform {

bool CanRunMachO() { return false; }

MachOCode* LoadMachO(const std::string& path, BundleFailure& failure) {
    failure = {BundleFault::kWrongArchitecture,
               path + " is for the Mac; the 32-bit build of this tool runs such code"};
    return nullptr;
}

} // namespace macplatform
