#pragma once

#include "simulator/log_records.h"

#include "device/quobrix.h"

#include <string>

namespace quobrix::sim {

/// Builds a block of records as device/quobrix.h lays them out.
class RecordSetBuilder {
public:
    RecordSetBuilder();

    void add(const std::string& serial, const Trip& trip);
    void add(const std::string& serial, const Trouble& trouble);
    void add(const std::string& serial, const Activity& activity);
    void add(const std::string& serial, const Stop& stop);
    /// The samples of STOP, the one of number INDEX in the set of stops.
    void addSamples(std::uint32_t index, const Stop& stop);

    /// A malloc block for the caller to free; nullptr if there is no memory for it, or the set exceeds 4 GiB.
    QuobrixRecordSet* release() const;

private:
    template <class Record>
    void append(const Record& record, Bytes arrays);

    Bytes bytes_;
    std::uint32_t count_ = 0;
};

struct RecordSets {
    RecordSetBuilder first;
    RecordSetBuilder second;
};

/// What a main image holds: trips, and trouble codes and activity. ErrorKind::Corrupt if a record is damaged, or
/// belongs to the other kind of image.
Result<RecordSets> mainRecordSets(ByteView image);
/// What an accident image holds: stops, and their samples.
Result<RecordSets> accidentRecordSets(ByteView image);

} // namespace quobrix::sim
