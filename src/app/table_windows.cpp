#include "app/table_windows.h"

#include "app/main_frame.h"
#include "model/value_check.h"
#include "tables/ui/error_log.h"
#include "tables/ui/requirements_window.h"
#include "texts/source_text.h"
#include "ui/windows.h"

namespace quobrix {

TableWindows::TableWindows(TQuobrixFrame& frame) : frame_(frame) {
    recheck_.setSingleShot(true);
    QObject::connect(&recheck_, &QTimer::timeout, &frame_, [this] { check(); });
    frame_.context().document.edits().addListener(*this);
    frame_.context().units.addListener(*this);
    frame_.commands().handle(CommandId::CheckForErrors, [this] { showErrors(); });
}

TableWindows::~TableWindows() {
    frame_.context().units.removeListener(*this);
    frame_.context().document.edits().removeListener(*this);
    delete errors_;
    delete requirements_;
}

void TableWindows::addSource(const PersistentType& table, ShowCell showCell) {
    sources_.insert_or_assign(table.id(), std::move(showCell));
}

void TableWindows::showErrors() {
    inFront(errors_, frame_, [&](QWidget* parent) {
        auto* log =
            new TErrorLog(frame_.context().text(), frame_.context().settings, parent, frame_.context().printing);
        QObject::connect(log, &TErrorLog::goTo, &frame_, [this](const Finding& finding) { goTo(finding); });
        return log;
    });
    check();
}

void TableWindows::showErrorsOf(const Table& table) {
    showErrors();
    errors_->selectTable(table.id());
}

void TableWindows::showRequirements(const Column& column) {
    inFront(requirements_, frame_, [&](QWidget* parent) {
        return new RequirementsWindow(frame_.context().units, frame_.context().zone, parent);
    }).setColumn(column);
}

void TableWindows::check() {
    if (errors_)
        errors_->setFindings(checkValues(frame_.context().document, frame_.context().text()));
}

void TableWindows::showSource(const CellSource& source) {
    if (!showCell(source.table.type(), source.columnKey, source.row))
        frame_.prompter().tell(makeMessage(MessageId::NoSource, text(source.table.spec().title)));
}

void TableWindows::goTo(const Finding& finding) {
    const PersistentObject* table = frame_.context().document.store().find(finding.table);
    if (!table || !showCell(table->type(), finding.column ? finding.column->key : std::string_view(), finding.row))
        frame_.prompter().tell(makeMessage(MessageId::NoSource, finding.title));
}

/// False if no window shows the tables of class TABLE.
bool TableWindows::showCell(const PersistentType& table, std::string_view columnKey, RowIndex row) {
    const auto source = sources_.find(table.id());
    if (source == sources_.end())
        return false;
    source->second(columnKey, row);
    return true;
}

} // namespace quobrix
