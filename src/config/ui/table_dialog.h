#pragma once

#include "base/result.h"
#include "config/value_sheet.h"
#include "drawing/text_measure.h"
#include "messages/message.h"
#include "tables/table_edits.h"
#include "tables/ui/spreadsheet.h"
#include "units/unit_system.h"

#include <QDialog>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class QHBoxLayout;
class QPushButton;
class QVBoxLayout;

namespace quobrix {

class DrawingView;
class Prompter;
class Settings;
class StatusLine;
class TimeZone;

/// What these dialogs show and ask through; it outlives them.
struct TableDialogContext {
    TUnitSystem& units;
    const TimeZone& zone;
    Settings& settings;
    Prompter& prompter;
    const SpreadsheetWindows* windows = nullptr; ///< as in SpreadsheetContext

    TextContext text() const { return {units, zone}; }
};

struct TableDialogSpec {
    QString name; ///< object name, and the section of the settings
    QString title;
    QString explanation; ///< above the table
    QString resetTip;
};

/// A few values as a table that stands alone, with a picture of them that follows what is typed, and buttons to reset
/// them and to take them with OK. Whatever fails then leaves the dialog open as it is.
class TableDialog : public QDialog, private UnitsListener {
    Q_OBJECT
public:
    ~TableDialog() override;

    TSpreadsheet& list() { return *list_; }

    void accept() override;

protected:
    TableDialog(const TableDialogContext& context, const TableDialogSpec& spec, std::unique_ptr<ValueSheet> sheet,
                QWidget* parent);

    const TableDialogContext& context() const { return context_; }
    ValueSheet& sheet() { return *sheet_; }
    /// Sets CELLS as one step called DESCRIPTION. False if they are refused, which has been told.
    bool set(std::vector<CellEdit> cells, const QString& description);
    /// A picture beside the table.
    DrawingView& addPicture(DrawingMaker make);
    QPushButton* addButton(const QString& text, const char* name, const QString& tip, std::function<void()> work);
    /// A text file of the values.
    struct ValueFile {
        QString name;        ///< without its suffix, for a new one
        MessageOf<2> notOne; ///< says why a file is none
        std::function<std::string()> text;
        std::function<Result<std::vector<CellEdit>>(std::string_view)> read;
    };
    /// "Save to File..." and "Load from File...".
    void addFileButtons(const QString& saveTip, const QString& loadTip, ValueFile file);
    /// The values as they are, with that of an open editor as far as it can be read.
    Value shownValue(std::size_t column, RowIndex row) const;
    /// Reads what the window can do without at first: calls READ_NEXT while control is in the event loop, for a blink
    /// at a time, until it returns false, and then shows everything anew.
    void readInSlices(std::function<bool()> readNext);

    /// Takes the values; false leaves the dialog open.
    virtual bool take() = 0;

private:
    void unitsChanged(UnitsChange, std::optional<UnitTypeId>) override;
    bool event(QEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;
    void save(const ValueFile& file);
    void load(const ValueFile& file);
    void showStatus(const QString& tip);
    void showAnew();
    void redraw();

    const TableDialogContext context_;
    const std::string name_;
    const std::unique_ptr<ValueSheet> sheet_;
    TableEdits edits_;
    TSpreadsheet* list_;
    QHBoxLayout* values_;
    QVBoxLayout* buttons_;
    StatusLine* status_;
    DrawingView* picture_ = nullptr;
};

} // namespace quobrix
