#include "products/runresults.h"

#include <stdio.h>
#include <stdlib.h>

#include "base/jsontext.h"

namespace {

std::string Number(double value) {
    char text[40];
    snprintf(text, sizeof text, "%.3f", value);
    return text;
}

std::string Integer(long long value) {
    char text[24];
    snprintf(text, sizeof text, "%lld", value);
    return text;
}

void Attribute(std::string& out, const char* name, const std::string& value) {
    out += ' ';
    out += name;
    out += "=\"";
    AppendXmlText(out, value);
    out += '"';
}

void Property(std::string& out, const char* name, const std::string& value) {
    out += "      <property";
    Attribute(out, "name", name);
    Attribute(out, "value", value);
    out += "/>\n";
}

// A failure's words for the JUnit message and the JSON: the step, its
// action and what went wrong.
std::string FailureLine(const RecordedFailure& f) {
    std::string line = "[STEP ";
    line += Integer(f.step);
    line += "] ";
    line += f.action;
    line += ": ";
    line += f.words;
    return line;
}

bool Failed(const std::string& outcome) { return outcome != "passed"; }

// A closing tag never begins a line: a script that merges JUnit files line
// by line (examples/fleet/run-all.cmd) tells the files' frame, which is the
// only markup at a line's start, from their content that way.
void CloseAfter(std::string& out, const std::string& content) {
    if (!content.empty() && content.back() == '\n') out += "      ";
}

void TestCase(std::string& out, const std::string& suite, const std::string& name, double seconds,
              const std::string& outcome, const std::string& message, const std::string& detail,
              const std::string& log) {
    out += "    <testcase";
    Attribute(out, "name", name);
    Attribute(out, "classname", "ZantoRunner." + suite);
    Attribute(out, "time", Number(seconds));
    out += ">\n";
    if (Failed(outcome)) {
        // A script that could not be loaded never ran: that is an error in
        // JUnit's words; every other end short of passing is a failure.
        const char* element = outcome == "load-failed" ? "error" : "failure";
        out += "      <";
        out += element;
        Attribute(out, "message", message);
        Attribute(out, "type", outcome);
        out += '>';
        AppendXmlText(out, detail);
        CloseAfter(out, detail);
        out += "</";
        out += element;
        out += ">\n";
    }
    out += "      <system-out>";
    AppendXmlText(out, log);
    CloseAfter(out, log);
    out += "</system-out>\n    </testcase>\n";
}

}  // namespace

std::string IsoTime(const FILETIME& utc, bool zone) {
    SYSTEMTIME t;
    FileTimeToSystemTime(&utc, &t);
    char text[40];
    snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d%s", t.wYear, t.wMonth, t.wDay, t.wHour, t.wMinute,
             t.wSecond, zone ? "Z" : "");
    return text;
}

double SecondsBetween(const FILETIME& start, const FILETIME& end) {
    const ULONGLONG a = ((ULONGLONG)start.dwHighDateTime << 32) | start.dwLowDateTime;
    const ULONGLONG b = ((ULONGLONG)end.dwHighDateTime << 32) | end.dwLowDateTime;
    return b > a ? (double)(b - a) / 1e7 : 0.0;
}

std::string JUnitText(const RunRecordData& record, const RunSummary& summary, const std::vector<ChildCase>& children) {
    const double seconds = SecondsBetween(record.start, record.end);
    int failures = 0, errors = 0;
    auto count = [&](const std::string& outcome) {
        if (outcome == "load-failed")
            errors++;
        else if (Failed(outcome))
            failures++;
    };
    count(summary.outcome);
    for (const ChildCase& c : children) count(c.outcome);
    const std::string tests = Integer(1 + (long long)children.size());

    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites";
    Attribute(out, "name", "ZantoRunner");
    Attribute(out, "tests", tests);
    Attribute(out, "failures", Integer(failures));
    Attribute(out, "errors", Integer(errors));
    Attribute(out, "time", Number(seconds));
    out += ">\n  <testsuite";
    Attribute(out, "name", summary.name);
    Attribute(out, "tests", tests);
    Attribute(out, "failures", Integer(failures));
    Attribute(out, "errors", Integer(errors));
    Attribute(out, "skipped", "0");
    Attribute(out, "time", Number(seconds));
    Attribute(out, "timestamp", IsoTime(record.start, false));
    Attribute(out, "hostname", summary.machine.empty() ? "localhost" : summary.machine);
    out += ">\n    <properties>\n";
    Property(out, "script", record.script);
    Property(out, "outcome", summary.outcome);
    Property(out, "exit-code", Integer(summary.exitCode));
    Property(out, "steps-run", Integer(record.stepsRun));
    Property(out, "machine", summary.machine);
    Property(out, "user", summary.user);
    out += "    </properties>\n";

    // The failures in the order they came; the outcome's words first when
    // they are not one of them (a time limit, a load).
    std::string detail = summary.outcome == "failed" && !record.failures.empty() ? "" : summary.message;
    for (const RecordedFailure& f : record.failures) {
        if (!detail.empty()) detail += '\n';
        detail += FailureLine(f);
        if (!f.image.empty()) detail += "\n  screen image: " + f.image;
    }
    TestCase(out, summary.name, summary.name, seconds, summary.outcome, summary.message, detail, record.log);
    for (const ChildCase& c : children)
        TestCase(out, summary.name, c.name, c.seconds, c.outcome, c.message, c.message, c.log);
    out += "  </testsuite>\n</testsuites>\n";
    return out;
}

std::string JsonResultText(const RunRecordData& record, const RunSummary& summary,
                           const std::vector<std::pair<std::string, std::string>>& variables) {
    std::string out = "{\n  \"script\": ";
    AppendJsonString(out, record.script);
    out += ",\n  \"name\": ";
    AppendJsonString(out, summary.name);
    out += ",\n  \"machine\": ";
    AppendJsonString(out, summary.machine);
    out += ",\n  \"user\": ";
    AppendJsonString(out, summary.user);
    out += ",\n  \"start\": \"" + IsoTime(record.start, true) + "\",\n  \"end\": \"" + IsoTime(record.end, true) +
           "\",\n  \"duration\": " + Number(SecondsBetween(record.start, record.end)) + ",\n  \"outcome\": ";
    AppendJsonString(out, summary.outcome);
    out += ",\n  \"message\": ";
    AppendJsonString(out, summary.message);
    out += ",\n  \"exitCode\": " + Integer(summary.exitCode) + ",\n  \"stepsRun\": " + Integer(record.stepsRun) +
           ",\n  \"failures\": [";
    for (size_t i = 0; i < record.failures.size(); i++) {
        const RecordedFailure& f = record.failures[i];
        out += i ? ",\n    {\"step\": " : "\n    {\"step\": ";
        out += Integer(f.step) + ", \"action\": ";
        AppendJsonString(out, f.action);
        out += ", \"words\": ";
        AppendJsonString(out, f.words);
        out += ", \"image\": ";
        if (f.image.empty())
            out += "null";
        else
            AppendJsonString(out, f.image);
        out += "}";
    }
    out += record.failures.empty() ? "],\n  \"variables\": {" : "\n  ],\n  \"variables\": {";
    for (size_t i = 0; i < variables.size(); i++) {
        out += i ? ",\n    " : "\n    ";
        AppendJsonString(out, variables[i].first);
        out += ": ";
        AppendJsonString(out, variables[i].second);
    }
    out += variables.empty() ? "}\n}\n" : "\n  }\n}\n";
    return out;
}

std::string ChildCaseText(const RunRecordData& record, const RunSummary& summary) {
    std::string out = "{\"name\": ";
    AppendJsonString(out, summary.name);
    out += ", \"outcome\": ";
    AppendJsonString(out, summary.outcome);
    out += ", \"message\": ";
    AppendJsonString(out, summary.message);
    out += ", \"seconds\": " + Number(SecondsBetween(record.start, record.end));
    out += ", \"exitCode\": " + Integer(summary.exitCode) + ", \"stepsRun\": " + Integer(record.stepsRun);
    out += ", \"log\": ";
    AppendJsonString(out, record.log);
    out += "}\n";
    return out;
}

bool ReadChildCase(const std::string& text, ChildCase& child) {
    std::vector<JsonField> fields;
    std::string error;
    if (!ReadFlatJsonObject(text, fields, error)) return false;
    for (const JsonField& f : fields) {
        if (f.name == "name") child.name = f.value;
        else if (f.name == "outcome") child.outcome = f.value;
        else if (f.name == "message") child.message = f.value;
        else if (f.name == "log") child.log = f.value;
        else if (f.name == "seconds") child.seconds = atof(f.value.c_str());
        else if (f.name == "exitCode") child.exitCode = atoi(f.value.c_str());
        else if (f.name == "stepsRun") child.stepsRun = atoi(f.value.c_str());
    }
    return !child.name.empty() && !child.outcome.empty();
}
