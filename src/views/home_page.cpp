#include "views/home_page.h"

#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "model/record_totals.h"
#include "texts/text.h"
#include "ui/card.h"
#include "ui/fields.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"
#include "views/driving_panel.h"

#include <QAction>
#include <QCommandLinkButton>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleOption>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

constexpr int kMargin = 24;
constexpr int kContentWidth = 980;
constexpr RowIndex kMostVehicles = 4;
constexpr int kRecentWidth = 640;   // of a file's name and folder
constexpr int kMostRecentFiles = 4; // the File menu has them all

QIcon icon(const char* name) { return QIcon(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(name))); }

/// A line of text that may be longer than there is room for: the middle is left out, and the tooltip has it all.
class NameLabel : public QLabel {
public:
    using QLabel::QLabel;
    QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent*) override {
        const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, width());
        setToolTip(shown == text() ? QString() : text());
        QPainter painter(this);
        painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
        if (hasFocus()) {
            QStyleOptionFocusRect frame;
            frame.initFrom(this);
            style()->drawPrimitive(QStyle::PE_FrameFocusRect, &frame, &painter, this);
        }
    }
};

Card* card(const QString& title) {
    auto* result = new Card;
    result->content().addWidget(new HeadingLabel(title, headingFont(result->font(), 1.15)));
    return result;
}

/// A large button that does what ACTION does, and is enabled when that is.
QCommandLinkButton* button(QAction* action, const QString& text, const QString& description, const QIcon& picture) {
    auto* result = new QCommandLinkButton(text, description);
    result->setObjectName(QStringLiteral("home") + action->objectName());
    result->setIcon(picture);
    result->setIconSize(QSize(32, 32));
    // Queued: the command may replace the document, and this page and button with it.
    followAction(*result, *action, toolTipOf, Qt::QueuedConnection);
    return result;
}

} // namespace

HomePage::HomePage(const ViewContext& context, const HomeActions& actions, QWidget* parent)
    : Page(parent), context_(context), actions_(actions) {
    setObjectName(QStringLiteral("HomePage"));
    setAccessibleName(tr("Home"));

    Card* startCard = card(tr("Start"));
    QVBoxLayout* start = &startCard->content();
    auto* first =
        button(actions.download, tr("Download"), tr("Copy the trips of your Quobrix into this file"), icon("download"));
    start->addWidget(first);
    start->addWidget(button(actions.tripLog, tr("Trip log"), tr("Look at the trips in this file"), icon("trips")));
    start->addWidget(button(actions.open, tr("Open a file"), tr("Go on with a file you have saved"), icon("open")));
    start->addWidget(button(actions.create, tr("New file"), tr("Begin with an empty file"), icon("document")));
    start->addStretch();
    first_ = first;
    setFocusProxy(first);

    Card* figuresCard = card(tr("This file"));
    QVBoxLayout* figures = &figuresCard->content();
    documentName_ = new NameLabel;
    documentName_->setObjectName(QStringLiteral("homeDocument"));
    documentName_->setTextFormat(Qt::PlainText);
    documentName_->setFocusPolicy(Qt::TabFocus); // as the figures below it have it
    documentName_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    figures->addWidget(documentName_);
    hint_ = new QLabel(tr("There are no trips in this file yet. Connect your Quobrix and choose Download."));
    hint_->setWordWrap(true);
    figures->addWidget(hint_);
    trips_ = addFigure(*figures, "homeTrips", tr("Trips"));
    distance_ = addFigure(*figures, "homeDistance", tr("Distance"));
    lastTrip_ = addFigure(*figures, "homeLastTrip", tr("Last trip"));
    vehicles_ = addFigure(*figures, "homeVehicles", tr("Vehicles"));
    figures->addStretch();

    Card* recent = card(tr("Recent files"));
    recentCard_ = recent;
    recentList_ = &recent->content();

    auto* title = new QHBoxLayout;
    auto* picture = new QLabel;
    picture->setPixmap(icon("quobrix").pixmap(QSize(40, 40), devicePixelRatioF()));
    title->setSpacing(14);
    title->addWidget(picture);
    title->addWidget(new HeadingLabel(QStringLiteral("Quobrix"), headingFont(font(), 2.0)), 1);

    auto* content = new QWidget;
    content->setMaximumWidth(kContentWidth);
    auto* grid = new QGridLayout(content);
    grid->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    grid->setSpacing(16);
    title_ = new QWidget;
    title_->setLayout(title);
    title->setContentsMargins(0, 0, 0, 0);
    starts_ = {title_, startCard, figuresCard};
    grid->addWidget(title_, 0, 0, 1, 2);
    grid->addWidget(startCard, 1, 0);
    grid->addWidget(figuresCard, 1, 1);
    if (context.counter) {
        driving_ = new DrivingPanel(context,
                                    {.showTrips = actions.showTrips, .showDetail = [this](const DrivingDetail& detail) {
                                         // Not before the click is over: what was clicked may go.
                                         QMetaObject::invokeMethod(
                                             this, [this, detail] { showDetail(detail); }, Qt::QueuedConnection);
                                     }});
        grid->addWidget(driving_, 2, 0, 1, 2);
    }
    grid->addWidget(recentCard_, 3, 0, 1, 2);
    grid->setRowStretch(4, 1);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);

    auto* centred = new QWidget;
    auto* row = new QHBoxLayout(centred);
    row->setContentsMargins(0, 0, 0, 0);
    row->addStretch(1);
    row->addWidget(content, 100);
    row->addStretch(1);
    scroll_ = new QScrollArea;
    auto* scroll = scroll_;
    scroll->setFrameStyle(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(centred);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll);
}

std::vector<PathPart> HomePage::path() const {
    if (!driving_ || !driving_->detail().any())
        return {};
    return {{tr("Home"), PathPart::Leads::ToPlace, {}}, {driving_->detailTitle(), PathPart::Leads::Nowhere, {}}};
}

PagePlace HomePage::place() const { return {.subject = driving_ ? driving_->detail().subject() : std::string()}; }

void HomePage::goTo(const PagePlace& place) {
    if (!driving_ || place.subject == driving_->detail().subject())
        return;
    driving_->setDetail(DrivingDetail::of(place.subject));
    const bool detail = driving_->detail().any();
    for (QWidget* part : starts_)
        part->setVisible(!detail);
    showRecentFiles();
    setFocusProxy(detail ? driving_->firstField() : first_);
    scroll_->verticalScrollBar()->setValue(0);
}

void HomePage::showDetail(const DrivingDetail& detail) {
    goTo({.subject = detail.subject()});
    setFocus();
    emit placeChanged();
}

std::optional<ExportContent> HomePage::exported() { return driving_ ? driving_->exported() : std::nullopt; }

bool HomePage::canExport() const { return driving_ && driving_->counts(); }

QLabel* HomePage::addFigure(QVBoxLayout& layout, const char* objectName, const QString& caption) {
    auto* name = new QLabel(caption);
    name->setForegroundRole(QPalette::PlaceholderText);
    auto* value = new QLabel;
    value->setFont(headingFont(value->font(), 1.25));
    value->setObjectName(QLatin1String(objectName));
    value->setTextFormat(Qt::PlainText);
    value->setWordWrap(true);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    value->setFocusPolicy(Qt::StrongFocus);
    keepBesideName(*value);
    layout.addSpacing(6);
    layout.addWidget(name);
    layout.addWidget(value);
    return value;
}

void HomePage::refresh() {
    const TQuobrixDocument& document = context_.document;
    const TTripLogTable& trips = document.trips();
    const RowIndex count = trips.rowCount();
    documentName_->setText(toQt(document.title()));

    const TableRows all{&trips, allRows(trips)};
    std::int32_t last = 0;
    const auto& starts = trips.column<TTripLogStartTimeColumn>();
    for (const RowIndex row : all.rows)
        if (starts.has(row))
            last = std::max(last, starts.at(row));

    const TVehicleNamesTable& vehicles = document.vehicles();
    std::string names, buffer;
    for (RowIndex row = 0; row < std::min(vehicles.rowCount(), kMostVehicles); ++row)
        names += (row == 0 ? "" : ", ") + std::string(vehicles.displayName(vehicles.key(row), buffer));
    if (vehicles.rowCount() > kMostVehicles)
        names = text(TextId::AndMore, names,
                     context_.units.formatInteger(static_cast<std::int64_t>(vehicles.rowCount() - kMostVehicles)));

    const auto set = [](QLabel* label, const QString& caption, std::string_view text) {
        label->setText(text.empty() ? QStringLiteral("–") : toQt(text));
        label->setAccessibleName(tr("%1: %2").arg(caption, label->text()));
    };
    set(trips_, tr("Trips"), context_.units.formatInteger(static_cast<std::int64_t>(count)));
    set(distance_, tr("Distance"), context_.units.formatValueWithUnits(UnitTypeId::Distance, totalDistance({&all, 1})));
    set(lastTrip_, tr("Last trip"),
        last == 0 ? std::string() : dateTimeText(context_.units, context_.zone.toLocal(last)));
    set(vehicles_, tr("Vehicles"), names);
    hint_->setVisible(count == 0);
    if (driving_)
        driving_->refresh();
    showRecentFiles();
}

std::optional<Report> HomePage::printable(const std::optional<RecordRange>&) const {
    if (std::optional<Report> driving = driving_ ? driving_->report() : std::nullopt)
        return driving;
    Facts facts;
    for (const auto& [name, value] :
         std::initializer_list<std::pair<QString, const QLabel*>>{{tr("Trips"), trips_},
                                                                  {tr("Distance"), distance_},
                                                                  {tr("Last trip"), lastTrip_},
                                                                  {tr("Vehicles"), vehicles_}})
        facts.facts.push_back({name.toStdString(), value->text().toStdString()});
    Report report{documentName_->text().toStdString(), {}};
    report.blocks.emplace_back(std::move(facts));
    return report;
}

void HomePage::showRecentFiles() {
    while (recentList_->count() > 1) { // all but the heading
        QLayoutItem* item = recentList_->takeAt(1);
        item->widget()->hide();
        item->widget()->deleteLater(); // it may be the one whose click brought us here
        delete item;
    }
    int shown = 0;
    for (QAction* action : actions_.recent) {
        if (!action->isVisible() || ++shown > kMostRecentFiles)
            continue;
        const std::filesystem::path path = toPath(action->toolTip());
        const QFontMetrics metrics(fontMetrics());
        const auto fitting = [&](const QString& text, int most) {
            return metrics.elidedText(text, Qt::ElideMiddle, most); // the tooltip has it all
        };
        QString folder = fitting(toQtPath(path.parent_path()), kRecentWidth);
        if (action->property(kMissingProperty).toBool())
            folder = tr("%1 (missing)").arg(folder);
        // A command link's text is bold and larger.
        auto* link = button(action, fitting(toQtPath(path.filename()), kRecentWidth * 2 / 3), folder, icon("document"));
        link->setAccessibleName(toQtPath(path.filename()));
        recentList_->addWidget(link);
    }
    recentCard_->setVisible(shown > 0 && !(driving_ && driving_->detail().any()));
}

} // namespace quobrix
