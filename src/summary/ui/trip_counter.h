#pragma once

#include "summary/trip_summaries.h"
#include "summary/ui/summary_keeper.h"
#include "tables/table_edits.h"

#include <QElapsedTimer>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quobrix {

/// Has the trips of the document counted in the summary database: once it was opened, and when it has been edited for a
/// moment no more. Trips are read where the document is used, a few at a time between events; the database is the
/// keeper's. The example is never counted.
class TripCounter final : public QObject, private TableEditsListener {
    Q_OBJECT
public:
    /// All of it must outlive the counter.
    TripCounter(TQuobrixDocument& document, const Settings& settings, SummaryKeeper& keeper, QObject* parent = nullptr);
    ~TripCounter() override;

    SummaryKeeper& keeper() { return keeper_; }
    /// While BUSY says so, the document belongs to a command and is not touched.
    void setBusy(std::function<bool()> busy) { busy_ = std::move(busy); }

    /// The document is about to be another one: what was read of it is of no use.
    void documentReplacing();
    /// It is another one.
    void documentOpened() { begin(false); }
    /// Counts all trips of the document, also those whose records a person has deleted.
    void countAgain() { begin(true); }

    /// How much of the document has been read, 0 to 1, of what takes noticeably long; else nothing.
    std::optional<double> progress() const;

signals:
    void progressed();

private:
    void tableChanged(const TableChange& change) override;
    void historyChanged() override;
    void begin(bool again);
    void step();

    TQuobrixDocument& document_;
    const Settings& settings_;
    SummaryKeeper& keeper_;
    std::function<bool()> busy_;
    std::unique_ptr<TripSummaries> summaries_; ///< while they are read
    SampledTrips sampled_;                     ///< of rows that have not changed since
    std::vector<double> thresholds_;           ///< of all parameters, with which that was sampled
    std::vector<SummaryRecord> trips_;
    RowIndex next_ = 0;
    bool again_ = false;
    QElapsedTimer since_;
    QTimer step_, edited_;
};

} // namespace quobrix
