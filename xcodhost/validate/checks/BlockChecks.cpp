#include "Groups.h"

#include "DisplayText.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

namespace xcodhost {

namespace {

/// Expects that each error bit keeps its value, except bit 0 of a rejected call.
void expectFlagsKept(CheckRun& run, ParameterBlock block, Entry entry) {
    const bool isReadError = block.Selector() != kInstallerSelector;
    for (int bit = 0; bit < 34; ++bit) {
        const std::uint32_t given = bit == 32 ? 0xFFFFFFFE : bit == 33 ? 0xFFFFFFFF : std::uint32_t{1} << bit;
        block.SetErrorFlags(given);
        const std::uint32_t after = run.Deliver(block, entry).flagsAfter;
        const std::uint32_t mask = isReadError ? 0xFFFFFFFE : 0xFFFFFFFF;
        run.Expect((after & mask) == (given & mask), "error flags " + Hex(given, 8) + " are kept",
                   Hex(after, 8));
    }
}

void otherErrorBitsStay(CheckRun& run) {
    run.WatchVolume(false);
    for (const std::uint16_t message : {kPreInstall, kPostInstall}) {
        expectFlagsKept(run, {std::uint16_t{999}, message, 4900, 0}, Entry::kMain);
        expectFlagsKept(run, Event(message, 1234), Entry::kMain);
    }
    expectFlagsKept(run, Event(4, 4900), Entry::kMain);
}

void goodCallKeepsFlags(CheckRun& run) {
    run.WatchVolume(false);
    for (const std::uint16_t message : {kPreInstall, kPostInstall}) {
        for (const ProductContract& product : kProducts) {
            for (const std::uint32_t given : {0x00000000U, 0x00000001U, 0xFFFFFFFEU, 0x80000001U}) {
                ParameterBlock block = Event(message, product.code);
                block.SetErrorFlags(given);
                const std::uint32_t after = run.Deliver(block).flagsAfter;
                run.Expect(after == given, "error flags " + Hex(given, 8) + " are kept", Hex(after, 8));
            }
        }
    }
}

void restOfBlockStays(CheckRun& run) {
    for (const std::uint16_t message : {kPreInstall, kPostInstall, std::uint16_t{4}}) {
        for (const std::uint16_t selector : {kInstallerSelector, std::uint16_t{7}}) {
            const std::string bytes = run.Deliver({selector, message, 4900, 11}).otherBytes;
            run.Expect(bytes.empty(), "only the error flags change", "bytes changed: " + bytes);
        }
    }
}

/// Expects that two equivalent blocks have the same effects on new sample volumes. `expected`
/// begins the finding's text.
void expectSameEffects(CheckRun& run, const ParameterBlock& aligned, const ParameterBlock& other,
                       std::size_t misalignment, const char* expected) {
    run.UseFreshVolume();
    const Outcome wanted = run.Deliver(aligned);
    run.UseFreshVolume();
    const Outcome seen = run.Deliver(other, Entry::kMain, misalignment);
    const std::string wantedText = Describe(wanted.changes);
    const std::string seenText = Describe(seen.changes);
    run.Expect(seenText == wantedText, std::string(expected) + ": " + wantedText, seenText);
    run.Expect(seen.flagsAfter == wanted.flagsAfter,
               std::string(expected) + ": error flags " + Hex(wanted.flagsAfter, 8), Hex(seen.flagsAfter, 8));
}

void anyAddressWorks(CheckRun& run) {
    for (const std::uint16_t message : {kPreInstall, kPostInstall}) {
        for (const std::size_t misalignment : {1u, 2u, 3u, 5u, 7u}) {
            expectSameEffects(run, Event(message, 4900, 11), Event(message, 4900, 11), misalignment,
                              "the same effects at an odd address");
        }
    }
}

void hostFieldsAreNotRead(CheckRun& run) {
    for (const std::uint16_t message : {kPreInstall, kPostInstall}) {
        for (const char byte : {'\x01', '\x7F', '\xFF'}) {
            ParameterBlock filled = Event(message, 4900, 11);
            filled.FillHostFields(byte);
            run.Trace("block",
                      "the host's fields of the second block: " + Hex(static_cast<unsigned char>(byte), 2));
            expectSameEffects(run, Event(message, 4900, 11), filled, 0,
                              "the same effects for any content of the host's fields");
        }
    }
}

} // namespace

const std::vector<Check::Body> kNeedsEvents = {&PreInstallReturns, &PostInstallReturns};

const CheckGroup kBlockChecks = {
    "block",
    {
        Check("error-bits", &otherErrorBitsStay, kNeedsEvents)
            .Claim("The plug-in never changes the error bits 1 to 31 and never clears bit 0.")
            .Reason("The other bits belong to the host and to other plug-ins. The check sets each of the 32 "
                    "bits alone. It uses rejected calls, unknown products and other messages."),
        Check("no-error", &goodCallKeepsFlags, kNeedsEvents)
            .Claim("A successful event does not change the error flags.")
            .Reason("If an error bit is set, the installer reports a failed installation to the user."),
        Check("rest", &restOfBlockStays, kNeedsEvents)
            .Claim("The plug-in changes no other byte of the block and no byte around the block.")
            .Reason("The block is the host's own record and continues after the last field that a plug-in "
                    "reads."),
        Check("odd-address", &anyAddressWorks, kNeedsEvents)
            .Claim("The block may start at any address.")
            .Reason("The host guarantees no alignment. The plug-in must copy the fields instead of "
                    "dereferencing pointers to them."),
        Check("host-fields", &hostFieldsAreNotRead, kNeedsEvents)
            .Claim("The plug-in does not read the host's own fields.")
            .Reason("Bytes 12 to 609 have no meaning for a plug-in."),
    }};

} // namespace xcodhost
