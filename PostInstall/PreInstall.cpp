#include <PostInstall/FailureAlert.h>
#include <PostInstall/PluginEntry.h>
#include <PostInstall/ProductTable.h>
#include <PostInstall/SystemPreferences.h>

#include <Kelbase/Util/CFString.h>

void PreInstall(XCodParamBlock* block) {
    if (!block) return;
    if (block->selector != kXCodSelector) {
        ReportRejectedCall(*block);
        return;
    }
    const Product product = FindProduct(block->productCode);
    const String shortName(product.shortName);
    if (!product.bundleIdentifier) return; // an unknown product is not an error

    {
        const Util::CFString key(String("InstalledProducts/%1/CurrentVersion").Arg(shortName),
                                 Util::CFString::kReleaseOnDestroy);
        SetSystemPreference(UpdaterDomain(), key.GetRef(), CFSTR("1.73"));
    }
    SynchronizeSystemPreferences(UpdaterDomain());
}
