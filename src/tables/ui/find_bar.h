#pragma once

#include "tables/find_text.h"

#include "ui/escape_bar.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QTimer;

namespace quobrix {

class SpreadsheetModel;
class SpreadsheetView;

/// The bar below a spreadsheet in which the text to be found is typed. It goes to the hits in the order of what is
/// shown, and counts them while nothing else is to be done.
class FindBar final : public EscapeBar {
    Q_OBJECT
public:
    /// All of it must outlive the bar, which is hidden at first.
    FindBar(SpreadsheetView& view, const SpreadsheetModel& model, const TextContext& context, QWidget* parent);

    /// Shows the bar and takes the keyboard.
    void open();
    /// Goes to the next (previous) cell with the text, or opens the bar if there is no text yet.
    void findNext() { find(false, false); }
    void findPrevious() { find(true, false); }
    /// The cells have changed: what was counted does not hold any more.
    void cellsChanged();

protected:
    void escaped() override;
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    /// The cell that was found is marked while the keyboard is in the bar.
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    /// Goes to the next hit, or stays where one is already if AT_CURRENT.
    void find(bool backwards, bool atCurrent);
    void search();
    void countOn();
    void showCount();
    FindOptions options() const;

    SpreadsheetView& view_;
    const SpreadsheetModel& model_;
    TextContext context_;
    QLineEdit* text_;
    QCheckBox* matchCase_;
    QCheckBox* wrap_;
    QLabel* count_;
    QTimer* counter_;
    std::size_t hits_ = 0;
    std::size_t counted_ = 0; ///< rows from the top that have been searched for hits
};

} // namespace quobrix
