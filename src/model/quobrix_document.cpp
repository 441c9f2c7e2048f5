#include "model/quobrix_document.h"

#include "base/path_text.h"
#include "texts/text.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <unordered_map>

namespace quobrix {
namespace {

/// The tables that are no logs, and the names of their classes up to "Table".
struct NamesOfClass {
    std::string_view classPrefix;
    SourceText title;
};
constexpr NamesOfClass kNameTables[] = {
    {"TVehicleNames", SourceText("Vehicle ID")},
    {"TQuobrixNames", SourceText("Quobrix ID")},
    {"DriverNames", SourceText("Driver ID")},
    {"TFuelEntry", SourceText("Fuel Entry")},
};

/// The root table T. Its row count is looked at now, so that a damaged one is known to be before anything is changed.
template <class T>
T* rootTable(ObjectStore& store) {
    store.singleton<T>().rowCount();
    return &store.singleton<T>();
}

} // namespace

bool isRootTable(const PersistentType& type) { return std::ranges::find(kRootTables, &type) != std::end(kRootTables); }

SourceText logOfClass(std::string_view className) {
    for (const LogSpec& log : logs())
        if (className.starts_with(log.className()))
            return log.title;
    for (const NamesOfClass& names : kNameTables)
        if (className.starts_with(names.classPrefix))
            return names.title;
    return kOtherLog;
}

const TypeRegistry& modelTypes() {
    static const TypeRegistry registry = [] {
        TypeRegistry types;
        for (const LogSpec& log : logs()) {
            types.add(log.table);
            const std::unique_ptr<PersistentObject> table = log.table.create();
            for (const PersistentType* column : static_cast<const Table&>(*table).spec().columns)
                types.add(*column);
        }
#define TABLE(Name) types.add(Name::kType);
        TABLE(TTripLogSampleTable)
        TABLE(TTripLogSpeedBandsTable)
        TABLE(TTripLogParametersTable)
        TABLE(TAccidentLogSpeedBandsTable)
        TABLE(TVehicleNamesTable)
        TABLE(TQuobrixNamesTable)
        TABLE(DriverNamesTable)
        TABLE(TFuelEntryTable)
        TABLE(TDownloadTable)
        TABLE(TClearTable)
        TABLE(TCurrentSpeedBandsTable)
        TABLE(TCurrentParametersTable)
        TABLE(TTripLogSampleElapsedTimeColumn)
        TABLE(TAccidentLogSamplesColumn)
        TABLE(TAccidentLogSampleElapsedTimeColumn)
        TABLE(TAccidentLogSpeedBandFromColumn)
        TABLE(TAccidentLogSpeedBandToColumn)
#define COLUMN(Name, ...) types.add(Name::kType);
#include "model/fuel_entries.def"
#include "model/logger_tables.def"
#include "model/names.def"
#include "model/options.def"
#include "model/trip_parts.def"
#undef COLUMN
#undef TABLE
        return types;
    }();
    return registry;
}

TQuobrixDocument::TQuobrixDocument(FileSystem& files) : TDocument(modelTypes(), files) {
    edits_.addListener(*this);
    edits_.setLock([this] { return lockedBecause(); });
    newDocument();
}

TQuobrixDocument::~TQuobrixDocument() { edits_.removeListener(*this); }

Table* TQuobrixDocument::log(const LogSpec& log) {
    for (Table* root : roots())
        if (root->type().id() == log.table.id())
            return root; // a damaged one, too
    return static_cast<Table*>(store().existingSingletonOf(log.table));
}

Result<void> TQuobrixDocument::bind() {
    auto* drivers = rootTable<DriverNamesTable>(store());
    auto* vehicles = rootTable<TVehicleNamesTable>(store());
    auto* loggers = rootTable<TQuobrixNamesTable>(store());
    auto* trips = rootTable<TTripLogTable>(store());
    auto* troubles = rootTable<TTroubleLogTable>(store());
    auto* activity = rootTable<TSecurityLogTable>(store());
    if (outdated()) // while its tables were read
        return *readOnlyReason();
    drivers_ = drivers;
    vehicles_ = vehicles;
    loggers_ = loggers;
    trips_ = trips;
    troubles_ = troubles;
    activity_ = activity;
    dataChanged_ = false;
    edits_.clear();
    return {};
}

bool TQuobrixDocument::lacksTable() const {
    return std::ranges::any_of(roots(), [](const Table* root) { return !root->store(); }); // a stand-in
}

std::optional<Error> TQuobrixDocument::damage() const {
    for (const Table* root : roots())
        if (!root->store()) // a stand-in
            return Error{ErrorKind::Corrupt, text(TextId::CannotBeRead, text(logOfClass(root->type().name)))};
    return TDocument::damage();
}

bool TQuobrixDocument::keepsBackup(const std::filesystem::path& file) const {
    return !isExampleName(utf8(file.filename()));
}

std::string TQuobrixDocument::title() const {
    return path().empty() ? text(TextId::Untitled) : utf8(path().filename());
}

bool TQuobrixDocument::holdsSomething() const {
    return std::ranges::any_of(roots(), [](const Table* table) { return table->rowCount() > 0; }) ||
           std::ranges::any_of(logs(),
                               [this](const LogSpec& log) { // one that not every document has
                                   return !isRootTable(log.table) && store().singletonIds().contains(log.table.id());
                               }) ||
           store().singletonIds().contains(TFuelEntryTable::kType.id());
}

ShownText TQuobrixDocument::lockedBecause() const {
    if (isExample())
        return text(TextId::ExampleNotEdited);
    if (outdated())
        return text(TextId::NotEditedChanged);
    if (store().ofLaterVersion() || store().laterLayoutMet())
        return text(TextId::NotEditedLaterVersion);
    if (const std::optional<Error> reason = readOnlyReason(); reason && reason->kind == ErrorKind::Corrupt)
        return text(TextId::NotEditedDamaged, reason->detail);
    return {};
}

bool TQuobrixDocument::isExample() const { return isExampleName(title()); }

bool isExampleName(std::string_view fileName) {
    std::string lower(fileName);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower == "example" || lower == "example.car";
}

std::vector<std::string> TQuobrixDocument::affectedLogs() {
    std::vector<std::string> logs;
    const auto add = [&](SourceText title) {
        const std::string log = text(title);
        if (std::find(logs.begin(), logs.end(), log) == logs.end())
            logs.push_back(log);
    };
    for (const Table* root : roots())
        if (!root->store()) // a stand-in
            add(logOfClass(root->type().name));
    std::unordered_map<ObjectId, const PersistentType*> owners; // made when first needed
    bool others = false;
    for (const std::vector<Damage>* damages : {&store().damage(), &store().recovered()})
        for (const Damage& damage : *damages) {
            if (damage.id == kNoObject)
                continue; // the index: of no log
            const PersistentType* type = store().types().find(damage.typeId);
            if (!type) {
                if (owners.empty())
                    owners = store().owners();
                const auto owner = owners.find(damage.id);
                type = owner == owners.end() ? nullptr : owner->second;
            }
            if (type)
                add(logOfClass(type->name));
            else
                others = true;
        }
    if (others && logs.empty()) // else it belongs to these, or belonged to a record that has been deleted
        add(kOtherLog);
    return logs;
}

} // namespace quobrix
