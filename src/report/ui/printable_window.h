#pragma once

#include "report/report.h"

#include <optional>
#include <span>
#include <vector>

class QString;
class QAction;
class QPushButton;
class QWidget;

namespace quobrix {

/// A window beside the main frame that has something to print of its own.
class PrintableWindow {
public:
    /// What it shows; nothing where there is nothing to print.
    virtual std::optional<Report> printable() = 0;

protected:
    ~PrintableWindow() = default;
};

/// The lines of a list, on paper that is wider than high; nothing if there are none.
std::optional<Report> listReport(const QWidget& window, Grid lines);

/// A button for each of COMMANDS, which print what window is in front, for WINDOW, which gets their keys as well.
/// Object names begin with PREFIX.
std::vector<QPushButton*> printButtons(QWidget& window, const QString& prefix, std::span<QAction* const> commands);

} // namespace quobrix
