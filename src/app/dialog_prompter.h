#pragma once

#include "app/document_files.h"
#include "messages/prompter.h"
#include "messages/reminders.h"
#include "tables/column.h"

#include <QPointer>
#include <QString>

#include <functional>

class QWidget;

namespace quobrix {

/// Questions and statements as message boxes over the program's active window, or WINDOW if there is none. Each box has
/// the message's key as object name. A reminder's box offers how often it is to be shown; one that is not to be shown
/// is told QUIETLY, so that it is not a surprise that nothing happens, and a question is then answered with no.
class DialogPrompter final : public Prompter {
public:
    using Quietly = std::function<void(const QString& text)>;

    /// TEXT: how times are shown.
    DialogPrompter(QWidget& window, Reminders& reminders, const TextContext& text, Quietly quietly)
        : window_(window), reminders_(reminders), text_(text), quietly_(std::move(quietly)) {}

    Answer ask(const Message& question) override;
    Answer askMarked(const Message& question, SourceText box, bool& marked) override;
    std::optional<Answer> askOrCancel(const Message& question) override;
    std::optional<std::size_t> chooseAction(const Message& question, const std::vector<SourceText>& actions) override;
    void tell(const Message& statement) override;
    std::optional<std::size_t> choose(SourceText what, const std::vector<std::string>& choices,
                                      std::size_t preset) override;
    bool fillIn(SerialPortForm& form) override;
    bool fillIn(AlarmForm& form) override;
    bool fillIn(DateAndTimeForm& form) override;
    bool fillIn(TimeDifferenceForm& form) override;
    bool fillIn(UnidentifiedVehicleForm& form) override;

private:
    QWidget& parent();
    Answer remind(const Message& message);

    QWidget& window_;
    QPointer<QWidget> last_; ///< parent of the last box
    Reminders& reminders_;
    const TextContext text_;
    Quietly quietly_;
};

/// Files chosen in the file dialog, over WINDOW. What has no folder yet is saved among the person's documents, until a
/// person has been to another folder.
class DialogFileChooser final : public FileChooser {
public:
    explicit DialogFileChooser(QWidget& window) : window_(window) {}

    std::optional<std::filesystem::path> chooseToOpen() override;
    std::optional<std::filesystem::path> chooseLogs() override;
    std::optional<SavePlace> chooseToSave(const std::filesystem::path& suggested) override;
    std::optional<SavePlace> chooseCopy(SourceText what, const std::filesystem::path& folder, const std::string& name,
                                        std::span<const FileFormat> formats) override;

private:
    QWidget& window_;
    bool chosen_ = false;       ///< a file, and so the folder that the dialog opens in
    QString copiesFilter_;      ///< the format of copies that was chosen last
    QStringList copiesFilters_; ///< of which formats
    QString copiesFolder_;      ///< empty: no copy has been saved yet
};

} // namespace quobrix
