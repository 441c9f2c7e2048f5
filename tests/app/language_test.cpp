#include "app/about_box.h"
#include "app/dialog_prompter.h"
#include "app/logger_dialogs.h"
#include "app/main_frame.h"
#include "app/miscellaneous_dialog.h"
#include "app/properties_dialog.h"
#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "support/pseudo_catalogue.h"
#include "texts/ui/catalogue_translator.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QTest>

#include <gtest/gtest.h>

namespace quobrix::testing {
namespace {

/// What may stand outside of brackets, and why.
constexpr const char* kNoTexts[] = {
    "Quobrix",           // the product's name
    "1\\.0\\.0",         // its version
    "\\w{3} +\\d+ \\d+", // the day on which it was built, as the compiler gives it
    "\\b[AP]M\\b",       // the locale's halves of the day
    "S\\.I\\.",          // a unit system is called as its file
};

class LanguageTest : public ::testing::Test {
protected:
    LanguageTest() { qApp->installTranslator(&translator_); }
    ~LanguageTest() override { qApp->removeTranslator(&translator_); }

    /// Fails for a text with words that have not been looked up.
    static void expectTranslated(const QObject& where, const QString& text) {
        QString rest = toQt(outsideBrackets(text.toStdString()));
        for (const char* allowed : kNoTexts)
            rest.remove(QRegularExpression(QLatin1String(allowed)));
        EXPECT_FALSE(rest.contains(QRegularExpression(QStringLiteral("[A-Za-z]{2}"))))
            << where.metaObject()->className() << " " << where.objectName().toStdString() << ": " << text.toStdString();
    }

    static void expectTranslated(const QAction& action) {
        for (const QString& text : {action.text(), action.statusTip(), action.toolTip()})
            expectTranslated(action, text);
    }

    /// All that WINDOW shows, says and explains.
    static void expectTranslated(QWidget& window) {
        QList<QWidget*> widgets = window.findChildren<QWidget*>();
        widgets << &window;
        int texts = 0;
        for (QWidget* widget : widgets) {
            QStringList shown{widget->windowTitle(), widget->toolTip(), widget->statusTip(), widget->accessibleName()};
            if (const auto* label = qobject_cast<const QLabel*>(widget))
                shown << label->text();
            if (const auto* button = qobject_cast<const QAbstractButton*>(widget))
                shown << button->text();
            if (const auto* group = qobject_cast<const QGroupBox*>(widget))
                shown << group->title();
            if (const auto* list = qobject_cast<const QComboBox*>(widget))
                for (int i = 0; i < list->count(); ++i)
                    shown << list->itemText(i);
            for (const QString& text : shown) {
                expectTranslated(*widget, text);
                texts += text.isEmpty() ? 0 : 1;
            }
        }
        EXPECT_GT(texts, 3);
    }

    const PseudoLanguage language_;
    CatalogueTranslator translator_;
    Settings settings_{std::make_unique<MemorySettings>()};
    Reminders reminders_{settings_, [] { return 0; }};
    TQuobrixDocument document_;
    TUnitSystem units_;
    TimeZone zone_;
    const ViewContext context_{document_, settings_, units_, zone_};
};

TEST_F(LanguageTest, EveryCommandIsTranslatedAndKeepsItsNameAndShortcut) {
    TQuobrixFrame frame(context_);
    for (const MenuRow& row : menuRows())
        if (!row.name.empty() && row.kind != MenuRow::Kind::RecentFiles)
            expectTranslated(*frame.commands().action(row.id));
    for (const QMenu* menu : frame.menuBar()->findChildren<QMenu*>())
        expectTranslated(*menu, menu->title());
    EXPECT_EQ(frame.commands().action(CommandId::Open)->text(), QStringLiteral("⟦&Open...⟧"));
    EXPECT_EQ(frame.commands().action(CommandId::Open)->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_O));
    EXPECT_TRUE(frame.menuBar()->findChild<QMenu*>(QStringLiteral("DiagnosticsMenu")));
}

TEST_F(LanguageTest, EveryDialogOfTheFrameIsTranslated) {
    AboutBox about(programLines(), {}, nullptr);
    expectTranslated(about);
    MiscellaneousDialog miscellaneous(settings_, reminders_, nullptr);
    expectTranslated(miscellaneous);
    const TextContext times{units_, zone_};
    AlarmDialog alarm({3, 10}, nullptr);
    expectTranslated(alarm);
    for (const bool readOnly : {false, true}) {
        TDateAndTimeDialog dateAndTime({0, 0, readOnly}, times, nullptr);
        expectTranslated(dateAndTime);
    }
    TMemoryDialog memory({1000, 500}, {}, units_, nullptr);
    expectTranslated(memory);
    PropertiesDialog properties(
        context_, [] {}, nullptr);
    expectTranslated(properties);
}

TEST_F(LanguageTest, EveryMessageIsTranslated) {
    for (const MessageSpec& spec : kMessages)
        for (const SourceText& part : {spec.title, spec.text})
            EXPECT_TRUE(text(part).starts_with("⟦")) << spec.key;
    EXPECT_EQ(fileMessage({ErrorKind::NotFound, {}}, FileAction::Open, "a.car").text,
              "⟦a.car cannot be ⟦opened⟧ because it does not exist.⟧");
}

} // namespace
} // namespace quobrix::testing
