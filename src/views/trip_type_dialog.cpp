#include "views/trip_type_dialog.h"

#include "base/path_text.h"
#include "base/ui/qt_text.h"
#include "base/utf8.h"
#include "messages/file_messages.h"
#include "messages/prompter.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "tables/ui/table_spreadsheet.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "ui/status_line.h"
#include "ui/windows.h"
#include "units/economy.h"
#include "units/unit_system.h"
#include "views/list_buttons.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QStatusTipEvent>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

constexpr const char* kPlaceSection = "TripTypeDialog";
constexpr int kNameColumn = 0;
constexpr std::size_t kUnitColumn = 2;
constexpr std::size_t kDaysColumn = 0; // of the rules, as kVehicleColumn
constexpr int kVehicleColumn = 3, kTypeColumn = 4;
constexpr std::size_t kMostUnreadShown = 3;

/// What stands below the list of lines that could not be read.
QString unreadText(const std::vector<TripTypes::Unread>& unread, const QString& file) {
    QStringList lines{
        QObject::tr("What these lines of %1 say could not be read. They are kept there as they are:").arg(file)};
    for (const TripTypes::Unread& line : unread) {
        if (lines.size() > static_cast<qsizetype>(kMostUnreadShown)) {
            lines << QObject::tr("and %n more", nullptr, static_cast<int>(unread.size() - kMostUnreadShown));
            break;
        }
        lines << QObject::tr("Line %1: %2").arg(line.line).arg(toQt(oneLine(line.text)).left(80));
    }
    return lines.join(QLatin1Char('\n'));
}

/// COLUMN of LIST takes the room that the others leave.
void stretch(TTableSpreadsheet& list, int column) {
    QHeaderView& header = *list.view().horizontalHeader();
    header.setStretchLastSection(false);
    header.setSectionResizeMode(column, QHeaderView::Stretch);
    header.setMinimumSectionSize(list.fontMetrics().horizontalAdvance(toQt(text(kEmptyCell))) +
                                 list.fontMetrics().height());
}

/// LIST with its buttons below EXPLANATION.
QWidget* listPage(const QString& explanation, TTableSpreadsheet& list, const TableEdits& edits) {
    auto* words = new QLabel(explanation);
    words->setWordWrap(true);
    auto* columns = new QHBoxLayout;
    columns->addWidget(&list, 1);
    columns->addWidget(listButtons(list, edits));
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(words);
    layout->addLayout(columns, 1);
    return page;
}

} // namespace

TripTypeDialog::TripTypeDialog(const ViewContext& context, TripTypes types, QWidget* parent, TripTypesFolders folders)
    : QDialog(parent), context_(context), folders_(std::move(folders)), types_(std::move(types)),
      pages_(new QTabWidget), status_(new StatusLine) {
    setObjectName(QLatin1String(kPlaceSection));
    setWindowTitle(tr("Trip Type Entry"));
    table_.show(types_.types, context.zone);
    rules_.show(loadTripRules(context.settings));
    pages_->setObjectName(QStringLiteral("typePages"));
    pages_->addTab(typesPage(), tr("T&ypes"));
    pages_->addTab(rulesPage(), tr("&Rules for New Trips"));
    offerTypes();
    for (TTableSpreadsheet* list : {list_, ruleList_}) {
        connect(&list->model(), &QAbstractItemModel::dataChanged, this, [this] { showStatus({}); });
        connect(&list->view(), &SpreadsheetView::selectionAltered, this, [this] { showStatus({}); });
    }
    connect(&list_->model(), &SpreadsheetModel::editHistoryChanged, this, &TripTypeDialog::offerTypes);
    connect(pages_, &QTabWidget::currentChanged, this, [this] { showStatus({}); });

    auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* report = box->addButton(tr("&Show Report"), QDialogButtonBox::ActionRole);
    report->setObjectName(QStringLiteral("showTypeReport"));
    report->setToolTip(tr("Takes the types and rules as OK does, and shows the trip type report."));
    connect(report, &QPushButton::clicked, this, [this] {
        reportWanted_ = true;
        accept();
        reportWanted_ = result() == QDialog::Accepted;
    });
    addHelp(*box);
    for (QAbstractButton* button : box->buttons())
        static_cast<QPushButton*>(button)->setAutoDefault(false);
    connect(box, &QDialogButtonBox::accepted, this, &TripTypeDialog::accept);
    connect(box, &QDialogButtonBox::rejected, this, &TripTypeDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(pages_, 1);
    layout->addWidget(status_);
    layout->addWidget(box);

    list_->setFocus();
    list_->setCurrentCell(0, kNameColumn);
    if (!quobrix::restoreGeometry(*this, context_.settings, kPlaceSection))
        resize(fontMetrics().averageCharWidth() * 100, fontMetrics().lineSpacing() * 26);
}

QWidget* TripTypeDialog::typesPage() {
    SpreadsheetContext sheet = context_.spreadsheet();
    sheet.edits = &edits_;
    list_ = new TTableSpreadsheet(sheet, {.name = std::string(kPlaceSection) + " List",
                                          .title = tr("Trip types"),
                                          .emptyText = tr("There is no trip type yet. Add makes one."),
                                          .use = SpreadsheetView::Use::Cells});
    list_->setNewRow([this](RowIndex row) {
        const auto unit = inMiles(context_.units) ? RateUnitColumn::Mile : RateUnitColumn::Kilometre;
        return std::vector<CellEdit>{{kUnitColumn, row, std::int64_t{unit}}};
    });
    list_->showTable(table_);
    stretch(*list_, kNameColumn);
    QWidget* page =
        listPage(tr("What trips are made for. A trip is given one of these types in the trip log, by the menu "
                    "of the right mouse button, or by a rule. A rate is what is paid for a mile or a "
                    "kilometer; a type whose rate changes has a row for each."),
                 *list_, edits_);
    if (!types_.unread.empty()) {
        auto* unread = new QLabel(unreadText(types_.unread, toQt(utf8(folders_.user / kTripTypesFile))));
        unread->setObjectName(QStringLiteral("unreadLines"));
        unread->setTextFormat(Qt::PlainText);
        unread->setWordWrap(true);
        unread->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        page->layout()->addWidget(unread);
    }
    return page;
}

QWidget* TripTypeDialog::rulesPage() {
    SpreadsheetContext sheet = context_.spreadsheet();
    sheet.edits = &ruleEdits_;
    ruleList_ = new TTableSpreadsheet(
        sheet, {.name = std::string(kPlaceSection) + " Rules",
                .title = tr("Rules for new trips"),
                .emptyText = tr("There is no rule: new trips have no type until they are given one. Add makes a rule."),
                .use = SpreadsheetView::Use::Cells});
    ruleList_->setNewRow([](RowIndex row) { return std::vector<CellEdit>{{kDaysColumn, row, std::int64_t{0}}}; });
    ruleList_->showTable(rules_);
    stretch(*ruleList_, kVehicleColumn);
    stretch(*ruleList_, kTypeColumn);
    QWidget* page =
        listPage(tr("Which type new trips get when they are downloaded or imported: that of the first rule, from the "
                    "top, whose days, hours and vehicle are those of the trip's start. Trips that were there before "
                    "stay as they are."),
                 *ruleList_, ruleEdits_);
    for (QPushButton* button : page->findChildren<QPushButton*>()) // "addRule", beside "addName" for the types
        button->setObjectName(button->objectName().replace(QLatin1String("Name"), QLatin1String("Rule")));
    auto& buttons =
        *static_cast<QVBoxLayout*>(page->findChild<QPushButton*>(QStringLiteral("addRule"))->parentWidget()->layout());
    buttons.insertWidget(2, moveButton(tr("Move U&p"), "moveRuleUp", -1));
    buttons.insertWidget(3, moveButton(tr("Move Do&wn"), "moveRuleDown", 1));
    return page;
}

/// Moves the current rule among the others by one place, BY 1 or -1.
QPushButton* TripTypeDialog::moveButton(const QString& text, const char* name, int by) {
    auto* button = new QPushButton(text);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    button->setFocusPolicy(Qt::TabFocus);
    const QKeySequence keys(by < 0 ? Qt::ALT | Qt::Key_Up : Qt::ALT | Qt::Key_Down);
    button->setToolTip(
        tr("Moves the rule: the first one that fits a trip counts (%1).").arg(keys.toString(QKeySequence::NativeText)));
    connect(button, &QPushButton::clicked, this, [this, by] { moveRule(by); });
    auto* key = new QShortcut(keys, ruleList_);
    key->setContext(Qt::WidgetWithChildrenShortcut);
    connect(key, &QShortcut::activated, this, [this, by] { moveRule(by); });
    const auto follow = [this, button, by] {
        const std::optional<RowIndex> row = ruleList_ ? ruleList_->currentRow() : std::nullopt;
        button->setEnabled(row && (by < 0 ? *row > 0 : *row + 1 < rules_.rowCount()));
    };
    follow();
    connect(ruleList_, &TSpreadsheet::currentRowChanged, button, follow);
    connect(&ruleList_->model(), &SpreadsheetModel::editHistoryChanged, button, follow);
    return button;
}

void TripTypeDialog::moveRule(int by) {
    if (!ruleList_->finishEdit() || !ruleList_->currentRow())
        return;
    const RowIndex row = *ruleList_->currentRow();
    if (by < 0 ? row == 0 : row + 1 >= rules_.rowCount())
        return;
    const RowIndex other = by < 0 ? row - 1 : row + 1;
    std::vector<CellEdit> cells;
    for (std::size_t column = 0; column < rules_.columnCount(); ++column) {
        cells.push_back({column, row, rules_.column(column).value(other)});
        cells.push_back({column, other, rules_.column(column).value(row)});
    }
    const int column = ruleList_->view().currentIndex().column();
    if (ruleEdits_.set(kNoObject, std::move(cells), context_.text(), text(TextId::MovingRule)).ok())
        ruleList_->setCurrentCell(other, column);
}

/// The rules choose among the types of the other page, and the vehicles of the document.
void TripTypeDialog::offerTypes() {
    std::vector<TripType> types;
    for (const std::string& name : table_.column<TripTypeNameColumn>().values())
        if (!name.empty())
            types.push_back({name});
    const TVehicleNamesTable& names = context_.document.vehicles();
    std::vector<RuleChoiceColumn::Choice> vehicles;
    for (RowIndex row = 0; row < names.rowCount(); ++row)
        if (const std::string key = names.key(row); !key.empty())
            vehicles.push_back({key, names.choiceName(row)});
    rules_.offer(namesOf(types), std::move(vehicles));
    ruleList_->model().valuesChanged(); // marks and names
}

TTableSpreadsheet& TripTypeDialog::currentList() const { return pages_->currentIndex() == 0 ? *list_ : *ruleList_; }

TripTypeDialog::~TripTypeDialog() {
    rememberGeometry(*this, context_.settings, kPlaceSection);
    for (TTableSpreadsheet** list : {&list_, &ruleList_})
        delete std::exchange(*list, nullptr); // which shows a table
}

void TripTypeDialog::accept() {
    if (!list_->finishEdit() || !ruleList_->finishEdit())
        return;
    Result<std::vector<TripType>> edited = table_.types(context_.zone);
    if (!edited)
        return refuse(*list_, edited.error().detail);
    const Result<std::vector<TripRule>> rules = rules_.rules();
    if (!rules)
        return refuse(*ruleList_, rules.error().detail);
    TripTypes all{*std::move(edited), types_.unread};
    if (const Result<void> saved = saveTripTypes(all, folders_); !saved)
        return context_.prompter->tell(
            fileMessage(saved.error(), FileAction::Save, utf8(folders_.user / kTripTypesFile)));
    types_ = std::move(all);
    saveTripRules(context_.settings, *rules);
    QDialog::accept();
}

/// Shows what is wrong.
void TripTypeDialog::refuse(QWidget& list, const ShownText& why) {
    pages_->setCurrentIndex(&list == list_ ? 0 : 1);
    context_.prompter->tell(makeMessage(MessageId::ValuesRefused, why));
}

void TripTypeDialog::showStatus(const QString& tip) {
    if (!list_ || !ruleList_) // it is ending
        return;
    status_->say(tip.isEmpty() ? currentList().view().currentIndex().data(Qt::StatusTipRole).toString() : tip);
}

bool TripTypeDialog::event(QEvent* event) {
    if (event->type() != QEvent::StatusTip)
        return QDialog::event(event);
    showStatus(static_cast<QStatusTipEvent*>(event)->tip());
    return true;
}

EditedTripTypes editTripTypes(const ViewContext& context, QWidget* parent) {
    Result<TripTypes> types = loadTripTypes();
    if (!types) {
        context.prompter->tell(textFileMessage(types.error(), kTripTypesFile));
        return {};
    }
    TripTypeDialog dialog(context, *std::move(types), parent);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return {dialog.types(), dialog.reportWanted()};
}

} // namespace quobrix
