// Queries on the harness's ODBC data source "ZrTest" (SQLite): row limits,
// the output lines, the table the Dataset loop reads, and failures.
#include <gtest/gtest.h>

#include <string>

#include "base/settings.h"
#include "net/database.h"
#include "net/resultset.h"
#include "run/runstate.h"
#include "test_support.h"

namespace {

int Query(const std::string& sql, const char* maxRows = "", const char* source = "ZrTest") {
    ReplaceSteps("<ZantoRunner><step><action>Execute SQL Query</action><text>" + sql + "</text><value1>" + source +
                 "</value1><value4>" + maxRows + "</value4><output value=\"rows\">Variable</output></step></ZantoRunner>");
    return DatabaseAction(0, 0);
}

std::string Rows() {
    char text[512] = "";
    if (ReadSetting(nullptr, nullptr, -1, nullptr, ZR_ROOT "UserVariables\\rows") <= 0) return "(none)";
    ReadSetting(nullptr, text, sizeof text, nullptr, ZR_ROOT "UserVariables\\rows");
    return text;
}

TEST(Database, RowLimitsAndTheOutputLines) {
    ResetTestState();
    EXPECT_EQ(Query("select name from people order by name"), 3);
    EXPECT_EQ(Rows(), "Ada\r\nBob\r\nCy\r\n");
    EXPECT_EQ(ResultSet.rows, 3);
    EXPECT_EQ(ResultSet.columns, 1);
    EXPECT_EQ(Query("select name, age from people where name = 'Bob'"), 1);
    EXPECT_EQ(Rows(), "Bob, 41");  // one row: no line end
    EXPECT_EQ(Query("select name from people", "-1"), 3);  // "Retrieve All Rows"
    EXPECT_EQ(Query("select name from people", "50"), 1);  // a typed limit fetches none, as it always did
    EXPECT_EQ(ResultSet.rows, 0);
    EXPECT_EQ(Query("select count(*) from people where age > 100"), 1);
    EXPECT_EQ(Rows(), "0");
}

TEST(Database, FailuresSayWhyAndLeaveNoTable) {
    ResetTestState();
    EXPECT_EQ(Query("select name from people"), 3);
    EXPECT_EQ(Query("select nothing from nowhere"), 0);
    EXPECT_NE(std::string(StepFailureText).find("syntax error"), std::string::npos) << StepFailureText;
    EXPECT_EQ(ResultSet.rows, 0);
    EXPECT_EQ(Query("select 1", "", "NoSuchSource"), 0);
    EXPECT_STRNE(StepFailureText, "");
}

}  // namespace
