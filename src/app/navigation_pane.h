#pragma once

#include <QListWidget>

#include <functional>
#include <vector>

class QAction;

namespace quobrix {

/// The list of the pages beside them. Its keys go from page to page and stay in the list; Enter or a click goes into
/// the page.
class NavigationPane final : public QListWidget {
public:
    /// Says how much there is on a page; empty: nothing is said.
    using Count = std::function<QString()>;

    /// ENTER gives the keyboard to the page that is in view.
    explicit NavigationPane(std::function<void()> enter, QWidget* parent = nullptr);

    /// Adds the page that COMMAND, whose data is its id, brings into view, at a PLACE from 0.
    void add(int place, QAction& command, Count count);
    /// PAGE_ID is in view.
    void follow(int pageId);
    /// Shows the counts of now.
    void refresh();

    QSize sizeHint() const override;

private:
    void go();

    struct Entry {
        QAction* command;
        Count count;
    };

    std::vector<Entry> entries_;
    int shown_ = 0; ///< the page in view
};

} // namespace quobrix
