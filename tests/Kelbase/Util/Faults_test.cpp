// Makes each system call of the library fail in turn. Verifies the exception, the state after the failure,
// and that nothing leaks.

#include "FailingCalls.h"
#include "FileFailure.h"
#include "support/FaultTally.h"
#include "support/TemporaryFolder.h"

#include <Kelbase/Util/ByteStream.h>
#include <Kelbase/Util/Dir.h>
#include <Kelbase/Util/File.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdio>
#include <new>

namespace {

using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::StrEq;
using Util::Dir;
using Util::File;

const char kFileSource[] = "src/Kelbase/Util/File", kDirSource[] = "src/Kelbase/Util/Dir_mac";

/// A temporary directory with a file and a directory, and the objects under test.
struct Fixture {
    const TemporaryFolder folder;
    const std::string name = folder.Write("file", "0123"), other = (folder / "other").string();
    const FilePath from{name.c_str(), false}, to{other.c_str(), false};
    File file{from};
    Dir dir{Folder("")}, empty{Folder("empty")}, deep{Folder("empty/a/b")};
    std::vector<String> names;
    char buffer[5] = {};
    const char* result = "nothing";

    Fixture() {
        std::filesystem::create_directory(folder / "empty");
        names.reserve(8);
    }
    FolderPath Folder(const char* below) const { return FolderPath((folder / below).c_str(), false); }
};

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// Makes each call of `work` fail in turn. Returns "CALL: LINE KIND ERRNO: MESSAGE" or the result of `work`
/// for each failed file call. Expects std::bad_alloc or the usual result for each failed allocation, which is
/// not listed. Expects that no memory and no descriptor leaks.
template <typename Work>
std::vector<std::string> withEachCallFailing(const char* source, const std::string& below, Work work) {
    std::vector<std::string> outcomes;
    {
        Fixture first; // the first run allocates memory that stays, which is no leak
        work(first);
    }
    for (unsigned number = 0;; ++number) {
        Fixture fixture;
        const std::string path = (fixture.folder / below).string();
        char outcome[200] = "";
        const auto descriptors = openDescriptors() + (fixture.file.IsOpen() ? 1 : 0);
        const std::size_t blocks = LiveBlocks();
        const FailingCall failing(number, EIO);
        try {
            const std::string failure = FailureOf(source, path, [&] { work(fixture); });
            std::snprintf(outcome, sizeof outcome, "%s", failure.empty() ? fixture.result : failure.c_str());
        } catch (const std::bad_alloc&) {
            std::snprintf(outcome, sizeof outcome, "out of memory");
        }
        fixture.names.clear();
        const std::size_t left = LiveBlocks();
        if (!failing.Name()) {
            PrintFaultTally("file call or allocation of the library failing", number,
                            testing::Test::HasFailure() ? 1 : 0);
            return outcomes;
        }
        EXPECT_EQ(left, blocks) << "leak after the failure of call " << number << ", " << failing.Name();
        const bool isOpen = fixture.file.IsOpen();
        fixture.file.SetPath({});
        EXPECT_EQ(openDescriptors(), descriptors) << failing.Name();
        if (failing.Name() == std::string("malloc")) {
            EXPECT_THAT(outcome, AnyOf(StrEq("out of memory"), StrEq(fixture.result)));
        } else {
            outcomes.push_back(failing.Name() + std::string(": ") + outcome + (isOpen ? " (open)" : ""));
        }
    }
}

} // namespace

TEST(Faults, FailedCallsOfAnOpenFileThrowWithTheirLine) {
    EXPECT_THAT(withEachCallFailing(kFileSource, "file",
                                    [](Fixture& fixture) {
                                        fixture.file.Open(File::Read | File::Write);
                                        fixture.file.ReadBlock(fixture.buffer, 4);
                                        fixture.file.At(2);
                                        fixture.file.WriteBlock("ab", 2);
                                        fixture.file.Close();
                                    }),
                ElementsAre("fopen: 288 1 5: Error opening file",
                            "fread: 608 2 5: Attempt to read 4 bytes, only read 2 bytes (open)",
                            "fseeko: 345 7 5: Seek to 2 failed (open)",
                            "fwrite: 630 3 5: Attempt to write 2 bytes, only wrote 1 bytes (open)",
                            "fclose: 397 4 5: Close failed"));
    EXPECT_THAT(withEachCallFailing(kFileSource, "file",
                                    [](Fixture& fixture) {
                                        fixture.file.Open(File::Read | File::Text);
                                        fixture.file.ReadBlock(fixture.buffer, 4);
                                        fixture.file.SetPath({});
                                    }),
                ElementsAre("fopen: 288 1 5: Error opening file", "ftello: nothing",
                            "fread: 592 2 5: Attempt to read 4 bytes, only read 2 bytes (open)",
                            "ftello: 592 2 5: Attempt to read 4 bytes, only read 0 bytes (open)",
                            "fclose: nothing"));
}

TEST(Faults, FailedCallsForAPathThrowWithTheirLine) {
    const auto failing = [](void (*work)(Fixture&)) {
        return withEachCallFailing(kFileSource, "file", work);
    };
    EXPECT_THAT(failing([](Fixture& fixture) { fixture.file.SetMode(0600); }),
                ElementsAre("chmod: 128 7 0: Error modifying file permissions"));
    EXPECT_THAT(failing([](Fixture& fixture) {
                    fixture.file.SetTime({1, 2});
                }),
                ElementsAre("utimes: 148 7 0: Error setting file time"));
    EXPECT_THAT(failing([](Fixture& fixture) {
                    Util::FileTime time;
                    fixture.file.GetTime(&time);
                }),
                ElementsAre("stat: 179 7 0: Error getting file time"));
    EXPECT_THAT(failing([](Fixture& fixture) { fixture.file.Remove(true); }),
                ElementsAre("remove: 422 5 5: Remove failed"));
    EXPECT_THAT(failing([](Fixture& fixture) { fixture.file.Remove(false); }),
                ElementsAre("remove: nothing"));
    EXPECT_THAT(failing([](Fixture& fixture) { File::Rename(fixture.from, fixture.to); }),
                ElementsAre("access: nothing", "rename: 547 6 5: Rename failed"));
}

TEST(Faults, FailedQueriesReturnNoValue) {
    EXPECT_THAT(withEachCallFailing(kFileSource, "file",
                                    [](Fixture& fixture) {
                                        const bool all = fixture.file.Exists() && fixture.file.IsReadable() &&
                                                         fixture.file.IsWritable();
                                        fixture.result = !all                             ? "not there"
                                                         : !fixture.file.Size().IsGiven() ? "no size"
                                                                                          : "whole";
                                        Dir::DirInfo info = {7};
                                        if (!fixture.dir.GetDirInfo(info) && info.availableSpace == 7)
                                            fixture.result = "no space";
                                    }),
                ElementsAre("access: not there", "access: not there", "access: not there", "stat: no size",
                            "statfs: no space"));
    EXPECT_THAT(withEachCallFailing(kFileSource, "file",
                                    [](Fixture& fixture) {
                                        fixture.file.Open(File::Read);
                                        fixture.result = !fixture.file.At().IsGiven()          ? "no place"
                                                         : !fixture.file.Size().IsGiven()      ? "no size"
                                                         : !fixture.file.Remaining().IsGiven() ? "no rest"
                                                                                               : "whole";
                                    }),
                ElementsAre("fopen: 288 1 5: Error opening file", "ftello: no place (open)",
                            "fstat: no size (open)", "fstat: no rest (open)", "ftello: no rest (open)"));
}

TEST(Faults, FailedDirectoryCallsThrowWithTheirLine) {
    const char notMade[] = "mkdir: 105 3 0: mkdir() failed with -1/5";
    const auto deep =
        withEachCallFailing(kDirSource, "empty/a/b/", [](Fixture& fixture) { fixture.deep.Create(true); });
    EXPECT_THAT(deep, Contains(notMade).Times(2));
    EXPECT_THAT(deep,
                Each(AnyOf(notMade, "access: nothing", EndsWith(": 105 3 0: mkdir() failed with -1/17"))));
    const auto failing = [](void (*work)(Fixture&)) {
        return withEachCallFailing(kDirSource, "empty/", work);
    };
    EXPECT_THAT(failing([](Fixture& fixture) {
                    fixture.empty.Remove();
                    fixture.empty.Create(false);
                }),
                ElementsAre("access: nothing", "stat: nothing", "rmdir: 135 5 0: rmdir() failed",
                            "access: nothing", "mkdir: 118 3 0: mkdir() failed with -1/5"));
    EXPECT_THAT(failing([](Fixture& fixture) {
                    fixture.empty.SetTime({1, 2});
                }),
                ElementsAre("utimes: 158 7 0: Error setting folder time"));
    EXPECT_THAT(failing([](Fixture& fixture) {
                    Util::FileTime time;
                    fixture.empty.GetTime(&time);
                }),
                ElementsAre("stat: 171 7 0: Error getting folder time"));
}

TEST(Faults, FailedListingCallsOmitEntries) {
    const auto outcomes = withEachCallFailing(kDirSource, "", [](Fixture& fixture) {
        fixture.dir.GetFilenames(fixture.names, "", false, true);
        fixture.result = fixture.names.empty() ? "none" : fixture.names.size() == 1 ? "one" : "both";
    });
    ASSERT_GE(outcomes.size(), 4U);
    EXPECT_EQ(outcomes[0], "opendir: none");
    EXPECT_EQ(outcomes[1], "readdir: none");
    EXPECT_THAT(outcomes, Contains("stat: one"));
    EXPECT_EQ(outcomes.back(), "readdir: both") << "the last readdir, after all entries";
}

TEST(Faults, FailedAllocationsLeaveStringsAndStreamsUnchanged) {
    struct Objects {
        String text{"a text of %1 that is longer than any buffer in the object,  really"}, copy{text};
        std::vector<String> parts;
        Util::ByteStream stream{0};
    };
    using Work = void (*)(Objects&);
    const Work works[] = {
        [](Objects& o) { o.text.Insert(3, "many words that need more memory"); },
        [](Objects& o) { o.text.Remove(3, 2); },
        [](Objects& o) { o.text.Resize(500, true); },
        [](Objects& o) { o.text.detachAndExtend(500); },
        [](Objects& o) { o.text += "many words that need more memory"; },
        [](Objects& o) {
            o.text = o.text.Arg(4711).Replace("t", "many words that need more memory").ToUpper();
        },
        [](Objects& o) { o.text = o.text.SimplifyWhiteSpace().Mid(3) + o.text.Left(30); },
        [](Objects& o) { o.text.Split(' ', o.parts); },
        [](Objects& o) { o.stream << String("many words that need more memory"); },
    };
    unsigned tally = 0;
    for (const Work work : works) {
        for (unsigned number = 0;; ++number, ++tally) {
            Objects objects;
            const std::size_t blocks = LiveBlocks();
            bool isOut = false;
            const FailingCall failing(number, ENOMEM);
            try {
                work(objects);
            } catch (const std::bad_alloc&) {
                isOut = true;
            }
            if (!failing.Name()) break;
            EXPECT_TRUE(isOut);
            EXPECT_EQ(LiveBlocks(), blocks);
            EXPECT_TRUE(objects.text == objects.copy && objects.parts.empty());
        }
    }
    EXPECT_GT(tally, 2 * std::size(works));
    PrintFaultTally("allocation of a text or stream failing", tally, HasFailure() ? 1 : 0);
}
