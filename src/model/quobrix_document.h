#pragma once

#include "document/document.h"
#include "model/accident_log.h"
#include "model/activity_log.h"
#include "model/fuel_entries.h"
#include "model/logger_tables.h"
#include "model/logs.h"
#include "model/names.h"
#include "model/trip_log.h"
#include "model/trouble_log.h"
#include "tables/table_edits.h"
#include "texts/source_text.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// Every persistent class of the program.
const TypeRegistry& modelTypes();

/// The tables that every document has, with or without records.
inline constexpr const PersistentType* kRootTables[] = {
    &DriverNamesTable::kType, &TVehicleNamesTable::kType, &TQuobrixNamesTable::kType,
    &TTripLogTable::kType,    &TTroubleLogTable::kType,   &TSecurityLogTable::kType,
};
bool isRootTable(const PersistentType& type);

/// The document of this program: the object store with its six root tables bound after every open and new.
class TQuobrixDocument final : public TDocument, private TableEditsListener {
public:
    explicit TQuobrixDocument(FileSystem& files = FileSystem::system());
    ~TQuobrixDocument() override;

    // The root tables. They change with every newDocument() and open(). A damaged one reads as empty, and the document
    // is then read-only.
    TTripLogTable& trips() const { return *trips_; }
    TTroubleLogTable& troubles() const { return *troubles_; }
    TSecurityLogTable& activity() const { return *activity_; }
    TVehicleNamesTable& vehicles() const { return *vehicles_; }
    TQuobrixNamesTable& loggers() const { return *loggers_; }
    DriverNamesTable& drivers() const { return *drivers_; }
    /// The accident log; none before the first stop was recorded.
    TAccidentLogTable* accidents() { return store().existingSingleton<TAccidentLogTable>(); }

    /// The fuel entries; none before the first one.
    TFuelEntryTable* fuelEntries() { return store().existingSingleton<TFuelEntryTable>(); }

    /// The table of LOG. Nothing if the document has none, or cannot read it, and it is no root table.
    Table* log(const LogSpec& log);

    /// The way by which all editing of its tables goes, downloads included.
    TableEdits& edits() { return edits_; }

    /// Rows were added or edited since the document was opened or begun. Not of one without a file that holds nothing:
    /// there would be nothing to save.
    bool dataChanged() const { return dataChanged_ && (hasFile() || holdsSomething()); }
    void setDataChanged() { dataChanged_ = true; }

    /// The file's name without its folder; "Quobrix Data" for an untitled document.
    std::string title() const;
    /// The document is the delivered example, by its title: never saved, never asked about.
    bool isExample() const;

    /// The logs and name tables that what could not be read so far belongs to ("Trip Log", …), each once; what could be
    /// read in the end was perhaps missing where it was first shown. Damage of the index alone is of none.
    std::vector<std::string> affectedLogs();
    /// A whole table could not be read, which is among the affectedLogs() and makes the document read-only.
    bool lacksTable() const;

protected:
    Result<void> bind() override;
    std::optional<Error> damage() const override;
    bool keepsBackup(const std::filesystem::path& file) const override;

private:
    void tableChanged(const TableChange&) override { setDataChanged(); }
    bool holdsSomething() const;
    /// Edits of the example would be lost, and those of a damaged document might lose something.
    ShownText lockedBecause() const;
    std::array<Table*, 6> roots() const { return {drivers_, vehicles_, loggers_, trips_, troubles_, activity_}; }

    TTripLogTable* trips_ = nullptr;
    TTroubleLogTable* troubles_ = nullptr;
    TSecurityLogTable* activity_ = nullptr;
    TVehicleNamesTable* vehicles_ = nullptr;
    TQuobrixNamesTable* loggers_ = nullptr;
    DriverNamesTable* drivers_ = nullptr;
    bool dataChanged_ = false;
    TableEdits edits_{*this};
};

/// The log or name table that objects of a class belong to ("Trip Log", …); kOtherLog for all others.
inline constexpr SourceText kOtherLog("Other tables");
SourceText logOfClass(std::string_view className);

/// A file whose name is "Example" or "Example.car", in any case, is the example.
bool isExampleName(std::string_view fileName);

} // namespace quobrix
