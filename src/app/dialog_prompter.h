#pragma once

#include "app/document_files.h"
#include "messages/prompter.h"

class QWidget;

namespace quobrix {

/// Questions and statements as message boxes over WINDOW. Each box has the message's key as object name.
class DialogPrompter final : public Prompter {
public:
    explicit DialogPrompter(QWidget& window) : window_(window) {}

    Answer ask(const Message& question) override;
    std::optional<Answer> askOrCancel(const Message& question) override;
    void tell(const Message& statement) override;
    std::optional<std::size_t> choose(std::string_view what, const std::vector<std::string>& choices,
                                      std::size_t preset) override;

private:
    QWidget& window_;
};

/// Files chosen in the file dialog, over WINDOW.
class DialogFileChooser final : public FileChooser {
public:
    explicit DialogFileChooser(QWidget& window) : window_(window) {}

    std::optional<std::filesystem::path> chooseToOpen() override;
    std::optional<std::filesystem::path> chooseToSave(const std::filesystem::path& suggested) override;

private:
    QWidget& window_;
};

} // namespace quobrix
