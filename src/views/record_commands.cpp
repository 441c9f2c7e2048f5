#include "views/record_commands.h"

#include "base/ui/qt_text.h"
#include "messages/prompter.h"
#include "model/quobrix_document.h"
#include "model/record_edits.h"
#include "tables/ui/cell_block.h"
#include "texts/text.h"
#include "views/comments_dialog.h"
#include "views/log_list.h"

#include <QAction>
#include <QMenu>

#include <algorithm>

namespace quobrix {
namespace {

struct CommandRow {
    const char* name;
    int id;
    SourceText text;
    SourceText prompt;
};

constexpr CommandRow kCommandRows[] = {
#define COMMAND(Name, Id, Text, Prompt) {#Name, Id, SourceText(Text), SourceText(Prompt)},
#include "views/record_commands.def"
};

using Driver = std::optional<std::int32_t>;

} // namespace

RecordCommands::RecordCommands(LogList& list, const ViewContext& context, const LogSpec& spec)
    : QObject(&list), list_(list), context_(context), spec_(spec) {
    for (std::size_t i = 0; i < actions_.size(); ++i) {
        auto* action = new QAction(toQt(text(kCommandRows[i].text)), &list);
        action->setObjectName(QStringLiteral("Record") + QLatin1String(kCommandRows[i].name));
        action->setData(kCommandRows[i].id);
        connect(action, &QAction::triggered, this, [this, i] { run(static_cast<RecordCommand>(i)); });
        actions_[i] = action;
    }
    connect(&list, &TSpreadsheet::currentRowChanged, this, &RecordCommands::refresh);
    connect(&list.model(), &SpreadsheetModel::editHistoryChanged, this, &RecordCommands::refresh);
    refresh();
}

void RecordCommands::refresh() {
    const ShownText why = context_.document.edits().lockedBecause();
    for (std::size_t i = 0; i < actions_.size(); ++i) {
        actions_[i]->setEnabled(list_.currentRow() && why.empty());
        actions_[i]->setStatusTip(toQt(why.empty() ? text(kCommandRows[i].prompt) : why));
    }
}

void RecordCommands::run(RecordCommand command) {
    const auto row = list_.currentRow();
    const Table* log = context_.document.log(spec_);
    if (!row || !log || !list_.finishEdit())
        return;
    QDialog* dialog = nullptr;
    switch (command) {
    case RecordCommand::EditComments:
        dialog = new TCommentsDialog(context_, spec_, *row, &list_);
        break;
    case RecordCommand::Count:
        return;
    }
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open(); // with the page, and so with the document, it ends
}

void RecordCommands::addTo(QMenu& menu, QAction* before) {
    refresh();
    for (QAction* action : actions_)
        menu.insertAction(before, action);
    if (spec_.driver)
        menu.insertMenu(before, makeDriverMenu(menu));
    menu.insertSeparator(before);
}

std::vector<RowIndex> RecordCommands::selectedRows() const {
    std::vector<RowIndex> rows;
    for (const int place : selectedBlock(list_.view()).places)
        rows.push_back(list_.model().storedRow(place));
    std::ranges::sort(rows);
    return rows;
}

QMenu* RecordCommands::makeDriverMenu(QMenu& parent) {
    const TTripLogTable& trips = context_.document.trips();
    const auto& given = trips.column<TTripLogDriverIDColumn>();
    const std::vector<RowIndex> rows = selectedRows();
    auto* menu = new QMenu(tr("&Driver"), &parent);
    menu->setObjectName(QStringLiteral("DriverMenu"));
    menu->setEnabled(!rows.empty() && context_.document.edits().lockedBecause().empty());
    const auto add = [&](const QString& name, std::int32_t driver, const QString& objectName) {
        QAction* action = menu->addAction(QString(name).replace(QLatin1Char('&'), QLatin1String("&&")));
        action->setObjectName(objectName);
        action->setCheckable(true);
        action->setChecked(std::ranges::all_of(rows, [&](RowIndex row) { return given.at(row) == driver; }));
        connect(action, &QAction::triggered, this, [this, rows, driver] {
            if (!list_.finishEdit())
                return;
            const EditOutcome outcome = giveDriver(context_.document, rows, driver);
            if (!outcome.ok() && context_.prompter)
                context_.prompter->tell(makeMessage(MessageId::ValuesRefused, outcome.refusal));
        });
    };
    add(tr("(None)"), Element<std::int32_t>::kNone, QStringLiteral("DriverNone"));
    menu->addSeparator();
    struct Known {
        QString name;
        std::int32_t number;
    };
    std::vector<Known> known;
    const DriverNamesTable& drivers = context_.document.drivers();
    const auto& numbers = drivers.column<DriverNamesIDColumn>();
    for (RowIndex row = 0; row < drivers.rowCount(); ++row)
        if (numbers.has(row)) {
            const QString name = toQt(drivers.name(row));
            known.push_back(
                {name.isEmpty() ? toQt(text(TextId::DriverNumbered, numbers.at(row))) : name, numbers.at(row)});
        }
    std::ranges::stable_sort(
        known, [](const QString& a, const QString& b) { return a.localeAwareCompare(b) < 0; }, &Known::name);
    for (const Known& driver : known)
        add(driver.name, driver.number, QStringLiteral("Driver%1").arg(driver.number));
    return menu;
}

bool RecordCommands::mayDelete(const std::vector<RowIndex>& rows) const {
    const ShownText what = counted(spec_.record, spec_.records, rows.size());
    return !context_.prompter || context_.prompter->ask(makeMessage(MessageId::DeleteRecords, what)) == Answer::Yes;
}

} // namespace quobrix
