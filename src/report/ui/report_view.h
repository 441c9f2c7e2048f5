#pragma once

#include "report/report.h"

#include <QScrollArea>

class QAction;
class QGridLayout;

namespace quobrix {

/// Shows a report: a card for each of its sections, in two columns where there is room. Texts can be selected, Ctrl+C
/// copies the whole as text. What leads to a record, or to its plot, is a button that looks like a link.
class ReportView : public QScrollArea {
    Q_OBJECT
public:
    explicit ReportView(QWidget* parent = nullptr);

    /// Shows REPORT, from its top unless it has the title of the one before: then it is the same in other units.
    void setReport(Report report);
    const Report& report() const { return report_; }
    /// Offers COMMAND (none: nothing) in the section under HEADING, or below all where the report has no such section.
    /// It shows with the next report.
    void setSectionCommand(const QString& heading, QAction* command);
    /// Puts the report on the clipboard as text.
    void copy() const;

signals:
    /// The record that a text of the report leads to is wanted.
    void linkActivated(quobrix::RecordLink link);
    /// A part of the record's plot is wanted.
    void plotMarkActivated(quobrix::PlotMark mark);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void arrange();
    void tighten(bool tight);

    Report report_;
    QString commandHeading_;
    QAction* command_ = nullptr;
    QGridLayout* grid_ = nullptr;
    std::vector<QWidget*> cards_;
    int columns_ = 0;
    int leastWidth_ = 0; ///< that all of it takes with the room that it is to have
    bool tight_ = false;
};

} // namespace quobrix
