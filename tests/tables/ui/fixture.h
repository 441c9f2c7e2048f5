#pragma once

#include "messages/prompter.h"
#include "settings/settings.h"
#include "tables/sample_table.h"
#include "tables/table_edits.h"
#include "tables/ui/table_spreadsheet.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QTest>

#include <memory>
#include <string>

namespace quobrix::test {

/// Keeps what it is to tell. What nobody has looked at fails the test.
class ListeningPrompter final : public Prompter {
public:
    ~ListeningPrompter() override { EXPECT_TRUE(told_.empty()) << told_.front().text; }

    Answer ask(const Message& question) override {
        ADD_FAILURE() << question.text;
        return Answer::No;
    }
    std::optional<std::size_t> chooseAction(const Message& question, const std::vector<SourceText>&) override {
        ADD_FAILURE() << question.text;
        return {};
    }
    void tell(const Message& statement) override { told_.push_back(statement); }
    std::optional<std::size_t> choose(SourceText, const std::vector<std::string>&, std::size_t) override { return {}; }

    /// The text of the one thing that has been told since, which was to be ID; empty if there is none.
    std::string told(MessageId id) {
        EXPECT_EQ(told_.size(), 1u);
        std::string text;
        if (!told_.empty()) {
            EXPECT_EQ(told_.front().id, id);
            text = told_.front().text;
        }
        told_.clear();
        return text;
    }

private:
    std::vector<Message> told_;
};

/// A table of one column of each kind with six rows, and a spreadsheet that shows it.
class SpreadsheetTest : public TablesTest {
protected:
    SpreadsheetTest() {
        const char* const keys[] = {"K10", "k2", "K1", "K7", "K5", "K3"};
        for (RowIndex row = 0; row < table_.rowCount(); ++row) {
            table_.column<SampleKey>().set(row, keys[row]);
            table_.column<SampleSpeed>().set(row, 10.0 + static_cast<double>(row));
            table_.column<SampleCount>().set(row, 1);
        }
        units_.setUnit(UnitTypeId::Speed, UnitId::MilePerHour);
    }

    TTableSpreadsheet& sheet() {
        if (!sheet_) {
            sheet_ = makeSheet();
            static_cast<QWidget&>(*sheet_).show();
            sheet_->activateWindow();
            sheet_->view().setFocus();
            EXPECT_TRUE(QTest::qWaitForWindowActive(sheet_.get()));
        }
        return *sheet_;
    }
    std::unique_ptr<TTableSpreadsheet> makeSheet(SpreadsheetView::Use use = SpreadsheetView::Use::Cells) {
        auto made = std::make_unique<TTableSpreadsheet>(
            context_, SpreadsheetSpec{"Sample", QStringLiteral("Sample"), QStringLiteral("Nothing."), use});
        new QAbstractItemModelTester(&made->model(), QAbstractItemModelTester::FailureReportingMode::Fatal, made.get());
        made->resize(900, 400);
        made->showTable(table_);
        return made;
    }

    /// Makes the cell of a stored row current.
    void goTo(RowIndex row, int column) { sheet().setCurrentCell(row, column); }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWidget* target = QApplication::focusWidget();
        QTest::keyClick(target ? target : &sheet().view(), static_cast<Qt::Key>(key), modifiers);
    }
    void typeText(std::string_view text) {
        for (const char letter : text) { // the first one opens the editor, which has the keyboard from then on
            QWidget* target = QApplication::focusWidget();
            QTest::keyClick(target ? target : &sheet().view(), letter);
        }
    }
    QWidget* editor() { return sheet().view().indexWidget(sheet().view().currentIndex()); }
    void trigger(SpreadsheetCommand command) { sheet().commands().action(command).trigger(); }
    void select(int top, int left, int bottom, int right) {
        const SpreadsheetModel& model = sheet().model();
        sheet().view().selectionModel()->setCurrentIndex(model.index(top, left), QItemSelectionModel::NoUpdate);
        sheet().view().selectionModel()->select(QItemSelection(model.index(top, left), model.index(bottom, right)),
                                                QItemSelectionModel::ClearAndSelect);
    }

    std::string key(RowIndex row) { return table_.column<SampleKey>().at(row); }
    double speed(RowIndex row) { return table_.column<SampleSpeed>().at(row); }
    /// The keys in the order in which they are shown.
    std::string shownKeys() {
        std::string keys;
        for (int place = 0; place < sheet().model().rowCount(); ++place)
            keys += sheet().model().text(place, SampleTable::Key).toStdString() + " ";
        return keys;
    }

    SampleTable table_{6, {.editable = true, .required = {.least = 1, .most = 8}}};
    Settings settings_{std::make_unique<MemorySettings>()};
    TableEdits edits_{table_};
    ListeningPrompter prompter_;
    SpreadsheetContext context_{TablesTest::context_, settings_, &edits_, &prompter_};

private:
    std::unique_ptr<TTableSpreadsheet> sheet_;
};

} // namespace quobrix::test
