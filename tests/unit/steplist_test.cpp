// The step list's cells, images and colours: what a row shows for a step.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "editor/images.h"
#include "base/settings.h"
#include "editor/steplist.h"
#include "script/step.h"
#include "test_support.h"

namespace {

std::string Cell(int index, int column) {
    char cell[CELL_TEXT];
    StepCellText(index, column, cell, sizeof cell);
    return cell;
}

void UseLook(int indentSize, int indentAll) {
    WriteSetting(nullptr, nullptr, indentSize, nullptr, ZR_ROOT "Palettes\\MainList\\IndentSize");
    WriteSetting(nullptr, nullptr, indentAll, nullptr, ZR_ROOT "Palettes\\MainList\\IndentAllColumns");
    BuildIndentText();
    ReadListLook();
}

TEST(StepList, CellsShowTheStepWithItsIndent) {
    UseLook(2, 0);
    ReplaceSteps(
        "<step><action>Label</action><text>top</text><timeout>3</timeout><options>Title</options>"
        "<indents>2</indents><comment>one\r\ntwo</comment></step>"
        "<step><action>Copy File</action><value1>a.txt</value1><text>b.txt</text></step>"
        "<step><action>Read File</action><value1>only.txt</value1></step>"
        "<step><action>Create/Set Variable</action><output value=\"name\">Variable</output><text>5</text></step>"
        "<step><action>Increment Variable</action><output value=\"count\">Variable</output></step>"
        "<step><action>Decrement Variable</action><output value=\"count\">Variable</output></step>"
        "<step><action>Type</action><text>a\tb\x01</text></step>");
    EXPECT_EQ(Cell(0, 0), "  1");            // the prefix only with IndentAllColumns
    EXPECT_EQ(Cell(0, 1), "    Label");      // two levels of two blanks
    EXPECT_EQ(Cell(0, 2), "top");
    EXPECT_EQ(Cell(0, 3), "3");
    EXPECT_EQ(Cell(0, 4), "Title");
    EXPECT_EQ(Cell(0, 5), "one  two");       // line breaks become blanks
    EXPECT_EQ(Cell(0, 6), "???");
    EXPECT_EQ(Cell(1, 2), "b.txt");          // a text replaces value1
    EXPECT_EQ(Cell(2, 2), "only.txt");
    EXPECT_EQ(Cell(3, 2), "name = 5");
    EXPECT_EQ(Cell(4, 2), "count++");
    EXPECT_EQ(Cell(5, 2), "count--");
    EXPECT_EQ(Cell(6, 2), "a b ");           // control characters become blanks

    UseLook(2, 1);
    EXPECT_EQ(Cell(0, 0), "      1");
    EXPECT_EQ(Cell(0, 2), "    top");
    EXPECT_EQ(Cell(0, 4), "Title");  // options never take the prefix
    EXPECT_EQ(Cell(0, 5), "    one  two");
}

TEST(StepList, CellsAreCutAndIndentsLimited) {
    UseLook(31, 0);
    EXPECT_EQ(strlen(IndentText), 31u);
    UseLook(99, 0);
    EXPECT_EQ(strlen(IndentText), 31u);
    UseLook(-4, 0);
    EXPECT_EQ(strlen(IndentText), 0u);
    UseLook(1, 0);
    const std::string name(80, 'n'), value(100, 'v');
    ReplaceSteps("<step><action>Create/Set Variable</action><output value=\"" + name + "\">Variable</output><text>" + value +
                 "</text></step><step><action>Label</action><indents>100</indents><text>" + value + value +
                 "</text></step>");
    const std::string set = Cell(0, 2);
    EXPECT_EQ(set.size(), 126u);             // 63 of the name, " = ", and the rest of 126
    EXPECT_EQ(set.substr(0, 66), std::string(63, 'n') + " = ");
    EXPECT_EQ(Cell(1, 1), std::string(64, ' ') + "Label");  // at most 64 levels
    EXPECT_EQ(Cell(1, 2).size(), 127u);
}

TEST(StepList, ImagesTestSkipFirstWhileColoursRankBreakpointFirst) {
    WriteSetting(nullptr, nullptr, 0x0000FF, nullptr, ZR_ROOT "Colors\\BreakFill");
    WriteSetting(nullptr, nullptr, 0x00FF00, nullptr, ZR_ROOT "Colors\\SkipFill");
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "Palettes\\MainList\\GridStyle");
    WriteSetting(nullptr, nullptr, 0x123456, nullptr, ZR_ROOT "Palettes\\MainList\\GridStyle_AltColor");
    ReadListLook();
    Step s = {};
    s.icon = 42;
    EXPECT_EQ(StepRowImage(s), 42);
    s.icon = 900;
    EXPECT_EQ(StepRowImage(s), 511);
    s.status = STEP_BOOKMARK;
    EXPECT_EQ(StepRowImage(s), IMAGE_BOOKMARK);
    s.status = STEP_SKIP | STEP_BREAKPOINT;
    EXPECT_EQ(StepRowImage(s), IMAGE_SKIP);
    COLORREF text = 1, fill = 1;
    ASSERT_TRUE(StepRowColors(s, 1, &text, &fill));
    EXPECT_EQ(fill, 0x0000FFu);  // the breakpoint's colours, with the skip image
    s.status = STEP_SKIP;
    StepRowColors(s, 1, &text, &fill);
    EXPECT_EQ(fill, 0x00FF00u);  // no alternation for skips
    s.status = STEP_BOOKMARK;
    text = 7;
    StepRowColors(s, 1, &text, &fill);
    EXPECT_EQ(fill, 0xF9D2BFu);
    EXPECT_EQ(text, 7u);  // a bookmark leaves the text colour alone
    s.status = 0;
    StepRowColors(s, 1, &text, &fill);
    EXPECT_EQ(fill, 0x123456u);
    StepRowColors(s, 2, &text, &fill);
    EXPECT_EQ(fill, GetSysColor(COLOR_WINDOW));
    WriteSetting(nullptr, nullptr, 2, nullptr, ZR_ROOT "Palettes\\MainList\\GridStyle");
    ReadListLook();
    EXPECT_FALSE(StepRowColors(s, 1, &text, &fill));
}

}  // namespace
