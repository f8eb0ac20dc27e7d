// A program that uses the packaged library: strings, paths, streams, vector routines and the platform.

#include <Kelbase/IPP/IPP_util.h>
#include <Kelbase/Util/ByteStream.h>
#include <Kelbase/Util/CFString.h>
#include <Kelbase/common/common_path.h>

#include <cstdio>

int main() {
    const short samples[] = {16384, -32768};
    float values[2];
    IPP::Convert(2, samples, values, 15);

    Util::ByteStream stream(16);
    stream << FilePath("/Library/Preferences/a.plist", false).GetBaseName() << values[0];
    stream.SetPosition(0);
    String name;
    float value;
    stream >> name >> value;
    const Util::CFString bridged(name, Util::CFString::kReleaseOnDestroy);
    std::puts(String("%0 %1").Arg(bridged.ToString()).Arg(value, 2).Latin1());
}
