#include "app/dialog_prompter.h"

#include "app/logger_dialogs.h"
#include "app/reminder_choices.h"
#include "app/unidentified_vehicle_dialog.h"
#include "base/ui/qt_text.h"
#include "texts/text.h"
#include "ui/fields.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTextBoundaryFinder>
#include <QVBoxLayout>

#include <algorithm>

namespace quobrix {
namespace {

QString filter() { return QObject::tr("Quobrix Data Files (*.car);;All Files (*)"); }

FileChooser::SavePlace savePlace(const QFileDialog& dialog) {
    const std::filesystem::path path = toPath(dialog.selectedFiles().constFirst());
    std::error_code ignored; // the dialog has asked about what is there
    return {path, std::filesystem::exists(path, ignored) ? IfThere::Replace : IfThere::Refuse};
}

/// TEXT with "…" in the middle of each piece, such as a long name without blanks, that no line of a box could hold: a
/// box would cut its end off.
QString withPiecesThatFit(const QString& text, const QFontMetrics& metrics) {
    const int most = metrics.averageCharWidth() * 50;
    QTextBoundaryFinder breaks(QTextBoundaryFinder::Line, text);
    QString result;
    for (qsizetype from = 0, to = breaks.toNextBoundary(); to > from; from = to, to = breaks.toNextBoundary())
        result += metrics.elidedText(text.mid(from, to - from), Qt::ElideMiddle, most);
    return result;
}

/// A box for MESSAGE without buttons.
void fill(QMessageBox& box, const Message& message) {
    const MessageSpec& spec = messageSpec(message.id);
    box.setObjectName(toQt(spec.key));
    box.setWindowTitle(toQt(text(spec.title)));
    box.setTextFormat(Qt::PlainText);
    box.setText(withPiecesThatFit(toQt(message.text), box.fontMetrics()));
    if (!message.details.empty())
        box.setDetailedText(toQt(message.details));
    box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    const bool question = spec.buttons != MessageButtons::Ok;
    const bool warning = spec.id == MessageId::DeleteAllSummaries || spec.id == MessageId::SummariesNotRead;
    box.setIcon(warning    ? QMessageBox::Warning
                : question ? QMessageBox::Question
                           : QMessageBox::Information); // what a screen reader announces
    const QIcon icon(warning    ? QStringLiteral(":/icons/warning.svg")
                     : question ? QStringLiteral(":/icons/question.svg")
                                : QStringLiteral(":/icons/information.svg"));
    box.setIconPixmap(icon.pixmap(QSize(40, 40), box.devicePixelRatioF()));
}

/// Shows the box for MESSAGE, with BELOW (if given) under its text; the button that was pressed.
QMessageBox::StandardButton show(QWidget& window, const Message& message, QWidget* below = nullptr) {
    QMessageBox box(&window);
    fill(box, message);
    switch (messageSpec(message.id).buttons) {
    case MessageButtons::Ok:
    case MessageButtons::Actions: // have them of their own
    case MessageButtons::Either:
    case MessageButtons::Offer:
        box.setStandardButtons(QMessageBox::Ok);
        break;
    case MessageButtons::YesNo:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        box.setDefaultButton(QMessageBox::No);
        box.setEscapeButton(QMessageBox::No);
        break;
    case MessageButtons::YesNoCancel:
        // Here "yes" keeps what there is.
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        box.setDefaultButton(QMessageBox::Yes);
        box.setEscapeButton(QMessageBox::Cancel);
        break;
    }
    // A message box lays icon, text and buttons out in a grid, and leaves the row below the text to further
    // information.
    if (auto* grid = qobject_cast<QGridLayout*>(box.layout()); grid && below)
        grid->addWidget(below, 1, grid->columnCount() - 1, Qt::AlignLeft);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

QString documentsFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(folder).isDir() ? folder : QDir::homePath();
}

QString capitalized(QString result) {
    if (!result.isEmpty())
        result[0] = result[0].toUpper();
    return result;
}

} // namespace

Answer DialogPrompter::ask(const Message& question) { return remind(question); }

Answer DialogPrompter::askMarked(const Message& question, SourceText box, bool& marked) {
    auto* field = new QCheckBox(toQt(text(box)));
    field->setObjectName(QStringLiteral("MessageCheckBox"));
    field->setChecked(marked);
    QObject::connect(field, &QCheckBox::toggled, field, [&marked](bool on) { marked = on; });
    return show(parent(), question, field) == QMessageBox::Yes ? Answer::Yes : Answer::No;
}

std::optional<Answer> DialogPrompter::askOrCancel(const Message& question) {
    const auto button = show(parent(), question);
    if (button == QMessageBox::Cancel)
        return std::nullopt;
    return button == QMessageBox::Yes ? Answer::Yes : Answer::No;
}

std::optional<std::size_t> DialogPrompter::chooseAction(const Message& question,
                                                        const std::vector<SourceText>& actions) {
    QMessageBox box(&parent());
    fill(box, question);
    std::vector<QPushButton*> buttons;
    for (const SourceText& action : actions) {
        QPushButton* button = box.addButton(toQt(text(action)), QMessageBox::ActionRole);
        button->setObjectName(
            toQt(action.english()).remove(QLatin1Char('&')).remove(QLatin1Char(' ')).remove(QLatin1Char('.')));
        if (buttons.empty())
            box.setDefaultButton(button);
        buttons.push_back(button);
    }
    const MessageButtons kind = messageSpec(question.id).buttons;
    if (kind == MessageButtons::Either) {
        box.setEscapeButton(buttons.at(1));
        addHelp(*box.findChild<QDialogButtonBox*>());
    } else {
        QPushButton* none = box.addButton(QMessageBox::Cancel);
        if (kind == MessageButtons::Offer)
            none->setText(QObject::tr("&Not Now"));
        box.setEscapeButton(none);
    }
    box.exec();
    const auto pressed = std::ranges::find(buttons, static_cast<const QAbstractButton*>(box.clickedButton()));
    if (pressed == buttons.end())
        return std::nullopt;
    return static_cast<std::size_t>(pressed - buttons.begin());
}

void DialogPrompter::tell(const Message& statement) { remind(statement); }

/// Shows a statement or question unless it is a reminder that is not wanted.
Answer DialogPrompter::remind(const Message& message) {
    const std::optional<std::string_view> key = reminderKey(message.id);
    auto pressed = QMessageBox::NoButton;
    if (!key) {
        pressed = show(parent(), message);
    } else if (reminders_.shouldRemind(*key)) {
        QComboBox* choices = makeReminderChoices(reminders_.choice(*key));
        choices->setObjectName(QStringLiteral("ReminderChoice"));
        choices->setAccessibleName(QObject::tr("How often to remind"));
        QObject::connect(choices, &QComboBox::currentIndexChanged,
                         [&](int choice) { reminders_.setChoice(*key, static_cast<ReminderChoice>(choice)); });
        pressed = show(parent(), message, choices);
        reminders_.reminded(*key);
    } else {
        const bool question = messageSpec(message.id).buttons != MessageButtons::Ok;
        const std::string_view text = message.text;
        // What a question asks stands behind what it is about.
        quietly_(toQt(question ? text.substr(0, text.find("\n\n")) : text).simplified());
    }
    return pressed == QMessageBox::Yes ? Answer::Yes : Answer::No;
}

QWidget& DialogPrompter::parent() {
    QWidget* active = QApplication::activeModalWidget();
    if (!active)
        active = QApplication::activeWindow();
    if (!active && last_ && last_->isVisible()) // between two boxes no window is active for a moment
        active = last_;
    last_ = active ? active : &window_;
    if (last_->isMinimized()) // the box could not be seen either
        last_->setWindowState(last_->windowState() & ~Qt::WindowMinimized);
    return *last_;
}

std::optional<std::size_t> DialogPrompter::choose(SourceText what, const std::vector<std::string>& choices,
                                                  std::size_t preset) {
    QDialog dialog(&parent());
    dialog.setObjectName(QStringLiteral("ChooseDialog"));
    const QString thing = toQt(text(what));
    dialog.setWindowTitle(QObject::tr("Select %1").arg(thing));

    auto* list = new QComboBox;
    for (const std::string& choice : choices)
        list->addItem(toQt(choice));
    list->setCurrentIndex(static_cast<int>(preset));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);

    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(fieldLabel(QStringLiteral("&") + capitalized(thing) + QStringLiteral(":"), *list));
    layout->addWidget(list);
    layout->addSpacing(layout->spacing());
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    list->setMinimumWidth(list->fontMetrics().averageCharWidth() * 36);
    if (dialog.exec() != QDialog::Accepted || list->currentIndex() < 0)
        return std::nullopt;
    return static_cast<std::size_t>(list->currentIndex());
}

bool DialogPrompter::fillIn(SerialPortForm& form) {
    return TSerialPortDialog(form, &parent()).exec() == QDialog::Accepted;
}

bool DialogPrompter::fillIn(AlarmForm& form) {
    AlarmDialog dialog(form, &parent());
    const bool accepted = dialog.exec() == QDialog::Accepted;
    form.volume = dialog.volume();
    return accepted;
}

bool DialogPrompter::fillIn(DateAndTimeForm& form) {
    TDateAndTimeDialog dialog(form, text_, &parent());
    const bool accepted = dialog.exec() == QDialog::Accepted;
    form.logger = dialog.time();
    return accepted;
}

bool DialogPrompter::fillIn(TimeDifferenceForm& form) {
    TTimeDifferenceDialog dialog(form, &parent());
    const bool accepted = dialog.exec() == QDialog::Accepted;
    dialog.take(form);
    return accepted;
}

bool DialogPrompter::fillIn(UnidentifiedVehicleForm& form) {
    TUnidentifiedVehicleDialog dialog(form, &parent());
    const bool accepted = dialog.exec() == QDialog::Accepted;
    dialog.take(form);
    return accepted;
}

std::optional<std::filesystem::path> DialogFileChooser::chooseToOpen() {
    const QString file = QFileDialog::getOpenFileName(&window_, QObject::tr("Open"), {}, filter());
    chosen_ |= !file.isEmpty();
    return file.isEmpty() ? std::nullopt : std::optional(toPath(file));
}

std::optional<std::filesystem::path> DialogFileChooser::chooseLogs() {
    const QString file =
        QFileDialog::getOpenFileName(&window_, QObject::tr("Open Logs"), {}, QObject::tr("Log Files (*.txt)"));
    return file.isEmpty() ? std::nullopt : std::optional(toPath(file));
}

std::optional<FileChooser::SavePlace> DialogFileChooser::chooseToSave(const std::filesystem::path& suggested) {
    QFileDialog dialog(&window_, QObject::tr("Save As"), {}, filter());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("car"));
    if (!suggested.has_parent_path() && !chosen_)
        dialog.setDirectory(documentsFolder());
    dialog.selectFile(toQtPath(suggested));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    chosen_ = true;
    return savePlace(dialog);
}

std::optional<FileChooser::SavePlace> DialogFileChooser::chooseCopy(SourceText what,
                                                                    const std::filesystem::path& folder,
                                                                    const std::string& name,
                                                                    std::span<const FileFormat> formats) {
    QStringList filters;
    for (const FileFormat format : formats)
        filters += QStringLiteral("%1 (*.%2)").arg(toQt(filesOf(format)), toQt(endingOf(format)));
    QWidget* window = QApplication::activeWindow() ? QApplication::activeWindow() : &window_;
    const QString beside = folder.empty() ? documentsFolder() : toQtPath(folder);
    QFileDialog dialog(window, toQt(text(what)), copiesFolder_.isEmpty() ? beside : copiesFolder_);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setNameFilters(filters);
    const auto follow = [&](const QString& filter) {
        dialog.setDefaultSuffix(toQt(endingOf(formats[static_cast<std::size_t>(filters.indexOf(filter))])));
    };
    QObject::connect(&dialog, &QFileDialog::filterSelected, follow);
    if (filters == copiesFilters_) // what is done again is done in the format that it was done in
        dialog.selectNameFilter(copiesFilter_);
    follow(dialog.selectedNameFilter());
    dialog.selectFile(toQt(name) + QLatin1Char('.') + dialog.defaultSuffix());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    copiesFolder_ = dialog.directory().absolutePath();
    copiesFilter_ = dialog.selectedNameFilter();
    copiesFilters_ = filters;
    return savePlace(dialog);
}

} // namespace quobrix
