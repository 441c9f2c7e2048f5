#include "app/properties_dialog.h"

#include "model/document_properties.h"
#include "support/temporary_folder.h"
#include "support/view_fixture.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

class PropertiesDialogTest : public test::ViewTest {
protected:
    std::string value(const char* key) {
        const auto all = documentProperties(document_, context_.text());
        const auto found = std::ranges::find(all, std::string_view(key), &DocumentProperty::key);
        return found == all.end() ? "no " + std::string(key) : found->value;
    }
    void addTrips(int count) {
        for (int i = 0; i < count; ++i)
            test::addTrip(document_, 1'700'000'000 + 3600 * i);
    }

    test::TemporaryFolder folder_;
    const fs::path path_ = folder_ / "Doc.car";
};

TEST_F(PropertiesDialogTest, TellsWhatIsInTheDocumentAndWhereItLies) {
    EXPECT_EQ(value("Path"), "Not saved yet");
    EXPECT_EQ(value("Size"), "no Size");
    addTrips(2);
    ASSERT_TRUE(document_.saveAs(path_));
    EXPECT_EQ(value("Path"), path_.string());
    EXPECT_EQ(value("Trips"), "2");
    EXPECT_EQ(value("Vehicles"), "1");
    EXPECT_EQ(value("Accidents"), "0");
    EXPECT_EQ(value("Objects"), std::to_string(document_.store().objectCount()));
    EXPECT_EQ(value("Format"), "2 (schema 3)");
    EXPECT_EQ(value("Backup"), "None");
    EXPECT_EQ(value("ReadOnly"), "no ReadOnly");
    units_.setUnit(UnitTypeId::ByteCount, UnitId::Kilobytes);
    EXPECT_NE(value("Size").find(" KB ("), std::string::npos) << value("Size");
    EXPECT_TRUE(value("Size").ends_with(" bytes)")) << value("Size");
    EXPECT_EQ(value("FreeSpace"), "None");

    // One date for the file and its backup, in the user's form.
    const auto when = fs::file_time_type::clock::now();
    addTrips(1);
    ASSERT_TRUE(document_.save());
    fs::last_write_time(path_, when);
    fs::last_write_time(TDocument::backupPath(path_), when);
    EXPECT_EQ(value("Modified").size(), std::string_view("11/14/2023 10:13 PM").size());
    EXPECT_EQ(value("Backup"), value("Modified"));

    TQuobrixDocument reader;
    ASSERT_TRUE(document_.open(path_, TDocument::Access::Read));
    EXPECT_EQ(value("ReadOnly"), "This file was opened for reading only.");
}

TEST_F(PropertiesDialogTest, TheUnusedSpaceIsShownAndTakenAway) {
    addTrips(40);
    ASSERT_TRUE(document_.saveAs(path_));
    document_.trips().removeRows(0, 39);
    ASSERT_TRUE(document_.save());
    PropertiesDialog dialog(
        context_, [this] { ASSERT_TRUE(document_.compact()); }, nullptr);
    auto* button = dialog.findChild<QPushButton*>(QStringLiteral("CompactButton"));
    const auto* space = dialog.findChild<QLineEdit*>(QStringLiteral("FreeSpace"));
    EXPECT_TRUE(button->isEnabled());
    const QString before = space->text();
    EXPECT_TRUE(before.endsWith(QLatin1String(" %)"))) << before.toStdString();
    button->click();
    EXPECT_NE(space->text(), before);
    EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("Trips"))->text(), QStringLiteral("1"));
    EXPECT_TRUE(dialog.findChild<QWidget*>(QStringLiteral("SpaceBar"))
                    ->accessibleName()
                    .endsWith(QLatin1String(" percent of the file is in use")));
}

TEST_F(PropertiesDialogTest, EveryRowCanBeRead) {
    ASSERT_TRUE(document_.saveAs(path_));
    ASSERT_TRUE(document_.open(path_, TDocument::Access::Read));
    const PropertiesDialog dialog(
        context_, [] {}, nullptr);
    const auto* button = dialog.findChild<QPushButton*>(QStringLiteral("CompactButton"));
    EXPECT_FALSE(button->isEnabled());
    EXPECT_EQ(button->toolTip(), QStringLiteral("This file is read-only."));
    const auto fields = dialog.findChildren<QLineEdit*>();
    EXPECT_GE(fields.size(), 15);
    for (const QLineEdit* field : fields) {
        EXPECT_FALSE(field->objectName().isEmpty() || field->accessibleName().isEmpty() || field->text().isEmpty());
        const auto captions = dialog.findChildren<QLabel*>();
        EXPECT_TRUE(std::ranges::any_of(captions, [&](const QLabel* label) { return label->buddy() == field; }))
            << field->objectName().toStdString();
    }
}

} // namespace
} // namespace quobrix
