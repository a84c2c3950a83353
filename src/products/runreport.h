// The run report a person opens after a failed night: one self-contained
// HTML page (no file beside it, no script) with the outcome at the top, the
// steps that ran, the failure's screen image, the log and the variables.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "products/runresults.h"

std::string RunReportHtml(const RunRecordData& record, const RunSummary& summary,
                          const std::vector<std::pair<std::string, std::string>>& variables);
