#pragma once

#include "export/export_file.h"
#include "model/logs.h"
#include "report/report.h"
#include "tables/ui/spreadsheet.h"

#include <QWidget>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

class QAction;

namespace quobrix {

class EventLog;
class Settings;
class TimeZone;
class TripCounter;
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
    /// Saves a report as a file that a person chooses; empty or none: not available.
    const std::function<void(Report)>* saveReport = nullptr;
    TripCounter* counter = nullptr; ///< none: no statistics are kept
    /// The commands that print what window is in front, for those beside the main frame.
    std::span<QAction* const> printing{};

    TextContext text() const { return {units, zone}; }
    SpreadsheetContext spreadsheet() const;
};

/// Records of a log by their numbers, which count from 1; both ends are among them.
struct RecordRange {
    std::int64_t first = 1, last = 0;
};

/// Where in a page a person is. It leads there again whatever rows come, go and move beside the record's.
struct PagePlace {
    int view = 0;                      ///< LogViewSpec::page; 0 for a page that has one view
    std::optional<RecordKey> record{}; ///< the current one; nothing without records
    bool list = false;                 ///< all records are in view
    std::string subject{};             ///< what else it is about, as its page has put it; empty: nothing else

    /// The same is in view: a list is the same whichever of its records is current.
    bool shows(const PagePlace& other) const {
        return view == other.view && subject == other.subject && (list || record == other.record);
    }
};

/// Between the parts of what stands above a page.
inline constexpr auto kPathSeparator = QLatin1String(" / ");

/// A part of what stands above a page: "View / Trip Log / Record 12 / Report".
struct PathPart {
    enum class Leads { Nowhere, ToMenu, ToPlace };

    QString text;
    Leads leads = Leads::Nowhere;
    PagePlace place{}; ///< of this page
};

/// A page of the main frame. Pages hold no data of their own, and end before the document gets other content.
class Page : public QWidget {
    Q_OBJECT
public:
    using QWidget::QWidget;

    /// What stands above the page; empty: nothing.
    virtual std::vector<PathPart> path() const { return {}; }
    /// The same in words.
    QString title() const;

    /// What of the page is in view.
    virtual PagePlace place() const { return {}; }
    /// Whether PLACE is still there: its record may be gone.
    virtual bool has(const PagePlace&) const { return true; }
    /// Where a person begins on the page.
    virtual PagePlace start() const { return {}; }
    /// Brings PLACE, which is there, into view.
    virtual void goTo(const PagePlace&) {}

    /// Rows of the document or names have changed: show what there is now.
    virtual void refresh() {}

    /// After every edit, undo and redo, which tables have followed already: show what there is now.
    virtual void edited() { refresh(); }

    /// Brings a cell of the page's table into view: the row at least, where the column is not shown.
    virtual void showCell(std::string_view /*columnKey*/, RowIndex /*row*/) {}

    /// Brings the report of the record in ROW into view, on the page of a log.
    virtual void showRecord(RowIndex /*row*/) {}

    /// Show the same in other units. Selection, scrolling and sorting stay.
    virtual void unitsChanged() { refresh(); }

    /// What the page shows, to be printed or written: of a log those records whose numbers lie in RANGE (none: all), as
    /// they are shown. Nothing if there is nothing to print.
    virtual std::optional<Report> printable(const std::optional<RecordRange>& /*range*/) const { return {}; }
    /// How many records there are that a range can be chosen of; 0: what is in view is no list of records.
    virtual std::size_t printableRecords() const { return 0; }

    /// What the page shows, for other programs; nothing if that is no table, or one without rows.
    virtual std::optional<ExportContent> exported() { return {}; }
    /// Whether exported() gives anything.
    virtual bool canExport() const { return false; }

signals:
    /// Another view or record is in view, or what stands above it reads otherwise.
    void placeChanged();
    /// A person follows a link of a report.
    void linkFollowed(quobrix::RecordLink link);
};

/// The rows of SPREADSHEET with numbers in RANGE (none: all), and its columns, as they are shown.
Grid shownCells(TSpreadsheet& spreadsheet, const std::optional<RecordRange>& range = {});

/// The rows and columns of SPREADSHEET as they are shown.
ExportContent exportedFrom(const TSpreadsheet& spreadsheet);

/// Makes every table on WIDGET show its cells and headings anew, because units have changed; nothing else of it
/// changes.
void retextTables(const QWidget& widget);

} // namespace quobrix
