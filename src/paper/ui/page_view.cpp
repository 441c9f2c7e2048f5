#include "paper/ui/page_view.h"

#include "base/ui/qt_text.h"
#include "paper/ui/paper_painter.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace quobrix {
namespace {

constexpr int kGap = 16; // around pages
constexpr double kPixelsPerPoint = 96.0 / 72;
constexpr double kScales[] = {0.1, 0.25, 0.5, 0.75, 1, 1.25, 1.5, 2, 3, 4};
constexpr std::size_t kMostSpoken = 4000; // characters of a page

} // namespace

PageView::PageView(QWidget* parent) : QAbstractScrollArea(parent) {
    setObjectName(QStringLiteral("PageView"));
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setBackgroundRole(QPalette::Mid);
    viewport()->setAutoFillBackground(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(tr("Laying out pages..."));
}

void PageView::setPages(PageSource pages) {
    pages_ = std::move(pages);
    pictures_.clear();
    current_ = std::min(current_, pages_.count - 1);
    arrange();
    name();
    emit currentChanged();
}

int PageView::rows() const {
    return static_cast<int>((pages_.count + static_cast<std::size_t>(columns_) - 1) /
                            static_cast<std::size_t>(columns_));
}

QSize PageView::pageSize() const {
    const QSizeF size = QSizeF(pages_.paper.width, pages_.paper.height) * kPixelsPerPoint * scale_;
    return QSize(static_cast<int>(std::lround(size.width())), static_cast<int>(std::lround(size.height())))
        .expandedTo({1, 1});
}

/// In the viewport, as it is scrolled.
QRect PageView::placeOf(std::size_t page) const {
    const QSize size = pageSize();
    const int row = static_cast<int>(page) / columns_, column = static_cast<int>(page) % columns_;
    const int width = columns_ * (size.width() + kGap) + kGap;
    const int left = std::max(0, (viewport()->width() - width) / 2) - horizontalScrollBar()->value();
    const int height = rows() * (size.height() + kGap) + kGap;
    const int top = std::max(0, (viewport()->height() - height) / 2) - verticalScrollBar()->value();
    return {QPoint(left + kGap + column * (size.width() + kGap), top + kGap + row * (size.height() + kGap)), size};
}

double PageView::fitting() const {
    const double width = (viewport()->width() - (columns_ + 1.0) * kGap) / columns_;
    const double height = viewport()->height() - 2.0 * kGap;
    const double byWidth = width / (pages_.paper.width * kPixelsPerPoint);
    const double byHeight = height / (pages_.paper.height * kPixelsPerPoint);
    return std::clamp(fit_ == Fit::Width ? byWidth : std::min(byWidth, byHeight), kScales[0], *std::rbegin(kScales));
}

void PageView::arrange() {
    if (pages_.count == 0)
        return;
    const QScopedValueRollback going(going_, true);
    // What stands in the middle stays there.
    const double middle = (verticalScrollBar()->value() + viewport()->height() / 2.0) /
                          std::max(1.0, static_cast<double>(verticalScrollBar()->maximum() + viewport()->height()));
    if (fit_ != Fit::Scale)
        if (const double scale = fitting(); scale != scale_) {
            scale_ = scale;
            emit scaleChanged();
        }
    const QSize size = pageSize();
    const auto set = [](QScrollBar& bar, int length, int room, int step) {
        bar.setRange(0, std::max(0, length - room));
        bar.setPageStep(room);
        bar.setSingleStep(step);
    };
    const int width = columns_ * (size.width() + kGap) + kGap, height = rows() * (size.height() + kGap) + kGap;
    set(*horizontalScrollBar(), width, viewport()->width(), 40);
    set(*verticalScrollBar(), height, viewport()->height(), 40);
    if (fit_ == Fit::Page)
        goTo(current_);
    else
        verticalScrollBar()->setValue(static_cast<int>(std::lround(middle * height - viewport()->height() / 2.0)));
    viewport()->update();
}

void PageView::goTo(std::size_t page) {
    if (pages_.count == 0)
        return;
    const std::size_t target = std::min(page, pages_.count - 1);
    {
        const QScopedValueRollback going(going_, true);
        const QRect place = placeOf(target);
        const int room = std::max(kGap, (viewport()->height() - place.height()) / 2);
        verticalScrollBar()->setValue(verticalScrollBar()->value() + place.top() - room);
        if (place.left() < 0 || place.right() > viewport()->width())
            horizontalScrollBar()->setValue(horizontalScrollBar()->value() + place.left() - kGap);
    }
    if (std::exchange(current_, target) == target)
        return;
    name();
    emit currentChanged();
}

void PageView::step(int pages) {
    const auto target = static_cast<std::ptrdiff_t>(current_) + pages * columns_;
    goTo(static_cast<std::size_t>(std::max<std::ptrdiff_t>(target, 0))); // and not beyond the last one
}

void PageView::setFit(Fit fit) {
    fit_ = fit;
    arrange();
    emit scaleChanged();
}

void PageView::setScale(double scale) {
    fit_ = Fit::Scale;
    scale_ = std::clamp(scale, kScales[0], *std::rbegin(kScales));
    arrange();
    emit scaleChanged();
}

void PageView::stepScale(int direction) {
    constexpr double kSame = 1.001;
    if (direction > 0) {
        const auto* larger = std::ranges::find_if(kScales, [&](double scale) { return scale > scale_ * kSame; });
        setScale(larger == std::end(kScales) ? scale_ : *larger);
    } else {
        const auto smaller = std::find_if(std::rbegin(kScales), std::rend(kScales),
                                          [&](double scale) { return scale * kSame < scale_; });
        setScale(smaller == std::rend(kScales) ? scale_ : *smaller);
    }
}

void PageView::setColumns(int columns) {
    columns_ = columns;
    arrange();
    goTo(current_);
}

const QPixmap& PageView::picture(std::size_t page) {
    const double ratio = devicePixelRatioF();
    const QSize size = (QSizeF(pageSize()) * ratio).toSize();
    if (QPixmap* known = pictures_.object(page); known && known->size() == size)
        return *known;
    auto* made = new QPixmap(size);
    made->fill(Qt::white);
    {
        QPainter painter(made);
        painter.scale(size.width() / pages_.paper.width, size.height() / pages_.paper.height);
        paintPage(painter, pages_.page(page));
    }
    made->setDevicePixelRatio(ratio);
    pictures_.insert(page, made);
    return *made;
}

void PageView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.fillRect(event->rect(), palette().color(QPalette::Mid));
    if (pages_.count == 0) {
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(viewport()->rect(), Qt::AlignCenter, tr("Laying out pages..."));
        return;
    }
    const int rowHeight = pageSize().height() + kGap;
    const int first = std::clamp((event->rect().top() - placeOf(0).top()) / rowHeight, 0, rows() - 1);
    for (auto page = static_cast<std::size_t>(first * columns_); page < pages_.count; ++page) {
        const QRect place = placeOf(page);
        if (place.top() > event->rect().bottom())
            break;
        if (!place.intersects(event->rect()))
            continue;
        painter.fillRect(place.adjusted(3, 3, 3, 3), palette().color(QPalette::Dark));
        painter.drawPixmap(place.topLeft(), picture(page));
        if (page == current_ && hasFocus()) {
            painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
            painter.drawRect(place.adjusted(-2, -2, 2, 2));
        }
    }
    pictures_.setMaxCost(std::max(4, 2 * (viewport()->height() / rowHeight + 2) * columns_));
}

void PageView::resizeEvent(QResizeEvent*) { arrange(); }

void PageView::scrollContentsBy(int, int) {
    viewport()->update();
    if (!going_)
        follow();
}

/// The page that takes most of what is in view becomes current.
void PageView::follow() {
    if (pages_.count == 0)
        return;
    const int rowHeight = pageSize().height() + kGap;
    const int middle = viewport()->height() / 2;
    const int row = std::clamp((middle - placeOf(0).top()) / rowHeight, 0, rows() - 1);
    const auto page = static_cast<std::size_t>(row * columns_);
    if (page / static_cast<std::size_t>(columns_) == current_ / static_cast<std::size_t>(columns_))
        return;
    current_ = page;
    name();
    emit currentChanged();
}

/// What assistive technology reads: which page it is, and what it says.
void PageView::name() {
    setAccessibleName(tr("Page %1 of %2").arg(current_ + 1).arg(pages_.count));
    if (!QAccessible::isActive())
        return;
    std::string texts;
    for (const DrawingCommand& command : pages_.page(current_).commands)
        if (const auto* text = std::get_if<Text>(&command); text && texts.size() < kMostSpoken)
            texts += text->text + '\n';
    setAccessibleDescription(toQt(texts));
}

void PageView::keyPressEvent(QKeyEvent* event) {
    const auto last = static_cast<std::size_t>(pages_.count - 1);
    switch (event->key()) {
    case Qt::Key_PageUp:
        return step(-1);
    case Qt::Key_PageDown:
        return step(1);
    case Qt::Key_Home:
        return goTo(0);
    case Qt::Key_End:
        return goTo(last);
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        return stepScale(1);
    case Qt::Key_Minus:
        return stepScale(-1);
    case Qt::Key_0:
        return setFit(Fit::Page);
    default:
        QAbstractScrollArea::keyPressEvent(event); // scrolls, or passes the key on
    }
}

void PageView::wheelEvent(QWheelEvent* event) {
    if (!event->modifiers().testFlag(Qt::ControlModifier))
        return QAbstractScrollArea::wheelEvent(event);
    if (event->angleDelta().y() != 0)
        stepScale(event->angleDelta().y() > 0 ? 1 : -1);
    event->accept();
}

void PageView::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        viewport()->update();
}

} // namespace quobrix
