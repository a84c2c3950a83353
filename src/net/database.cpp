// Category 12 over the ODBC driver manager, by the standard function names.
#include "net/database.h"
#include "base/text.h"
#include "base/utf8.h"

#include <sql.h>
#include <sqlext.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "net/resultset.h"
#include "base/log.h"
#include "run/numbers.h"
#include "run/runstate.h"
#include "run/textops.h"
#include "run/translate.h"
#include "run/variables.h"
#include "base/ui.h"
#include "script/step.h"
#include "base/words.h"

char OdbcErrorText[256];

namespace {

struct Odbc {
    SQLHENV environment = nullptr;
    SQLHDBC connection = nullptr;
    SQLHSTMT statement = nullptr;
    int driverKind = 0;
    ~Odbc() {
        if (statement) SQLFreeHandle(SQL_HANDLE_STMT, statement);
        if (connection) {
            SQLDisconnect(connection);
            SQLFreeHandle(SQL_HANDLE_DBC, connection);
        }
        if (environment) SQLFreeHandle(SQL_HANDLE_ENV, environment);
    }
};

const char* CodeWords(int code) {
    switch (code) {
    case -1: case -6: return "An error occurred because of a bad programming parameter. ";
    case -2: return "An error occurred during environment allocation. ";
    case -3: return "An error occurred while allocating a connection. ";
    case -4: return "The program is unable to connect to the database. ";
    case -5: case -7: return "An error occurred during handle allocation. ";
    case -8: return "An error occurred while running the query. ";
    case -9: return "The system is out of memory. ";
    case -10: return "An error occurred while fetching the data results. ";
    case -11: return "An error occurred while getting the data from the driver. ";
    case -12: return "An error ocurred with the file. ";
    }
    return nullptr;
}

// The driver's own words without their bracketed prefixes, or the code's.
int ReportError(const Odbc& o, int code) {
    OdbcErrorText[0] = 0;
    SQLCHAR state[6], text[256];
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    if (SQLError(o.environment, o.connection, o.statement, state, &native, text, 255, &length) != SQL_NO_DATA) {
        text[255] = 0;
        std::string words = (const char*)text;
        size_t bracket = words.rfind(']');
        if (bracket != std::string::npos) {
            words = words.substr(bracket + 1);
            words.erase(0, words.find_first_not_of("] "));
        }
        CopyIntoN(OdbcErrorText, sizeof OdbcErrorText, words.c_str());
    }
    if (!OdbcErrorText[0]) {
        if (const char* w = CodeWords(code))
            CopyInto(OdbcErrorText, w);
        else
            snprintf(OdbcErrorText, sizeof OdbcErrorText, "An unknown error occurred. (%d)", code);
    }
    return code;
}

bool Ok(SQLRETURN r) { return r == SQL_SUCCESS || r == SQL_SUCCESS_WITH_INFO; }

int Connect(Odbc& o, const char* source, const char* user, const char* password) {
    if (!source || !user || !password) return ReportError(o, -1);
    if (!Ok(SQLAllocEnv(&o.environment))) return ReportError(o, -2);
    if (!Ok(SQLAllocConnect(o.environment, &o.connection))) return ReportError(o, -3);
    if (!Ok(SQLConnect(o.connection, (SQLCHAR*)source, SQL_NTS, (SQLCHAR*)user, SQL_NTS, (SQLCHAR*)password, SQL_NTS)))
        return ReportError(o, -4);
    if (!Ok(SQLAllocHandle(SQL_HANDLE_STMT, o.connection, &o.statement))) return ReportError(o, -5);
    char driver[256] = "";
    SQLSMALLINT length = 0;
    SQLGetInfo(o.connection, SQL_DRIVER_NAME, driver, sizeof driver, &length);
    SQLFreeHandle(SQL_HANDLE_STMT, o.statement);
    o.statement = nullptr;
    if (strlen(driver) >= 3 && toupper((unsigned char)driver[1]) == 'Q' && toupper((unsigned char)driver[2]) == 'L')
        o.driverKind = 1;
    else if (strlen(driver) >= 6 && toupper((unsigned char)driver[4]) == 'J' && toupper((unsigned char)driver[5]) == 'T')
        o.driverKind = 2;
    return 1;
}

int ColumnWidth(SQLLEN length, SQLLEN type) {
    switch (type) {
    case SQL_LONGVARCHAR: return 2047;
    case SQL_INTEGER: return 12;
    case SQL_FLOAT: case SQL_DOUBLE: case SQL_REAL: case SQL_DECIMAL: case SQL_NUMERIC: case SQL_GUID: return 20;
    case SQL_DATE: return 27;
    case SQL_LONGVARBINARY: return 1;
    }
    return length < 1 ? 1 : length > 2047 ? 2047 : (int)length;
}

// Trailing zeros of a number go, but one decimal stays: "12.000" keeps
// "12.0", and "100" without a point becomes "1", as it always did.
void TrimZeros(std::string& cell) {
    while (cell.size() > 1 && cell.back() == '0' && cell[cell.size() - 2] != '.') cell.pop_back();
}

// Runs the statement and fills ResultSet; the row count or a negative code.
int RunQuery(Odbc& o, std::string sql, int maxRows) {
    ResultSet = ResultSetData{};
    if (sql.empty()) return ReportError(o, -1);
    if (o.driverKind == 2 && sql.find(';') == std::string::npos) sql += ";";
    if (!Ok(SQLAllocHandle(SQL_HANDLE_STMT, o.connection, &o.statement))) return ReportError(o, -7);
    if (!Ok(SQLExecDirect(o.statement, (SQLCHAR*)sql.c_str(), SQL_NTS))) return ReportError(o, -8);
    SQLSMALLINT columns = 0;
    SQLNumResultCols(o.statement, &columns);
    if (columns < 1) return 0;
    if (columns > 256) columns = 255;
    std::vector<int> width(columns), type(columns);
    for (int c = 0; c < columns; c++) {
        SQLLEN length = 0, kind = 0;
        SQLColAttributes(o.statement, (SQLUSMALLINT)(c + 1), SQL_COLUMN_LENGTH, nullptr, 0, nullptr, &length);
        SQLColAttributes(o.statement, (SQLUSMALLINT)(c + 1), SQL_COLUMN_TYPE, nullptr, 0, nullptr, &kind);
        type[c] = (int)kind;
        width[c] = ColumnWidth(length, kind);
    }
    int rows = 0;
    std::vector<char> cell(2049);
    for (; rows < maxRows;) {
        SQLRETURN r = SQLFetch(o.statement);
        if (r == SQL_NO_DATA) break;
        if (!Ok(r)) return ReportError(o, -10);
        rows++;
        for (int c = 0; c < columns; c++) {
            std::string text;
            SQLLEN got = 0;
            if (o.driverKind == 1 && type[c] == SQL_FLOAT) {
                double value = 0;
                if (!Ok(SQLGetData(o.statement, (SQLUSMALLINT)(c + 1), SQL_C_DEFAULT, &value, sizeof value, &got)))
                    return ReportError(o, -11);
                char formatted[96];
                FormatNumber(value, formatted);
                text = formatted;
            } else {
                cell[0] = 0;
                if (!Ok(SQLGetData(o.statement, (SQLUSMALLINT)(c + 1), SQL_C_CHAR, cell.data(), 2046, &got)))
                    return ReportError(o, -11);
                text = got == SQL_NULL_DATA ? "" : cell.data();
            }
            while (!text.empty() && text.back() == ' ') text.pop_back();
            if (type[c] == 3 || type[c] == 6 || type[c] == 7 || type[c] == 8) TrimZeros(text);
            // The column's width counts characters, and none is cut in two.
            if ((int)text.size() > width[c]) text.resize(CharOffset(text.data(), text.size(), (size_t)width[c]));
            ResultSet.cells.push_back(text);
        }
    }
    ResultSet.rows = rows;
    ResultSet.columns = columns;
    return rows;
}

}  // namespace

int DatabaseAction(int tab, int step) {
    const Step& s = ScriptStore.tab[tab].steps[step];
    char source[259], user[259], password[259];
    CopyIntoN(source, sizeof source, s.value[0]);
    TranslateText(s.value[1], tab, step);
    CopyIntoN(user, sizeof user, TranslatedText);
    std::string shifted = s.value[2];
    ShiftLetters(shifted, -3);  // the password is kept shifted by 3
    TranslateText(shifted.c_str(), tab, step);
    CopyIntoN(password, sizeof password, TranslatedText);
    Odbc o;
    if (Connect(o, source, user, password) < 1) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, OdbcErrorText);
        return 0;
    }
    TranslateText(s.value[3], tab, step);
    const int limit = ParseInt(TranslatedText);
    // Blank or 0: 1000 rows; "Retrieve All Rows": a million; any other number
    // fetches none, as it always did.
    const int maxRows = limit == 0 ? 1000 : limit == -1 ? 1000000 : 0;
    TranslateText(s.text, tab, step);
    std::string sql = TranslatedText;
    if (s.loops == 1)
        LogPrintf(OutputEdit, "\tSQL: %s%s\r\n", TextCut(sql.c_str(), 244).c_str(), sql.size() > 244 ? "..." : "");
    int rows = RunQuery(o, sql, maxRows);
    if (rows < 0) {
        CopyIntoN(StepFailureText, STEP_FAILURE_TEXT_SIZE, OdbcErrorText);
        ResultSet = ResultSetData{};
        return 0;
    }
    if (s.loops == 1) LogPrintf(OutputEdit, "\t%li Total Data Rows\r\n", (long)rows);
    if (s.output[0]) {
        std::string text;
        for (int r = 0; r < ResultSet.rows; r++) {
            std::string line;
            for (int c = 0; c < ResultSet.columns; c++)
                line += ResultSet.cells[(size_t)r * (size_t)ResultSet.columns + (size_t)c] + ", ";
            if (line.size() >= 2) line.resize(line.size() - 2);
            text += line + "\r\n";
        }
        if (ResultSet.rows == 1 && text.size() >= 2) text.resize(text.size() - 2);
        SaveOutput(tab, step, text.c_str(), (long)text.size(), nullptr);
    }
    return rows < 1 ? 1 : rows;
}

void FillDataSourceList(HWND comboBox, int withAdministrator) {
    SQLHENV environment = nullptr;
    if (!Ok(SQLAllocEnv(&environment))) return;
    SQLCHAR name[SQL_MAX_DSN_LENGTH + 1], description[256];
    SQLSMALLINT nameLength = 0, descriptionLength = 0;
    for (SQLUSMALLINT direction = SQL_FETCH_FIRST;
         Ok(SQLDataSources(environment, direction, name, sizeof name, &nameLength, description, sizeof description,
                           &descriptionLength));
         direction = SQL_FETCH_NEXT)
        SendMessageA(comboBox, CB_ADDSTRING, 0, (LPARAM)name);
    SQLFreeHandle(SQL_HANDLE_ENV, environment);
    if (withAdministrator) SendMessageA(comboBox, CB_ADDSTRING, 0, (LPARAM) "  (open data administrator)");
}
