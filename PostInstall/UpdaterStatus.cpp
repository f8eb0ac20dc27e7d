#include <PostInstall/UpdaterStatus.h>

#include <PostInstall/SystemPreferences.h>

#include <Kelbase/Util/CFString.h>
#include <Kelbase/Util/Exception/FileIO.h>
#include <Kelbase/Util/File.h>
#include <Kelbase/common/common_path.h>

#include <cstddef>
#include <new>
#include <vector>

namespace {

enum UpdateInterval : int { kNever = 0, kDefault = 2 };

unsigned int low32BitsOfSize(const Util::File& file) {
    const unsigned long long size = file.Size();
    return static_cast<unsigned int>(size);
}

/// Opens the file and returns its text before the first NUL. The number of bytes to read is the size of the
/// file directly after the opening, modulo 2^32. Throws FileIO if the file becomes shorter before the read.
/// Ignores bytes that are appended before the read.
String readText(Util::File& file) {
    file.Open(Util::File::Read);
    const unsigned int size = low32BitsOfSize(file);
    const std::size_t capacity = std::size_t{size} + 1;
    if (capacity == 0) throw std::bad_alloc(); // the terminator would exceed the address space
    std::vector<char> text(capacity);
    file.ReadBlock(text.data(), size);
    file.Close();
    return String(text.data());
}

UpdateInterval readInterval(Util::File& file) {
    return readText(file).Left(14) == String("UpdatesEnabled") ? kDefault : kNever;
}

void storeInterval(UpdateInterval interval) {
    const int value = interval;
    const CFNumberRef number = CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &value);
    if (!number) return; // setting a null value would remove the stored value
    SetSystemPreference(UpdaterDomain(), CFSTR("UpdateInterval"), number);
    SynchronizeSystemPreferences(UpdaterDomain());
    CFRelease(number);
}

void storeFailure(const Util::Exception::FileIO& failure) {
    {
        const Util::CFString text(failure.GetMessageText(), Util::CFString::kReleaseOnDestroy);
        SetSystemPreference(UpdaterDomain(), CFSTR("InstallStatus"), text.GetRef());
    }
    SynchronizeSystemPreferences(UpdaterDomain());
}

} // namespace

void SetUpdateIntervalFromStatusFile() {
    bool intervalWritten = false;
    try {
        Util::File file(FilePath("/Library/Application Support/Korvane/Updater/install_status.txt", false));
        if (file.Exists()) {
            storeInterval(readInterval(file));
            intervalWritten = true;
        }
    } catch (const Util::Exception::FileIO& failure) {
        storeFailure(failure);
    }
    if (!intervalWritten) storeInterval(kDefault);
}
