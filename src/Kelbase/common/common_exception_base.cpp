#include <Kelbase/common/common_exception_base.h>

namespace Exception {

Base::Base(const String& text) : message(text) {}

Base::~Base() = default;

int Base::GetLineNumber() const { return static_cast<int>(static_cast<unsigned int>(lineNumber)); }

void Base::SetLocation(const String& file, long long line) {
    filename = file;
    lineNumber = line;
}

String Base::ToString() const {
    // The last number is always 0, also for exceptions with an error number: programs that read these texts
    // expect 0.
    const String location =
        String("%1 (%2): Thrown, GetLastError(): %3\n").Arg(filename).Arg(GetLineNumber()).Arg(0);
    return String("Base:\n\t") + message + "\n\t" + location;
}

} // namespace Exception
