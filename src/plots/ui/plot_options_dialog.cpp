#include "plots/ui/plot_options_dialog.h"

#include "base/ui/qt_text.h"
#include "model/logger_tables.h"
#include "plots/plot_options.h"
#include "texts/source_text.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "ui/status_line.h"
#include "units/unit_system.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

const PersistentType& kMaximum = TIOVerticalAxisMaximumColumn::kType;
constexpr int kFieldIndent = 24;

} // namespace

TPlotOptionsDialog::TPlotOptionsDialog(const TextContext& text, Settings& settings, std::function<void()> changed,
                                       QWidget* parent)
    : QDialog(parent), text_(text), options_(settings, plotOptionColumns(), SourceText("Plot Options")),
      changed_(std::move(changed)), maximum_(new QLineEdit), status_(new StatusLine) {
    setObjectName(QStringLiteral("TPlotOptionsDialog"));
    setWindowTitle(toQt(quobrix::text(options_.spec().title)));
    auto* layout = new QVBoxLayout(this);
    for (const PersistentType* column : plotOptionColumns())
        layout->addWidget(column == &kMaximum ? maximumField() : flagOf(*column));
    status_->setObjectName(QStringLiteral("PlotOptionsStatus"));
    layout->addWidget(status_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    addHelp(*buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

std::size_t TPlotOptionsDialog::indexOf(const PersistentType& column) const {
    const auto columns = plotOptionColumns();
    return static_cast<std::size_t>(std::ranges::find(columns, &column) - columns.begin());
}

QWidget* TPlotOptionsDialog::flagOf(const PersistentType& type) {
    const Column& column = options_.columnOf(type);
    auto* flag = new QCheckBox(toQt(quobrix::text(column.spec().heading)));
    flag->setObjectName(toQt(column.spec().key));
    flag->setToolTip(toQt(quobrix::text(column.spec().tooltip)));
    flag->setChecked(column.value(0) == Value(true));
    connect(flag, &QCheckBox::toggled, this, [this, index = indexOf(type)](bool on) {
        finish(edits_.set(kNoObject, {{index, 0, Value(on)}}, text_, {}));
    });
    return flag;
}

QWidget* TPlotOptionsDialog::maximumField() {
    const Column& column = options_.columnOf(kMaximum);
    maximum_->setObjectName(toQt(column.spec().key));
    maximum_->setToolTip(toQt(quobrix::text(column.spec().tooltip)));
    // As it is read elsewhere. What nobody has edited is not taken from the field, which may say less than it is.
    const Value value = column.value(0);
    if (const auto* speed = std::get_if<double>(&value))
        maximum_->setText(toQt(text_.units.formatValue(UnitTypeId::Speed, *speed)));
    connect(maximum_, &QLineEdit::textEdited, this, [this] { takeMaximum(); });
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(kFieldIndent, 0, 0, 0);
    layout->addWidget(fieldLabel(toQt(quobrix::text(column.spec().heading)), *maximum_));
    layout->addWidget(maximum_);
    layout->addWidget(new QLabel(toQt(quobrix::text(unitRecord(text_.units.unit(UnitTypeId::Speed)).shownName))));
    layout->addStretch();
    return row;
}

/// Says why not, if it is refused.
bool TPlotOptionsDialog::takeMaximum() {
    const EditOutcome outcome = edits_.type(kNoObject, indexOf(kMaximum), 0, maximum_->text().toStdString(), text_);
    finish(outcome);
    return outcome.ok();
}

void TPlotOptionsDialog::finish(const EditOutcome& outcome) {
    status_->say(toQt(!outcome.ok()              ? outcome.refusal
                      : outcome.warnings.empty() ? ShownText()
                                                 : outcome.warnings.front().text)
                     .simplified());
    changed_();
}

void TPlotOptionsDialog::done(int result) {
    if (result == Accepted && maximum_->isModified() && !takeMaximum()) {
        maximum_->setFocus();
        maximum_->selectAll();
        return;
    }
    if (result == Accepted)
        options_.accept();
    else
        options_.cancel();
    edits_.clear();
    changed_();
    QDialog::done(result);
}

} // namespace quobrix
