#include "simulator/history.h"

namespace quobrix::sim {
Result<void> generateHistory(Logger&, const HistoryPlan&) { return {}; }
} // namespace quobrix::sim
