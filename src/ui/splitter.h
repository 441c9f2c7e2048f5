#pragma once

#include <QSplitter>

namespace quobrix {

class Settings;

/// Two parts of a window beside each other. The first has a share of the width, within the limits of its own, whatever
/// the window measures; a person changes it by the line between them.
class Splitter final : public QSplitter {
public:
    /// The first part has the share that is remembered.
    Splitter(QWidget* first, QWidget* second, const Settings& settings);

    void remember(Settings& settings) const;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    double share_; ///< 0 to 1
};

} // namespace quobrix
