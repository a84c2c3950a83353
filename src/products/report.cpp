#include "products/report.h"
#include "base/text.h"

#include <windows.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include <string>

#include "base/files.h"
#include "base/settings.h"
#include "base/ui.h"
#include "base/log.h"
#include "run/runstate.h"
#include "run/textops.h"
#include "base/handles.h"
#include "script/fileencoding.h"
#include "script/scriptfile.h"
#include "script/step.h"
#include "base/words.h"
#include "system/launch.h"
#include "system/processes.h"
#include "base/programpath.h"

namespace {

int LaunchReport(const char* command) { return LaunchProgram(command, 1, 0) == LAUNCH_FAILED ? 0 : 1; }

struct Column {
    const char* header;
    const char* field;
};
const Column Columns[6] = {{"Step", "position"}, {"Action", "action"},   {"Text", "text"},
                           {"Options", "options"}, {"Comment", "comment"}, {"Last Run", "last_run"}};

const char HeaderCell[] =
    "<td bgcolor=\"#6699cc\" align=\"center\"><font color=\"#ffffff\" face=\"Verdana,Arial,Helvetica\" "
    "size=\"1\"><b>%s</b></font></td>";
const char RowCell[] = "<td><font face=\"Verdana,Arial,Helvetica\" size=\"1\"><xsl:value-of select=\"%s\"/></font></td>";
const char PositionCell[] =
    "<td align=\"center\"><font color=\"#404040\" face=\"Verdana,Arial,Helvetica\" size=\"1\"><xsl:value-of "
    "select=\"position()\"/></font></td>";
const char ResultCell[] =
    "<td align=\"center\" bgcolor=\"{$result_fill}\"><font color=\"{$result_text}\" face=\"Verdana,Arial,Helvetica\" "
    "size=\"1\"><xsl:value-of select=\"last_run\"/></font></td>";

ZR_PRINTF(1, 2) std::string Format(const char* format, ...) {
    char text[512];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return text;
}

// The default template: all six columns, whatever the "Show" values say.
std::string DefaultTemplate() {
    std::string t =
        "<?xml version=\"1.0\"?>\r\n"
        "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">\r\n"
        "<xsl:output method=\"html\" indent=\"yes\" omit-xml-declaration=\"yes\"/>\r\n"
        "<!-- The report of a ZantoRunner script: one row per step. -->\r\n"
        "<xsl:template match=\"/\">\r\n<html><body><center>\r\n"
        "<table bgcolor=\"#d8d8d8\" cellspacing=\"3\" cellpadding=\"2\" border=\"0\">\r\n<tr>\r\n";
    for (const Column& c : Columns) t += Format(HeaderCell, c.header) + "\r\n";
    t += "</tr>\r\n<xsl:for-each select=\"ZantoRunner/step\">\r\n"
         "<xsl:variable name=\"result_fill\"><xsl:choose>"
         "<xsl:when test=\"contains(last_run,'Pass')\">#00c800</xsl:when>"
         "<xsl:when test=\"contains(last_run,'Fail')\">#c00000</xsl:when>"
         "<xsl:when test=\"contains(last_run,'Incomplete')\">#f0f000</xsl:when>"
         "</xsl:choose></xsl:variable>\r\n"
         "<xsl:variable name=\"result_text\"><xsl:choose>"
         "<xsl:when test=\"contains(last_run,'Pass')\">#ffffff</xsl:when>"
         "<xsl:when test=\"contains(last_run,'Fail')\">#e8e8e8</xsl:when>"
         "</xsl:choose></xsl:variable>\r\n"
         "<tr><xsl:attribute name=\"bgcolor\"><xsl:choose>"
         "<xsl:when test=\"contains(status,'1')\">#c8c8c8</xsl:when>"
         "<xsl:when test=\"contains(status,'2')\">#963a46</xsl:when>"
         "<xsl:otherwise>#ffffff</xsl:otherwise></xsl:choose></xsl:attribute>\r\n";
    t += std::string(PositionCell) + "\r\n";
    for (int i = 1; i < 5; i++) t += Format(RowCell, Columns[i].field) + "\r\n";
    t += std::string(ResultCell) + "\r\n</tr>\r\n</xsl:for-each>\r\n</table>\r\n</center></body></html>\r\n"
         "</xsl:template>\r\n</xsl:stylesheet>\r\n";
    return t;
}


bool WriteFileText(const std::string& path, const std::string& text) {
    return WriteFileReplacing(path.c_str(), text.data(), text.size(), true);
}

void BuildStylesheet(const std::string& xml, const std::string& xsl) {
    char self[MAX_PATH];
    GetModuleFileNameA(nullptr, self, sizeof self);
    std::string templatePath = self;
    if (char* exe = FindNoCase(templatePath.c_str(), ".EXE"))
        templatePath.replace((size_t)(exe - templatePath.c_str()), 4, ".XSL");
    AutoCloseHandle file(CreateFileA(templatePath.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD size = file.ok() ? GetFileSize(file.h, nullptr) : 0;
    if (!size || size == INVALID_FILE_SIZE) {
        char message[MAX_PATH + 200];
        snprintf(message, sizeof message,
                 "Unable to find XSL formatting template \"%s\"\n\nA default template will be used, but formatting "
                 "choices will not be shown.",
                 templatePath.c_str());
        RunMessageBox(message, "ZantoRunner", MB_ICONINFORMATION);
        WriteFileText(xsl, DefaultTemplate());
        return;
    }
    std::string t(size, '\0');
    DWORD got = 0;
    ReadFile(file.h, &t[0], size, &got, nullptr);
    t.resize(got);
    SYSTEMTIME now;
    GetLocalTime(&now);
    char stamp[32];
    snprintf(stamp, sizeof stamp, "%d-%02d-%02d  %02d:%02d", now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute);
    ReplaceInString(t, "%datetime", stamp, 0, 1);
    ReplaceInString(t, "%fileXML", xml.c_str(), 0, 1);
    ReplaceInString(t, "%fileXSL", xsl.c_str(), 0, 1);
    for (int i = 0; i < 6; i++) {
        char name[16];
        FormatInto(name, "Report\\Show%d", i + 1);
        if (SettingInt(name)) continue;
        ReplaceInString(t, Format(HeaderCell, Columns[i].header).c_str(), "", 0, 1);
        ReplaceInString(t, i == 5 ? ResultCell : Format(RowCell, Columns[i].field).c_str(), "", 0, 1);
    }
    if (!WriteFileText(xsl, t)) {
        char message[MAX_PATH + 64];
        snprintf(message, sizeof message, "Unable to create file \"%s\" (2)", xsl.c_str());
        RunMessageBox(message, "ZantoRunner Error", MB_ICONERROR);
    }
}

}  // namespace

int (*OpenReport)(const char* command) = LaunchReport;

void MakeReport() {
    char setting[MAX_PATH] = "";
    SettingText("Report\\LastXML", setting, sizeof setting);
    if (!setting[0]) {
        RunMessageBox("Invalid XML file designated", "ZantoRunner Error", MB_ICONERROR);
        return;
    }
    char resolved[MAX_PATH * 2];
    ResolveProgramPath(setting, resolved, ScriptStore.tab[ScriptStore.currentTab].path);
    const std::string xml = resolved;
    char xslSetting[MAX_PATH] = "";
    SettingText("Report\\LastXSLT", xslSetting, sizeof xslSetting);
    const bool useDefault = SettingInt("Report\\UseDefault") != 0;
    std::string xsl = xslSetting;
    if (useDefault || xsl.empty()) {
        const char* cut = FindNoCase(xml.c_str(), ".XML");
        xsl = (cut ? xml.substr(0, (size_t)(cut - xml.c_str())) : xml) + ".XSL";
        WriteSetting(nullptr, xsl.c_str(), 0, nullptr, ZR_ROOT "Report\\LastXSLT");
    }
    int length = SettingInt("Report\\MaxTextLen");
    if (length < 16) length = 16;
    if (length > 256) length = 256;
    const size_t slash = xsl.rfind('\\');
    // Always UTF-8, and it says so: a browser reads it whatever the
    // machine's code page, and every character of the steps is kept.
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\r\n<?xml-stylesheet type=\"text/xsl\" href=\"" +
                       (slash == std::string::npos ? xsl : xsl.substr(slash + 1)) + "\"?>\r\n<ZantoRunner>\r\n" +
                       WriteStepRecords(1, length) + "</ZantoRunner>";
    text = ProgramTextToUtf8(text);
    if (!WriteFileText(xml, text)) {
        char error[300];
        SystemErrorText(GetLastError(), error, sizeof error);
        RunMessageBox(error, "ZantoRunner Error", MB_ICONERROR);
        LogPrintf(OutputEdit, "(2) Unable to create file '%s': %s", xml.c_str(), error);
        return;
    }
    if (useDefault) BuildStylesheet(xml, xsl);
    char browser[MAX_PATH * 2] = "";
    AssociatedProgram(".htm", browser, nullptr);
    if (!browser[0]) ResolveProgramPath("IEXPLORE.EXE", browser, nullptr);
    std::string command = browser;
    if (const char* exe = FindNoCase(command.c_str(), ".EXE")) command = command.substr(0, (size_t)(exe - command.c_str())) + ".EXE";
    if (!command.empty() && command[0] == '"') command += "\"";
    command += " \"" + xml + "\"";
    if (!OpenReport(command.c_str())) RunMessageBox("Unable to launch report", "ZantoRunner Error", MB_ICONERROR);
}
