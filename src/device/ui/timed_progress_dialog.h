#pragma once

#include "device/reporter.h"

class QWidget;

namespace quobrix {

/// Shows the progress of a command that the logger has taken: a small dialog whose bar advances by itself.
class TimedProgressDialog final : public ProgressReporter {
public:
    explicit TimedProgressDialog(QWidget& parent) : parent_(parent) {}

    void show(const TimedProgress& progress) override;

private:
    QWidget& parent_;
};

} // namespace quobrix
