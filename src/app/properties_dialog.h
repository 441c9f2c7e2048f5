#pragma once

#include "views/page.h"

#include <QDialog>

#include <functional>

class QFormLayout;
class QPushButton;

namespace quobrix {

/// What is to be known of the document and its file, and the button that compacts it.
class PropertiesDialog final : public QDialog {
public:
    /// COMPACT compacts the document's file, and tells what came of it.
    PropertiesDialog(const ViewContext& context, std::function<void()> compact, QWidget* parent);

private:
    class SpaceBar;

    void refresh();
    void show(std::string_view key, std::string_view label, const QString& value);
    void openFolder();

    ViewContext context_;
    std::function<void()> compact_;
    QFormLayout* form_;
    SpaceBar* bar_;
    QPushButton *compactButton_, *folderButton_;
};

} // namespace quobrix
