#include "app/page_area.h"

#include <QLabel>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace quobrix {

PageArea::PageArea(QWidget* parent) : QWidget(parent), title_(new QLabel), stack_(new QStackedWidget) {
    title_->setObjectName(QStringLiteral("pageTitle"));
    title_->setContentsMargins(12, 6, 12, 6);
    title_->hide();
    stack_->setObjectName(QStringLiteral("pages"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(title_);
    layout->addWidget(stack_, 1);
}

void PageArea::add(int pageId, Create create) { pages_[pageId] = {std::move(create), nullptr}; }

Page* PageArea::page(int pageId) const {
    const auto found = pages_.find(pageId);
    return found == pages_.end() ? nullptr : found->second.page;
}

bool PageArea::show(int pageId) {
    const auto found = pages_.find(pageId);
    if (found == pages_.end())
        return false;
    Entry& entry = found->second;
    setUpdatesEnabled(false); // title and page change in one step
    if (!entry.page) {
        entry.page = entry.create();
        stack_->addWidget(entry.page);
        connect(entry.page, &Page::titleChanged, this, &PageArea::showTitle);
        connect(entry.page, &Page::linkFollowed, this, [this](RecordLink link) {
            if (show(link.page))
                page(link.page)->showRecord(link.row);
        });
        entry.page->refresh();
    }
    current_ = pageId;
    showTitle();
    stack_->setCurrentWidget(entry.page);
    setUpdatesEnabled(true);
    entry.page->setFocus();
    return true;
}

void PageArea::showTitle() {
    const Page* shown = page(current_);
    title_->setText(shown ? shown->title() : QString());
    title_->setVisible(!title_->text().isEmpty());
}

void PageArea::refresh() {
    for (auto& [id, entry] : pages_)
        if (entry.page)
            entry.page->refresh();
}

void PageArea::unitsChanged() {
    for (auto& [id, entry] : pages_)
        if (entry.page)
            entry.page->unitsChanged();
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
}

void PageArea::restore() {
    show(current_);
    setUpdatesEnabled(true);
}

} // namespace quobrix
