#include "views/record_dialog.h"

#include "base/ui/qt_text.h"
#include "model/edited_parts.h"
#include "model/quobrix_document.h"
#include "model/record_edits.h"
#include "tables/ui/table_spreadsheet.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "ui/status_line.h"
#include "ui/windows.h"
#include "units/unit_system.h"
#include "views/record_commands.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace quobrix {
namespace {

constexpr int kFieldWidth = 28; // characters: a date and time to the second

/// What stands behind a figure that is typed.
QString hintOf(const Column& column, RowIndex row, const TextContext& context) {
    return column.kind() == ColumnKind::Real ? toQt(context.units.unitName(column.unitOf(row))) : QString();
}

/// What is typed in place of a cell. A figure as lists show it: one that nobody touches stays as exact as it is.
QString shownText(const Column& column, RowIndex row, const TextContext& context) {
    const Value value = column.value(row);
    ValueText buffer;
    const auto* figure = std::get_if<double>(&value);
    return figure && column.kind() == ColumnKind::Real
               ? toQt(context.units.formatValue(column.unitOf(row), *figure, buffer))
               : toQt(column.editText(row, context));
}

/// The codes that a cell can be set to, with their texts.
std::vector<Selection> choicesOf(const TQuobrixDocument& document, const Column& column, RowIndex row,
                                 const TextContext& context) {
    std::vector<Selection> choices = column.selections();
    if (column.type().id() == TTripLogDriverIDColumn::kType.id())
        choices = driverChoices(document);
    const Value now = column.value(row);
    if (const auto* code = std::get_if<std::int64_t>(&now);
        code && std::ranges::find(choices, *code, &Selection::code) == choices.end())
        choices.push_back({*code, column.text(row, context)});
    return choices;
}

} // namespace

RecordDialog::RecordDialog(const ViewContext& context, const LogSpec& spec, RowIndex row, const QString& name,
                           const QString& title, QWidget* parent)
    : QDialog(parent), context_(context), spec_(spec), record_(spec.keyOf(*context.document.log(spec), row)),
      layout_(new QVBoxLayout(this)), status_(new StatusLine) {
    setObjectName(name);
    setWindowTitle(title);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    addHelp(*buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &RecordDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout_->addWidget(status_);
    layout_->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * 70, fontMetrics().lineSpacing() * 26);
    quobrix::restoreGeometry(*this, context_.settings, name.toStdString());
}

RecordDialog::~RecordDialog() { rememberGeometry(*this, context_.settings, objectName().toStdString()); }

void RecordDialog::setContent(QWidget* widget) {
    const Table& log = *context_.document.log(spec_);
    auto* record = new QLabel(toQt(recordTitle(spec_, log, *spec_.rowOf(log, record_), context_.text())));
    layout_->insertWidget(0, record);
    layout_->insertWidget(1, widget, 1);
}

void RecordDialog::accept() {
    const Table* log = context_.document.log(spec_);
    const auto row = log ? spec_.rowOf(*log, record_) : std::nullopt;
    const EditOutcome outcome = row ? take(*log, *row) : refused(text(TextId::RecordIsGone));
    if (outcome.ok())
        return QDialog::accept();
    status_->say(toQt(outcome.refusal));
}

// Fields

RecordFieldsDialog::RecordFieldsDialog(const ViewContext& context, const LogSpec& spec, RowIndex row,
                                       const QString& title, QWidget* parent)
    : RecordDialog(context, spec, row, toQt(spec.viewName("Dialog")), title, parent) {
    const Table& log = *context.document.log(spec);
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    auto* content = new QWidget;
    auto* form = new QFormLayout(content);
    for (std::size_t i = 0; i < log.columnCount(); ++i) {
        const Column& column = log.column(i);
        if (!column.correctable())
            continue;
        Field field = makeField(log, i, row);
        const QString name = toQt(plainHeading(column.spec()));
        field.editor->setObjectName(toQt(column.spec().key));
        field.editor->setAccessibleName(name);
        field.editor->setToolTip(toQt(text(column.spec().tooltip)));
        QWidget* shown = field.editor;
        if (const QString hint = hintOf(column, row, context.text()); !hint.isEmpty()) {
            shown = new QWidget;
            auto* line = new QHBoxLayout(shown);
            line->setContentsMargins(0, 0, 0, 0);
            line->addWidget(field.editor, 1);
            line->addWidget(new QLabel(hint));
        }
        form->addRow(tr("%1:").arg(name), shown);
        fields_.push_back(std::move(field));
    }
    area->setWidget(content);
    area->setMinimumWidth(content->sizeHint().width() + area->verticalScrollBar()->sizeHint().width());
    setContent(area);
    fields_.front().editor->setFocus();
}

RecordFieldsDialog::Field RecordFieldsDialog::makeField(const Table& log, std::size_t index, RowIndex row) {
    const Column& column = log.column(index);
    if (column.kind() == ColumnKind::Boolean) {
        auto* box = new QCheckBox;
        const bool before = std::get<bool>(column.value(row));
        box->setChecked(before);
        return {index, box,
                [box](const Table&, RowIndex) {
                    return Parsed{Value(box->isChecked()), {}};
                },
                [box, before] { return box->isChecked() != before; }};
    }
    if (column.kind() == ColumnKind::Selection) {
        auto* list = new QComboBox;
        list->addItem(tr("(None)"));
        std::vector<Value> values{{}};
        for (const Selection& choice : choicesOf(context().document, column, row, context().text())) {
            list->addItem(toQt(choice.text));
            values.emplace_back(choice.code);
        }
        const auto before = static_cast<int>(std::ranges::find(values, column.value(row)) - values.begin());
        list->setCurrentIndex(before);
        list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        return {index, list,
                [list, values](const Table&, RowIndex) {
                    return Parsed{values[static_cast<std::size_t>(list->currentIndex())], {}};
                },
                [list, before] { return list->currentIndex() != before; }};
    }
    const QString before = shownText(column, row, context().text());
    auto* line = new QLineEdit(before);
    line->setMinimumWidth(fontMetrics().averageCharWidth() * kFieldWidth);
    line->setCursorPosition(0);
    return {index, line,
            [this, line, index](const Table& table, RowIndex at) {
                return table.column(index).parseIn(at, line->text().toStdString(), context().text());
            },
            [line, before] { return line->text() != before; }};
}

EditOutcome RecordFieldsDialog::take(const Table& log, RowIndex row) {
    const auto refuse = [&](const Field& field, const ShownText& why) {
        field.editor->setFocus();
        return refused(text(TextId::WithDetail, plainHeading(log.column(field.column).spec()), why));
    };
    std::vector<CellEdit> cells;
    for (const Field& field : fields_)
        if (field.edited()) {
            Parsed parsed = field.read(log, row);
            if (!parsed.ok())
                return refuse(field, parsed.refusal);
            cells.push_back({field.column, row, std::move(parsed.value)});
        }
    const EditOutcome outcome = correctRecord(context().document, spec(), row, std::move(cells), context().text());
    for (const Field& field : fields_)
        if (!outcome.ok() && outcome.row != Finding::kNoRow && outcome.column == field.column)
            return refuse(field, outcome.refusal);
    return outcome;
}

// What a trip owns

TripPartDialog::TripPartDialog(const ViewContext& context, RowIndex row, const QString& name, const QString& title,
                               std::unique_ptr<Table> rows, QWidget* parent)
    : RecordDialog(context, logSpec(LogId::Trips), row, name, title, parent), rows_(std::move(rows)), edits_(*rows_),
      list_(new TSpreadsheet({context.text(), context.settings, &edits_, context.prompter, context.windows},
                             {.name = name.toStdString() + " List",
                              .title = title,
                              .emptyText = tr("Nothing was recorded."),
                              .use = SpreadsheetView::Use::Cells})) {
    std::vector<ShownColumn> columns;
    for (std::size_t i = rows_->columnCount(); i-- > 0;) // the time stands before the speed
        columns.push_back({&rows_->column(i)});
    if (rows_->spec().computed.empty())
        std::ranges::reverse(columns);
    list_->setColumns(std::move(columns));
    setContent(list_);
    list_->setFocus();
}

TripPartDialog::~TripPartDialog() { delete list_; } // which shows the table

EditOutcome TripPartDialog::take(const Table&, RowIndex row) {
    if (!list_->finishEdit())
        return refused(text(TextId::CellRefused));
    return edits_.canUndo() ? correct(row) : EditOutcome();
}

TTripLogSampleDialog::TTripLogSampleDialog(const ViewContext& context, RowIndex row, QWidget* parent)
    : TripPartDialog(context, row, QStringLiteral("TTripLogSampleDialog"),
                     tr("Diagnostics / Edit Trip Log / Edit Speed Profile"),
                     editedSamples(*context.document.trips().column<TTripLogSampleTableColumn>().object(row)), parent) {
}

EditOutcome TTripLogSampleDialog::correct(RowIndex row) {
    return correctSamples(context().document, row, samplesOf(static_cast<const SpeedProfileTable&>(rows())));
}

TTripLogSpeedBandsDialog::TTripLogSpeedBandsDialog(const ViewContext& context, RowIndex row, QWidget* parent)
    : TripPartDialog(context, row, QStringLiteral("TTripLogSpeedBandsDialog"),
                     tr("Diagnostics / Edit Trip Log / Edit Speed Bands"),
                     editedBands(*context.document.trips().column<TTripLogSpeedBandsTableColumn>().object(row)),
                     parent) {}

EditOutcome TTripLogSpeedBandsDialog::correct(RowIndex row) {
    return correctSpeedBands(context().document, row, rows().column<EditedBandFromColumn>().values(),
                             rows().column<EditedBandToColumn>().values());
}

} // namespace quobrix
