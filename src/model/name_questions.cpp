#include "model/name_questions.h"

#include <algorithm>
#include <optional>

namespace quobrix {
namespace {

/// What is asked and said about the rows of a name table.
struct Wording {
    const PersistentType& table;
    std::optional<MessageOf<0>> deleteQuestion; ///< nothing: deleting is not asked about, since it can be undone
    MessageOf<0> cannotDelete;
};

constexpr Wording kWordings[] = {
    {TVehicleNamesTable::kType, MessageOf<0>(MessageId::DeleteVehicle), MessageId::CannotDeleteVin},
    {TQuobrixNamesTable::kType, std::nullopt, MessageId::CannotDeleteSerialNumber},
    {DriverNamesTable::kType, MessageOf<0>(MessageId::DeleteDriver), MessageId::CannotDeleteDriver},
};

const Wording& wordingOf(const NamesTable& names) {
    return *std::find_if(std::begin(kWordings), std::end(kWordings),
                         [&](const Wording& wording) { return wording.table.id() == names.type().id(); });
}

std::vector<std::string> keysToName(const std::vector<std::string>& added, MessageOf<0> one, MessageOf<0> several,
                                    Prompter& prompter) {
    if (added.empty() || prompter.ask(makeMessage(added.size() == 1 ? one : several)) == Answer::No)
        return {};
    return added;
}

} // namespace

NewKeys askForNames(const NewKeys& added, Prompter& prompter) {
    NewKeys wanted;
    wanted.loggers = keysToName(added.loggers, MessageId::NewLogger, MessageId::NewLoggers, prompter);
    wanted.vehicles = keysToName(added.vehicles, MessageId::NewVehicle, MessageId::NewVehicles, prompter);
    return wanted;
}

std::string vinOf(std::string_view typed, std::span<const KnownVehicle> known) {
    for (const KnownVehicle& vehicle : known)
        if (typed == vehicle.vin || typed == vehicle.name)
            return vehicle.vin;
    std::string vin;
    for (const char c : typed)
        if (c != ' ')
            vin += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return isVin(vin) ? vin : std::string();
}

bool mayDelete(const NamesTable& names, std::span<const RowIndex> rows, Prompter& prompter) {
    const Wording& wording = wordingOf(names);
    if (wording.deleteQuestion && prompter.ask(makeMessage(*wording.deleteQuestion)) == Answer::No)
        return false;
    if (std::none_of(rows.begin(), rows.end(), [&](RowIndex row) { return names.inUse(row); }))
        return true;
    prompter.tell(makeMessage(wording.cannotDelete));
    return false;
}

} // namespace quobrix
