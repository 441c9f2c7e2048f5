#pragma once

#include "device/reporter.h"

class QWidget;

namespace quobrix {

/// Shows the progress of a command that the logger has taken: a small dialog whose bar advances by itself.
class TimedProgressDialog final : public ProgressReporter {
public:
    /// HASTE: how many times faster than it should be, for tests.
    TimedProgressDialog(QWidget& parent, int haste) : parent_(parent), haste_(haste) {}

    void show(const TimedProgress& progress) override;

private:
    QWidget& parent_;
    const int haste_;
};

} // namespace quobrix
