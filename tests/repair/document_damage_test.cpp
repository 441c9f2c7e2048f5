/// What each kind of damage does to opening, viewing, saving, the check and the repair. The same table stands in the
/// documentation, and a test compares the two.
#include "repair/document_repair.h"
#include "repair/salvaged_file.h"

#include "compound/format.h"
#include "model/logs.h"
#include "platform/file_system.h"
#include "repair/document_check.h"
#include "report/report.h"
#include "support/document_streams.h"
#include "support/fault_folder.h"
#include "support/memory_file.h"
#include "support/sample_trip.h"
#include "support/temporary_folder.h"
#include "texts/text.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

constexpr RowIndex kVictimTrips = 3;

/// Where SECTOR begins in a file that lies in memory.
std::size_t offsetOf(std::uint32_t sector) { return static_cast<std::size_t>(cfb::sectorOffset(sector)); }

/// A document on disk that something bad happens to.
class Victim {
public:
    explicit Victim(fs::path file) : path(std::move(file)) {
        TQuobrixDocument document;
        for (int i = 0; i <= static_cast<int>(kVictimTrips); ++i)
            addTrip(document, kStart + 3600 * i);
        document.trips().removeRows(kVictimTrips, 1); // so that there are free ids
        auto& accidents = document.store().singleton<TAccidentLogTable>();
        accidents.insertRows(0, 2);
        accidents.column<TAccidentLogTableStartTimeColumn>().setAll({kStart, kStart + 9});
        const TTripLogTable& table = document.trips();
        trips = table.id();
        distance = table.column<TTripLogDistanceColumn>().id();
        sampleTables = table.column<TTripLogSampleTableColumn>().id();
        samples = table.column<TTripLogSampleTableColumn>().at(1);
        if (!document.saveAs(path))
            throw std::runtime_error("saveAs");
    }

    void write(std::string_view name, Bytes content) const {
        tamper(path, [&](CompoundFile& file) { file.write(name, std::move(content)); });
    }
    void remove(std::string_view name) const {
        tamper(path, [&](CompoundFile& file) { file.remove(name); });
    }
    void cut(std::string_view name) const {
        Bytes content = stream(name);
        content.pop_back();
        write(name, content);
    }
    void garble(std::string_view name) const { write(name, Bytes(stream(name).size() + 3, 0xEE)); }
    Bytes stream(std::string_view name) const { return streamsOf(path)[std::string(name)]; }

    Bytes bytes() const { return *readFile(path, 1u << 24); }
    void setBytes(const Bytes& bytes) const {
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    void put32(std::size_t offset, std::uint32_t value) const {
        Bytes changed = bytes();
        cfb::store32(changed.data() + offset, value);
        setBytes(changed);
    }
    std::uint32_t get32(std::size_t offset) const { return cfb::load32(bytes().data() + offset); }
    std::size_t directory() const { return offsetOf(get32(48)); }
    /// Where the directory entry of a stream begins.
    std::size_t entryOf(std::string_view name) const {
        std::string units(64, '\0');
        for (std::size_t i = 0; i < name.size(); ++i)
            units[2 * i] = name[i];
        const Bytes all = bytes();
        return std::string_view(reinterpret_cast<const char*>(all.data()), all.size()).rfind(units);
    }

    fs::path path;
    ObjectId trips, distance, sampleTables, samples;
};

enum class Opening { Edit, Read, Later, Damaged, NoDocument };
enum class View { Everything, NoColumn, NoSamples, NoOwnedTables, NoLog, Part, Nothing };
enum class Mending { Whole, Part };

struct Row {
    const char* damage;
    std::function<void(const Victim&)> apply;
    Opening opening;
    View view;
    bool sound; ///< by the check
    Mending repair;
    bool mendedBySaving = false; ///< in place: the check says that it is sound from then on
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.damage; }
};

bool refuses(const Row& row) { return row.opening == Opening::Damaged || row.opening == Opening::NoDocument; }

std::string name(ObjectId id) { return std::to_string(id); }

const std::vector<Row>& table() {
    using V = const Victim&;
    static const std::vector<Row> rows = [] {
        std::vector<Row> all;
        const auto index = [&](const char* what, std::function<void(V)> apply) {
            all.push_back({what, std::move(apply), Opening::Read, View::Everything, false, Mending::Whole});
        };
        for (const char* stream : {"Version", "Next Available Id", "Available Ids", "Object Ids", "Singleton Ids"}) {
            static std::vector<std::string> names; // of the rows
            names.reserve(64);
            const auto row = [&](const char* what) {
                return names.emplace_back(fmt::format("\"{}\" {}", stream, what)).c_str();
            };
            index(row("is missing"), [=](V v) { v.remove(stream); });
            index(row("is cut short"), [=](V v) { v.cut(stream); });
            index(row("is garbage"), [=](V v) { v.garble(stream); });
        }
        const std::vector<Row> others = {
            {"\"Contents\" is missing", [](V v) { v.remove("Contents"); }, Opening::Edit, View::Everything, false,
             Mending::Whole, true},
            {"\"Contents\" has another name",
             [](V v) {
                 v.write("Kontents", v.stream("Contents"));
                 v.remove("Contents");
             },
             Opening::Edit, View::Everything, false, Mending::Whole, true},
            {"\"Contents\" is garbage", [](V v) { v.garble("Contents"); }, Opening::Edit, View::Everything, true,
             Mending::Whole},
            {"\"Singleton Ids\" lacks a log", [](V v) { v.write("Singleton Ids", u32s({0})); }, Opening::Read,
             View::Everything, false, Mending::Whole},
            {"The name of \"Contents\" is garbled", [](V v) { v.put32(v.entryOf("Contents") + 4, 0xD8000000); },
             Opening::Edit, View::Everything, false, Mending::Whole},
            {"\"Object Ids\" lacks a column",
             [](V v) {
                 TQuobrixDocument document;
                 ASSERT_TRUE(document.open(v.path, TDocument::Access::Read));
                 ByteWriter ids;
                 ids.u32(static_cast<std::uint32_t>(document.store().objectCount() - 1));
                 for (const ObjectId id : document.store().objectIds())
                     if (id != v.distance)
                         ids.u32(id);
                 v.write("Object Ids", ids.take());
             },
             Opening::Edit, View::NoColumn, false, Mending::Whole},
            {"A log's table cannot be read", [](V v) { v.cut(name(v.trips)); }, Opening::Read, View::NoLog, false,
             Mending::Whole},
            {"A log's table says another number of rows",
             [](V v) {
                 Bytes content = v.stream(name(v.trips));
                 std::fill_n(content.begin() + 5, 4, 0xFF);
                 v.write(name(v.trips), content);
             },
             Opening::Read, View::NoLog, false, Mending::Whole},
            {"A log's table is missing", [](V v) { v.remove(name(v.trips)); }, Opening::Read, View::NoLog, false,
             Mending::Whole},
            {"A log's column cannot be read", [](V v) { v.garble(name(v.distance)); }, Opening::Edit, View::NoColumn,
             false, Mending::Part},
            {"A log's column has the layout of a later version",
             [](V v) {
                 Bytes content = v.stream(name(v.distance));
                 content[4] = 99;
                 v.write(name(v.distance), content);
             },
             Opening::Later, View::NoColumn, false, Mending::Part},
            {"A log's column is missing", [](V v) { v.remove(name(v.distance)); }, Opening::Edit, View::NoColumn, false,
             Mending::Part},
            {"A trip's table cannot be read", [](V v) { v.cut(name(v.samples)); }, Opening::Edit, View::NoSamples,
             false, Mending::Part},
            {"A trip's table is missing", [](V v) { v.remove(name(v.samples)); }, Opening::Edit, View::NoSamples, false,
             Mending::Part},
            {"The column that leads to the trips' tables is lost", [](V v) { v.cut(name(v.sampleTables)); },
             Opening::Edit, View::NoOwnedTables, false, Mending::Part},
            {"A link between directory entries is lost",
             [](V v) { v.put32(v.directory() + cfb::entry::kChild, cfb::kNoEntry); }, Opening::Edit, View::Everything,
             true, Mending::Whole},
            {"The directory entry of a column makes no sense",
             [](V v) { v.put32(v.entryOf(name(v.distance)) + cfb::entry::kNameBytes, 0x0909FFFF); }, Opening::Edit,
             View::NoColumn, false, Mending::Whole},
            {"The name of a column is garbled",
             [](V v) { v.put32(v.entryOf(name(v.distance)), 0xD800'0000 | v.get32(v.entryOf(name(v.distance)))); },
             Opening::Edit, View::NoColumn, false, Mending::Whole},
            {"The size in a column's directory entry is too large",
             [](V v) { v.put32(v.entryOf(name(v.distance)) + cfb::entry::kSize, 4000); }, Opening::Edit, View::NoColumn,
             false, Mending::Part},
            {"The directory's first sector is garbage",
             [](V v) {
                 Bytes bytes = v.bytes();
                 std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(v.directory()), cfb::kSectorSize, 0xEE);
                 v.setBytes(bytes);
             },
             Opening::Read, View::Everything, false, Mending::Part},
            {"The directory's chain is broken (FAT)",
             [](V v) {
                 const std::size_t fat = offsetOf(v.get32(76));
                 v.put32(fat + 4 * v.get32(48), 0x00ABCDEF);
             },
             Opening::Read, View::Part, false, Mending::Part},
            {"The mini stream's chain is broken (FAT)",
             [](V v) {
                 const std::size_t fat = offsetOf(v.get32(76));
                 v.put32(fat + 4 * v.get32(v.directory() + cfb::entry::kStart), 0x00ABCDEF);
             },
             Opening::Read, View::Part, false, Mending::Part},
            {"A FAT sector cannot be found",
             [](V v) { v.put32(44, v.get32(44) + 1); }, // the header says that there is one more
             Opening::Read, View::Everything, false, Mending::Part},
            {"No FAT sector can be found", [](V v) { v.put32(76, 0x00ABCDEF); }, Opening::Damaged, View::Nothing, false,
             Mending::Part},
            {"The DIFAT cannot be found",
             [](V v) {
                 v.put32(44, cfb::kFatPagesInHeader + 1);
                 v.put32(68, 0x00ABCDEF);
             },
             Opening::Read, View::Everything, false, Mending::Part},
            {"The mini FAT cannot be found", [](V v) { v.put32(60, 0x00ABCDEF); }, Opening::Read, View::NoLog, false,
             Mending::Part},
            {"The header's signature is lost", [](V v) { v.put32(0, 0); }, Opening::NoDocument, View::Nothing, false,
             Mending::Part},
            {"The rest of the header is garbage",
             [](V v) {
                 Bytes bytes = v.bytes();
                 std::fill_n(bytes.begin() + 44, cfb::kSectorSize - 44, 0xEE);
                 v.setBytes(bytes);
             },
             Opening::Damaged, View::Nothing, false, Mending::Part},
            {"The last two kilobytes of the file are missing",
             [](V v) {
                 Bytes bytes = v.bytes();
                 bytes.resize(bytes.size() - 2048);
                 v.setBytes(bytes);
             },
             Opening::Damaged, View::Nothing, false, Mending::Part},
            {"The second half of the file is missing",
             [](V v) {
                 Bytes bytes = v.bytes();
                 bytes.resize(bytes.size() / 2);
                 v.setBytes(bytes);
             },
             Opening::Damaged, View::Nothing, false, Mending::Part},
        };
        all.insert(all.end(), others.begin(), others.end());
        return all;
    }();
    return rows;
}

// The table as the documentation has it

std::string line(const Row& row) {
    static const std::map<Opening, std::string> opening = {
        {Opening::Edit, "for editing"},
        {Opening::Read, "read-only"},
        {Opening::Later, "read-only"},
        {Opening::Damaged, "refused: damaged"},
        {Opening::NoDocument, "refused: not a data file"},
    };
    static const std::map<View, std::string> view = {
        {View::Everything, "everything"},
        {View::NoColumn, "all but that column"},
        {View::NoSamples, "all but that trip's samples"},
        {View::NoOwnedTables, "all but the samples"},
        {View::NoLog, "all but the logs concerned"},
        {View::Part, "what can be reached"},
        {View::Nothing, "–"},
    };
    static const std::map<Opening, std::string> saving = {
        {Opening::Edit, "in place"}, {Opening::Read, "under another name"},
        {Opening::Later, "–"},       {Opening::Damaged, "–"},
        {Opening::NoDocument, "–"},
    };
    static const std::map<Mending, std::string> repair = {
        {Mending::Whole, "loses nothing"},
        {Mending::Part, "saves the rest"},
    };
    return fmt::format("| {} | {} | {} | {} | {} | {} |", row.damage, opening.at(row.opening), view.at(row.view),
                       saving.at(row.opening),
                       refuses(row)         ? "refused"
                       : row.sound          ? "sound"
                       : row.mendedBySaving ? "says what, until it is saved"
                                            : "says what",
                       repair.at(row.repair));
}

TEST(DamageTable, StandsInTheDocumentation) {
    std::ifstream file(QUOBRIX_SOURCE "/docs/reliability.md");
    std::ostringstream text;
    text << file.rdbuf();
    std::string missing;
    for (const Row& row : table())
        if (text.str().find(line(row) + "\n") == std::string::npos)
            missing += line(row) + "\n";
    EXPECT_EQ(missing, "");
}

// What it says is so

class Damaged : public testing::TestWithParam<Row> {
protected:
    void expectView(TQuobrixDocument& document, View view) {
        if (view == View::Part)
            return;
        const TTripLogTable& trips = document.trips();
        ASSERT_EQ(trips.rowCount(), view == View::NoLog ? 0u : kVictimTrips);
        if (view == View::NoLog)
            return;
        EXPECT_EQ(trips.column<TTripLogDistanceColumn>().value(1), view == View::NoColumn ? Value() : Value(12000.0));
        EXPECT_EQ(trips.column<TTripLogMaximumSpeedColumn>().value(1), Value(75 * kMph));
        const auto& samples = trips.column<TTripLogSampleTableColumn>();
        EXPECT_EQ(samples.object(1) != nullptr, view != View::NoSamples && view != View::NoOwnedTables);
        EXPECT_EQ(samples.object(0) != nullptr, view != View::NoOwnedTables);
    }

    /// No stream of the file's is another than BEFORE, unless the save has written it.
    void expectKept(const Streams& before, const Streams& after, std::initializer_list<ObjectId> written) {
        for (const auto& [stream, content] : before) {
            const bool own = std::ranges::any_of(written, [&](ObjectId id) { return name(id) == stream; });
            if (const auto found = after.find(stream); !own && (found == after.end() || found->second != content))
                ADD_FAILURE() << stream;
        }
    }

    EditOutcome comment(TQuobrixDocument& document) {
        const TTripLogTable& trips = document.trips();
        return document.edits().type(trips.id(), trips.indexOf("TTripLogCommentsColumn"), 1, "kept", context_);
    }

    /// An edit is saved in place, and what cannot be read stays as it is and where it is: the check goes on naming it,
    /// and the repair finds what it would have found.
    void expectEditable(TQuobrixDocument& document) {
        const Streams before = readable();
        EXPECT_EQ(comment(document).refusal, "");
        document.edits().undo();
        document.forgetUnchanged();
        EXPECT_FALSE(document.modified());
        document.edits().redo();
        const ObjectId written = document.trips().column<TTripLogCommentsColumn>().id();
        ASSERT_TRUE(document.save());
        document.newDocument();
        expectKept(before, readable(), {written});
        expectOpens(document, victim_.path);
        EXPECT_EQ(document.trips().column<TTripLogCommentsColumn>().at(1), "kept");
        expectView(document, GetParam().view);
        EXPECT_EQ(checkDocument(document).sound(), GetParam().sound || GetParam().mendedBySaving);
        document.newDocument();
        TQuobrixDocument repaired;
        expectRepair("Edited and repaired.car", repaired);
    }

    /// Nothing is written at all: what else must change with the column is known to the later version only.
    void expectOfLaterVersion(TQuobrixDocument& document) {
        EXPECT_EQ(document.readOnlyReason()->kind, ErrorKind::Unsupported);
        const Bytes before = victim_.bytes();
        EXPECT_NE(comment(document).refusal.find("a later version"), std::string::npos);
        EXPECT_NE(document.edits().insertRows(document.drivers().id(), 0).refusal, "");
        for (const Result<void>& saved : {document.save(), document.saveAs(folder_ / "Copy.car"), document.compact()})
            EXPECT_FALSE(saved);
        EXPECT_EQ(victim_.bytes(), before);
    }

    /// Nothing is written over the file; under another name everything that can be read is kept, and changes too.
    void expectReadOnly(TQuobrixDocument& document) {
        EXPECT_EQ(document.readOnlyReason()->kind, ErrorKind::Corrupt);
        const Bytes before = victim_.bytes();
        document.drivers().insertRows(0, 1);
        EXPECT_FALSE(document.save());
        EXPECT_EQ(victim_.bytes(), before);
        const Result<void> saved = document.saveAs(folder_ / "Copy.car");
        ASSERT_TRUE(saved) << saved.error().detail;
        EXPECT_EQ(victim_.bytes(), before);
        if (GetParam().view == View::Part)
            return; // what can be reached may be a document of its own
        expectView(document, GetParam().view);
        const bool mended = GetParam().view == View::Everything;
        EXPECT_EQ(document.readOnly(), !mended);
        document.newDocument(); // lets go of the file
        TQuobrixDocument copy;
        expectOpens(copy, folder_ / "Copy.car");
        expectView(copy, GetParam().view);
        if (mended) {
            EXPECT_EQ(copy.drivers().rowCount(), 1u);
        }
        EXPECT_EQ(copy.readOnly(), !mended);
        EXPECT_EQ(checkDocument(copy).sound(), mended);
    }

    void expectRepair(const char* into, TQuobrixDocument& document) {
        const Row& row = GetParam();
        const auto found = openForRepair(*openFile(victim_.path, FileMode::Read));
        ASSERT_TRUE(found);
        const Result<DocumentRepair> repair = repairDocument(**found, folder_ / into);
        ASSERT_TRUE(repair);
        EXPECT_EQ(repair->complete(), row.repair == Mending::Whole)
            << (repair->complete() ? ShownText() : repair->lost.front().what);
        expectOpens(document, folder_ / into);
        EXPECT_FALSE(document.readOnly());
        EXPECT_TRUE(checkDocument(document).sound());
        if (row.repair == Mending::Whole)
            expectView(document, View::Everything);
        EXPECT_FALSE(document.doubt());
    }

    static void expectOpens(TQuobrixDocument& document, const fs::path& path) {
        const Result<void> opened = document.open(path, TDocument::Access::Edit);
        ASSERT_TRUE(opened) << opened.error().detail;
    }
    Streams readable() const { return readableStreams(*compoundFile(victim_.path, FileMode::Read)); }

    TemporaryFolder folder_;
    Victim victim_{folder_ / "Test.car"};
    TUnitSystem units_;
    TimeZone zone_;
    TextContext context_{units_, zone_};
};

TEST_P(Damaged, IsAsTheTableSays) {
    const Row& row = GetParam();
    row.apply(victim_);
    const Bytes damaged = victim_.bytes();

    TQuobrixDocument document;
    const Result<void> opened = document.open(victim_.path, TDocument::Access::Read);
    if (refuses(row)) {
        ASSERT_FALSE(opened);
        EXPECT_EQ(opened.error().kind, row.opening == Opening::Damaged ? ErrorKind::Corrupt : ErrorKind::NotADocument);
        EXPECT_EQ(document.title(), "Quobrix Data"); // what was there before
    } else {
        ASSERT_TRUE(opened);
        EXPECT_EQ(checkDocument(document).sound(), row.sound);
        document.newDocument();
    }

    expectRepair("Repaired.car", document);
    EXPECT_EQ(victim_.bytes(), damaged);
    if (refuses(row)) {
        EXPECT_EQ(document.trips().rowCount(), kVictimTrips);
        EXPECT_EQ(document.trips().column<TTripLogDistanceColumn>().value(1), Value(12000.0));
        return;
    }

    expectOpens(document, victim_.path);
    expectView(document, row.view);
    ASSERT_EQ(document.readOnly(), row.opening == Opening::Read || row.opening == Opening::Later);
    if (!row.sound) { // something to be told
        EXPECT_TRUE(document.readOnly() || !document.affectedLogs().empty() || row.view == View::Everything);
    }
    if (row.opening == Opening::Later)
        expectOfLaterVersion(document);
    else if (document.readOnly())
        expectReadOnly(document);
    else
        expectEditable(document);
}

INSTANTIATE_TEST_SUITE_P(Table, Damaged, testing::ValuesIn(table()), [](const auto& row) {
    std::string name(row.param.damage);
    std::erase_if(name, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); });
    return name;
});

TEST(FailingDisk, FailedReadsAreTriedAgain) {
    const fs::path path = "/folder/Test.car";
    FaultFolder folder(1);
    TQuobrixDocument document(folder);
    addTrip(document, kStart);
    addTrip(document, kStart + 3600);
    ASSERT_TRUE(document.saveAs(path));
    ASSERT_TRUE(document.open(path, TDocument::Access::Edit));
    int told = 0;
    document.whenDamaged([&] { ++told; });
    const auto failing = [&](const auto& work) {
        folder.failAt = folder.operations + 1;
        folder.failures = 1000;
        work();
        folder.failAt = 0;
    };

    const TTripLogTable& trips = document.trips();
    const Column* shown = nullptr;
    const std::size_t operations = folder.operations;
    failing([&] {
        shown = &trips.column<TTripLogDistanceColumn>();
        EXPECT_EQ(shown->value(1), Value());
        for (int i = 0; i < 1000; ++i) // as painting does
            trips.column<TTripLogDistanceColumn>();
    });
    EXPECT_LT(folder.operations, operations + 100) << "a disk that fails slowly is not asked for each cell";
    EXPECT_EQ(told, 1) << "once for each object";
    EXPECT_EQ(document.affectedLogs(), std::vector<std::string>{"Trip Log"});
    EXPECT_TRUE(trips.unreadableColumns().empty());
    EXPECT_EQ(shown->value(1), Value(12000.0)) << "for those who have it already, too";
    EXPECT_TRUE(document.store().damage().empty());

    // Once more, from the beginning, while a comment is typed.
    ASSERT_TRUE(document.open(path, TDocument::Access::Edit));
    const auto& comments = document.trips().column<TTripLogCommentsColumn>();
    TUnitSystem units;
    TimeZone zone;
    const TextContext context{units, zone};
    failing([&] {
        const TTripLogTable& again = document.trips();
        EXPECT_GT(again.unreadableColumns().size(), 20u);
        EXPECT_TRUE(
            document.edits().type(again.id(), comments.table()->indexOf(comments.spec().key), 0, "Rain", context).ok());
        EXPECT_FALSE(again.rowLock().empty());
    });
    EXPECT_TRUE(document.trips().rowLock().empty());
    ASSERT_TRUE(document.save());
    document.newDocument();
    ASSERT_TRUE(document.open(path, TDocument::Access::Read));
    EXPECT_EQ(document.trips().column<TTripLogMaximumSpeedColumn>().value(1), Value(75 * kMph));
    EXPECT_EQ(document.trips().column<TTripLogCommentsColumn>().at(0), "Rain");
    EXPECT_TRUE(checkDocument(document).sound());
    EXPECT_TRUE(checkDocument(document).notes.empty());
}

// Whatever happens to the structure of a file: what is not shown is missed

/// All values of the logs and the vehicles' names; what may be lost with the index is looked for.
std::vector<Value> everything(TQuobrixDocument& document) {
    std::vector<Value> values;
    if (!document.accidents())
        document.store().findLostSingletons();
    for (const Table* table : std::initializer_list<const Table*>{
             &document.trips(), &document.troubles(), &document.activity(), document.accidents(), &document.vehicles()})
        for (RowIndex row = 0; table && row < table->rowCount(); ++row)
            for (std::size_t i = 0; i < table->columnCount(); ++i)
                values.push_back(table->column(i).value(row));
    return values;
}

// Whatever is damaged: it is told of which log

/// Everything that windows show of the records, as well.
void showEverything(TQuobrixDocument& document) {
    everything(document);
    for (const Table* names :
         std::initializer_list<const Table*>{&document.drivers(), &document.vehicles(), &document.loggers()})
        names->unreadableColumns();
    const TUnitSystem units;
    const TimeZone zone;
    for (const LogSpec& log : logs())
        if (const Table* table = document.log(log)) {
            table->unreadableColumns();
            for (RowIndex row = 0; row < table->rowCount(); ++row) {
                recordReport(log, *table, row, {units, zone});
                if (log.tables)
                    log.tables(table, row, {units, zone});
            }
        }
}

TEST(DamageOfAnyObject, IsToldOfItsLog) {
    const TemporaryFolder folder;
    const Victim victim(folder / "Test.car");
    const Bytes sound = victim.bytes();
    std::map<ObjectId, std::string> classes;
    {
        TQuobrixDocument document;
        ASSERT_TRUE(document.open(victim.path, TDocument::Access::Read));
        for (const ObjectId id : document.store().objectIds())
            classes[id] = document.store().find(id)->type().name;
    }
    const std::map<std::string, std::function<void(CompoundFile&, const std::string&)>> damages = {
        {"missing", [](auto& file, auto& stream) { file.remove(stream); }},
        {"cut short",
         [](auto& file, auto& stream) {
             Bytes content = *file.read(stream);
             content.pop_back();
             file.write(stream, content);
         }},
        {"garbage", [](auto& file, auto& stream) { file.write(stream, Bytes(file.read(stream)->size(), 0xEE)); }},
    };
    for (const auto& [id, className] : classes)
        for (const auto& [damage, apply] : damages) {
            SCOPED_TRACE(className + " " + name(id) + " " + damage);
            const auto bytes = std::make_shared<Bytes>(sound);
            const auto file = *CompoundFile::open(std::make_unique<MemoryFile>(bytes));
            apply(*file, name(id));
            ASSERT_TRUE(file->commit());
            victim.setBytes(*bytes);
            TQuobrixDocument document;
            ASSERT_TRUE(document.open(victim.path, TDocument::Access::Edit));
            showEverything(document);
            const std::string log = text(logOfClass(className));
            EXPECT_EQ(document.affectedLogs(), std::vector<std::string>{log});
            for (const CheckFinding& finding : checkDocument(document).damages)
                EXPECT_TRUE(finding.log == log || finding.id == kNoObject) << finding.what;
        }
}

class Mutants : public testing::Test {
protected:
    Mutants() {
        TQuobrixDocument document;
        EXPECT_TRUE(document.open(victim_.path, TDocument::Access::Read));
        EXPECT_FALSE(document.doubt());
        all_ = everything(document);
    }

    void expectToldIfMissing(const Bytes& mutant, const std::string& what) {
        victim_.setBytes(mutant);
        TQuobrixDocument document;
        ++count_;
        if (!document.open(victim_.path, TDocument::Access::Read))
            return;
        const bool missing = everything(document) != all_;
        missing_ += missing;
        if (missing && document.affectedLogs().empty() && !document.doubt())
            ADD_FAILURE() << what;
    }

    std::uint32_t at(std::size_t offset) const { return cfb::load32(sound_.data() + offset); }
    /// The offsets of the sectors that a chain of the FAT leads to.
    std::vector<std::size_t> chain(std::uint32_t sector) const {
        std::vector<std::size_t> offsets;
        for (; sector < cfb::kUnknownSector; sector = at(offsetOf(at(76)) + 4 * sector))
            offsets.push_back(offsetOf(sector));
        return offsets;
    }

    TemporaryFolder folder_;
    Victim victim_{folder_ / "Test.car"};
    const Bytes sound_ = victim_.bytes();
    std::vector<Value> all_;
    std::size_t count_ = 0, missing_ = 0;
};

TEST_F(Mutants, NeverPassForWholeWhenSomethingIsMissing) {
    std::vector<std::pair<std::size_t, std::size_t>> places = {{24, cfb::kSectorSize}}; // from, to
    std::vector<std::size_t> sectors = chain(at(48));
    for (const std::size_t sector : chain(at(60)))
        sectors.push_back(sector);
    sectors.push_back(offsetOf(at(76)));
    for (const std::size_t sector : sectors)
        places.emplace_back(sector, sector + cfb::kSectorSize);
    const std::vector<std::size_t> mini = chain(at(victim_.directory() + cfb::entry::kStart));
    for (const char* stream : {"Version", "Next Available Id", "Available Ids", "Object Ids", "Singleton Ids"}) {
        const std::uint32_t start = at(victim_.entryOf(stream) + cfb::entry::kStart);
        const std::size_t page = mini[start / cfb::kMiniSectorsPerPage];
        const std::size_t first = page + cfb::kMiniSectorSize * (start % cfb::kMiniSectorsPerPage);
        places.emplace_back(first, std::min(first + victim_.stream(stream).size(), page + cfb::kSectorSize));
    }
    for (const auto& [from, to] : places)
        for (const std::uint8_t filling : Bytes{0x00, 0xFF, 0xEE}) {
            Bytes mutant = sound_;
            std::fill(mutant.begin() + static_cast<std::ptrdiff_t>(from),
                      mutant.begin() + static_cast<std::ptrdiff_t>(to), filling);
            expectToldIfMissing(mutant, fmt::format("{} to {} filled with {}", from, to, filling));
        }
    std::uint32_t random = 1;
    const auto next = [&] { return (random = random * 1664525 + 1013904223) >> 8; };
    for (int i = 0; i < 600; ++i) {
        const auto& [from, to] = places[next() % places.size()];
        const std::size_t offset = from + next() % ((to - from) / 4) * 4;
        const std::uint32_t old = at(offset);
        const std::uint32_t values[] = {0,       ~0u,          cfb::kEndOfChain,       old + 1,
                                        old - 1, next() % 200, old ^ 1u << next() % 32};
        const std::uint32_t value = values[next() % std::size(values)];
        Bytes mutant = sound_;
        cfb::store32(mutant.data() + offset, value);
        expectToldIfMissing(mutant, fmt::format("{} at {}: {}", old, offset, value));
    }
    for (std::size_t lost = 1; lost < sound_.size(); lost += 1 + lost / 8)
        expectToldIfMissing({sound_.begin(), sound_.end() - static_cast<std::ptrdiff_t>(lost)},
                            fmt::format("{} bytes cut off", lost));
    EXPECT_GT(missing_, 50u); // or the mutants prove nothing
}

} // namespace
} // namespace quobrix
