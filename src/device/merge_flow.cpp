#include "device/merge_flow.h"

#include "device/log_rows.h"
#include "messages/file_messages.h"
#include "model/trip_rules.h"
#include "model/trip_types.h"
#include "units/date_time.h"
#include "units/time_zone.h"

#include <algorithm>
#include <iterator>

namespace quobrix {
namespace {

// A document of about 1,000 trips: from here on a new file is recommended; from 1,200 on it is required.
constexpr std::size_t kManyObjects = 1000 * TTripLogTable::kObjectsPerTrip;
constexpr std::size_t kMostTrips = 1200;

constexpr const char* kVehicleSection = "TUnidentifiedVehicleColumn";
constexpr const char* kVehicle = "default";

} // namespace

void MergeFlow::tell(const Error& error) {
    switch (error.kind) {
    case ErrorKind::Changed:
        context_.prompter.tell(makeMessage(MessageId::DownloadIntoChanged));
        break;
    case ErrorKind::Unsupported:
        context_.prompter.tell(fileMessage(error, FileAction::Save, context_.document.title()));
        break;
    default:
        context_.prompter.tell(makeMessage(MessageId::DownloadIntoDamaged, error.detail));
    }
}

bool MergeFlow::prepare() {
    TQuobrixDocument& document = context_.document;
    if (document.isExample()) {
        context_.prompter.tell(makeMessage(MessageId::DownloadIntoExample));
        wantsNew_ = true;
    } else {
        wantsNew_ = document.store().objectCount() > kManyObjects &&
                    context_.prompter.ask(makeMessage(MessageId::NewFileRecommended)) == Answer::Yes;
    }
    if (wantsNew_)
        return !hooks_.mayStartNewDocument || hooks_.mayStartNewDocument();
    const Result<void> fit = canMerge(document);
    if (!fit)
        tell(fit.error());
    return static_cast<bool>(fit);
}

// The present document goes only for records that take its place.
bool MergeFlow::makeRoom(const LogRecords& records) {
    return !wantsNew_ || records.empty() || hooks_.startNewDocument();
}

std::optional<MergeResult> MergeFlow::merge(const LogRecords& records, std::int32_t shift, TextOf<0> step,
                                            const std::function<void()>& also) {
    TQuobrixDocument& document = context_.document;
    Result<MergeResult> merged = MergeResult{{}, records.refused, records.unreadable, {}};
    if (!leavesDocument(records)) {
        Result<Merge> plan = Merge::plan(records, document);
        if (!plan) {
            tell(plan.error());
            return {};
        }
        const std::size_t objects = document.store().objectCount();
        if (objects > kManyObjects &&
            objects / TTripLogTable::kObjectsPerTrip + plan->counts(LogId::Trips).added > kMostTrips) {
            context_.prompter.tell(makeMessage(MessageId::NewFileRequired));
            return {};
        }
        identifyVehicles(*plan, records, shift);
        document.edits().group(text(step), [&] {
            merged = plan->apply(shift);
            if (!merged)
                return EditOutcome{.refusal = merged.error().detail};
            if (merged->changed() && also)
                also();
            if (const std::string name = context_.settings.getText(kUnidentifiedDriverSection, kDefaultName);
                isDriverName(name))
                document.drivers().nameAll(merged->newKeys.drivers, name); // in rows of this step
            giveTypes(merged->newTrips);
            return EditOutcome{};
        });
        if (!merged) {
            tell(merged.error());
            return {};
        }
        if (hooks_.keysAdded)
            hooks_.keysAdded(merged->newKeys);
    }
    for (const UnreadableLog& log : merged->unreadable)
        context_.prompter.tell(makeMessage(MessageId::LogsUnreadable, log.name, log.why));
    return std::move(*merged);
}

/// New trips get the types that a person has made rules for.
void MergeFlow::giveTypes(const std::vector<RowIndex>& newTrips) {
    const std::vector<TripRule> rules = loadTripRules(context_.settings);
    if (rules.empty() || newTrips.empty())
        return;
    const Result<TripTypes> types = loadTripTypes();
    if (!types) // the trips stay without one
        return context_.prompter.tell(textFileMessage(types.error(), kTripTypesFile));
    TTripLogTable& trips = context_.document.trips();
    context_.document.edits().changeRows(
        trips, runsOf(newTrips), [&] { giveTypesByRules(trips, newTrips, rules, namesOf(types->types), text_.zone); });
}

/// Asks once for each different text that vehicles told instead of a VIN.
void MergeFlow::identifyVehicles(Merge& merge, const LogRecords& records, std::int32_t shift) {
    const std::vector<UnidentifiedVehicle> unidentified = merge.unidentified();
    if (unidentified.empty())
        return;
    UnidentifiedVehicleForm form;
    const TVehicleNamesTable& names = context_.document.vehicles();
    for (RowIndex row = 0; row < names.rowCount(); ++row)
        if (std::string vin = names.key(row); !vin.empty())
            form.known.push_back({vin, names.name(row)});
    for (const TripRecord& trip : records.trips) // one that comes with these
        if (const std::string& vin = trip.origin.vin;
            isVin(vin) && std::ranges::find(form.known, vin, &KnownVehicle::vin) == form.known.end())
            form.known.push_back({vin, {}});
    form.vehicle = context_.settings.getText(kVehicleSection, kVehicle);
    for (auto vehicle = unidentified.begin(); vehicle != unidentified.end(); ++vehicle) {
        form.read = vehicle->read;
        form.trips = vehicle->trips;
        form.firstTrip = dateTimeText(text_.units, text_.zone.toLocal(shifted(vehicle->firstStart, shift)));
        form.more = std::next(vehicle) != unidentified.end();
        if (!form.forAll) {
            const std::string before = form.vehicle;
            const bool answered = context_.prompter.fillIn(form) && !form.vehicle.empty();
            const std::string vin = answered ? vinOf(form.vehicle, form.known) : std::string();
            if (vin.empty()) {
                if (answered)
                    context_.prompter.tell(makeMessage(MessageId::NoSuchVehicle, form.vehicle));
                form.vehicle = before;
                form.forAll = false;
                continue;
            }
            form.vehicle = vin;
            if (std::ranges::find(form.known, vin, &KnownVehicle::vin) == form.known.end())
                form.known.push_back({vin, {}});
            context_.settings.setText(kVehicleSection, kVehicle, form.vehicle);
        }
        merge.identify(vehicle->read, form.vehicle);
    }
}

} // namespace quobrix
