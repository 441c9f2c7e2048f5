#pragma once

#include <QWidget>

class QBoxLayout;
class QLabel;

namespace quobrix {

/// The line below a list that says what the records that are shown come to, and those that are selected: beside each
/// other where there is room for both, else one below the other.
class TotalsLine final : public QWidget {
public:
    explicit TotalsLine(QWidget* parent = nullptr);

    void sayShown(const QString& text);
    /// Empty: nothing is selected.
    void saySelected(const QString& text);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void arrange();

    QLabel *shown_, *selected_;
    QBoxLayout* layout_;
};

} // namespace quobrix
