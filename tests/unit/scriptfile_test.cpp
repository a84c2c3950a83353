// Reading and writing scripts: round trips, the legacy conversion, the
// catalogue look-up and the reader's messages.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>
#include <string.h>

#include <string>

#include "base/settings.h"
#include "script/catalogue.h"
#include "script/scriptfile.h"
#include "script/step.h"
#include "test_support.h"

namespace {

Step& At(int i) { return CurrentTab().steps[i]; }

std::string Wrap(const std::string& steps, const char* root = "ZantoRunner") {
    return std::string("<?xml version=\"1.0\" ?>\r\n<") + root + ">\r\n" + steps + "</" + root + ">";
}

// A fixture of steps that touches every written field.
const char kFixture[] =
    "<step>\r\n\t<action>Type</action>\r\n\t<text>a&lt;b&amp;c</text>\r\n\t<options>Fast,Slow</options>\r\n"
    "\t<value1>v1</value1>\r\n\t<value8>v&gt;8</value8>\r\n\t<timeout>5</timeout>\r\n\t<status>0x1001</status>\r\n"
    "\t<indents>2</indents>\r\n\t<output value=\"name\">Variable</output>\r\n"
    "\t<onfail value=\"here\" image=\"1\" log=\"1\">Jump to Label</onfail>\r\n\t<comment>note</comment>\r\n"
    "</step>\r\n"
    "<step>\r\n\t<action>Label</action>\r\n\t<output>Clipboard</output>\r\n\t<onfail>Stop Silently</onfail>\r\n"
    "</step>\r\n"
    "<step>\r\n\t<action>Recording</action>\r\n\t<value1>2</value1>\r\n\t<value2>0</value2>\r\n\t<recording>\r\n"
    "\t[0256-0065-0030-00001234]\t\r\n\t[0257-0065-0030-00001300]\t\r\n\t</recording>\r\n</step>\r\n";

}  // namespace

TEST(Catalogue, LookupFollowsTheTreeOrderWithFavoritesFirst) {
    int category, image;
    EXPECT_EQ(ActionCatalogueCount, 178 + 16);  // actions and headings after "Favorites"
    ASSERT_TRUE(LookupAction(nullptr, "move to control", &category, &image));
    EXPECT_EQ(category, CAT_MOUSE);
    ASSERT_TRUE(LookupAction(nullptr, "Start Browser", &category, &image));
    EXPECT_EQ(category, CAT_RUN_PROGRAM);
    ASSERT_TRUE(LookupAction(nullptr, "Run Program", &category, &image));
    EXPECT_EQ(category, 100002);  // a heading's label resolves to the heading
    ASSERT_TRUE(LookupAction(nullptr, "Favorites", &category, &image));
    EXPECT_EQ(category, 100001);
    EXPECT_FALSE(LookupAction(nullptr, "No Such Action", &category, &image));
    EXPECT_EQ(category, 0);

    // A favourite comes first in the walk, with the number it was saved with.
    WriteSetting(nullptr, nullptr, 3 * 1000 + 77, nullptr, ZR_ROOT "Favorites\\Activate");
    WriteSetting(nullptr, nullptr, 999, nullptr, ZR_ROOT "Favorites\\Resize");  // not above 1000
    FillActionsTree(nullptr);
    ASSERT_TRUE(LookupAction(nullptr, "ACTIVATE", &category, &image));
    EXPECT_EQ(category, 3);
    EXPECT_EQ(image, 77);
    EXPECT_FALSE(LookupAction(nullptr, "(right-click any action to add)", &category, &image));
    int catalogueImage;
    LookupAction(nullptr, "Resize", &category, &catalogueImage);
    EXPECT_NE(catalogueImage, 999 % 1000);
}

TEST(Catalogue, FillsARealTreeControl) {
    HWND tree = CreateWindowExA(0, "SysTreeView32", "", 0, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(tree, nullptr);
    FillActionsTree(tree);
    EXPECT_EQ(SendMessageA(tree, TVM_GETCOUNT, 0, 0), 1 + 1 + ActionCatalogueCount);
    DestroyWindow(tree);
}

TEST(ReadSteps, ReadsEveryFieldOfTheFixture) {
    ASSERT_EQ(LoadSteps(Wrap(kFixture)), 3);
    const Step& s = At(0);
    EXPECT_STREQ(s.action, "Type");
    EXPECT_EQ(s.category, CAT_KEYBOARD);
    EXPECT_STREQ(s.text, "a<b&c");
    EXPECT_STREQ(s.options, "Fast,Slow");
    EXPECT_STREQ(s.value[0], "v1");
    EXPECT_STREQ(s.value[7], "v>8");
    EXPECT_STREQ(s.timeout, "5");
    EXPECT_EQ(s.status, 0x1001);
    EXPECT_EQ(s.indents, 2);
    EXPECT_STREQ(s.output, "Variable");
    EXPECT_STREQ(s.output_value, "name");
    EXPECT_STREQ(s.onfail, "Jump to Label");
    EXPECT_STREQ(s.onfail_value, "here");
    EXPECT_EQ(s.onfail_image, 1);
    EXPECT_EQ(s.onfail_log, 1);
    EXPECT_STREQ(s.comment, "note");
    EXPECT_EQ(HeapBlockSize(s.text), strlen("a&lt;b&amp;c") + 1025);
    EXPECT_EQ(HeapBlockSize(At(1).text), 260u);  // a missing tag: an empty block of 260
    EXPECT_STREQ(At(1).onfail, "Stop Silently");

    const Step& r = At(2);
    EXPECT_EQ(r.category, CAT_RECORDINGS);
    EXPECT_STREQ(r.value[0], "2");
    int slot = atoi(r.value[1]);
    ASSERT_NE(RecordingTable.slot[slot], nullptr);
    EXPECT_EQ(RecordingTable.slot[slot][1].message, 257u);
    EXPECT_EQ(RecordingTable.slot[slot][1].paramH, 65u);
    EXPECT_EQ(RecordingTable.slot[slot][1].paramL, 30u);
    EXPECT_EQ(RecordingTable.slot[slot][1].time, 1300u);
}

TEST(ReadSteps, RoundTripGivesTheSameStepsExceptTheDocumentedOnes) {
    ASSERT_EQ(LoadSteps(Wrap(kFixture)), 3);
    lstrcpyA(At(1).timeout, "0");              // comes back empty
    lstrcpyA(At(1).output, "(do not save)");  // is never written
    std::string first = WriteSteps(2, 0, 0);
    EXPECT_EQ(first.find("<timeout>0"), std::string::npos);
    EXPECT_EQ(first.find("do not save"), std::string::npos);
    int recordings = RecordingTable.used;

    ResetTestState();
    ASSERT_EQ(LoadSteps(first), 3);
    EXPECT_STREQ(At(1).timeout, "");
    EXPECT_STREQ(At(1).output, "");
    EXPECT_EQ(RecordingTable.used, 1);  // the table was reset with the state
    std::string second = WriteSteps(2, 0, 0);
    EXPECT_EQ(second, first);
    EXPECT_GE(recordings, 1);
}

TEST(WriteSteps, WritesTheDocumentLayout) {
    LoadSteps(Wrap("<step><action>Label</action><text>x</text></step>"));
    lstrcpyA(CurrentTab().xmlHeader, "<?xml-stylesheet href=\"a.xsl\"?>\r\n");
    std::string doc = WriteSteps(2, 0, 0);
    EXPECT_EQ(doc,
              "<?xml version=\"1.0\" ?>\r\n<?xml-stylesheet href=\"a.xsl\"?>\r\n<ZantoRunner>\r\n"
              "<step>\r\n\t<action>Label</action>\r\n\t<text>x</text>\r\n</step>\r\n</ZantoRunner>");
}

TEST(WriteSteps, DefaultOnfailIsNotWrittenAndComesBackAsDefault) {
    LoadSteps(Wrap("<step><action>Label</action><onfail>Display Error and Stop</onfail></step>"
                   "<step><action>Label</action><onfail image=\"1\">Display Error and Stop</onfail></step>"));
    std::string doc = WriteSteps(2, 0, 0);
    EXPECT_EQ(doc.find("<onfail>Display"), std::string::npos);
    EXPECT_NE(doc.find("<onfail value=\"\" image=\"1\" log=\"0\">Display Error and Stop</onfail>"),
              std::string::npos);
    EXPECT_STREQ(At(0).onfail, "Display Error and Stop");
}

TEST(WriteSteps, TextThatCannotBeEncodedInItsBlockGoesOutRaw) {
    LoadSteps(Wrap("<step><action>Label</action></step>"));
    // A 260-byte block full of "&" cannot hold its encoded form.
    memset(At(0).text, '&', 200);
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "EncodeXML");
    std::string doc = WriteSteps(2, 0, 0);
    EXPECT_NE(doc.find("<text>" + std::string(200, '&') + "</text>"), std::string::npos);
}

TEST(WriteSteps, EncodeXmlOffLeavesTextRawButValuesEncoded) {
    LoadSteps(Wrap("<step><action>Label</action><text>a&lt;b</text><value1>c&lt;d</value1></step>"));
    std::string doc = WriteSteps(2, 0, 0);  // no settings: EncodeXML reads as 0
    EXPECT_NE(doc.find("<text>a<b</text>"), std::string::npos);
    EXPECT_NE(doc.find("<value1>c&lt;d</value1>"), std::string::npos);
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "EncodeXML");
    doc = WriteSteps(2, 0, 0);
    EXPECT_NE(doc.find("<text>a&lt;b</text>"), std::string::npos);
    EXPECT_STREQ(At(0).text, "a<b");  // the step's own buffer is decoded again
}

TEST(WriteSteps, LengthLimitCutsTextsAndDropsRecordings) {
    LoadSteps(Wrap(kFixture));
    lstrcpyA(At(1).text, "0123456789");
    std::string doc = WriteSteps(2, 1, 8);
    EXPECT_NE(doc.find("<text>0123...</text>"), std::string::npos);
    EXPECT_EQ(doc.find("<recording>"), std::string::npos);
    EXPECT_NE(doc.find("<last_run>(Not Run)</last_run>"), std::string::npos);
    lstrcpyA(At(1).text, "0123456");  // shorter than the limit: no dots
    doc = WriteSteps(2, 0, 8);
    EXPECT_NE(doc.find("<text>0123</text>"), std::string::npos);
}

TEST(WriteSteps, StopsAtAnInvalidCategory) {
    LoadSteps(Wrap("<step><action>Label</action></step><step><action>Run Program</action></step>"
                   "<step><action>Label</action><text>after</text></step>"));
    EXPECT_EQ(At(1).category, 100002);
    std::string doc = WriteSteps(2, 0, 0);
    EXPECT_EQ(doc.find("after"), std::string::npos);
}

TEST(LastRunWord, UnknownCodesReadAsNotRun) {
    EXPECT_STREQ(LastRunWord(0), "(Not Run)");
    EXPECT_STREQ(LastRunWord(6), "Fail and Continue");
    EXPECT_STREQ(LastRunWord(7), "(Not Run)");
    EXPECT_STREQ(LastRunWord(-1), "(Not Run)");
}

TEST(ReadSteps, ToleratesOddInput) {
    // A step without its closing tag ends the load silently; unknown tags
    // are ignored; an unknown action is kept with category 0.
    EXPECT_EQ(LoadSteps(Wrap("<step><action>Label</action><weird>1</weird></step>"
                             "<step><action>Frobnicate</action></step><step><action>Label</action>")),
              2);
    EXPECT_EQ(At(1).category, 0);
    EXPECT_TRUE(SeenBoxes.empty());
}

TEST(ReadSteps, MissingClosingTextTakesTheRestOfTheStep) {
    LoadSteps(Wrap("<step><action>Label</action><text>abc<comment>c</comment></step>"));
    EXPECT_STREQ(At(0).text, "abc<comment>c</comment>");
}

TEST(ReadSteps, EmptyActionStopsWithItsMessage) {
    EXPECT_EQ(LoadSteps(Wrap("<step><action>Label</action></step><step><action> </action></step>"
                             "<step><action>Label</action></step>")),
              1);
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].text, "Empty <action> tag in step #2\n\nDiscontinuing file load at step #2");
    EXPECT_EQ(SeenBoxes[0].title, "ZantoRunner Error");
    EXPECT_TRUE(SeenBoxes[0].flags & MB_TASKMODAL);
    EXPECT_TRUE(SeenBoxes[0].flags & MB_ICONWARNING);
    EXPECT_EQ(StepCapacity(0), 1);  // the unused records are given back
}

TEST(ReadSteps, ChunkedGrowthEndsWithTheRecordsInUse) {
    WriteSetting(nullptr, nullptr, 7, nullptr, ZR_ROOT "MemoryAllocationChunk");
    std::string steps;
    for (int i = 0; i < 20; i++) steps += "<step><action>Label</action></step>";
    EXPECT_EQ(LoadSteps(Wrap(steps)), 20);
    EXPECT_EQ(StepCapacity(0), 20);
}

TEST(ReadSteps, PasteInsertsAtTheIndexInOrder) {
    LoadSteps(Wrap("<step><action>Label</action><text>a</text></step><step><action>Label</action><text>d</text></step>"));
    std::string paste = Wrap("<step><action>Label</action><text>b</text></step><step><action>Label</action><text>c</text></step>");
    int n = ReadSteps(paste.data(), 1);
    CurrentTab().count += n;
    ASSERT_EQ(CurrentTab().count, 4);
    EXPECT_STREQ(At(1).text, "b");
    EXPECT_STREQ(At(2).text, "c");
    EXPECT_STREQ(At(3).text, "d");
}

TEST(ReadSteps, OldActionNamesAreMappedInEveryFile) {
    struct Case {
        const char* from;
        const char* to;
    } cases[] = {
        {"Move to Object", "Move to Control"},
        {"SendMessage Command", "Post WM_COMMAND"},
        {"text + system keys", "Type"},
        {"Freeze", "Delay"},
        {"My Crypt Step", "Encrypt/Decrypt Text"},
        {"Left Button Down & Hold", "Left Button Down + Hold"},
        {"Wait for File to Exist", "Wait for File to Exist"},
        {"Set Run Speed", "Set Step Delay"},
        {"Exit ZantoTask", "Exit ZantoRunner"},
    };
    for (const Case& c : cases) {
        char action[64];
        lstrcpyA(action, c.from);
        MapOldActionName(action);
        EXPECT_STREQ(action, c.to) << c.from;
    }
}

TEST(ReadSteps, LegacyStepsAreConverted) {
    std::string legacy = Wrap(
        "<step><action>Start</action><text>x</text><options>3</options></step>"
        "<step><action>Left Button Click</action><value1>10</value1><value2>20</value2><options>0x40</options></step>"
        "<step><action>Set Run Speed</action><timeout>2</timeout></step>"
        "<step><action>Start 'For' Loop</action><qty>5</qty></step>"
        "<step><action>Crypt</action><text>secret</text><variable>out</variable></step>"
        "<step><action>Wait for Pixel</action><value1>red</value1><status>-1</status></step>"
        "<step><action>Execute SQL Query</action><timeout>9</timeout><options>0x400000</options><value5>r.csv</value5></step>",
        "ZantoTask");
    ASSERT_EQ(LoadSteps(legacy), 7);
    EXPECT_STREQ(At(0).options, "Hidden,Wait For Exit,Title,Class");
    EXPECT_STREQ(At(1).text, "10, 20");
    EXPECT_STREQ(At(1).action, "Move Relative");
    EXPECT_EQ(At(1).icon, 148);
    EXPECT_STREQ(At(1).options, "Current Position");
    EXPECT_STREQ(At(1).value[0], "Snap to Position");
    EXPECT_STREQ(At(2).action, "Set Step Delay");
    EXPECT_STREQ(At(2).text, "500");
    EXPECT_STREQ(At(2).timeout, "");
    EXPECT_STREQ(At(3).text, "5");
    EXPECT_STREQ(At(4).value[0], "secret");
    EXPECT_STREQ(At(4).text, "out");
    EXPECT_STREQ(At(4).output, "Variable");
    EXPECT_STREQ(At(4).output_value, "out");
    EXPECT_STREQ(At(5).text, "red");
    EXPECT_EQ(At(5).status, STEP_BREAKPOINT);
    EXPECT_STREQ(At(6).value[3], "9");
    EXPECT_STREQ(At(6).output, "File");
    EXPECT_STREQ(At(6).output_value, "r.csv");
    // Converted files are written in the current form.
    std::string doc = WriteSteps(2, 0, 0);
    EXPECT_NE(doc.find("<ZantoRunner>"), std::string::npos);
    EXPECT_EQ(doc.find("ZantoTask"), std::string::npos);
}

TEST(ReadSteps, ProgramStepIconsFollowTheirOptions) {
    LoadSteps(Wrap("<step><action>Start</action><options>Hidden</options></step>"
                   "<step><action>Call Script</action><options>Wait For Exit</options></step>"
                   "<step><action>Start</action><options>Wait For Exit</options></step>"));
    EXPECT_EQ(At(0).icon, 3);
    EXPECT_EQ(At(1).icon, 4);
    EXPECT_EQ(At(2).icon, 2);
}

TEST(ReadSteps, RecordingSlotsAreNeverReused) {
    std::string doc = Wrap("<step><action>Recording</action><recording>[1-2-3-4]</recording></step>");
    LoadSteps(doc);
    LoadSteps(doc);
    EXPECT_EQ(RecordingTable.used, 2);
    EXPECT_STREQ(At(1).value[1], "1");
}

TEST(ReadSteps, TooManyRecordingsStopTheLoad) {
    RecordingTable.used = 255;
    EXPECT_EQ(LoadSteps(Wrap("<step><action>Label</action></step>"
                             "<step><action>Recording</action><recording>[1-2-3-4]</recording></step>")),
              1);
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].text,
              "The maximum of 256 recordings per script has been exceeded in this file.\n\n"
              "The file load cannot be completed.");
}

TEST(OpenScript, ReportsEachFailureWithItsMessage) {
    std::string dir = TempFolder();
    struct Case {
        std::string name;
        std::string content;  // empty: no file
        std::string text;
        std::string title;
    } cases[] = {
        {"gone.zxm", "", "Unable to open file 'gone.zxm'!\n\nPlease verify that the file exists (0).",
         "ZantoRunner Error"},
        {"plain.zxm", "just text", "\"plain.zxm\" does not appear to contain ZantoRunner actions", "plain.zxm"},
        {"first.zxm", "<ZantoRunner><step><action>Label</action></step></ZantoRunner>",
         "\"first.zxm\" does not appear to contain ZantoRunner actions", "first.zxm"},
        {"empty.zxm", "<?xml version=\"1.0\" ?>\r\n<ZantoRunner></ZantoRunner>", "No valid XML actions were found",
         "empty.zxm"},
    };
    for (const Case& c : cases) {
        SeenBoxes.clear();
        std::string path = dir + "\\" + c.name;
        if (!c.content.empty()) WriteWholeFile(path, c.content);
        EXPECT_EQ(OpenScript(path.c_str(), 0), 0) << c.name;
        ASSERT_EQ(SeenBoxes.size(), 1u) << c.name;
        EXPECT_EQ(SeenBoxes[0].text, c.text);
        EXPECT_EQ(SeenBoxes[0].title, c.title);
    }
    SeenBoxes.clear();
    EXPECT_EQ(OpenScript("", 0), 0);
    EXPECT_EQ(OpenScript("x", 8), 0);
    ASSERT_EQ(SeenBoxes.size(), 2u);
    EXPECT_EQ(SeenBoxes[1].text, "Invalid File");
    EXPECT_EQ(SeenBoxes[1].title, " ");
}

TEST(OpenScript, KeepsExtraHeaderLinesAndTheLastRootWins) {
    std::string dir = TempFolder();
    std::string path = dir + "\\two.zxm";
    WriteWholeFile(path,
                   "<?xml version=\"1.0\" ?>\r\n<?xml-stylesheet type=\"text/xsl\" href=\"r.xsl\"?>\r\n"
                   "<ZantoRunner><step><action>Label</action><text>first</text></step></ZantoRunner>\r\n"
                   "<ZantoRunner><!-- a note --><step><action>Label</action><text>second</text></step></ZantoRunner>");
    EXPECT_EQ(OpenScript(("\"  " + path + " \"").c_str(), 2), 1);
    EXPECT_EQ(ScriptStore.currentTab, 2);
    EXPECT_STREQ(ScriptStore.tab[2].xmlHeader, "<?xml-stylesheet type=\"text/xsl\" href=\"r.xsl\"?>\r\n");
    EXPECT_STREQ(ScriptStore.tab[2].path, path.c_str());
    EXPECT_STREQ(At(0).text, "second");
}

TEST(SaveScript, WritesTheFileAndReportsFailures) {
    std::string dir = TempFolder();
    LoadSteps(Wrap("<step><action>Label</action><text>saved</text></step>"));
    std::string path = dir + "\\out.zxm";
    lstrcpyA(CurrentTab().path, path.c_str());
    char error[512] = "";
    EXPECT_EQ(SaveScript(0, error), 1);
    EXPECT_EQ(ReadWholeFile(path), WriteSteps(2, 0, 0));
    ResetTestState();
    EXPECT_EQ(OpenScript(path.c_str(), 0), 1);
    EXPECT_STREQ(At(0).text, "saved");

    lstrcpyA(CurrentTab().path, (dir + "\\no\\such\\folder\\x.zxm").c_str());
    EXPECT_EQ(SaveScript(0, error), 0);
    EXPECT_NE(error[0], 0);
}
