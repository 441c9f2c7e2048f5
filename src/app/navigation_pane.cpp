#include "app/navigation_pane.h"

#include <QAction>
#include <QApplication>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyledItemDelegate>

#include <algorithm>

namespace quobrix {
namespace {

constexpr int kCountRole = Qt::UserRole;
constexpr int kAround = 6; // above and below a name
constexpr int kBetween = 16;
constexpr int kIcon = 20;

/// The name of a page, and behind it, at the right edge, how much there is on it.
class PageDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        QStyledItemDelegate::paint(painter, option, index);
        const bool selected = option.state.testFlag(QStyle::State_Selected);
        const auto group = option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
        painter->setPen(option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::PlaceholderText));
        painter->setFont(option.font);
        const Qt::Alignment side =
            QStyle::visualAlignment(option.direction, Qt::AlignRight) | Qt::AlignVCenter | Qt::AlignAbsolute;
        painter->drawText(option.rect.adjusted(kAround, 0, -kAround, 0), static_cast<int>(side), countOf(index));
    }

    /// A picture in its own colours would drown in that of the selection.
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        if (!option->state.testFlag(QStyle::State_Selected))
            return;
        QPixmap picture = option->icon.pixmap(option->decorationSize, option->widget->devicePixelRatioF());
        QPainter painter(&picture);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(picture.rect(), option->palette.color(QPalette::HighlightedText));
        painter.end();
        option->icon = QIcon(picture);
        option->icon.addPixmap(picture, QIcon::Selected);
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QSize name = QStyledItemDelegate::sizeHint(option, index);
        return {name.width() + kBetween + option.fontMetrics.horizontalAdvance(countOf(index)) + kAround,
                std::max(kIcon, option.fontMetrics.height()) + 2 * kAround};
    }

private:
    static QString countOf(const QModelIndex& index) { return index.data(kCountRole).toString(); }
};

QString keysOf(const QAction& command) {
    return QStringLiteral(" (%1)").arg(command.shortcut().toString(QKeySequence::NativeText));
}

} // namespace

NavigationPane::NavigationPane(std::function<void()> enter, QWidget* parent) : QListWidget(parent) {
    setObjectName(QStringLiteral("navigationPane"));
    setAccessibleName(tr("Pages"));
    setItemDelegate(new PageDelegate(this));
    setFrameStyle(NoFrame);
    setIconSize({kIcon, kIcon});
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideRight);
    viewport()->setBackgroundRole(QPalette::Window);
    connect(this, &QListWidget::currentRowChanged, this, &NavigationPane::go);
    connect(this, &QListWidget::itemClicked, this, enter);
    connect(this, &QListWidget::itemActivated, this, enter);
}

void NavigationPane::add(int place, QAction& command, Count count) {
    const QSignalBlocker quiet(this); // the first item becomes the current one by itself
    auto* page = new QListWidgetItem(command.icon(), command.text().remove(QLatin1Char('&')));
    insertItem(place, page);
    entries_.insert(entries_.begin() + place, {&command, std::move(count)});
    setCurrentRow(-1);
}

void NavigationPane::refresh() {
    const QSignalBlocker quiet(this);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        QListWidgetItem& page = *item(static_cast<int>(i));
        const QString count = entries_[i].count ? entries_[i].count() : QString();
        page.setToolTip(entries_[i].command->toolTip() + keysOf(*entries_[i].command));
        page.setStatusTip(entries_[i].command->statusTip());
        page.setData(kCountRole, count);
        page.setData(Qt::AccessibleTextRole,
                     count.isEmpty() ? page.text() : tr("%1, %2", "a page and its count").arg(page.text(), count));
    }
    setMinimumWidth(sizeHint().width());
    setMaximumWidth(2 * sizeHint().width());
    viewport()->update();
}

QSize NavigationPane::sizeHint() const {
    return {sizeHintForColumn(0) + 2 * frameWidth(), QListWidget::sizeHint().height()};
}

void NavigationPane::follow(int pageId) {
    shown_ = pageId;
    const auto entry =
        std::ranges::find(entries_, pageId, [](const Entry& each) { return each.command->data().toInt(); });
    const int row = entry == entries_.end() ? -1 : static_cast<int>(entry - entries_.begin());
    const QSignalBlocker quiet(this);
    if (row != currentRow())
        setCurrentRow(row);
}

void NavigationPane::go() {
    const int row = currentRow();
    if (row < 0)
        return;
    QAction& command = *entries_[static_cast<std::size_t>(row)].command;
    const bool here = hasFocus();
    command.trigger();
    if (shown_ != command.data().toInt()) // an open entry is refused, and has the keyboard
        follow(shown_);
    else if (here)
        setFocus();
}

} // namespace quobrix
