#pragma once

#include "report/report.h"
#include "tables/ui/spreadsheet.h"

#include <QWidget>

#include <cstdint>
#include <optional>

namespace quobrix {

class EventLog;
class Settings;
class TimeZone;
class TQuobrixDocument;
class TUnitSystem;

/// What every page shows from and through; lives as long as the main frame.
struct ViewContext {
    TQuobrixDocument& document;
    Settings& settings;
    TUnitSystem& units;
    const TimeZone& zone;
    EventLog* events = nullptr;                  ///< of this run
    Prompter* prompter = nullptr;                ///< as in SpreadsheetContext
    const SpreadsheetWindows* windows = nullptr; ///< likewise

    TextContext text() const { return {units, zone}; }
    SpreadsheetContext spreadsheet() const;
};

/// Records of a log by their numbers, which count from 1; both ends are among them.
struct RecordRange {
    std::int64_t first = 1, last = 0;
};

/// A page of the main frame. Pages hold no data of their own, and end before the document gets other content.
class Page : public QWidget {
    Q_OBJECT
public:
    using QWidget::QWidget;

    /// What stands above the page; empty: nothing.
    virtual QString title() const { return {}; }

    /// Rows of the document or names have changed: show what there is now.
    virtual void refresh() {}

    /// Brings a cell of the page's table into view: the row at least, where the column is not shown.
    virtual void showCell(std::string_view /*columnKey*/, RowIndex /*row*/) {}

    /// Brings the report of the record in ROW into view, on the page of a log.
    virtual void showRecord(RowIndex /*row*/) {}

    /// Show the same in other units. Selection, scrolling and sorting stay.
    virtual void unitsChanged() { refresh(); }

    /// What the page shows, to be printed or written: of a log those records whose numbers lie in RANGE (none: all), as
    /// they are shown. Nothing if there is nothing to print.
    virtual std::optional<Report> printable(const std::optional<RecordRange>& /*range*/) const { return {}; }

signals:
    void titleChanged();
    /// A person follows a link of a report.
    void linkFollowed(quobrix::RecordLink link);
};

/// The rows of SPREADSHEET with numbers in RANGE (none: all), and its columns, as they are shown.
Grid shownCells(TSpreadsheet& spreadsheet, const std::optional<RecordRange>& range = {});

/// Makes every table on WIDGET show its cells and headings anew, because units have changed; nothing else of it
/// changes.
void retextTables(const QWidget& widget);

} // namespace quobrix
