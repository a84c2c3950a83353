// The script checker over small scripts: each rule once, and a clean script
// with no finding.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "run/checker.h"
#include "test_support.h"

namespace {

std::string Step(const std::string& action, const std::string& inner = "") {
    return "<step><action>" + action + "</action>" + inner + "</step>";
}

std::vector<CheckFinding> Check(const std::string& steps, bool unattended = false, const char* file = nullptr) {
    ReplaceSteps("<ZantoRunner>" + steps + "</ZantoRunner>");
    CheckOptions options;
    options.unattended = unattended;
    options.fileText = file;
    return CheckScript(0, options);
}

}  // namespace

TEST(Checker, EachRuleFindsItsMistake) {
    const std::string loop16 = [] {
        std::string s;
        for (int i = 0; i < 16; i++) s += Step("Start 'For' Loop", "<text>2</text>");
        for (int i = 0; i < 16; i++) s += Step("NEXT LOOP");
        return s;
    }();
    struct Case {
        std::string steps;
        bool unattended;
        int step, severity;
        const char* says;
    } cases[] = {
        {Step("Write to Log", "<text>a</text>") + Step("NEXT LOOP"), false, 2, CHECK_PROBLEM, "'NEXT LOOP' with no loop"},
        {Step("END IF"), false, 1, CHECK_PROBLEM, "'END IF' with no 'IF'"},
        {Step("ELSE") + Step("Comment"), false, 1, CHECK_PROBLEM, "'ELSE' with no 'IF'"},
        {Step("Start 'For' Loop", "<text>2</text>") + Step("Comment"), false, 1, CHECK_PROBLEM, "no 'NEXT LOOP'"},
        {Step("IF Expression", "<text>1 = 1</text>") + Step("Comment"), false, 1, CHECK_PROBLEM, "not closed"},
        {loop16, false, 16, CHECK_PROBLEM, "loops nested 16 deep"},
        {Step("Goto Label", "<text>nowhere</text>") + Step("Label", "<text>somewhere</text>"), false, 1,
         CHECK_PROBLEM, "no 'Label' step is named 'nowhere'"},
        {Step("Delay", "<timeout>1</timeout><onfail value=\"gone\">Jump to Label</onfail>"), false, 1, CHECK_PROBLEM,
         "jumps to the label 'gone'"},
        {Step("Frobnicate Window"), false, 1, CHECK_PROBLEM, "unknown action 'Frobnicate Window'"},
        {Step("Write to Log", "<text>FindText(abc, b)</text>"), false, 1, CHECK_PROBLEM, "'FindText('"},
        {Step("Comment") + Step("IF Expression", "<text>1 = 2</text>"), false, 2, CHECK_PROBLEM,
         "an IF as the last step"},
        {Step("Create/Set Variable", "<text>1</text><output value=\"result\">Variable</output>") +
             Step("Write to Log", "<text>%result%</text>"),
         false, 2, CHECK_WARNING, "'%result%' reads %result followed by '%'; write %result"},
        {Step("Write to Log", "<text>%WINDIR%\\x</text>"), false, 1, CHECK_WARNING, "'%WINDIR%' reads %WINDIR"},
        {Step("Delay", "<timeout>1</timeout>"), true, 1, CHECK_WARNING,
         "failure mode 'Display Error and Stop' ends an unattended run"},
        {Step("Download", "<output value=\"x\">Variable</output>"), false, 1, CHECK_WARNING,
         "'Web Address' is empty"},
    };
    for (const Case& c : cases) {
        const std::vector<CheckFinding> found = Check(c.steps, c.unattended);
        // The finding of the rule, and no other but the open block that a
        // last IF also is.
        const size_t expected = std::string(c.says) == "an IF as the last step" ? 2 : 1;
        EXPECT_EQ(found.size(), expected) << c.says;
        bool seen = false;
        for (const CheckFinding& f : found)
            seen = seen || (f.step == c.step && f.severity == c.severity && f.message.find(c.says) != std::string::npos);
        EXPECT_TRUE(seen) << c.says << (found.empty() ? "" : ": " + found[0].message);
    }
}

TEST(Checker, ACleanScriptHasNoFinding) {
    const std::string steps =
        Step("Comment", "<comment>FindText( in a comment does not run</comment>") +
        Step("Create/Set Variable", "<text>%USERNAME%</text><output value=\"who\">Variable</output>") +
        Step("Start 'For' Loop", "<text>2</text>") + Step("IF Expression", "<text>%l = 1</text>") +
        Step("Goto Label", "<text>DONE</text>") + Step("ELSE") + Step("Write to Log", "<text>%who</text>") +
        Step("END IF") + Step("NEXT LOOP") + Step("Goto Label", "<text>%dynamic</text>") +
        Step("Write to Log", "<text>%who%r%n%who%t</text>") +  // each sign starts a name
        Step("Label", "<text>done</text>") + Step("Frobnicate", "<status>1</status>");  // skipped
    const std::vector<CheckFinding> found = Check(steps);
    EXPECT_TRUE(found.empty()) << (found.empty() ? "" : found[0].message);
    EXPECT_EQ(CheckSummary(found), "0 problem(s), 0 warning(s)");
}

TEST(Checker, AFieldCutOnLoadIsSaid) {
    const std::string value(300, 'v');
    const std::string steps = Step("Comment") + Step("Write to Log", "<text>a</text><value1>" + value + "</value1>");
    const std::string file = "<?xml version=\"1.0\" ?>\r\n<ZantoRunner><!-- <step>not one</step> -->" + steps +
                             "</ZantoRunner>";
    const std::vector<CheckFinding> found = Check(steps, false, file.c_str());
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].step, 2);
    EXPECT_EQ(found[0].message, "<value1> holds 300 characters; only the first 259 were loaded");
    EXPECT_EQ(CheckFindingLine("C:\\job.zxm", found[0]),
              "C:\\job.zxm(2): warning: <value1> holds 300 characters; only the first 259 were loaded");
    EXPECT_EQ(CheckSummary(found), "0 problem(s), 1 warning(s)");
}
