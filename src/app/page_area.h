#pragma once

#include "app/page_history.h"

#include <functional>
#include <map>

class QLabel;
class QStackedWidget;

namespace quobrix {

/// The pages of the main frame, one in view at a time under its path, whose parts lead where they name. A page is made
/// when it is first shown.
class PageArea : public QWidget {
public:
    using Create = std::function<Page*()>;
    using Go = std::function<void(Page&)>;

    explicit PageArea(QWidget* parent = nullptr);

    /// CREATE makes the page PAGE_ID, which the area then owns.
    void add(int pageId, Create create);
    bool has(int pageId) const { return pages_.contains(pageId); }
    /// Brings a page into view, and what GO (if given) brings into view in it; false if there is none of that id.
    bool show(int pageId, const Go& go = {});
    /// The same for a place in it, which must be there.
    bool show(int pageId, const PagePlace& place);
    /// The page in view; 0 before the first.
    int current() const { return current_; }
    Page* page(int pageId) const;

    /// Goes back (STEP -1) or forward (1) to what was looked at: page, view and record. Records that are gone are
    /// skipped.
    void step(int step);
    bool canStep(int step) const { return nextVisit(step).has_value(); }
    /// Called when something else is in view.
    void whenMoved(std::function<void()> moved) { moved_ = std::move(moved); }
    /// Called for a part of the path that names the menu of the pages; that is to open at a point of the screen.
    void whenMenuWanted(std::function<void(const QPoint&)> wanted) { menuWanted_ = std::move(wanted); }

    /// Every page that has been made shows the document anew.
    void refresh();
    /// The same after an edit, which tables have followed already; pages out of view do so when they are shown.
    void edited();
    /// Every page that has been made shows its values in the units that are now current.
    void unitsChanged();
    /// Takes the values of open editors. False if one of them is refused: its page is in view then.
    bool finishEdits();
    /// Ends all pages, because the document is about to get other content.
    void discard();
    /// Makes the page that was in view again, after discard().
    void restore();

protected:
    void changeEvent(QEvent* event) override;

private:
    struct Entry {
        Create create;
        Page* page = nullptr;
        bool outdated = false; ///< by edits
    };

    void showPath();
    void follow(const QString& part);
    void placeChanged();
    std::optional<std::size_t> nextVisit(int step) const;

    std::map<int, Entry> pages_;
    int current_ = 0;
    PageHistory history_;
    bool going_ = false; ///< what comes into view on the way was not looked at
    std::function<void()> moved_;
    std::function<void(const QPoint&)> menuWanted_;
    QLabel* path_;
    QStackedWidget* stack_;
};

} // namespace quobrix
