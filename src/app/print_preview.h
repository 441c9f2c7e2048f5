#pragma once

#include "app/print_dialog.h"
#include "paper/ui/page_view.h"
#include "ui/background.h"

#include <QDialog>

#include <functional>
#include <memory>

class QAction;
class QComboBox;
class QSpinBox;
class QToolBar;

namespace quobrix {

/// What is printed as it comes out on paper. What is in the window behind stays as it is meanwhile.
class PrintPreviewDialog final : public QDialog {
public:
    struct Commands {
        std::function<void(QWidget&over)> print, savePdf, setUp;
    };

    /// REPORT is what is shown once it is laid out on the thread of LAYOUTS, which must outlive the dialog.
    PrintPreviewDialog(const ViewContext& context, Report report, Commands commands, Background& layouts,
                       QWidget* parent);
    ~PrintPreviewDialog() override;

    PageView& view() { return *view_; }

private:
    QAction* addAction(const char* name, const QString& text, const QKeySequence& keys, const char* icon,
                       std::function<void()> run);
    void addField(const QString& label, QWidget& field);
    void addPageBox();
    void addScaleBox();
    void layOut();
    void showCurrent();
    void showScale();

    const ViewContext context_;
    const Report report_;
    const Commands commands_;
    Background& layouts_;
    std::unique_ptr<QObject> laidOut_; ///< who waits for the pages: what was asked before counts no more
    PageView* view_;
    QToolBar* bar_;
    QSpinBox* page_;
    QComboBox* scale_;
    QAction* first_;
    QAction* previous_;
    QAction* next_;
    QAction* last_;
};

} // namespace quobrix
