#pragma once

#include "views/page.h"

#include <functional>
#include <map>

class QLabel;
class QStackedWidget;

namespace quobrix {

/// The pages of the main frame, one in view at a time under its title. A page is made when it is first shown.
class PageArea : public QWidget {
public:
    using Create = std::function<Page*()>;

    explicit PageArea(QWidget* parent = nullptr);

    /// CREATE makes the page PAGE_ID, which the area then owns.
    void add(int pageId, Create create);
    bool has(int pageId) const { return pages_.contains(pageId); }
    /// Brings a page into view; false if there is none of that id.
    bool show(int pageId);
    /// The page in view; 0 before the first.
    int current() const { return current_; }
    Page* page(int pageId) const;

    /// Every page that has been made shows the document anew.
    void refresh();
    /// Every page that has been made shows its values in the units that are now current.
    void unitsChanged();
    /// Takes the values of open editors. False if one of them is refused: its page is in view then.
    bool finishEdits();
    /// Ends all pages, because the document is about to get other content.
    void discard();
    /// Makes the page that was in view again, after discard().
    void restore();

private:
    struct Entry {
        Create create;
        Page* page = nullptr;
    };

    void showTitle();

    std::map<int, Entry> pages_;
    int current_ = 0;
    QLabel* title_;
    QStackedWidget* stack_;
};

} // namespace quobrix
