#include "Groups.h"

#include "DisplayText.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

namespace xcodhost {

namespace {

/// Error flags that come back other than they were given, but for bit 0 of a call that is refused.
void expectFlagsKept(CheckRun& run, ParameterBlock block, Entry entry) {
    const bool isRefused = block.Selector() != kInstallerSelector;
    for (int bit = 0; bit < 34; ++bit) {
        const std::uint32_t given = bit == 32 ? 0xFFFFFFFE : bit == 33 ? 0xFFFFFFFF : std::uint32_t{1} << bit;
        block.SetErrorFlags(given);
        const std::uint32_t after = run.Deliver(block, entry).flagsAfter;
        const std::uint32_t mask = isRefused ? 0xFFFFFFFE : 0xFFFFFFFF;
        run.Expect((after & mask) == (given & mask), "error flags " + Hex(given, 8) + " stay", Hex(after, 8));
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

/// Known products: bits that were set before must still be there, and none may be added.
void goodCallKeepsFlags(CheckRun& run) {
    run.WatchVolume(false);
    for (const std::uint16_t message : {kPreInstall, kPostInstall}) {
        for (const ProductContract& product : kProducts) {
            for (const std::uint32_t given : {0x00000000U, 0x00000001U, 0xFFFFFFFEU, 0x80000001U}) {
                ParameterBlock block = Event(message, product.code);
                block.SetErrorFlags(given);
                const std::uint32_t after = run.Deliver(block).flagsAfter;
                run.Expect(after == given, "error flags " + Hex(given, 8) + " stay", Hex(after, 8));
            }
        }
    }
}

void restOfBlockStays(CheckRun& run) {
    for (const std::uint16_t message : {kPreInstall, kPostInstall, std::uint16_t{4}}) {
        for (const std::uint16_t selector : {kInstallerSelector, std::uint16_t{7}}) {
            const std::string bytes = run.Deliver({selector, message, 4900, 11}).otherBytes;
            run.Expect(bytes.empty(), "only the error flags may change", "bytes changed: " + bytes);
        }
    }
}

/// Two deliveries of blocks that mean the same have the same effects on fresh volumes.
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
                              "the same at an odd address");
        }
    }
}

void hostFieldsAreNotRead(CheckRun& run) {
    for (const std::uint16_t message : {kPreInstall, kPostInstall}) {
        for (const char byte : {'\x01', '\x7F', '\xFF'}) {
            ParameterBlock filled = Event(message, 4900, 11);
            filled.FillHostFields(byte);
            expectSameEffects(run, Event(message, 4900, 11), filled, 0,
                              "the same whatever the host's fields hold");
        }
    }
}

} // namespace

std::vector<Check> BlockChecks() {
    const std::vector<const char*> events = {"dispatch.pre-install", "dispatch.post-install"};
    return {
        {"block.error-bits", "Error bits other than bit 0 are never touched, and bit 0 is never cleared.",
         "The other bits are the host's and other plug-ins'. Each of the 32 is tried alone, with refused "
         "calls, "
         "unknown products and other messages.",
         events, &otherErrorBitsStay},
        {"block.no-error", "An event that is carried out leaves the error flags as they are.",
         "A set bit makes the installer tell the user that the installation failed.", events,
         &goodCallKeepsFlags},
        {"block.rest", "No other byte of the block changes, nor any around it.",
         "The block is the host's own record and goes on after the last field that a plug-in reads.", events,
         &restOfBlockStays},
        {"block.odd-address", "The block may lie at any address.",
         "The host promises no alignment; fields must be copied, not dereferenced.", events,
         &anyAddressWorks},
        {"block.host-fields", "The host's own fields are not read.",
         "Bytes 12 to 609 mean nothing to a plug-in.", events, &hostFieldsAreNotRead},
    };
}

} // namespace xcodhost
