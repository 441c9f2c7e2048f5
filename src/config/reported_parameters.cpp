#include "config/reported_parameters.h"

#include "model/trip_log.h"

namespace quobrix {

bool ReportedParameters::readNext(const TTripLogTable& trips) {
    if (seen_ >= kMostTrips || read_ >= trips.rowCount())
        return false;
    const RowIndex row = trips.rowCount() - ++read_;
    const std::string& vin = trips.column<TTripLogVinColumn>().at(row);
    if (vin_.empty()) {
        if (trips.column<TTripLogQuobrixSerialNumberColumn>().at(row) != serialText_)
            return true;
        if (vin.empty())
            return false; // which vehicle it was last in is not known
        vin_ = vin;
    }
    if (vin != vin_)
        return true;
    ++seen_;
    const TTripLogSampleTable* samples = trips.column<TTripLogSampleTableColumn>().object(row);
    for (std::size_t i = 0; samples && i < TTripLogSampleTable::kSeriesCount; ++i) {
        const ParameterSeriesColumn& series = samples->series(i);
        const std::int32_t parameter = series.parameter();
        if (parameter < 1 || parameter > kParameterCount || series.sampleCount() == 0)
            continue;
        Evidence& evidence = evidence_[static_cast<std::size_t>(parameter)];
        if (evidence.trips == kTripsPerParameter)
            continue;
        ++evidence.trips;
        for (std::size_t sample = 0; sample < series.sampleCount() && !evidence.reported; ++sample)
            evidence.reported = hasValue(series.metric(sample));
    }
    return true;
}

bool ReportedParameters::isUnsupported(std::int32_t parameter) const {
    const Evidence& evidence = evidence_[static_cast<std::size_t>(parameter)];
    return evidence.trips > 0 && !evidence.reported;
}

} // namespace quobrix
