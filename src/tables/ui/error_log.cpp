#include "tables/ui/error_log.h"

#include "base/ui/qt_text.h"
#include "settings/settings.h"
#include "tables/ui/cell_mark.h"
#include "texts/text.h"
#include "ui/windows.h"
#include "units/unit_system.h"

#include <QAbstractTableModel>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QStyle>
#include <QToolTip>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

namespace quobrix {

namespace {

constexpr std::string_view kSection = "TErrorLog";

enum Field { kSeverity, kTable, kRow, kColumn, kText, kFieldCount };

bool sameSource(const Finding& a, const Finding& b) {
    return a.table == b.table && a.column == b.column && a.row == b.row;
}

} // namespace

/// The findings as lines of a list.
class ErrorLogModel final : public QAbstractTableModel {
public:
    ErrorLogModel(const TextContext& context, QObject* parent) : QAbstractTableModel(parent), context_(context) {}

    void set(std::vector<Finding> findings) {
        beginResetModel();
        findings_ = std::move(findings);
        endResetModel();
    }
    const std::vector<Finding>& findings() const { return findings_; }

    QString text(int line, int field) const {
        const Finding& finding = findings_[static_cast<std::size_t>(line)];
        switch (field) {
        case kSeverity:
            return finding.severity == Severity::Required ? tr("Error") : tr("Warning");
        case kTable:
            return toQt(finding.title);
        case kRow:
            return finding.row == Finding::kNoRow
                       ? QString()
                       : toQt(context_.units.formatInteger(static_cast<std::int64_t>(finding.row) + 1));
        case kColumn:
            return finding.column ? toQt(plainHeading(*finding.column)) : QString();
        default:
            return toQt(finding.text).replace(QLatin1Char('\n'), QLatin1Char(' '));
        }
    }

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(findings_.size());
    }
    int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : kFieldCount; }

    QVariant data(const QModelIndex& cell, int role) const override {
        if (!cell.isValid())
            return {};
        switch (role) {
        case Qt::DisplayRole:
            return text(cell.row(), cell.column());
        case Qt::ToolTipRole:
            return toQt(findings_[static_cast<std::size_t>(cell.row())].text);
        case Qt::DecorationRole:
            if (cell.column() == kSeverity)
                return sign(findings_[static_cast<std::size_t>(cell.row())].severity);
            return {};
        case Qt::TextAlignmentRole:
            return QVariant::fromValue((cell.column() == kRow ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
        default:
            return {};
        }
    }

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        static constexpr SourceText kHeadings[] = {SourceText("Severity"), SourceText("Table"), SourceText("Row"),
                                                   SourceText("Column"), SourceText("Message")};
        if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
            return {};
        return toQt(quobrix::text(kHeadings[section]));
    }

private:
    /// The sign that marks such a cell in its list.
    static QIcon sign(Severity severity) {
        const QPixmap mark = markPixmap(severity, QApplication::style()->pixelMetric(QStyle::PM_SmallIconSize),
                                        qApp->devicePixelRatio());
        QIcon icon(mark);
        icon.addPixmap(mark, QIcon::Selected); // it is read by its colours
        return icon;
    }

    TextContext context_;
    std::vector<Finding> findings_;
};

TErrorLog::TErrorLog(const TextContext& context, Settings& settings, QWidget* parent,
                     std::span<QAction* const> printing)
    : QDialog(parent), settings_(settings), model_(new ErrorLogModel(context, this)), list_(new QTreeView),
      none_(new QLabel(tr("No Errors!"))), content_(new QStackedWidget), summary_(new QLabel),
      goToSource_(new QPushButton(tr("&Go To Source"))) {
    setObjectName(QStringLiteral("TErrorLog"));
    setWindowTitle(tr("Error Log"));

    list_->setObjectName(QStringLiteral("errors"));
    list_->setAccessibleName(tr("Errors"));
    list_->setModel(model_);
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setAlternatingRowColors(true);
    list_->setAllColumnsShowFocus(true);
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->installEventFilter(this);
    list_->header()->setStretchLastSection(true);
    list_->header()->setSectionsMovable(false);
    connect(list_, &QTreeView::doubleClicked, this, &TErrorLog::goToCurrent);
    connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) { goToSource_->setEnabled(current.isValid()); });

    none_->setObjectName(QStringLiteral("noErrors"));
    none_->setAlignment(Qt::AlignCenter);
    content_->addWidget(list_);
    content_->addWidget(none_);

    auto* hint = new QLabel(tr("Double-click on a message to go to its source. For help, press F1."));
    hint->setObjectName(QStringLiteral("hint"));
    hint->setWordWrap(true);
    auto* help = new QAction(this);
    help->setObjectName(QStringLiteral("help"));
    help->setShortcut(Qt::Key_F1);
    connect(help, &QAction::triggered, hint, [hint] {
        QToolTip::showText(hint->mapToGlobal(hint->rect().bottomLeft()),
                           tr("Explains this window. (not available yet)"), hint);
    });
    addAction(help);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(hint);
    layout->addWidget(content_, 1);
    layout->addWidget(makeButtons(printing));
    setFindings({});

    if (!quobrix::restoreGeometry(*this, settings_, kSection))
        resize(720, 320);
}

TErrorLog::~TErrorLog() { rememberGeometry(*this, settings_, kSection); }

QWidget* TErrorLog::makeButtons(std::span<QAction* const> printing) {
    summary_->setObjectName(QStringLiteral("summary"));
    goToSource_->setObjectName(QStringLiteral("goToSource"));
    // Enter goes to the source wherever the focus is but on another button.
    goToSource_->setDefault(true);
    connect(goToSource_, &QPushButton::clicked, this, &TErrorLog::goToCurrent);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("close"));
    buttons->button(QDialogButtonBox::Close)->setAutoDefault(false);
    buttons->addButton(goToSource_, QDialogButtonBox::ActionRole);
    for (QPushButton* button : printButtons(*this, objectName(), printing))
        buttons->addButton(button, QDialogButtonBox::ActionRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(summary_, 1);
    layout->addWidget(buttons);
    return row;
}

const std::vector<Finding>& TErrorLog::findings() const { return model_->findings(); }

void TErrorLog::setFindings(std::vector<Finding> findings) {
    const int oldLine = list_->currentIndex().row();
    const bool hadCurrent = oldLine >= 0;
    const Finding old = hadCurrent ? model_->findings()[static_cast<std::size_t>(oldLine)] : Finding();
    const bool first = model_->findings().empty() && !findings.empty();
    model_->set(std::move(findings));

    const auto& now = model_->findings();
    int line = std::min(std::max(oldLine, 0), static_cast<int>(now.size()) - 1);
    if (hadCurrent)
        for (std::size_t i = 0; i < now.size(); ++i)
            if (sameSource(now[i], old)) {
                line = static_cast<int>(i);
                break;
            }
    if (line >= 0)
        makeCurrent(line);
    goToSource_->setEnabled(line >= 0);

    const auto errors = static_cast<std::uint64_t>(std::ranges::count(now, Severity::Required, &Finding::severity));
    const std::uint64_t warnings = now.size() - errors;
    summary_->setText(now.empty() ? QString()
                                  : tr("%1, %2").arg(toQt(counted(TextId::ErrorsFound, errors, errors)),
                                                     toQt(counted(TextId::WarningsFound, warnings, warnings))));
    content_->setCurrentWidget(now.empty() ? static_cast<QWidget*>(none_) : list_);
    if (first)
        for (int field = 0; field < kText; ++field)
            list_->resizeColumnToContents(field);
}

std::optional<Report> TErrorLog::printable() {
    Grid lines;
    for (int field = 0; field < kFieldCount; ++field)
        lines.columns.push_back(
            {model_->headerData(field, Qt::Horizontal, Qt::DisplayRole).toString().toStdString(), field == kRow});
    for (int line = 0; line < model_->rowCount(); ++line) {
        std::vector<std::string>& cells = lines.rows.emplace_back();
        for (int field = 0; field < kFieldCount; ++field)
            cells.push_back(model_->text(line, field).toStdString());
    }
    return listReport(*this, std::move(lines));
}

void TErrorLog::selectTable(ObjectId table) {
    const auto& all = model_->findings();
    const auto found = std::ranges::find(all, table, &Finding::table);
    if (found != all.end())
        makeCurrent(static_cast<int>(found - all.begin()));
}

/// And nothing else selected, whichever keys are held down for the command that leads here.
void TErrorLog::makeCurrent(int line) {
    list_->selectionModel()->setCurrentIndex(model_->index(line, 0),
                                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    list_->scrollTo(list_->currentIndex());
}

void TErrorLog::goToCurrent() {
    const int line = list_->currentIndex().row();
    if (line >= 0) {
        const Finding finding = model_->findings()[static_cast<std::size_t>(line)]; // the list may change meanwhile
        emit goTo(finding);
    }
}

void TErrorLog::copy() const {
    QModelIndexList lines = list_->selectionModel()->selectedRows();
    std::sort(lines.begin(), lines.end());
    QString text;
    for (const QModelIndex& line : lines) {
        QStringList fields;
        for (int field = 0; field < kFieldCount; ++field)
            fields << model_->text(line.row(), field);
        text += fields.join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    QApplication::clipboard()->setText(text);
}

bool TErrorLog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == list_ && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy)) {
        copy();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace quobrix
