// The XML report: its file with the stylesheet reference, the default
// template when none stands beside the program, and the launch.
#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "products/report.h"
#include "test_support.h"

namespace {

std::string Launched;
int RecordLaunch(const char* command) {
    Launched = command;
    return 1;
}

TEST(Report, WritesTheStepsAndADefaultStylesheet) {
    ResetTestState();
    OpenReport = RecordLaunch;
    std::string folder = TempFolder();
    ReplaceSteps("<ZantoRunner><step><action>Comment</action><comment>" + std::string(40, 'c') +
                 "</comment></step><step><action>Label</action><text>a &amp; b</text></step></ZantoRunner>");
    WriteSetting(nullptr, (folder + "\\job_Report.XML").c_str(), 0, nullptr, ZR_ROOT "Report\\LastXML");
    WriteSetting(nullptr, nullptr, 1, nullptr, ZR_ROOT "Report\\UseDefault");
    WriteSetting(nullptr, nullptr, 0, nullptr, ZR_ROOT "Report\\MaxTextLen");  // counts as 16
    MakeReport();
    std::string xml = ReadWholeFile(folder + "\\job_Report.XML");
    EXPECT_EQ(xml.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\r\n<?xml-stylesheet type=\"text/xsl\" href=\"job_Report.XSL\"?>\r\n"
                        "<ZantoRunner>\r\n", 0),
              0u);
    EXPECT_NE(xml.find("<last_run>(Not Run)</last_run>"), std::string::npos);
    EXPECT_NE(xml.find(std::string(12, 'c') + "..."), std::string::npos);  // cut at the limit
    EXPECT_EQ(xml.substr(xml.size() - 14), "</ZantoRunner>");
    EXPECT_EQ(xml.find("<?xml version", 1), std::string::npos);  // one XML line, one root
    EXPECT_EQ(xml.find("<ZantoRunner>", xml.find("<ZantoRunner>") + 1), std::string::npos);
    EXPECT_NE(xml.find("<text>a &amp; b</text>"), std::string::npos);  // escaped with EncodeXML off
    EXPECT_EQ(XmlParseError(xml), "") << xml;
    std::string xsl = ReadWholeFile(folder + "\\job_Report.XSL");
    EXPECT_NE(xsl.find("<xsl:for-each select=\"ZantoRunner/step\">"), std::string::npos);
    EXPECT_NE(xsl.find("<b>Last Run</b>"), std::string::npos);
    ASSERT_EQ(SeenBoxes.size(), 1u);  // no template beside the program: said once
    EXPECT_EQ(SeenBoxes[0].text.rfind("Unable to find XSL formatting template", 0), 0u);
    EXPECT_NE(Launched.find("\"" + folder + "\\job_Report.XML\""), std::string::npos);
}

TEST(Report, NoFileNamedSaysSo) {
    ResetTestState();
    MakeReport();
    ASSERT_EQ(SeenBoxes.size(), 1u);
    EXPECT_EQ(SeenBoxes[0].text, "Invalid XML file designated");
}

}  // namespace
