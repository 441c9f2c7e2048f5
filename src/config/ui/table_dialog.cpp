#include "config/ui/table_dialog.h"

#include "base/path_text.h"
#include "base/ui/qt_text.h"
#include "config/value_file.h"
#include "drawing/ui/drawing_view.h"
#include "messages/file_messages.h"
#include "messages/prompter.h"
#include "tables/ui/cell_editor.h"
#include "ui/fields.h"
#include "ui/status_line.h"
#include "ui/windows.h"

#include <QChildEvent>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QStandardPaths>
#include <QStatusTipEvent>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

namespace quobrix {
namespace {

constexpr RowIndex kMostRowsInView = 8;
constexpr int kLeastColumn = 14; // characters
constexpr int kSlice = 10;       // ms
constexpr int kLinesOfNote = 4;  // below the last row: why an entry is refused

/// The file that a person chooses in DIALOG among text files.
std::optional<std::filesystem::path> chosenIn(QFileDialog& dialog) {
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return toPath(dialog.selectedFiles().constFirst());
}

QString documents() { return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation); }

} // namespace

TableDialog::TableDialog(const TableDialogContext& context, const TableDialogSpec& spec,
                         std::unique_ptr<ValueSheet> sheet, QWidget* parent)
    : QDialog(parent), context_(context), name_(spec.name.toStdString()), sheet_(std::move(sheet)),
      edits_(sheet_->table()), values_(new QHBoxLayout), buttons_(new QVBoxLayout), status_(new StatusLine) {
    setObjectName(spec.name);
    setWindowTitle(spec.title);
    auto* explanation = new QLabel(spec.explanation);
    explanation->setWordWrap(true);

    list_ = new TSpreadsheet(
        {context.text(), context.settings, &edits_, &context.prompter, context.windows},
        {.name = name_ + " List", .title = spec.title, .emptyText = {}, .use = SpreadsheetView::Use::Cells});
    Table& table = sheet_->table();
    std::vector<ShownColumn> columns;
    for (std::size_t i = 0; i < table.columnCount(); ++i)
        columns.push_back({&table.column(i)});
    list_->setColumns(std::move(columns), [this](RowIndex row) { return toQt(sheet_->rowTitle(row)); });
    SpreadsheetView& view = list_->view();
    view.horizontalHeader()->setStretchLastSection(true);
    view.viewport()->installEventFilter(this);
    const int rows = static_cast<int>(std::min(table.rowCount(), kMostRowsInView));
    list_->setMinimumHeight(view.horizontalHeader()->sizeHint().height() + rows * view.rowHeight(0) +
                            kLinesOfNote * fontMetrics().lineSpacing());
    int width = view.verticalHeader()->sizeHint().width() + view.verticalScrollBar()->sizeHint().width();
    for (std::size_t i = 0; i < table.columnCount(); ++i)
        width += std::max({view.horizontalHeader()->sectionSizeHint(static_cast<int>(i)),
                           static_cast<QAbstractItemView&>(view).sizeHintForColumn(static_cast<int>(i)),
                           fontMetrics().averageCharWidth() * kLeastColumn});
    list_->setMinimumWidth(width + 2 * view.frameWidth());
    connect(&list_->model(), &QAbstractItemModel::dataChanged, this, [this] {
        redraw();
        showStatus({});
    });
    connect(&view, &SpreadsheetView::selectionAltered, this, [this] { showStatus({}); });
    values_->addWidget(list_, 1);

    buttons_->addStretch();
    auto* all = new QHBoxLayout;
    all->addLayout(values_, 1);
    all->addLayout(buttons_);
    auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    addHelp(*box);
    connect(box, &QDialogButtonBox::accepted, this, &TableDialog::accept);
    connect(box, &QDialogButtonBox::rejected, this, &TableDialog::reject);
    addButton(tr("&Reset"), "Reset", spec.resetTip, [this] { set(sheet_->originals(), tr("reset")); });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(explanation);
    layout->addLayout(all, 1);
    layout->addWidget(status_);
    layout->addWidget(box);
    list_->setFocus();
    list_->setCurrentCell(0, 0);
    context_.units.addListener(*this);
    quobrix::restoreGeometry(*this, context_.settings, name_);
}

TableDialog::~TableDialog() {
    context_.units.removeListener(*this);
    rememberGeometry(*this, context_.settings, name_);
    list_->view().viewport()->removeEventFilter(this); // the picture may show what is gone already
    delete list_;                                      // which shows the table
}

QPushButton* TableDialog::addButton(const QString& text, const char* name, const QString& tip,
                                    std::function<void()> work) {
    auto* button = new QPushButton(text);
    button->setObjectName(QLatin1String(name));
    button->setToolTip(tip);
    button->setStatusTip(tip);
    button->setAccessibleDescription(tip);
    connect(button, &QPushButton::clicked, this, [this, work = std::move(work)] {
        if (list_->finishEdit())
            work();
    });
    buttons_->insertWidget(buttons_->count() - 1, button);
    return button;
}

void TableDialog::addFileButtons(const QString& saveTip, const QString& loadTip, ValueFile file) {
    addButton(tr("&Save to File..."), "SaveToFile", saveTip, [this, file] { save(file); });
    addButton(tr("&Load from File..."), "LoadFromFile", loadTip, [this, file = std::move(file)] { load(file); });
}

void TableDialog::save(const ValueFile& file) {
    QFileDialog dialog(this, tr("Save to File"), documents(), tr("Text files (*.txt)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("txt"));
    dialog.selectFile(QStringLiteral("%1.txt").arg(file.name));
    const std::optional<std::filesystem::path> path = chosenIn(dialog);
    if (!path)
        return;
    std::error_code ignored; // the dialog has asked about what is there
    const IfThere ifThere = std::filesystem::exists(*path, ignored) ? IfThere::Replace : IfThere::Refuse;
    if (const Result<void> saved = saveValues(file.text(), *path, ifThere); !saved)
        context_.prompter.tell(fileMessage(saved.error(), FileAction::Save, utf8(*path)));
}

void TableDialog::load(const ValueFile& file) {
    QFileDialog dialog(this, tr("Load from File"), documents(), tr("Text files (*.txt);;All Files (*)"));
    dialog.setFileMode(QFileDialog::ExistingFile);
    const std::optional<std::filesystem::path> path = chosenIn(dialog);
    if (!path)
        return;
    using Cells = Result<std::vector<CellEdit>>;
    const Result<std::string> text = loadValues(*path);
    Cells cells = text ? file.read(*text) : Cells(text.error());
    if (cells)
        set(*std::move(cells), tr("loading a file"));
    else if (isNoValues(cells.error()))
        context_.prompter.tell(makeMessage(file.notOne, utf8(*path), cells.error().detail));
    else
        context_.prompter.tell(fileMessage(cells.error(), FileAction::Open, utf8(*path)));
}

DrawingView& TableDialog::addPicture(DrawingMaker make) {
    picture_ = new DrawingView(std::move(make));
    picture_->setObjectName(objectName() + QStringLiteral("Picture"));
    values_->addSpacing(fontMetrics().averageCharWidth());
    values_->addWidget(picture_, 1, Qt::AlignTop);
    return *picture_;
}

bool TableDialog::set(std::vector<CellEdit> cells, const QString& description) {
    const EditOutcome outcome =
        edits_.set(sheet_->table().id(), std::move(cells), context_.text(), description.toStdString());
    if (!outcome.ok())
        context_.prompter.tell(makeMessage(MessageId::ValuesRefused, outcome.refusal));
    return outcome.ok();
}

Value TableDialog::shownValue(std::size_t column, RowIndex row) const {
    const SpreadsheetView& view = list_->view();
    const QModelIndex cell = view.currentIndex();
    const QWidget* editor = cell.isValid() && view.isEditing() ? view.indexWidget(cell) : nullptr;
    const Column& source = sheet_->table().column(column);
    if (editor && list_->model().storedRow(cell.row()) == row && list_->model().tableColumn(cell.column()) == column)
        if (const Parsed parsed = source.parseIn(row, editorText(*editor).toStdString(), context_.text()); parsed.ok())
            return parsed.value;
    return source.value(row);
}

void TableDialog::readInSlices(std::function<bool()> readNext) {
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this, timer, readNext = std::move(readNext)] {
        QElapsedTimer since;
        since.start();
        while (since.elapsed() < kSlice)
            if (!readNext()) {
                timer->deleteLater();
                timer->stop();
                return showAnew();
            }
    });
    timer->start(0);
}

void TableDialog::showAnew() {
    list_->unitsChanged();
    redraw();
}

void TableDialog::redraw() {
    if (picture_)
        picture_->redraw();
}

void TableDialog::unitsChanged(UnitsChange, std::optional<UnitTypeId>) { showAnew(); }

void TableDialog::accept() {
    if (list_->finishEdit() && take())
        QDialog::accept();
}

void TableDialog::showStatus(const QString& tip) {
    status_->say(tip.isEmpty() ? list_->view().currentIndex().data(Qt::StatusTipRole).toString() : tip);
}

bool TableDialog::event(QEvent* event) {
    if (event->type() != QEvent::StatusTip)
        return QDialog::event(event);
    showStatus(static_cast<QStatusTipEvent*>(event)->tip());
    return true;
}

/// The picture follows what is typed into an editor, and forgets it when that is given up.
bool TableDialog::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::ChildPolished) {
        if (auto* editor = qobject_cast<QWidget*>(static_cast<QChildEvent*>(event)->child());
            editor && editor->objectName() == QLatin1String("cellEditor"))
            whenEdited(*editor, this, [this] { redraw(); });
    } else if (event->type() == QEvent::ChildRemoved) {
        redraw();
    }
    return QDialog::eventFilter(object, event);
}

} // namespace quobrix
