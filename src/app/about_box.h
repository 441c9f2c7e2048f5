#pragma once

#include "texts/source_text.h"

#include <QDialog>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace quobrix {

/// A name and its value ("Software Version", "1.0.0").
using AboutLines = std::vector<std::pair<SourceText, std::string>>;

/// The program's own lines.
AboutLines programLines();

/// Says what this software is. A right click with Ctrl held down calls SHOW_DIAGNOSTICS: the way to the Diagnostics
/// menu that support tells a customer, and that is not found by accident.
class AboutBox final : public QDialog {
public:
    AboutBox(const AboutLines& lines, std::function<void()> showDiagnostics, QWidget* parent);

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    std::function<void()> showDiagnostics_;
};

} // namespace quobrix
