#include "views/filter_bar.h"

#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "model/record_totals.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <QAbstractItemView>
#include <QCollator>
#include <QComboBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

// The first and the last entry of the box of periods; those between are periods().
constexpr int kAnyTime = 0;
const int kRange = static_cast<int>(periods().size()) + 1;

constexpr int kTypingPause = 200;   // ms
constexpr int kMostCharacters = 36; // that the button shows of what the fields want

QToolButton* textButton(const char* name, const QString& text) {
    auto* button = new QToolButton;
    button->setObjectName(QLatin1String(name));
    button->setText(text);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

QComboBox* box(const char* name, const QString& any) {
    auto* box = new QComboBox;
    box->setObjectName(QLatin1String(name));
    box->addItem(any);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(6);
    box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return box;
}

/// The list that comes down is as wide as its entries, however narrow the box is.
void fitList(QComboBox& box) {
    box.view()->setMinimumWidth(box.view()->sizeHintForColumn(0) + box.fontMetrics().averageCharWidth() * 4);
}

} // namespace

FilterBar::FilterBar(const ViewContext& context, const LogSpec& spec, QWidget* parent)
    : EscapeBar(parent), context_(context), spec_(spec), words_(new QLineEdit),
      more_(textButton("filterMore", tr("&More"))), count_(new QLabel),
      showAll_(textButton("filterShowAll", tr("Show &All"))), typing_(new QTimer(this)) {
    setObjectName(QStringLiteral("FilterBar"));
    QLabel* label = fieldLabel(tr("Fi&lter:"), *words_);
    words_->setObjectName(QStringLiteral("filterWords"));
    words_->setPlaceholderText(tr("Words in any column"));
    words_->setClearButtonEnabled(true);
    words_->setMaximumWidth(words_->fontMetrics().averageCharWidth() * 40);
    more_->setCheckable(true);
    more_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    more_->setAccessibleName(tr("More to filter by"));
    more_->setToolTip(tr("Filters by time and by the names of vehicles and loggers."));
    if (spec.driver)
        more_->setToolTip(tr("Filters by time and by the names of vehicles, drivers and loggers."));
    count_->setObjectName(QStringLiteral("filterCount"));
    showAll_->setToolTip(tr("Takes the filter off (Esc in the filter)."));

    auto* line = new QHBoxLayout;
    line->addWidget(label);
    line->addWidget(words_, 1);
    line->addWidget(more_);
    line->addStretch();
    line->addWidget(count_);
    line->addWidget(showAll_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 4, 8, 4);
    layout->addLayout(line);

    typing_->setSingleShot(true);
    connect(typing_, &QTimer::timeout, this, [this] { apply(false); });
    connect(words_, &QLineEdit::textChanged, typing_, qOverload<>(&QTimer::start));
    connect(more_, &QToolButton::toggled, this, &FilterBar::showFields);
    connect(showAll_, &QToolButton::clicked, this, [this] {
        clear();
        emit changed();
        emit left();
    });
    setSlow(false);
    showFields(false);
}

/// Few look behind the button, and every list that opens would wait for its boxes.
void FilterBar::makeFields() {
    fields_ = new QWidget;
    fields_->setObjectName(QStringLiteral("FilterFields"));
    auto* grid = new QGridLayout(fields_);
    grid->setContentsMargins(0, 0, 0, 0);
    std::vector<QWidget*> fields;
    const auto add = [&](const QString& label, QWidget& field) {
        const int place = static_cast<int>(fields.size()), row = place / 3, column = place % 3 * 2;
        grid->addWidget(fieldLabel(label, field), row, column);
        grid->addWidget(&field, row, column + 1);
        field.setMaximumWidth(field.fontMetrics().averageCharWidth() * 36);
        fields.push_back(&field);
    };
    period_ = box("filterPeriod", tr("Any time"));
    for (const Period& period : periods())
        period_->addItem(toQt(text(period.text)));
    period_->addItem(tr("From … to …"));
    fitList(*period_);
    add(tr("Time:"), *period_);
    from_ = new QLineEdit;
    from_->setObjectName(QStringLiteral("filterFrom"));
    add(tr("From:"), *from_);
    to_ = new QLineEdit;
    to_->setObjectName(QStringLiteral("filterTo"));
    add(tr("To:"), *to_);
    names_.push_back({RecordName::Vehicle, &RecordCriteria::vehicle, box("filterVehicle", tr("Any vehicle"))});
    add(tr("Vehicle:"), *names_.back().box);
    if (spec_.driver) {
        names_.push_back({RecordName::Driver, &RecordCriteria::driver, box("filterDriver", tr("Any driver"))});
        add(tr("Driver:"), *names_.back().box);
    }
    names_.push_back({RecordName::Logger, &RecordCriteria::logger, box("filterLogger", tr("Any Quobrix"))});
    add(tr("Quobrix:"), *names_.back().box);
    for (int column = 1; column < 6; column += 2)
        grid->setColumnStretch(column, 100);
    grid->setColumnStretch(6, 1); // takes what is left, so that the fields stay together in a wide window
    reason_ = new QLabel;
    reason_->setObjectName(QStringLiteral("filterReason"));
    reason_->setWordWrap(true);
    reason_->hide();
    grid->addWidget(reason_, 2, 0, 1, 6);

    connect(period_, &QComboBox::activated, this, &FilterBar::choosePeriod);
    for (QLineEdit* field : {from_, to_}) {
        field->setToolTip(tr("A day, or a day and a time; empty: no limit."));
        connect(field, &QLineEdit::editingFinished, this, &FilterBar::enterRange);
    }
    for (const Names& each : names_)
        connect(each.box, &QComboBox::activated, this, [this] { apply(false); });
    fields_->hide();
    layout()->addWidget(fields_);
    QWidget* before = showAll_;
    for (QWidget* field : fields)
        setTabOrder(std::exchange(before, field), field);
}

QWidget* FilterBar::lastField() const { return showAll_; }

void FilterBar::setSlow(bool slow) { typing_->setInterval(slow ? kTypingPause : 0); }

void FilterBar::open() {
    words_->setFocus(Qt::ShortcutFocusReason);
    words_->selectAll();
}

void FilterBar::clear() {
    words_->clear();
    if (fields_) {
        from_->clear();
        to_->clear();
        period_->setCurrentIndex(kAnyTime);
        for (const Names& each : names_)
            each.box->setCurrentIndex(0);
        reason_->hide();
    }
    typing_->stop();
    criteria_ = {};
    showState();
}

void FilterBar::want(const Period* period, const TimeRange& days, const std::optional<std::string>& vehicle,
                     const std::optional<std::string>& driver) {
    clear();
    if (!fields_)
        makeFields();
    offerNames();
    if (period)
        period_->setCurrentIndex(static_cast<int>(period - periods().data()) + 1);
    else if (days.from && days.until)
        period_->setCurrentIndex(kRange);
    for (const Names& each : names_) {
        const std::optional<std::string> wanted = each.what == RecordName::Vehicle  ? vehicle
                                                  : each.what == RecordName::Driver ? driver
                                                                                    : std::nullopt;
        if (!wanted)
            continue;
        if (each.box->findData(toQt(*wanted)) < 0)
            each.box->addItem(toQt(*wanted), toQt(*wanted));
        each.box->setCurrentIndex(each.box->findData(toQt(*wanted)));
    }
    if (period_->currentIndex() == kRange) {
        from_->setText(dateOf(*days.from));
        to_->setText(dateOf(*days.until - 1));
    } else {
        choosePeriod();
    }
    apply(true);
}

void FilterBar::setCount(std::size_t shown, std::size_t all) {
    const QString number = toQt(context_.units.formatInteger(static_cast<std::int64_t>(shown)));
    const QString records = toQt(countText(spec_, all, context_.text()));
    count_->setText(criteria_.any() ? tr("%1 of %2").arg(number, records) : QString());
}

void FilterBar::namesChanged() {
    outdated_ = true;
    if (more_->isChecked())
        offerNames();
}

/// What was chosen stays so, even if no record has the name any more.
void FilterBar::offerNames() {
    const Table* log = context_.document.log(spec_);
    if (!std::exchange(outdated_, false) || !log)
        return;
    QCollator order;
    order.setNumericMode(true);
    order.setCaseSensitivity(Qt::CaseInsensitive);
    for (const Names& each : names_) {
        std::vector<OccurringName> names = namesIn(spec_, *log, each.what, context_.text());
        std::ranges::sort(names, [&](const OccurringName& a, const OccurringName& b) {
            return a.shown.empty() != b.shown.empty() ? a.shown.empty()
                                                      : order.compare(toQt(a.shown), toQt(b.shown)) < 0;
        });
        const QVariant chosen = each.box->currentData();
        const QString before = each.box->currentText();
        while (each.box->count() > 1)
            each.box->removeItem(1);
        for (const OccurringName& name : names)
            each.box->addItem(name.key.empty() ? tr("(None)") : toQt(name.shown), toQt(name.key));
        if (chosen.isValid() && each.box->findData(chosen) < 0)
            each.box->addItem(before, chosen);
        each.box->setCurrentIndex(chosen.isValid() ? each.box->findData(chosen) : 0);
        fitList(*each.box);
    }
    for (QLineEdit* field : {from_, to_})
        field->setPlaceholderText(toQt(context_.units.unitName(UnitTypeId::Date)));
}

void FilterBar::showFields(bool shown) {
    if (shown) {
        if (!fields_)
            makeFields();
        offerNames();
    }
    if (fields_)
        fields_->setVisible(shown);
    more_->setChecked(shown);
    showState();
}

QString FilterBar::dateOf(std::int64_t time) const {
    return toQt(dateText(context_.units, context_.zone.toLocal(static_cast<std::int32_t>(time))));
}

void FilterBar::choosePeriod() {
    const int chosen = period_->currentIndex();
    if (chosen == kRange)
        return from_->setFocus();
    from_->clear();
    to_->clear();
    if (chosen != kAnyTime) {
        const TimeRange range = rangeOf(periods()[static_cast<std::size_t>(chosen) - 1], currentTime(), context_.zone);
        from_->setText(dateOf(*range.from));
        to_->setText(dateOf(*range.until - 1));
    }
    apply(false);
}

void FilterBar::enterRange() {
    if (!from_->isModified() && !to_->isModified())
        return;
    from_->setModified(false);
    to_->setModified(false);
    period_->setCurrentIndex(from_->text().trimmed().isEmpty() && to_->text().trimmed().isEmpty() ? kAnyTime : kRange);
    apply(false);
}

std::optional<TimeRange> FilterBar::time(QString& reason) const {
    if (!fields_)
        return TimeRange{};
    const int chosen = period_->currentIndex();
    if (chosen != kAnyTime && chosen != kRange)
        return rangeOf(periods()[static_cast<std::size_t>(chosen) - 1], currentTime(), context_.zone);
    TimeRange range;
    for (const QLineEdit* field : {from_, to_}) {
        const QString typed = field->text().trimmed();
        if (typed.isEmpty())
            continue;
        const auto moment = parseMoment(typed.toStdString(), context_.text());
        if (!moment) {
            reason = tr("%1 is no day. Write it like this: %2").arg(typed, dateOf(currentTime()));
            return {};
        }
        (field == from_ ? range.from : range.until) = field == from_ ? moment->from : moment->until;
    }
    if (range.from && range.until && *range.from >= *range.until) {
        reason = tr("The first day lies behind the last one.");
        return {};
    }
    return range;
}

void FilterBar::apply(bool evenIfSame) {
    typing_->stop();
    QString reason;
    const std::optional<TimeRange> time = this->time(reason);
    if (fields_) {
        reason_->setText(reason);
        reason_->setVisible(!reason.isEmpty());
    }
    RecordCriteria wanted{.words = words_->text().trimmed().toStdString(), .time = time.value_or(criteria_.time)};
    for (const Names& each : names_)
        if (const QVariant key = each.box->currentData(); key.isValid())
            wanted.*each.wanted = key.toString().toStdString();
    if (wanted == criteria_ && !evenIfSame)
        return;
    criteria_ = std::move(wanted);
    showState();
    emit changed();
}

QString FilterBar::fieldsText() const {
    if (!fields_)
        return {};
    QStringList parts;
    const int period = period_->currentIndex();
    if (period == kRange)
        parts << tr("%1 – %2", "the first and the last day").arg(from_->text(), to_->text()).trimmed();
    else if (period != kAnyTime)
        parts << period_->currentText();
    for (const Names& each : names_)
        if (each.box->currentIndex() > 0)
            parts << each.box->currentText();
    return parts.join(QStringLiteral(", "));
}

void FilterBar::showState() {
    const bool open = more_->isChecked();
    const QString wanted = open ? QString() : fieldsText();
    const QFontMetrics metrics = more_->fontMetrics();
    QString shown = metrics.elidedText(wanted, Qt::ElideRight, metrics.averageCharWidth() * kMostCharacters);
    more_->setText(wanted.isEmpty() ? tr("&More") : shown.replace(QLatin1Char('&'), QLatin1String("&&")));
    more_->setArrowType(open ? Qt::UpArrow : Qt::DownArrow);
    more_->setAccessibleDescription(wanted);
    count_->setVisible(criteria_.any());
    showAll_->setVisible(criteria_.any());
    if (!criteria_.any())
        count_->clear();
}

void FilterBar::escaped() {
    const bool on = criteria_.any();
    clear();
    on ? emit changed() : emit left();
}

void FilterBar::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        apply(true);
        emit left();
        break;
    case Qt::Key_Down:
        if (typing_->isActive())
            apply(false);
        emit left();
        break;
    default:
        EscapeBar::keyPressEvent(event);
    }
}

} // namespace quobrix
