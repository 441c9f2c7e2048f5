#include "summary/summary_database.h"
#include "support/fault_folder.h"

#include <cstdlib>

using namespace quobrix;

/// Any bytes as a summary database: reading changes nothing; whoever opens it for writing finds the same records, adds
/// one and finds that behind them; a file that is no such database stays as it is.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto require = [](bool holds) {
        if (!holds)
            std::abort();
    };
    const std::filesystem::path path = "/Quobrix.cdb";
    const Bytes before(data, data + size);
    test::FaultFolder folder(1, {{path, before}});
    SummaryDatabase database(folder);
    const bool readable = bool(database.open(path, SummaryDatabase::Access::Read));
    const auto read = database.readAll();
    require(!readable || read);
    database.close();
    require(folder.current().at(path) == before);

    require(bool(database.open(path, SummaryDatabase::Access::Write)) == readable);
    if (!readable) {
        require(folder.current().at(path) == before);
        return 0;
    }
    SummaryRecord record;
    record.logger = SummaryText("K-0042-B");
    require(bool(database.append({&record, 1})));
    database.close();
    require(bool(database.open(path, SummaryDatabase::Access::Read)) && database.count() == read->size() + 1);
    for (std::size_t i = 0; i < read->size(); ++i)
        require(summaryBytes(*database.read(i)) == summaryBytes((*read)[i]));
    require(summaryBytes(*database.read(read->size())) == summaryBytes(record));
    return 0;
}
