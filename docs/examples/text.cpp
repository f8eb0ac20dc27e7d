// Parses a line of settings and formats messages.
#include <Kelbase/common/common_string.h>

#include <cstdio>

int main() {
    const String line = "  gain =  -3,5   dB ";

    std::vector<String> sides;
    line.Split('=', sides);
    const String name = sides[0].StripWhiteSpace();
    const String value = sides[1].SimplifyWhiteSpace();
    std::printf("%s: %s\n", name.Latin1(), value.Latin1());

    // ToDouble accepts a number and nothing else, so the unit is cut off first.
    bool ok = false;
    const checked_value<unsigned int> blank = value.Find(' ');
    const double gain =
        value.Left(blank.IsGiven() ? unsigned(blank) : value.GetLength()).ToDouble(&ok);
    std::printf(
        "%s\n",
        String("%1 is %2 (%3)").Arg(name).Arg(gain, 2).Arg(ok ? "a number" : "text").Latin1());

    // Positions are bytes. "é" has two bytes. The cut leaves a NUL byte, which the length counts.
    String cut("caf\xC3\xA9");
    cut.Truncate(4);
    std::printf("%s, %u bytes\n", cut.Latin1(), cut.GetLength());

    // Copies share their bytes until one of them is edited. The other one does not change.
    String copy = name;
    copy += "_left";
    std::printf("%s %s\n", name.Latin1(), copy.Latin1());

    // Arg replaces the lowest digit first, so a translation may reorder the placeholders.
    std::printf("%s\n", String("%2 von %1 gelesen").Arg(10).Arg(255u, 16, 4u).Latin1());
}
