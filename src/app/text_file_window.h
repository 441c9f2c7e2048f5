#pragma once

#include <QDialog>

#include <filesystem>

class QPlainTextEdit;

namespace quobrix {

/// Shows a text file that this program writes, its end first, as it is now.
class TextFileWindow final : public QDialog {
public:
    explicit TextFileWindow(QWidget* parent);

    /// False if FILE cannot be read: what is shown stays.
    bool show(const std::filesystem::path& file);

private:
    QPlainTextEdit* text_;
};

} // namespace quobrix
