#include "views/names_dialog.h"

#include "base/ui/qt_text.h"
#include "model/name_questions.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "tables/ui/table_spreadsheet.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "ui/status_line.h"
#include "ui/windows.h"
#include "views/list_buttons.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStatusTipEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <vector>

namespace quobrix {
namespace {

constexpr NamesDialogSpec kVehicles{"TVehicleNamesDialog", MessageId::EmptyVehicleNames};
constexpr NamesDialogSpec kLoggers{"TQuobrixNamesDialog", MessageId::EmptyQuobrixNames};
constexpr NamesDialogSpec kDrivers{"DriverNamesDialog", MessageId::EmptyDriverNames};

constexpr int kKeyColumn = 0;
constexpr int kNameColumn = 1;

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

NamesDialog::NamesDialog(const ViewContext& context, NamesTable& names, const NamesDialogSpec& spec, QWidget* parent)
    : QDialog(parent), context_(context), names_(names), spec_(spec), left_(new QVBoxLayout), status_(new StatusLine) {
    setObjectName(QLatin1String(spec.name));
    setWindowTitle(toQt(text(names.spec().title)));
    list_ = new TTableSpreadsheet(context.spreadsheet(), {.name = std::string(spec.name) + " List",
                                                          .title = windowTitle(),
                                                          .emptyText = toQt(text(messageSpec(spec.emptyText).text)),
                                                          .use = SpreadsheetView::Use::Cells});
    list_->setMayDelete([this](const std::vector<RowIndex>& rows) {
        return !context_.prompter || mayDelete(names_, rows, *context_.prompter);
    });
    list_->setNewRow([this](RowIndex row) {
        std::vector<CellEdit> cells;
        if (const std::string name = newName(); !name.empty())
            cells.push_back({kNameColumn, row, name});
        return cells;
    });
    list_->showTable(names);
    list_->setMinimumHeight(fontMetrics().lineSpacing() * 8); // a row, and what is said below it of a refused entry
    QHeaderView& header = *list_->view().horizontalHeader();
    header.setStretchLastSection(false);
    // An entry without a key, and the mark that it is missing.
    header.setMinimumSectionSize(fontMetrics().horizontalAdvance(toQt(text(kEmptyCell))) + 2 * fontMetrics().height());
    header.setSectionResizeMode(kNameColumn, QHeaderView::Stretch);
    connect(&list_->model(), &QAbstractItemModel::dataChanged, this, [this] {
        fitKey();
        showStatus({});
    });
    connect(&list_->view(), &SpreadsheetView::selectionAltered, this, [this] { showStatus({}); });

    left_->addWidget(list_, 1);
    auto* columns = new QHBoxLayout;
    columns->addLayout(left_, 1);
    columns->addWidget(listButtons(*list_, context.document.edits()));
    auto* box = new QDialogButtonBox(QDialogButtonBox::Close | QDialogButtonBox::Help);
    for (QAbstractButton* button : box->buttons())
        static_cast<QPushButton*>(button)->setAutoDefault(false);
    QPushButton& help = *box->button(QDialogButtonBox::Help);
    const QAction& explain = list_->commands().action(SpreadsheetCommand::Help);
    help.setEnabled(explain.isEnabled());
    help.setToolTip(explain.statusTip());
    connect(&help, &QPushButton::clicked, &explain, &QAction::trigger);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addWidget(status_);
    layout->addWidget(box);

    list_->setFocus();
    if (!quobrix::restoreGeometry(*this, context_.settings, spec.name))
        resize(fontMetrics().averageCharWidth() * 120, fontMetrics().lineSpacing() * 26);
}

NamesDialog::~NamesDialog() {
    rememberGeometry(*this, context_.settings, spec_.name);
    delete list_; // which asks this
}

void NamesDialog::addBelowList(QWidget* widget) { left_->addWidget(widget); }

void NamesDialog::fitKey() {
    SpreadsheetView& view = list_->view();
    const QModelIndex cell = view.currentIndex();
    if (!cell.isValid() || cell.column() != kKeyColumn)
        return;
    const int markWidth = view.fontMetrics().height() + view.fontMetrics().averageCharWidth();
    const int width = view.sizeHintForIndex(cell).width() + markWidth;
    if (width > view.columnWidth(kKeyColumn))
        view.setColumnWidth(kKeyColumn, width);
}

void NamesDialog::showStatus(const QString& tip) {
    status_->say(tip.isEmpty() ? list_->view().currentIndex().data(Qt::StatusTipRole).toString() : tip);
}

bool NamesDialog::event(QEvent* event) {
    if (event->type() != QEvent::StatusTip)
        return QDialog::event(event);
    showStatus(static_cast<QStatusTipEvent*>(event)->tip());
    return true;
}

std::string NamesDialog::newName() const {
    const std::vector<std::string> names = names_.defaultNames(1);
    return names.empty() ? std::string() : names.front();
}

bool NamesDialog::finishEdit() {
    if (list_->finishEdit())
        return true;
    bringToFront(*this);
    return false;
}

void NamesDialog::refresh() { list_->showTable(names_); }

void NamesDialog::nameKeys(std::span<const std::string> keys) {
    if (!finishEdit())
        return;
    const SpreadsheetModel& model = list_->model();
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
    list_->setCurrentCell(model.storedRow(places.front()), kNameColumn);
    list_->view().selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
    list_->view().edit(list_->view().currentIndex());
}

void NamesDialog::showCell(std::string_view columnKey, RowIndex row) {
    if (!finishEdit())
        return;
    list_->showCell(columnKey, row);
    list_->setFocus();
}

void NamesDialog::done(int result) {
    if (finishEdit())
        QDialog::done(result);
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
