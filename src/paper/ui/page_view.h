#pragma once

#include "paper/painter.h"

#include <QAbstractScrollArea>
#include <QCache>
#include <QPixmap>

#include <vector>

namespace quobrix {

/// Shows pages as they come out on paper, one below the other or two side by side. Only those in view are made and
/// painted; until there are any it says that they are being laid out. The arrow keys scroll, Page Up and Page Down go
/// from page to page, Home and End to the first and the last,
/// + and - change the scale, as does the wheel with Ctrl.
class PageView final : public QAbstractScrollArea {
    Q_OBJECT
public:
    /// How large pages are shown.
    enum class Fit {
        Scale, ///< by a factor of their size on paper
        Width, ///< of the window
        Page,  ///< all of a page is seen
    };

    explicit PageView(QWidget* parent = nullptr);

    /// Shows PAGES, of which there is one at least, from the first one on.
    void setPages(PageSource pages);
    std::size_t count() const { return pages_.count; }

    /// The page that is looked at, from 0.
    std::size_t current() const { return current_; }
    void goTo(std::size_t page);
    void step(int pages);

    Fit fit() const { return fit_; }
    /// 1 is the size on paper.
    double scale() const { return scale_; }
    void setFit(Fit fit);
    void setScale(double scale);
    /// The next larger (1) or smaller (-1) of the usual scales.
    void stepScale(int direction);
    /// One or two.
    int columns() const { return columns_; }
    void setColumns(int columns);

signals:
    /// Another page is current, or there are other pages.
    void currentChanged();
    void scaleChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    int rows() const;
    QSize pageSize() const;
    QRect placeOf(std::size_t page) const;
    double fitting() const;
    /// Arranges the pages anew and keeps what is in view there.
    void arrange();
    void follow();
    void name();
    const QPixmap& picture(std::size_t page);

    PageSource pages_;
    std::size_t current_ = 0;
    Fit fit_ = Fit::Page;
    double scale_ = 1;
    int columns_ = 1;
    bool going_ = false;                       ///< the scroll bars follow the page, not the page them
    QCache<std::size_t, QPixmap> pictures_{4}; ///< of the pages that were in view last
};

} // namespace quobrix
