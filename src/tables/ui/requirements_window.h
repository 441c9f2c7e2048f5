#pragma once

#include "tables/column.h"
#include "units/unit_system.h"

#include <QDialog>

#include <memory>

class QPlainTextEdit;

namespace quobrix {

/// What the values of one column are to be like, in the current units. It may stay open; closed by Escape.
class RequirementsWindow final : public QDialog, private UnitsListener {
    Q_OBJECT
public:
    /// UNITS and ZONE must outlive the window.
    RequirementsWindow(TUnitSystem& units, const TimeZone& zone, QWidget* parent);
    ~RequirementsWindow() override;

    /// Shows the requirements of COLUMN, which need not outlive the call.
    void setColumn(const Column& column);
    QString text() const;

private:
    void unitsChanged(UnitsChange, std::optional<UnitTypeId>) override { refresh(); }
    void refresh();

    TUnitSystem& units_;
    const TimeZone& zone_;
    std::unique_ptr<Column> column_; ///< one of its own: the document's may end before the window
    QPlainTextEdit* text_;
};

} // namespace quobrix
