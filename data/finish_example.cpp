// Names and comments for the downloaded example, as its owners would have given them: finish_example FILE

#include "base/path_text.h"
#include "model/accident_log.h"
#include "model/quobrix_document.h"
#include "model/trip_log.h"
#include "model/trouble_log.h"
#include "platform/environment.h"

#include <chrono>
#include <cstdio>
#include <exception>

namespace {

using namespace quobrix;

constexpr const char* kDrivers[] = {"Anna", "Paul", "Lena"}; // 1 to 3

struct Comment {
    int month, day; // of 2026, at Greenwich
    const char* text;
};
constexpr Comment kTripComments[] = {
    {5, 16, "To the coast"}, {5, 17, "Beach"}, {5, 23, "Home again"}, {6, 15, "Late: road works at the bridge"}};
constexpr const char* kTroubleComments[][2] = {{"P0128", "Thermostat replaced on April 17"},
                                               {"P0442", "Fuel cap was loose"}};

bool isOn(std::int32_t time, const Comment& comment) {
    using namespace std::chrono;
    return floor<days>(sys_seconds(seconds(time))) == sys_days(year(2026) / comment.month / comment.day);
}

Result<void> finish(TQuobrixDocument& document) {
    using Keys = std::vector<std::string>;
    TVehicleNamesTable& vehicles = document.vehicles();
    TQuobrixNamesTable& loggers = document.loggers();
    for (RowIndex row = 0; row < vehicles.rowCount(); ++row)
        vehicles.nameAll(Keys{vehicles.key(row)}, vehicles.key(row).starts_with("1HG") ? "Family wagon" : "Pickup");
    for (RowIndex row = 0; row < loggers.rowCount(); ++row)
        loggers.nameAll(Keys{loggers.key(row)},
                        loggers.key(row).starts_with("E-2009") ? "Blue Quobrix" : "Grey Quobrix");
    for (int driver = 1; driver <= 3; ++driver)
        document.drivers().nameAll(Keys{std::to_string(driver)}, kDrivers[driver - 1]);

    TTripLogTable& trips = document.trips();
    for (const Comment& comment : kTripComments)
        for (RowIndex row = 0; row < trips.rowCount(); ++row)
            if (isOn(trips.column<TTripLogStartTimeColumn>().at(row), comment)) {
                trips.column<TTripLogCommentsColumn>().set(row, comment.text);
                break;
            }
    TTroubleLogTable& troubles = document.troubles();
    for (const auto& [code, text] : kTroubleComments)
        for (RowIndex row = 0; row < troubles.rowCount(); ++row)
            if (troubles.column<TTroubleLogTroubleCodeColumn>().at(row) == code)
                troubles.column<TTroubleLogCommentsColumn>().set(row, text);
    if (TAccidentLogTable* accidents = document.accidents())
        for (RowIndex stop = 0; stop < accidents->rowCount(); ++stop) {
            accidents->column<TAccidentLogTableCommentsColumn>().set(stop, "Stopped for a deer; nobody was hurt");
            const std::int32_t time = accidents->column<TAccidentLogTableStartTimeColumn>().at(stop);
            for (RowIndex row = 0; row < trips.rowCount(); ++row)
                if (trips.column<TTripLogStartTimeColumn>().at(row) <= time &&
                    time <= trips.column<TTripLogEndTimeColumn>().at(row))
                    trips.column<TTripLogCommentsColumn>().set(row, "A deer on the road");
        }
    document.setDataChanged();
    return document.save();
}

} // namespace

int main(int argc, char** argv) {
    try {
        const quobrix::ProgramArguments arguments(argc, argv);
        if (arguments.count() != 2)
            return 2;
        TQuobrixDocument document;
        const std::filesystem::path path = pathFromUtf8(arguments.texts()[1]);
        Result<void> done = document.open(path, TDocument::Access::Edit);
        if (done)
            done = finish(document);
        if (!done)
            std::fprintf(stderr, "finish_example: %s\n", done.error().detail.c_str());
        return done ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "finish_example: %s\n", error.what());
        return 1;
    }
}
