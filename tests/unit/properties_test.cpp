// The property table: which rows a step shows, the rows that the palette
// treats specially, the failure rows that IF steps lack, and the 32-row limit.
#include <gtest/gtest.h>

#include <string.h>

#include <string>
#include <vector>

#include "base/settings.h"
#include "script/catalogue.h"
#include "script/newstep.h"
#include "script/properties.h"
#include "script/step.h"
#include "test_support.h"

namespace {

// Adds a step of `name` and builds its table.
Step& Select(const char* name) {
    int at = NewStep(name, -1);
    EXPECT_GE(at, 0) << name;
    CurrentTab().selected = at;
    BuildPropertyTable(1);
    return CurrentTab().steps[at];
}

std::vector<std::string> Labels() {
    std::vector<std::string> labels;
    for (int row = 0; row < PropertyRowCount; row++) labels.push_back(PropertyTable[row].label);
    return labels;
}

struct TellingRow {
    const char* action;
    const char* label;
    int row, field, rowType, flags, extra;
    const char* choices;
};

// The rows that the palette acts on by their place, type, flags and extra.
const TellingRow kTellingRows[] = {
    {"Start", "Timeout", 4, FIELD_TIMEOUT, ROW_NUMBER, ROWF_INNER_CHECK | ROWF_EDIT, 4, "Wait Forever"},
    {"Activate", "Match Criteria", 0, FIELD_TEXT, ROW_LINE, ROWF_FIND_WINDOW | ROWF_EDIT, 0, ""},
    {"Activate", "Match Title", 1, FIELD_OPTIONS, ROW_CHECK, 0, 0x20, "Title"},
    {"Activate", "Match Handle (HWND)", 5, FIELD_OPTIONS, ROW_CHECK, 0, 0x80, "Handle"},
    {"Close Window", "Match Image", 6, FIELD_OPTIONS, ROW_CHECK, 0, 0x40, "Image"},
    {"Click on Image", "Image File", 0, FIELD_TEXT, ROW_LINE, 0x4082 | ROWF_EDIT, 0, ""},
    {"Click on Image", "Start Search At (X, Y)", 2, FIELD_VALUE1 + 1, ROW_LINE, 0x208 | ROWF_EDIT, 0,
     "Full Screen"},
    {"Move", "Relative To", 1, FIELD_OPTIONS, ROW_LIST, 0, 0x2000, "Screen;Window;Current Position"},
    {"Recording", "Record Actions", 0, FIELD_VALUE1 + 1, ROW_RECORDING, 0, 0, ""},
    {"Recording", "Playback Speed", 1, FIELD_OPTIONS, ROW_LIST, 0, 0, "Fast;Normal;Slow"},
    {"Execute SQL Query", "Data Source", 1, FIELD_VALUE1, ROW_LIST, 0, LIST_DATA_SOURCES, ""},
    {"Execute SQL Query", "Max Rows", 4, FIELD_VALUE1 + 3, ROW_NUMBER, ROWF_INNER_CHECK | ROWF_EDIT, 4,
     "Retrieve All Rows"},
    {"Start Service", "Service", 0, FIELD_TEXT, ROW_LIST, 0, LIST_SERVICES, ""},
    {"Video Display Mode", "Video Mode", 0, FIELD_TEXT, ROW_LIST, 0, LIST_VIDEO_MODES, ""},
    {"Read File", "Save Output To", -1, FIELD_OUTPUT, ROW_LIST, 0, LIST_OUTPUT,
     "Clipboard;Variable;File;(do not save)"},
    {"Type", "On Failure", -1, FIELD_ONFAIL, ROW_LIST, 0, LIST_ONFAIL, nullptr},
};

TEST(PropertyTable, TellingRowsHaveTheirPlaceAndKind) {
    for (const TellingRow& t : kTellingRows) {
        ResetTestState();
        Select(t.action);
        const int row = FindProperty(t.label, 0);
        SCOPED_TRACE(std::string(t.action) + " / " + t.label);
        ASSERT_STREQ(PropertyTable[row].label, t.label);
        if (t.row >= 0) {
            EXPECT_EQ(row, t.row);
        }
        EXPECT_EQ(PropertyTable[row].field, t.field);
        EXPECT_EQ(PropertyTable[row].rowType, t.rowType);
        EXPECT_EQ(PropertyTable[row].flags, t.flags);
        EXPECT_EQ(PropertyTable[row].extra, t.extra);
        if (t.choices) {
            EXPECT_STREQ(PropertyTable[row].choices, t.choices);
        }
    }
}

TEST(PropertyTable, CommonRowsCloseEveryTable) {
    ResetTestState();
    Step& s = Select("Read File");
    std::vector<std::string> labels = Labels();
    const std::vector<std::string> tail = {"Save Output To",
                                           "(Optional Output Data)",
                                           "Comment",
                                           "On Failure",
                                           "(Optional Failure Data)",
                                           "On Failure: Write to Log",
                                           "On Failure: Screenshot",
                                           ""};
    ASSERT_GE(labels.size(), tail.size());
    EXPECT_EQ(std::vector<std::string>(labels.end() - tail.size(), labels.end()), tail);
    EXPECT_EQ(PropertyTable[PropertyRowCount - 1].rowType, ROW_END);
    EXPECT_EQ(PropertyTable[FindProperty("Comment", 0)].flags & ROWF_EDIT, 0);  // the comment row lacks flag 1
    EXPECT_STREQ(PropertyTable[FindProperty("", FIELD_ONFAIL_VALUE)].help,
                 "Additional information used when errors occur.  The type of data depends on the \"On Failure\" "
                 "selection");

    // The rows after a choice follow it.
    lstrcpyA(s.output, "Variable");
    lstrcpyA(s.onfail, "Jump to Label");
    BuildPropertyTable(1);
    EXPECT_STREQ(PropertyTable[FindProperty("", FIELD_OUTPUT_VALUE)].label, "Save Output: Variable Name");
    EXPECT_STREQ(PropertyTable[FindProperty("", FIELD_ONFAIL_VALUE)].label, "On Failure: Label Name");
    lstrcpyA(s.output, "File");
    lstrcpyA(s.onfail, "Retry the Step x Times");
    BuildPropertyTable(1);
    EXPECT_STREQ(PropertyTable[FindProperty("", FIELD_OUTPUT_VALUE)].label, "Save Output: File Name");
    EXPECT_STREQ(PropertyTable[FindProperty("", FIELD_ONFAIL_VALUE)].label, "On Failure: Retries");
}

TEST(PropertyTable, IfStepsAndCommentsLoseTheirFailureSettings) {
    for (const char* name : {"IF File Exists", "Comment"}) {
        ResetTestState();
        int at = NewStep(name, -1);
        Step& s = CurrentTab().steps[at];
        lstrcpyA(s.onfail, "Jump to Label");
        lstrcpyA(s.onfail_value, "end");
        s.onfail_log = 1;
        s.onfail_image = 1;
        CurrentTab().selected = at;
        BuildPropertyTable(1);
        SCOPED_TRACE(name);
        EXPECT_STREQ(s.onfail, "");
        EXPECT_STREQ(s.onfail_value, "");
        EXPECT_EQ(s.onfail_log + s.onfail_image, 0);
        for (const std::string& label : Labels()) EXPECT_EQ(label.find("On Failure"), std::string::npos) << label;
    }
}

TEST(PropertyTable, CheckRowsReadTheirWords) {
    ResetTestState();
    Step& s = Select("Activate");
    lstrcpyA(s.options, "Class, Handle");
    s.onfail_log = 1;
    BuildPropertyTable(1);
    EXPECT_EQ(PropertyTable[FindProperty("Match Title", 0)].checked, 0);
    EXPECT_EQ(PropertyTable[FindProperty("Match Class", 0)].checked, 1);
    EXPECT_EQ(PropertyTable[FindProperty("Match Handle (HWND)", 0)].checked, 1);
    EXPECT_EQ(PropertyTable[FindProperty("On Failure: Write to Log", 0)].checked, 1);
    EXPECT_EQ(PropertyTable[FindProperty("On Failure: Screenshot", 0)].checked, 0);
}

TEST(PropertyTable, LabelsDependOnTheAction) {
    ResetTestState();
    // The same field carries different labels: the password is value2 for
    // mail but value3 for the database.
    Select("Check Email: POP3");
    EXPECT_EQ(PropertyTable[FindProperty("Password", 0)].field, FIELD_VALUE1 + 1);
    EXPECT_EQ(PropertyTable[FindProperty("Password", 0)].rowType, ROW_MASKED);
    Select("Execute SQL Query");
    EXPECT_EQ(PropertyTable[FindProperty("Password", 0)].field, FIELD_VALUE1 + 2);
    EXPECT_EQ(PropertyTable[FindProperty("Login Username", 0)].field, FIELD_VALUE1 + 1);
    Select("Minimize all Windows");
    EXPECT_EQ(FindProperty("Timeout", 0), 0);  // none for the "all" actions
    Select("Send Email: SMTP");
    EXPECT_EQ(PropertyTable[FindProperty("To", 0)].field, FIELD_VALUE1 + 5);
    EXPECT_EQ(PropertyTable[FindProperty("From", 0)].field, FIELD_VALUE1 + 4);
    Select("Replace Text");
    EXPECT_STREQ(PropertyTable[FindProperty("Replace First Only", 0)].choices, "First Only");
}

TEST(PropertyTable, MultiLineRowsTellHowToCloseWithTips) {
    ResetTestState();
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "ShowTips");
    Select("Type");
    EXPECT_NE(std::string(PropertyTable[FindProperty("Text", 0)].help).find("(Press Ctrl+Enter to close field)"),
              std::string::npos);
    WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "ShowTips");
    BuildPropertyTable(1);
    EXPECT_EQ(std::string(PropertyTable[FindProperty("Text", 0)].help).find("Ctrl+Enter"), std::string::npos);
}

TEST(PropertyTable, NoSelectionLeavesTheTableAndExtraRowsAreIgnored) {
    ResetTestState();
    Select("Delay");
    const int rows = PropertyRowCount;
    CurrentTab().selected = -1;
    BuildPropertyTable(1);
    EXPECT_EQ(PropertyRowCount, rows);
    CurrentTab().selected = 0;
    BuildPropertyTable(0);
    EXPECT_EQ(PropertyRowCount, rows);

    for (int row = 0; row < 40; row++) AddProperty(row, "x", FIELD_TEXT, ROW_LINE, 0, 0, "", "", 0);
    EXPECT_EQ(PropertyRowCount, MAX_PROPERTY_ROWS);
    std::string longHelp(600, 'h');
    AddProperty(3, "long", FIELD_TEXT, ROW_LINE, 0, 0, longHelp.c_str(), longHelp.c_str(), 1);
    EXPECT_EQ(strlen(PropertyTable[3].help), 511u);
    EXPECT_EQ(strlen(PropertyTable[3].choices), 511u);
    EXPECT_EQ(PropertyTable[3].locked, 1);
    EXPECT_EQ(FindProperty("LONG", 0), 3);
    EXPECT_EQ(FindProperty("absent", 0), 0);
}

}  // namespace
