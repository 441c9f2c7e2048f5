#pragma once

#include "report/report.h"
#include "views/page.h"

#include <functional>
#include <optional>

class QDialog;
class QDialogButtonBox;

namespace quobrix {

/// Adds to BOX of WINDOW, which shows a report of its own, the commands that print, and Save As of REPORT, which does
/// nothing where that gives none. Object names begin with PREFIX.
void addReportButtons(QDialogButtonBox& box, QDialog& window, const char* prefix, const ViewContext& context,
                      std::function<std::optional<Report>()> report);

} // namespace quobrix
