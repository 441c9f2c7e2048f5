#pragma once

#include "views/log_list.h"

namespace quobrix {

/// All trips, one row each.
class TTripLogSummaryView final : public LogList {
    Q_OBJECT
public:
    explicit TTripLogSummaryView(const ViewContext& context, QWidget* parent = nullptr);
};

} // namespace quobrix
