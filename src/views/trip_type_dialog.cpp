#include "views/trip_type_dialog.h"

#include "base/path_text.h"
#include "base/ui/qt_text.h"
#include "base/utf8.h"
#include "messages/file_messages.h"
#include "messages/prompter.h"
#include "settings/settings.h"
#include "summary/driving_figures.h"
#include "tables/ui/table_spreadsheet.h"
#include "ui/fields.h"
#include "ui/status_line.h"
#include "ui/windows.h"
#include "units/unit_system.h"
#include "views/list_buttons.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStatusTipEvent>
#include <QVBoxLayout>

namespace quobrix {
namespace {

constexpr const char* kPlaceSection = "TripTypeDialog";
constexpr int kNameColumn = 0;
constexpr std::size_t kUnitColumn = 2;
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

} // namespace

TripTypeDialog::TripTypeDialog(const ViewContext& context, TripTypes types, QWidget* parent, TripTypesFolders folders)
    : QDialog(parent), context_(context), folders_(std::move(folders)), types_(std::move(types)),
      status_(new StatusLine) {
    setObjectName(QLatin1String(kPlaceSection));
    setWindowTitle(tr("Trip Type Entry"));
    table_.show(types_.types, context.zone);
    auto* explanation = new QLabel(tr("What trips are made for. A trip is given one of these types in the trip log, by "
                                      "the menu of the right mouse button. A rate is what is paid for a mile or a "
                                      "kilometer; a type whose rate changes has a row for each. Nothing is computed "
                                      "from rates yet."));
    explanation->setWordWrap(true);

    SpreadsheetContext sheet = context.spreadsheet();
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
    QHeaderView& header = *list_->view().horizontalHeader();
    header.setStretchLastSection(false);
    header.setSectionResizeMode(kNameColumn, QHeaderView::Stretch);
    connect(&list_->model(), &QAbstractItemModel::dataChanged, this, [this] { showStatus({}); });
    connect(&list_->view(), &SpreadsheetView::selectionAltered, this, [this] { showStatus({}); });

    auto* columns = new QHBoxLayout;
    columns->addWidget(list_, 1);
    columns->addWidget(listButtons(*list_, edits_));
    auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    addHelp(*box);
    for (QAbstractButton* button : box->buttons())
        static_cast<QPushButton*>(button)->setAutoDefault(false);
    connect(box, &QDialogButtonBox::accepted, this, &TripTypeDialog::accept);
    connect(box, &QDialogButtonBox::rejected, this, &TripTypeDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(explanation);
    layout->addLayout(columns, 1);
    if (!types_.unread.empty()) {
        auto* unread = new QLabel(unreadText(types_.unread, toQt(utf8(folders_.user / kTripTypesFile))));
        unread->setObjectName(QStringLiteral("unreadLines"));
        unread->setTextFormat(Qt::PlainText);
        unread->setWordWrap(true);
        unread->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        layout->addWidget(unread);
    }
    layout->addWidget(status_);
    layout->addWidget(box);

    list_->setFocus();
    list_->setCurrentCell(0, kNameColumn);
    if (!quobrix::restoreGeometry(*this, context_.settings, kPlaceSection))
        resize(fontMetrics().averageCharWidth() * 90, fontMetrics().lineSpacing() * 24);
}

TripTypeDialog::~TripTypeDialog() {
    rememberGeometry(*this, context_.settings, kPlaceSection);
    delete list_; // which shows the table
}

void TripTypeDialog::accept() {
    if (!list_->finishEdit())
        return;
    Result<std::vector<TripType>> edited = table_.types(context_.zone);
    if (!edited)
        return context_.prompter->tell(makeMessage(MessageId::ValuesRefused, edited.error().detail));
    const TripTypes all{*std::move(edited), types_.unread};
    if (const Result<void> saved = saveTripTypes(all, folders_); !saved)
        return context_.prompter->tell(
            fileMessage(saved.error(), FileAction::Save, utf8(folders_.user / kTripTypesFile)));
    QDialog::accept();
}

void TripTypeDialog::showStatus(const QString& tip) {
    status_->say(tip.isEmpty() ? list_->view().currentIndex().data(Qt::StatusTipRole).toString() : tip);
}

bool TripTypeDialog::event(QEvent* event) {
    if (event->type() != QEvent::StatusTip)
        return QDialog::event(event);
    showStatus(static_cast<QStatusTipEvent*>(event)->tip());
    return true;
}

void editTripTypes(const ViewContext& context, QWidget* parent) {
    Result<TripTypes> types = loadTripTypes();
    if (types)
        TripTypeDialog(context, *std::move(types), parent).exec();
    else
        context.prompter->tell(fileMessage(types.error(), FileAction::Open, kTripTypesFile));
}

} // namespace quobrix
