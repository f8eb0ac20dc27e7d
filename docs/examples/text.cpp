// Reads a settings line as people type it, and writes a message about it.
#include <Kelbase/common/common_string.h>

#include <cstdio>

int main() {
    const String line = "  gain =  -3,5   dB ";

    std::vector<String> sides;
    line.Split('=', sides);
    const String name = sides[0].StripWhiteSpace();
    const String value = sides[1].SimplifyWhiteSpace();
    std::printf("%s: %s\n", name.Latin1(), value.Latin1());

    // Everything after the number would make it no number: cut at the blank.
    bool ok = false;
    const checked_value<unsigned int> blank = value.Find(' ');
    const double gain = value.Left(blank.IsGiven() ? unsigned(blank) : value.GetLength()).ToDouble(&ok);
    std::printf("%s\n",
                String("%1 is %2 (%3)").Arg(name).Arg(gain, 2).Arg(ok ? "a number" : "text").Latin1());

    // Positions are bytes: "é" takes two, and cutting it in half leaves NUL bytes that still count.
    String cut("caf\xC3\xA9");
    cut.Truncate(4);
    std::printf("%s, %u bytes\n", cut.Latin1(), cut.GetLength());

    // Copies share their bytes until one is edited; the other never notices.
    String copy = name;
    copy += "_left";
    std::printf("%s %s\n", name.Latin1(), copy.Latin1());

    // Placeholders are filled lowest digit first, so a translation may order them as it likes.
    std::printf("%s\n", String("%2 von %1 gelesen").Arg(10).Arg(255u, 16, 4u).Latin1());
}
