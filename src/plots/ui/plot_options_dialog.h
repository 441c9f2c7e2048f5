#pragma once

#include "tables/option_table.h"
#include "tables/table_edits.h"

#include <QDialog>

#include <functional>

class QLineEdit;

namespace quobrix {

class StatusLine;

/// How plots are drawn. What is changed shows in the open plots; Cancel takes it back.
class TPlotOptionsDialog final : public QDialog {
    Q_OBJECT
public:
    /// CHANGED is called whenever plots are to be drawn otherwise. What the arguments refer to must outlive the dialog.
    TPlotOptionsDialog(const TextContext& text, Settings& settings, std::function<void()> changed, QWidget* parent);

    void done(int result) override;

private:
    std::size_t indexOf(const PersistentType& column) const;
    QWidget* flagOf(const PersistentType& column);
    QWidget* maximumField();
    bool takeMaximum();
    void finish(const EditOutcome& outcome);

    TextContext text_;
    OptionTable options_;
    TableEdits edits_{options_};
    std::function<void()> changed_;
    QLineEdit* maximum_;
    StatusLine* status_;
};

} // namespace quobrix
