#include "products/runreport.h"

#include <stdio.h>

#include "base/jsontext.h"
#include "base/base64.h"
#include "products/pngimage.h"
#include "script/step.h"

namespace {

std::string Escaped(const std::string& text) {
    std::string out;
    AppendXmlText(out, text);
    return out;
}

const char* LastRunWord(int lastRun) {
    switch (lastRun) {
    case LASTRUN_PASS: return "Pass";
    case LASTRUN_SKIPPED: return "Skipped";
    case LASTRUN_BREAKPOINT: return "Breakpoint";
    case LASTRUN_FAIL: return "Fail";
    case LASTRUN_FAIL_CONTINUE: return "Fail and Continue";
    case LASTRUN_INCOMPLETE: return "Incomplete";
    default: return "Not run";
    }
}

const char* LastRunClass(int lastRun) {
    switch (lastRun) {
    case LASTRUN_PASS: return "pass";
    case LASTRUN_FAIL: return "fail";
    case LASTRUN_FAIL_CONTINUE: return "warn";
    default: return "other";
    }
}

const char* OutcomeColour(const std::string& outcome) {
    if (outcome == "passed") return "#1a7f37";
    if (outcome == "timed-out") return "#9a6700";
    if (outcome == "load-failed") return "#57606a";
    return "#cf222e";
}

std::string Seconds(double s) {
    char text[32];
    snprintf(text, sizeof text, "%.3f s", s);
    return text;
}

void Row(std::string& out, const char* name, const std::string& value) {
    out += "<tr><th>";
    out += name;
    out += "</th><td>" + Escaped(value) + "</td></tr>\n";
}

}  // namespace

std::string RunReportHtml(const RunRecordData& record, const RunSummary& summary,
                          const std::vector<std::pair<std::string, std::string>>& variables) {
    std::string out =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>";
    out += Escaped(summary.name + ": " + summary.outcome);
    out += "</title>\n<style>\n"
           "body{font-family:system-ui,Segoe UI,Helvetica,Arial,sans-serif;margin:0;padding:0 1em 2em;color:#1f2328}\n"
           "header{color:#fff;padding:1em;margin:0 -1em 1em}\nheader h1{margin:0;font-size:1.4em}\n"
           "table{border-collapse:collapse;width:100%;margin-bottom:1em}\n"
           "th,td{border:1px solid #d0d7de;padding:.3em .5em;text-align:left;vertical-align:top;word-break:break-word}\n"
           ".pass{background:#dafbe1}.fail{background:#ffebe9}.warn{background:#fff8c5}\n"
           "pre{white-space:pre-wrap;word-break:break-word;background:#f6f8fa;padding:.5em;font-size:.85em}\n"
           "img{max-width:100%;height:auto;border:1px solid #d0d7de}\n"
           ".scroll{overflow-x:auto}\n</style>\n</head>\n<body>\n";
    out += "<header id=\"outcome\" class=\"" + Escaped(summary.outcome) + "\" style=\"background:";
    out += OutcomeColour(summary.outcome);
    out += "\"><h1>" + Escaped(summary.name) + ": " + Escaped(summary.outcome) + "</h1>";
    if (!summary.message.empty()) out += "<p>" + Escaped(summary.message) + "</p>";
    out += "</header>\n<table id=\"run\">\n";
    Row(out, "Script", record.script);
    Row(out, "Machine", summary.machine);
    Row(out, "User", summary.user);
    Row(out, "Start (UTC)", IsoTime(record.start, true));
    Row(out, "End (UTC)", IsoTime(record.end, true));
    Row(out, "Duration", Seconds(SecondsBetween(record.start, record.end)));
    Row(out, "Exit code", std::to_string(summary.exitCode));
    Row(out, "Steps run", std::to_string(record.stepsRun));
    out += "</table>\n";

    for (const RecordedFailure& f : record.failures) {
        out += "<section class=\"failure\"><h2>Failure at step " + std::to_string(f.step) + ": " + Escaped(f.action) +
               "</h2>\n<p>" + Escaped(f.words) + "</p>\n";
        if (!f.image.empty()) {
            int width = 0, height = 0;
            const std::string png = PictureFileAsPng(f.image.c_str(), &width, &height);
            if (!png.empty())
                out += "<img alt=\"The screen at the failure\" width=\"" + std::to_string(width) + "\" height=\"" +
                       std::to_string(height) + "\" src=\"data:image/png;base64," + Base64(png) + "\">\n";
        }
        out += "</section>\n";
    }

    out += "<h2>Steps</h2>\n<div class=\"scroll\"><table id=\"steps\">\n"
           "<tr><th>Step</th><th>Action</th><th>Text</th><th>Time</th><th>Outcome</th></tr>\n";
    for (const RecordedStep& s : record.steps) {
        char time[32];
        snprintf(time, sizeof time, "%.3f s", s.milliseconds / 1000.0);
        out += "<tr class=\"";
        out += LastRunClass(s.lastRun);
        out += "\"><td>" + std::to_string(s.number) + "</td><td>" + Escaped(s.action) + "</td><td>" +
               Escaped(s.text) + "</td><td>" + time + "</td><td>" + LastRunWord(s.lastRun) + "</td></tr>\n";
    }
    out += "</table></div>\n";
    if (record.stepsLeftOut)
        out += "<p>" + std::to_string(record.stepsLeftOut) + " further steps ran; the table shows the first " +
               std::to_string(record.steps.size()) + ".</p>\n";

    out += "<h2>Variables</h2>\n<table id=\"variables\">\n<tr><th>Name</th><th>Value</th></tr>\n";
    for (const auto& v : variables) out += "<tr><td>" + Escaped(v.first) + "</td><td>" + Escaped(v.second) + "</td></tr>\n";
    out += "</table>\n<h2>Log</h2>\n<pre id=\"log\">" + Escaped(record.log) + "</pre>\n";
    if (record.logCut) out += "<p>The log was cut at 8 MB.</p>\n";
    out += "</body>\n</html>\n";
    return out;
}
