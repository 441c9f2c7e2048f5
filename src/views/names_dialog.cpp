#include "views/names_dialog.h"

#include "base/ui/qt_text.h"
#include "model/name_questions.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "tables/ui/table_spreadsheet.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "views/list_buttons.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <vector>

namespace quobrix {
namespace {

constexpr int kKeyColumn = 0;
constexpr int kNameColumn = 1;

constexpr ListDialogSpec kVehicles{"TVehicleNamesDialog", MessageId::EmptyVehicleNames, kNameColumn};
constexpr ListDialogSpec kLoggers{"TQuobrixNamesDialog", MessageId::EmptyQuobrixNames, kNameColumn};
constexpr ListDialogSpec kDrivers{"DriverNamesDialog", MessageId::EmptyDriverNames, kNameColumn};

/// A field for the name that drivers get at first, which the settings keep in SECTION.
QLineEdit* defaultNameField(Settings& settings, std::string_view section, const char* name, const QString& tip) {
    auto* field = new QLineEdit(toQt(settings.getText(section, kDefaultName)));
    field->setObjectName(QLatin1String(name));
    field->setMaxLength(static_cast<int>(kLongestDriverName));
    field->setPlaceholderText(QObject::tr("(none)"));
    field->setToolTip(tip);
    field->setAccessibleDescription(tip);
    QObject::connect(field, &QLineEdit::textChanged, field, [&settings, section](const QString& text) {
        settings.setText(section, kDefaultName, text.trimmed().toStdString());
    });
    return field;
}

void addField(QFormLayout& form, const QString& label, QLineEdit* field) {
    form.addRow(fieldLabel(label, *field), field);
}

} // namespace

NamesDialog::NamesDialog(const ViewContext& context, NamesTable& names, const ListDialogSpec& spec, QWidget* parent)
    : ListDialog(context, spec, toQt(text(names.spec().title)), parent), names_(names) {
    list().setMayDelete([this](const std::vector<RowIndex>& rows) {
        return !this->context().prompter || mayDelete(names_, rows, *this->context().prompter);
    });
    list().setNewRow([this](RowIndex row) {
        std::vector<CellEdit> cells;
        if (const std::string name = newName(); !name.empty())
            cells.push_back({kNameColumn, row, name});
        return cells;
    });
    list().showTable(names);
    layOutColumns();
}

void NamesDialog::cellChanged() {
    SpreadsheetView& view = list().view();
    const QModelIndex cell = view.currentIndex();
    if (!cell.isValid() || cell.column() != kKeyColumn)
        return;
    const int markWidth = view.fontMetrics().height() + view.fontMetrics().averageCharWidth();
    const int width = view.sizeHintForIndex(cell).width() + markWidth;
    if (width > view.columnWidth(kKeyColumn))
        view.setColumnWidth(kKeyColumn, width);
}

std::string NamesDialog::newName() const {
    const std::vector<std::string> names = names_.defaultNames(1);
    return names.empty() ? std::string() : names.front();
}

void NamesDialog::refresh() { list().showTable(names_); }

void NamesDialog::nameKeys(std::span<const std::string> keys) {
    if (!finishEdit())
        return;
    const SpreadsheetModel& model = list().model();
    std::vector<int> places;
    for (const std::string& key : keys)
        if (const auto place = model.placeOf(names_.find(key)))
            places.push_back(*place);
    if (places.empty())
        return;
    std::ranges::sort(places);
    QItemSelection rows; // neighbours as one range: a selection of many ranges is slow
    for (std::size_t begin = 0, end = 0; begin < places.size(); begin = end) {
        while (end < places.size() && places[end] - places[begin] == static_cast<int>(end - begin))
            ++end;
        rows.select(model.index(places[begin], 0), model.index(places[end - 1], model.columnCount() - 1));
    }
    list().setCurrentCell(model.storedRow(places.front()), kNameColumn);
    list().view().selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
    list().view().edit(list().view().currentIndex());
}

TVehicleNamesDialog::TVehicleNamesDialog(const ViewContext& context, QWidget* parent)
    : NamesDialog(context, context.document.vehicles(), kVehicles, parent) {}

TQuobrixNamesDialog::TQuobrixNamesDialog(const ViewContext& context, QWidget* parent)
    : NamesDialog(context, context.document.loggers(), kLoggers, parent) {
    connect(&list().view(), &SpreadsheetView::entryRefused, this, &TQuobrixNamesDialog::tellRefusal);
}

void TQuobrixNamesDialog::tellRefusal(const EditOutcome& outcome) {
    if (telling_ || !context().prompter || outcome.message != MessageId::InvalidSerialNumber)
        return;
    Message format = makeMessage(MessageId::InvalidSerialNumber);
    // The message's own sample is of another form.
    format.text += "\n\n" + tr("For instance %1.").arg(QStringLiteral("K-0042-B")).toStdString();
    telling_ = true; // one attempt to leave may try more than once
    const auto tell = [this, format] {
        context().prompter->tell(format);
        telling_ = false;
    };
    // Not before whoever wants the entry to end has heard that it does not.
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
}

DriverNamesDialog::DriverNamesDialog(const ViewContext& context, QWidget* parent)
    : NamesDialog(context, context.document.drivers(), kDrivers, parent) {
    auto* group = new QGroupBox(tr("Names that drivers get at first"));
    auto* form = new QFormLayout(group);
    addField(*form, tr("&New driver:"),
             defaultNameField(context.settings, kNewDriverSection, "newDriverName",
                              tr("The name that a driver gets whom you add to this list")));
    addField(*form, tr("Un&identified driver:"),
             defaultNameField(context.settings, kUnidentifiedDriverSection, "unidentifiedDriverName",
                              tr("The name that a driver gets of whom a download brings only the "
                                 "identification number; without one, \"Unknown\" is shown")));
    addBelowList(group);
    // As they lie: after the buttons beside the list, before those below the fields.
    QWidget* before = findChild<QPushButton*>(QLatin1String(kLastListButton));
    for (QLineEdit* field : group->findChildren<QLineEdit*>()) {
        setTabOrder(before, field);
        before = field;
    }
}

std::string DriverNamesDialog::newName() const { return context().settings.getText(kNewDriverSection, kDefaultName); }

} // namespace quobrix
