#include "views/summary_log_dialog.h"

#include "base/ui/qt_text.h"
#include "messages/prompter.h"
#include "summary/summary_log.h"
#include "summary/ui/trip_counter.h"
#include "tables/ui/cell_block.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "ui/status_line.h"
#include "ui/windows.h"
#include "units/unit_system.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QItemSelectionModel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QStatusTipEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace quobrix {
namespace {

constexpr std::string_view kSection = "SummaryLogDialog";

/// Its rows are no cells of a document: what is deleted of them is deleted by REMOVE, while MAY says so.
class SummaryList final : public TSpreadsheet {
public:
    SummaryList(const SpreadsheetContext& context, const SpreadsheetSpec& spec, std::function<bool()> may,
                std::function<void()> remove)
        : TSpreadsheet(context, spec), may_(std::move(may)), remove_(std::move(remove)) {}

private:
    void deleteSelection() override { remove_(); }
    bool canDelete() const override { return may_(); }

    std::function<bool()> may_;
    std::function<void()> remove_;
};

} // namespace

SummaryLogDialog::SummaryLogDialog(const ViewContext& context, QWidget* parent)
    : QDialog(parent), context_(context), keeper_(context.counter->keeper()), status_(new StatusLine),
      delete_(new QPushButton(tr("&Delete"))), deleteAll_(new QPushButton(tr("Delete &All..."))) {
    setObjectName(toQt(kSection));
    const TableSpec& spec = SummaryTable().spec();
    setWindowTitle(toQt(text(spec.title)));
    SpreadsheetContext cells = context_.spreadsheet();
    cells.edits = nullptr;
    list_ = new SummaryList(
        cells,
        {.name = std::string(kSection) + " List",
         .title = windowTitle(),
         .emptyText = toQt(text(messageSpec(MessageId::NoSummaries).text))},
        [this] { return canDelete(); }, [this] { deleteSelected(); });
    list_->commands().ruleOut(SpreadsheetCommand::Errors, tr("Nothing is edited here, so that nothing can be wrong."));
    connect(&list_->view(), &SpreadsheetView::selectionAltered, this, [this] { showState(); });

    delete_->setObjectName(QStringLiteral("deleteSummaries"));
    followAction(*delete_, list_->commands().action(SpreadsheetCommand::Delete), promptWithKeys);
    deleteAll_->setObjectName(QStringLiteral("deleteAllSummaries"));
    deleteAll_->setToolTip(tr("Deletes the records of all trips that were ever counted."));
    connect(deleteAll_, &QPushButton::clicked, this, [this] { deleteAll(); });
    auto* box = new QDialogButtonBox(QDialogButtonBox::Close);
    for (QPushButton* button : {delete_, deleteAll_})
        box->addButton(button, QDialogButtonBox::ActionRole);
    for (QPushButton* button : printButtons(*this, objectName(), context_.printing))
        box->addButton(button, QDialogButtonBox::ActionRole);
    for (QAbstractButton* button : box->buttons())
        static_cast<QPushButton*>(button)->setAutoDefault(false);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(list_, 1);
    layout->addWidget(status_);
    layout->addWidget(box);

    connect(&keeper_, &SummaryKeeper::changed, this, &SummaryLogDialog::refresh);
    refresh();
    keeper_.read(); // another program may have counted meanwhile
    list_->setFocus();
    if (!quobrix::restoreGeometry(*this, context_.settings, kSection))
        resize(QSize(fontMetrics().averageCharWidth() * 175, fontMetrics().lineSpacing() * 32)
                   .boundedTo(screen()->availableSize() * 9 / 10));
}

SummaryLogDialog::~SummaryLogDialog() {
    rememberGeometry(*this, context_.settings, kSection);
    delete std::exchange(list_, nullptr); // which shows the table
}

std::optional<Report> SummaryLogDialog::printable() {
    return list_ ? listReport(*this, shownCells(*list_)) : std::nullopt;
}

bool SummaryLogDialog::event(QEvent* event) {
    if (event->type() != QEvent::StatusTip)
        return QDialog::event(event);
    if (const QString tip = static_cast<QStatusTipEvent*>(event)->tip(); tip.isEmpty())
        showState();
    else
        status_->say(tip);
    return true;
}

/// With the same records current and selected; in the order in which they were driven, not in that of counting.
void SummaryLogDialog::refresh() {
    if (keeper_.records() == counted_)
        return showState();
    std::vector<SummaryRecord> selected, current;
    for (const RowIndex row : selectedRows())
        selected.push_back((*records_)[row]);
    if (const auto row = list_->currentRow())
        current.push_back((*records_)[*row]);
    counted_ = keeper_.records();
    records_.reset();
    if (counted_) {
        auto inOrder = std::make_shared<std::vector<SummaryRecord>>(*counted_);
        std::ranges::stable_sort(*inOrder, {}, &SummaryRecord::start);
        records_ = std::move(inOrder);
    }
    auto table = SummaryTable::of(records_ ? std::span(*records_) : std::span<const SummaryRecord>());
    std::vector<ShownColumn> columns;
    for (std::size_t i = 0; i < table->columnCount(); ++i)
        columns.push_back({&table->column(i)});
    list_->setColumns(std::move(columns));
    table_ = std::move(table); // not before the list has let go of the old one
    if (records_) {
        if (const auto rows = recordsLike(current, *records_); !rows.empty())
            list_->setCurrentRow(rows.front());
        QItemSelection again;
        for (const std::size_t row : recordsLike(selected, *records_))
            if (const auto place = list_->model().placeOf(row))
                again.select(list_->model().index(*place, 0), list_->model().index(*place, 0));
        if (!again.isEmpty())
            list_->view().selectionModel()->select(again,
                                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
    showState();
}

std::vector<RowIndex> SummaryLogDialog::selectedRows() const {
    std::vector<RowIndex> rows;
    for (const int place : selectedBlock(list_->view()).places)
        rows.push_back(list_->model().storedRow(place));
    return rows;
}

bool SummaryLogDialog::canDelete() const {
    return list_ && !deleting_ && list_->view().selectionModel()->hasSelection();
}

void SummaryLogDialog::showState() {
    if (!list_) // it is ending
        return;
    const std::size_t count = records_ ? records_->size() : 0;
    deleteAll_->setEnabled(count > 0 && !deleting_);
    list_->commands().refresh();
    const auto number = [&](std::size_t records) {
        return context_.units.formatInteger(static_cast<std::int64_t>(records));
    };
    if (deleting_)
        status_->say(tr("The records are being deleted…"));
    else if (!keeper_.problem().empty())
        status_->say(toQt(keeper_.problem()));
    else if (count > 0)
        status_->say(
            tr("%1; %2 selected", "records, and how many of them")
                .arg(toQt(counted(TextId::SummaryRecords, count, number(count))), toQt(number(selectedRows().size()))));
    else
        status_->say({});
}

void SummaryLogDialog::deleteSelected() {
    if (!canDelete() || !context_.prompter)
        return;
    std::vector<SummaryRecord> records;
    for (const RowIndex row : selectedRows()) // now: others may come while the question is open
        records.push_back((*records_)[row]);
    const std::string number = context_.units.formatInteger(static_cast<std::int64_t>(records.size()));
    if (context_.prompter->ask(makeMessage(MessageId::DeleteSummaries,
                                           counted(TextId::SummaryRecords, records.size(), number))) == Answer::Yes)
        remove(std::move(records));
}

void SummaryLogDialog::deleteAll() {
    if (!context_.prompter || context_.prompter->ask(makeMessage(MessageId::DeleteAllSummaries)) != Answer::Yes)
        return;
    if (records_)
        remove(*records_);
}

void SummaryLogDialog::remove(std::vector<SummaryRecord> records) {
    deleting_ = true;
    showState();
    keeper_.remove(std::move(records), [dialog = QPointer(this), prompter = context_.prompter](
                                           const Result<void>& done, const ShownText& problem) {
        if (!done && prompter)
            prompter->tell(makeMessage(MessageId::SummariesNotDeleted, problem));
        if (!dialog)
            return;
        dialog->deleting_ = false;
        dialog->refresh();
        if (dialog->records_ && dialog->records_->empty())
            dialog->close();
    });
}

} // namespace quobrix
