#pragma once

#include <QSpinBox>

namespace quobrix {

/// A field for 0 to 9 decimals that takes what is typed as decimalsFromText() reads it: any other number becomes 9, in
/// the field too, and an empty field gets its value back when it is left.
class DecimalsBox final : public QSpinBox {
public:
    explicit DecimalsBox(QWidget* parent = nullptr);

protected:
    QValidator::State validate(QString& text, int& position) const override;
    int valueFromText(const QString& text) const override;
    bool event(QEvent* event) override;
};

} // namespace quobrix
