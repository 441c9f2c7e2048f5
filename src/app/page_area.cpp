#include "app/page_area.h"

#include <QApplication>
#include <QFocusEvent>
#include <QLabel>
#include <QScopedValueRollback>
#include <QStackedWidget>
#include <QStatusTipEvent>
#include <QVBoxLayout>

#include <utility>

namespace quobrix {

namespace {

/// A label whose links are reached by Tab, the first one as soon as the label is.
class LinkLabel final : public QLabel {
protected:
    void focusInEvent(QFocusEvent* event) override {
        QLabel::focusInEvent(event);
        if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason)
            focusNextPrevChild(event->reason() == Qt::TabFocusReason);
    }
};

} // namespace

PageArea::PageArea(QWidget* parent) : QWidget(parent), path_(new LinkLabel), stack_(new QStackedWidget) {
    path_->setObjectName(QStringLiteral("pageTitle"));
    path_->setContentsMargins(12, 6, 12, 6);
    path_->setTextFormat(Qt::RichText);
    path_->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    path_->hide();
    stack_->setObjectName(QStringLiteral("pages"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(path_);
    layout->addWidget(stack_, 1);
    connect(path_, &QLabel::linkActivated, this, &PageArea::follow, Qt::QueuedConnection); // which changes the label
}

void PageArea::add(int pageId, Create create) { pages_[pageId] = {std::move(create)}; }

Page* PageArea::page(int pageId) const {
    const auto found = pages_.find(pageId);
    return found == pages_.end() ? nullptr : found->second.page;
}

bool PageArea::show(int pageId, const Go& go) {
    const auto found = pages_.find(pageId);
    if (found == pages_.end())
        return false;
    Entry& entry = found->second;
    if (current_ != pageId) {
        QStatusTipEvent nothing{QString()}; // the hint is of the page that goes
        QApplication::sendEvent(this, &nothing);
    }
    setUpdatesEnabled(false); // path and page change in one step
    {
        const QScopedValueRollback going(going_, true);
        if (!entry.page) {
            entry.page = entry.create();
            stack_->addWidget(entry.page);
            connect(entry.page, &Page::placeChanged, this, &PageArea::placeChanged);
            connect(entry.page, &Page::linkFollowed, this,
                    [this](RecordLink link) { show(link.page, [link](Page& of) { of.showRecord(link.row); }); });
            entry.page->refresh();
        } else if (std::exchange(entry.outdated, false)) {
            entry.page->edited();
        }
        current_ = pageId;
        stack_->setCurrentWidget(entry.page);
        if (go)
            go(*entry.page);
    }
    placeChanged();
    setUpdatesEnabled(true);
    entry.page->setFocus();
    return true;
}

bool PageArea::show(int pageId, const PagePlace& place) {
    return show(pageId, [&place](Page& page) { page.goTo(place); });
}

void PageArea::placeChanged() {
    const Page* shown = page(current_);
    if (going_ || !shown)
        return;
    showPath();
    history_.visit({current_, shown->place()});
    if (moved_)
        moved_();
}

void PageArea::showPath() {
    const std::vector<PathPart> parts = page(current_)->path();
    QStringList texts;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const QString text = parts[i].text.toHtmlEscaped();
        const bool link = parts[i].leads == PathPart::Leads::ToPlace ||
                          (parts[i].leads == PathPart::Leads::ToMenu && menuWanted_ != nullptr);
        texts << (link ? QStringLiteral("<a style='text-decoration:none' href='%1'>%2</a>").arg(i).arg(text) : text);
    }
    const QString html = texts.join(kPathSeparator);
    if (path_->text() != html) // or the part that has the keyboard would lose it
        path_->setText(html);
    path_->setAccessibleName(page(current_)->title());
    path_->setVisible(!parts.empty());
}

void PageArea::follow(const QString& part) {
    const Page* shown = page(current_);
    const std::vector<PathPart> parts = shown && finishEdits() ? shown->path() : std::vector<PathPart>();
    const auto index = static_cast<std::size_t>(part.toInt());
    if (index >= parts.size())
        return;
    if (parts[index].leads == PathPart::Leads::ToMenu && menuWanted_)
        menuWanted_(path_->mapToGlobal(path_->rect().bottomLeft()));
    else if (parts[index].leads == PathPart::Leads::ToPlace)
        show(current_, parts[index].place);
}

std::optional<std::size_t> PageArea::nextVisit(int step) const {
    return history_.next(step, [this](const Visit& visit) {
        const Page* visited = page(visit.page);
        return visited && visited->has(visit.place);
    });
}

void PageArea::step(int step) {
    if (const auto next = nextVisit(step)) {
        const Visit visit = history_.moveTo(*next);
        show(visit.page, visit.place);
    }
}

void PageArea::refresh() {
    for (auto& [id, entry] : pages_)
        if (entry.page) {
            entry.page->refresh();
            entry.outdated = false;
        }
    if (moved_)
        moved_();
}

void PageArea::edited() {
    for (auto& [id, entry] : pages_)
        if (id != current_)
            entry.outdated = entry.page != nullptr;
        else if (entry.page)
            entry.page->edited();
    if (moved_) // what has come back can be gone back to
        moved_();
}

void PageArea::unitsChanged() {
    for (auto& [id, entry] : pages_)
        if (entry.page)
            entry.page->unitsChanged();
}

void PageArea::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && page(current_)) { // links keep the colour of when they were set
        path_->clear();
        showPath();
    }
}

bool PageArea::finishEdits() {
    for (auto& [id, entry] : pages_)
        for (TSpreadsheet* spreadsheet :
             entry.page ? entry.page->findChildren<TSpreadsheet*>() : QList<TSpreadsheet*>())
            if (!spreadsheet->finishEdit()) {
                show(id);
                return false;
            }
    return true;
}

void PageArea::discard() {
    setUpdatesEnabled(false);
    for (auto& [id, entry] : pages_) {
        delete entry.page;
        entry.page = nullptr;
    }
    history_.clear();
}

void PageArea::restore() {
    show(current_);
    setUpdatesEnabled(true);
}

} // namespace quobrix
