#pragma once

#include "report/ui/printable_window.h"
#include "tables/check.h"

#include <QDialog>

class QLabel;
class QPushButton;
class QStackedWidget;
class QTreeView;

namespace quobrix {

class ErrorLogModel;
class Settings;

/// The error log: what "Check For Errors" has found, one message a line. Enter or a double click goes to the source of
/// a message; the log stays open beside it. Its place and size are remembered.
class TErrorLog final : public QDialog, public PrintableWindow {
    Q_OBJECT
public:
    /// CONTEXT and SETTINGS must outlive the window, and the commands PRINTING, too.
    TErrorLog(const TextContext& context, Settings& settings, QWidget* parent, std::span<QAction* const> printing = {});
    ~TErrorLog() override;

    /// Shows FINDINGS. The message that was current stays so if it is still among them, else the one in its place.
    void setFindings(std::vector<Finding> findings);
    const std::vector<Finding>& findings() const;
    /// Makes the first message about TABLE current, if there is one.
    void selectTable(ObjectId table);
    std::optional<Report> printable() override;

signals:
    void goTo(const quobrix::Finding& finding);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* makeButtons(std::span<QAction* const> printing);
    void copy() const;
    void goToCurrent();
    void makeCurrent(int line);

    Settings& settings_;
    ErrorLogModel* model_;
    QTreeView* list_;
    QLabel* none_;
    QStackedWidget* content_;
    QLabel* summary_;
    QPushButton* goToSource_;
};

} // namespace quobrix
