#include "views/record_commands.h"

#include "base/ui/qt_text.h"
#include "messages/prompter.h"
#include "model/quobrix_document.h"
#include "model/record_edits.h"
#include "plots/comparison.h"
#include "settings/settings.h"
#include "tables/ui/cell_block.h"
#include "texts/text.h"
#include "ui/command_rows.h"
#include "views/comments_dialog.h"
#include "views/comparison_window.h"
#include "views/log_list.h"
#include "views/record_dialog.h"

#include <QAction>
#include <QMenu>

#include <algorithm>

namespace quobrix {
namespace {

/// Beside the command, which log it is for.
struct RecordRow {
    CommandRow command;
    std::optional<LogId> log;
    bool edits;
};

constexpr std::optional<LogId> kEveryLog;

constexpr RecordRow kRecordRows[] = {
#define COMMAND(Name, Id, Text, Prompt, Log) {{#Name, Id, SourceText(Text), SourceText(Prompt)}, Log, true},
#define READING(Name, Id, Text, Prompt, Log) {{#Name, Id, SourceText(Text), SourceText(Prompt)}, Log, false},
#include "views/record_commands.def"
};

/// The trip in ROW owns something in the cell of COLUMN, which is not loaded for this.
template <class Cells>
bool owns(const TTripLogTable& trips, RowIndex row) {
    return trips.column<Cells>().has(row);
}

} // namespace

std::vector<Selection> driverChoices(const TQuobrixDocument& document) {
    std::vector<Selection> choices;
    const DriverNamesTable& drivers = document.drivers();
    const auto& numbers = drivers.column<DriverNamesIDColumn>();
    for (RowIndex row = 0; row < drivers.rowCount(); ++row)
        if (numbers.has(row)) {
            const std::string& name = drivers.name(row);
            choices.push_back({numbers.at(row), name.empty() ? text(TextId::DriverNumbered, numbers.at(row)) : name});
        }
    std::ranges::stable_sort(
        choices, [](const std::string& a, const std::string& b) { return toQt(a).localeAwareCompare(toQt(b)) < 0; },
        &Selection::text);
    return choices;
}

RecordCommands::RecordCommands(LogList& list, const ViewContext& context, const LogSpec& spec)
    : QObject(&list), list_(list), context_(context), spec_(spec) {
    for (std::size_t i = 0; i < actions_.size(); ++i) {
        actions_[i] = addCommand(list, "Record", kRecordRows[i].command);
        connect(actions_[i], &QAction::triggered, this, [this, i] { run(static_cast<RecordCommand>(i)); });
    }
    connect(&list, &TSpreadsheet::currentRowChanged, this, &RecordCommands::refresh);
    connect(&list.view(), &SpreadsheetView::selectionAltered, this, &RecordCommands::refresh);
    connect(&list.model(), &SpreadsheetModel::editHistoryChanged, this, &RecordCommands::refresh);
    connect(&list.model(), &QAbstractItemModel::modelReset, this, &RecordCommands::refresh);
    refresh();
}

void RecordCommands::refresh() {
    const ShownText why = context_.document.edits().lockedBecause();
    const bool diagnostics = context_.settings.getInteger("Diagnostics", "Menu", 0) != 0;
    for (std::size_t i = 0; i < actions_.size(); ++i) {
        const std::optional<LogId> log = kRecordRows[i].log;
        const bool edits = kRecordRows[i].edits, locked = edits && !why.empty();
        actions_[i]->setVisible(!log || (log == spec_.id && (diagnostics || !edits)));
        actions_[i]->setEnabled(!locked && applies(static_cast<RecordCommand>(i)));
        actions_[i]->setStatusTip(toQt(locked ? why : text(kRecordRows[i].command.prompt)));
    }
}

bool RecordCommands::applies(RecordCommand command) const {
    if (command == RecordCommand::Filter)
        return list_.model().storedRows() > 0;
    if (command == RecordCommand::Compare) {
        const std::size_t selected = spec_.id == LogId::Trips ? selectedRows().size() : 0;
        return selected >= kLeastCompared && selected <= kMostCompared;
    }
    const auto row = list_.currentRow();
    const Table* log = context_.document.log(spec_);
    const std::optional<LogId> only = kRecordRows[static_cast<std::size_t>(command)].log;
    if (!row || !log || *row >= log->rowCount() || (only && only != spec_.id))
        return false;
    if (command == RecordCommand::EditSpeedProfile)
        return owns<TTripLogSampleTableColumn>(context_.document.trips(), *row);
    if (command == RecordCommand::EditSpeedBands)
        return owns<TTripLogSpeedBandsTableColumn>(context_.document.trips(), *row);
    return true;
}

QDialog* RecordCommands::makeDialog(RecordCommand command, RowIndex row) {
    const TTripLogTable& trips = context_.document.trips();
    switch (command) {
    case RecordCommand::EditComments:
        return new TCommentsDialog(context_, spec_, row, &list_);
    case RecordCommand::EditTripLog:
        return new RecordFieldsDialog(context_, spec_, row, tr("Diagnostics / Edit Trip Log"), &list_);
    case RecordCommand::EditTroubleLog:
        return new RecordFieldsDialog(context_, spec_, row, tr("Diagnostics / Edit Trouble Log"), &list_);
    case RecordCommand::EditSecurityLog:
        return new RecordFieldsDialog(context_, spec_, row, tr("Diagnostics / Edit Security Log"), &list_);
    case RecordCommand::EditSpeedProfile:
        return trips.column<TTripLogSampleTableColumn>().object(row) ? new TTripLogSampleDialog(context_, row, &list_)
                                                                     : nullptr;
    case RecordCommand::EditSpeedBands:
        return trips.column<TTripLogSpeedBandsTableColumn>().object(row)
                   ? new TTripLogSpeedBandsDialog(context_, row, &list_)
                   : nullptr;
    case RecordCommand::Compare:
        return new ComparisonWindow(context_, selectedRows(), &list_);
    case RecordCommand::Filter:
    case RecordCommand::Count:
        break;
    }
    return nullptr;
}

void RecordCommands::run(RecordCommand command) {
    if (command == RecordCommand::Filter)
        return list_.openFilter();
    const auto row = list_.currentRow();
    if (!row || !list_.finishEdit() || !applies(command))
        return;
    const RecordRow& of = kRecordRows[static_cast<std::size_t>(command)];
    if (of.edits && of.log && !isCorrectable(spec_, *context_.document.log(spec_), *row)) {
        if (context_.prompter)
            context_.prompter->tell(makeMessage(MessageId::ValuesRefused, text(TextId::EventNotEdited)));
        return;
    }
    QDialog* dialog = makeDialog(command, *row);
    if (!dialog) {
        if (context_.prompter)
            context_.prompter->tell(makeMessage(MessageId::ValuesRefused, text(TextId::PartUnreadable)));
        return;
    }
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    if (command == RecordCommand::Compare)
        dialog->show(); // beside the list
    else
        dialog->open(); // with the page, and so with the document, it ends
}

void RecordCommands::addTo(QMenu& menu, QAction* before) {
    refresh();
    for (QAction* action : actions_)
        menu.insertAction(before, action);
    if (spec_.driver)
        menu.insertMenu(before, makeDriverMenu(menu));
    if (spec_.id == LogId::Trips)
        menu.insertMenu(before, makeTypeMenu(menu));
    menu.insertSeparator(before);
}

std::vector<RowIndex> RecordCommands::selectedRows() const {
    std::vector<RowIndex> rows;
    for (const int place : selectedBlock(list_.view()).places)
        rows.push_back(list_.model().storedRow(place));
    std::ranges::sort(rows);
    return rows;
}

QMenu* RecordCommands::makeGivingMenu(QMenu& parent, const QString& title, const char* name,
                                      const std::vector<Gift>& gifts) {
    const std::vector<RowIndex> rows = selectedRows();
    auto* menu = new QMenu(title, &parent);
    menu->setObjectName(QLatin1String(name) + QStringLiteral("Menu"));
    menu->setEnabled(!rows.empty() && context_.document.edits().lockedBecause().empty());
    for (const Gift& gift : gifts) {
        QAction* action = menu->addAction(QString(gift.text).replace(QLatin1Char('&'), QLatin1String("&&")));
        action->setObjectName(QLatin1String(name) + gift.name);
        action->setCheckable(true);
        action->setChecked(std::ranges::all_of(rows, gift.has));
        connect(action, &QAction::triggered, this, [this, rows, give = gift.give] {
            if (!list_.finishEdit())
                return;
            const EditOutcome outcome = give(rows);
            if (!outcome.ok() && context_.prompter)
                context_.prompter->tell(makeMessage(MessageId::ValuesRefused, outcome.refusal));
        });
        if (&gift == &gifts.front())
            menu->addSeparator();
    }
    return menu;
}

QMenu* RecordCommands::makeDriverMenu(QMenu& parent) {
    const auto& given = context_.document.trips().column<TTripLogDriverIDColumn>();
    std::vector<Gift> gifts;
    const auto add = [&](const QString& text, std::int32_t driver, const QString& name) {
        gifts.push_back({text, name, [&given, driver](RowIndex row) { return given.at(row) == driver; },
                         [this, driver](const auto& rows) { return giveDriver(context_.document, rows, driver); }});
    };
    add(tr("(None)"), Element<std::int32_t>::kNone, QStringLiteral("None"));
    for (const Selection& driver : driverChoices(context_.document))
        add(toQt(driver.text), static_cast<std::int32_t>(driver.code), QString::number(driver.code));
    return makeGivingMenu(parent, tr("&Driver"), "Driver", gifts);
}

QMenu* RecordCommands::makeTypeMenu(QMenu& parent) {
    const auto& given = context_.document.trips().column<TTripLogTripTypeColumn>();
    std::vector<std::string> names;
    if (const Result<TripTypes> types = loadTripTypes()) // else what is given can be taken away
        names = namesOf(types->types);
    for (const RowIndex row : selectedRows()) // of another user, or of a type that is gone
        if (given.has(row) && std::ranges::find(names, given.at(row)) == names.end())
            names.push_back(given.at(row));
    std::vector<Gift> gifts;
    const auto add = [&](const QString& text, const std::string& type, const QString& name) {
        gifts.push_back({text, name, [&given, type](RowIndex row) { return given.at(row) == type; },
                         [this, type](const auto& rows) { return giveTripType(context_.document, rows, type); }});
    };
    add(tr("(None)"), {}, QStringLiteral("None"));
    for (std::size_t i = 0; i < names.size(); ++i)
        add(toQt(names[i]), names[i], QString::number(i + 1));
    return makeGivingMenu(parent, tr("Trip T&ype"), "TripType", gifts);
}

bool RecordCommands::mayDelete(const std::vector<RowIndex>& rows) const {
    const ShownText what = counted(spec_.record, spec_.records, rows.size());
    return !context_.prompter || context_.prompter->ask(makeMessage(MessageId::DeleteRecords, what)) == Answer::Yes;
}

} // namespace quobrix
