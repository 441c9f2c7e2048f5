#include "views/log_pages.h"

#include "model/quobrix_document.h"

#include <QVBoxLayout>

namespace quobrix {
namespace {

constexpr auto kTroubleColumns = kTypesOf<TTroubleLogRecordColumn, TTroubleLogTimeRecordedColumn, TTroubleLogVinColumn,
                                          TTroubleLogQuobrixSerialNumberColumn, TTroubleLogTroubleCodeColumn,
                                          TTroubleLogTroubleCodeDescriptionColumn, TTroubleLogCommentsColumn>;
constexpr LogListSpec kTroubles{"TTroubleLogSummaryView", "Vehicle Trouble Log", "trouble codes", kTroubleColumns};

constexpr auto kActivityColumns =
    kTypesOf<TSecurityLogRecordColumn, TSecurityLogTimeRecordedColumn, TSecurityLogVinColumn,
             TSecurityLogQuobrixSerialNumberColumn, TSecurityLogEventDescriptionColumn, TSecurityLogCommentsColumn>;
constexpr LogListSpec kActivity{"TSecurityLogSummaryView", "Activity Log", "events of the Quobrix", kActivityColumns};

constexpr auto kAccidentColumns = kTypesOf<TAccidentLogTableRecordColumn, TAccidentLogTableStartTimeColumn,
                                           TAccidentLogTableVinColumn, TAccidentLogTableQuobrixSerialNumberColumn,
                                           TAccidentLogTableMaximumSpeedColumn, TAccidentLogTableCommentsColumn>;
constexpr LogListSpec kAccidents{"TAccidentLogSummaryView", "Accident Log", "severe stops", kAccidentColumns};

} // namespace

LogPage::LogPage(const ViewContext& context, const LogListSpec& spec)
    : context_(context), list_(new LogList(context, spec)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(list_);
    setFocusProxy(list_);
}

TTroubleLogView::TTroubleLogView(const ViewContext& context) : LogPage(context, kTroubles) {
    setObjectName(QStringLiteral("TTroubleLogView"));
}
const Table* TTroubleLogView::log() const { return &context_.document.troubles(); }

TSecurityLogView::TSecurityLogView(const ViewContext& context) : LogPage(context, kActivity) {
    setObjectName(QStringLiteral("TSecurityLogView"));
}
const Table* TSecurityLogView::log() const { return &context_.document.activity(); }

TAccidentLogView::TAccidentLogView(const ViewContext& context) : LogPage(context, kAccidents) {
    setObjectName(QStringLiteral("TAccidentLogView"));
}
const Table* TAccidentLogView::log() const { return context_.document.accidents(); }

} // namespace quobrix
