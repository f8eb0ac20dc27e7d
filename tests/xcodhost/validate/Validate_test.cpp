// The reports of `xcodhost validate` on good bundles and on bundles with one fault.

#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <set>

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

struct Validation {
    int status = 0;
    json document;

    std::vector<std::string> Failed() const {
        std::vector<std::string> ids;
        for (const json& check : document["bundles"][0]["checks"]) {
            if (check["state"] == "failed") ids.push_back(check["id"]);
        }
        return ids;
    }
    json Check(const std::string& id) const {
        for (const json& check : document["bundles"][0]["checks"]) {
            if (check["id"] == id) return check;
        }
        return {};
    }
};

Validation validate(const std::string& bundle, const std::string& more = {}) {
    const HostTool run = RunHostWith({"validate", bundle, "--json"}, more);
    return {run.ExitStatus(), json::parse(run.out)};
}

constexpr int kTimeLimit = 5; ///< Exit status of the tool.

/// A fault of the plug-in in corpus/, and its report.
struct Fault {
    std::string name;
    std::string check; ///< The check that reports the fault.
    int status;        ///< The exit status of the tool.
    std::string expected;
    std::string seen; ///< A part of the text.
};

std::vector<Fault> readFaults() {
    std::vector<Fault> faults;
    std::ifstream file(FAULTS);
    for (std::string line; std::getline(file, line);) {
        if (line[0] == '#') continue;
        std::vector<std::string> fields;
        for (std::size_t end; (end = line.find(" | ")) != std::string::npos; line.erase(0, end + 3))
            fields.push_back(line.substr(0, end));
        faults.push_back({fields.at(0), fields.at(1), std::stoi(fields.at(2)), fields.at(3), line});
    }
    return faults;
}

class PluginFault : public testing::TestWithParam<Fault> {};

TEST_P(PluginFault, IsReportedByExactlyOneCheck) {
#ifdef IS_SANITIZED
    if (GetParam().name == "MemoryLeaked")
        GTEST_SKIP() << "the sanitizer replaces malloc, which then reports no sizes";
#endif
    const CorpusBundle bundle(GetParam().name);
    const bool hangs = GetParam().status == kTimeLimit;
    const Validation found = validate(bundle.Path(), hangs ? "--timeout 1" : "--timeout 60");
    EXPECT_THAT(found.Failed(), ElementsAre(GetParam().check));
    EXPECT_EQ(found.status, GetParam().status);
    const json check = found.Check(GetParam().check);
    EXPECT_TRUE(std::any_of(check["findings"].begin(), check["findings"].end(), [](const json& finding) {
        return finding["expected"] == GetParam().expected &&
               std::string(finding["seen"]).find(GetParam().seen) != std::string::npos;
    })) << check["findings"].dump(2);
    EXPECT_EQ(check["repeat"], "xcodhost validate " + bundle.Path() + " --include " + GetParam().check);
}

INSTANTIATE_TEST_SUITE_P(Validate, PluginFault, testing::ValuesIn(readFaults()),
                         [](const auto& row) { return row.param.name; });

TEST(Validate, RejectsOtherFactoryNamesAndMissingBundles) {
    const CorpusBundle bundle("None", "PreInstall");
    EXPECT_EQ(validate(bundle.Path(), "--include bundle.factory-name").status, 1);
    EXPECT_EQ(validate("/not/there.bundle").status, 3);
}

TEST(Validate, PassesGoodBundles) {
    const CorpusBundle other("None"); // an implementation without our code
    const HostTool run = RunHost({"validate", POSTINSTALL_BUNDLE, other.Path()});
    EXPECT_EQ(run.ExitStatus(), 0) << run.out;
    EXPECT_THAT(run.out, Not(HasSubstr("FAIL")));
    EXPECT_THAT(run.Verdict(), testing::MatchesRegex("PASS [0-9]+ checks"));
}

TEST(Validate, HasABrokenBundleForEachCheck) {
    std::set<std::string> broken = {"bundle.property-list", "bundle.factory", "bundle.factory-name",
                                    "bundle.executable", "bundle.architecture"};
    for (const Fault& fault : readFaults()) broken.insert(fault.check);
    const json list = json::parse(RunHost({"list", "checks", "--json"}).out);
    std::set<std::string> ids;
    for (const json& check : list["checks"]) {
        EXPECT_TRUE(ids.insert(check["id"]).second) << check["id"];
    }
    EXPECT_GE(ids.size(), 40u);
    EXPECT_EQ(broken, ids);
    for (const json& check : list["checks"]) {
        for (const std::string dependency : check["needs"])
            EXPECT_EQ(ids.count(dependency), 1u) << dependency;
    }
}

/// Runs a Python program with the file as its argument. Returns the status, which is 0 if its assertions
/// hold. Uses the system's Python, which has the packaged modules.
int python(const std::string& program, const std::string& file) {
    const TemporaryFolder folder;
    return std::system(("/usr/bin/python3 " + folder.Write("program.py", program) + " " + file).c_str());
}

TEST(Validate, WritesReportsThatOtherProgramsRead) {
    const CorpusBundle bundle("AlertMissing");
    const TemporaryFolder folder;
    const std::string junit = folder.Write("junit.xml", "old");
    const std::string html = folder.Write("page.html", "old");
    EXPECT_EQ(RunHost({"validate", bundle.Path(), "--junit", junit, "--html", html}).ExitStatus(), 1);
    EXPECT_EQ(python("import sys\n"
                     "from junitparser import JUnitXml\n"
                     "xml = JUnitXml.fromfile(sys.argv[1])\n"
                     "cases = [case for suite in xml for case in suite]\n"
                     "failed = [case.name for case in cases if any(type(r).__name__ == 'Failure' for r in "
                     "case.result)]\n"
                     "skipped = [case.name for case in cases if any(type(r).__name__ == 'Skipped' for r in "
                     "case.result)]\n"
                     "assert failed == ['steps.alert'] and skipped == ['steps.answer'], (failed, skipped)\n"
                     "suite = list(xml)[0]\n"
                     "assert (suite.tests, suite.failures, suite.skipped) == (len(cases), 1, 1)\n"
                     "assert abs(suite.time - sum(case.time for case in cases)) < 0.01 * len(cases)\n",
                     junit),
              0);
    EXPECT_EQ(
        python(
            "import sys\n"
            "from html.parser import HTMLParser\n"
            "class Page(HTMLParser):\n"
            "    open, text = [], ''\n"
            "    def handle_starttag(self, tag, attrs):\n"
            "        assert tag not in ('link', 'script', 'img') and not dict(attrs).get('src')\n"
            "        if tag != 'meta': self.open.append(tag)\n"
            "    def handle_endtag(self, tag): assert self.open.pop() == tag\n"
            "    def handle_data(self, data): self.text += data\n"
            "page = Page()\n"
            "page.feed(open(sys.argv[1], encoding='utf-8').read())\n"
            "assert not page.open\n"
            "for part in ('FAIL 1 of', '3100 Korvane Restora', 'UpdateInterval', '(integer) 2', '(none)'):\n"
            "    assert part in page.text, part\n",
            html),
        0);
}

} // namespace
