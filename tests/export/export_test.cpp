#include "export/csv.h"
#include "export/json.h"

#include "tables/sample_table.h"

namespace quobrix::test {
namespace {

class Export : public TablesTest {
protected:
    using Writer = std::function<void(const ExportSink&)>;
    static std::string text(const Writer& write) {
        std::string bytes;
        write([&](std::string_view more) {
            bytes += more;
            return true;
        });
        return bytes;
    }
    std::string csv(std::vector<ExportRecords> records) {
        return text([&](const ExportSink& sink) { writeCsv(records, context_, sink); });
    }
    static std::string json(std::vector<ExportRecords> records) {
        return text([&](const ExportSink& sink) { writeJson(records, sink); });
    }
    ExportRecords everything() { return {exportColumns(table_, Repeats::Keep), allRows(table_)}; }
    ExportRecords cells(std::vector<int> columns, std::vector<RowIndex> rows) {
        ExportRecords records{{}, std::move(rows)};
        for (const int column : columns)
            records.columns.push_back({&table_.column(static_cast<std::size_t>(column))});
        return records;
    }

    SampleTable table_{3};
};

TEST_F(Export, WritesWhatIsChosenInOrder) {
    table_.column<SampleKey>().setAll({"A", "B", "C"});
    table_.column<SampleSpeed>().setAll({10, kNoValue, -0.5});
    units_.setUnit(UnitTypeId::Speed, UnitId::KilometrePerHour);
    const ExportRecords chosen = cells({SampleTable::Speed, SampleTable::Key}, {2, 0});
    EXPECT_EQ(csv({chosen}), "Speed (kph),Key\r\n-2,C\r\n36,A\r\n");
    EXPECT_EQ(json({chosen}),
              "[\n{\"SampleSpeed\":-0.5,\"SampleKey\":\"C\"},\n{\"SampleSpeed\":10,\"SampleKey\":\"A\"}\n]\n");
    EXPECT_EQ(json({cells({SampleTable::Speed}, {1})}), "[\n{\"SampleSpeed\":null}\n]\n");
    EXPECT_EQ(csv({cells({SampleTable::Key}, {})}) + json({cells({}, {})}), "Key\r\n[\n]\n");
    ExportRecords other = cells({SampleTable::Key}, {1});
    ExportRecords first = cells({SampleTable::Key}, {2, 0});
    first.file = "=a.car";
    other.file = "b.car";
    EXPECT_EQ(csv({first, other}), "File,Key\r\n'=a.car,C\r\n'=a.car,A\r\nb.car,B\r\n");
    EXPECT_EQ(json({other}), "[\n{\"file\":\"b.car\",\"SampleKey\":\"B\"}\n]\n");
}

TEST_F(Export, TextsAreTakenForNothingElse) {
    struct Case {
        const char* text;
        const char* csv;
        const char* json;
    };
    const Case cases[] = {
        {"=1+1", "'=1+1", "\"=1+1\""},
        {"@SUM(A1)", "'@SUM(A1)", "\"@SUM(A1)\""},
        {"+49 89", "'+49 89", "\"+49 89\""},
        {"-cmd|' /C calc'!A0", "'-cmd|' /C calc'!A0", "\"-cmd|' /C calc'!A0\""},
        {"\t=1", "' =1", "\"\\u0009=1\""},
        {"-12,5", "\"-12,5\"", "\"-12,5\""},
        {"1-1", "1-1", "\"1-1\""},
        {"a \"b\"\nc", "\"a \"\"b\"\"\nc\"", "\"a \\\"b\\\"\\u000ac\""},
        {"\x1B[2J\x7F\xC2\x9B", " [2J  ", "\"\\u001b[2J\\u007f\\u009b\""},
        {"caf\xC3", "caf\xEF\xBF\xBD", "\"caf\xEF\xBF\xBD\""},
    };
    for (const Case& c : cases) {
        table_.column<SampleKey>().set(0, c.text);
        EXPECT_EQ(csv({cells({SampleTable::Key}, {0})}), std::string("Key\r\n") + c.csv + "\r\n") << c.text;
        EXPECT_EQ(json({cells({SampleTable::Key}, {0})}), std::string("[\n{\"SampleKey\":") + c.json + "}\n]\n");
    }
}

TEST_F(Export, EndsWhenTheSinkTakesNoMore) {
    int taken = 0;
    const auto sink = [&](std::string_view) { return ++taken < 2; };
    const ExportRecords all = everything();
    writeCsv({&all, 1}, context_, sink);
    EXPECT_EQ(std::exchange(taken, 0), 2);
    writeJson({&all, 1}, sink);
    EXPECT_EQ(taken, 2);
}

} // namespace
} // namespace quobrix::test
