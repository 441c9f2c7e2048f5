#pragma once

#include <QFrame>
#include <QLabel>

class QVBoxLayout;

namespace quobrix {

/// FONT larger by SCALE, and bold.
QFont headingFont(QFont font, double scale);

/// A heading that assistive technology can go to from heading to heading.
class HeadingLabel final : public QLabel {
public:
    HeadingLabel(const QString& text, const QFont& font);
};

/// A panel in the colour of lists.
class Card : public QFrame {
public:
    Card();

    QVBoxLayout& content() { return *content_; }

private:
    QVBoxLayout* content_;
};

} // namespace quobrix
