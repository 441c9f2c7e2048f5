#pragma once

#include "app/document_files.h"
#include "export/export_file.h"

#include <QString>

#include <functional>

class QWidget;

namespace quobrix {

/// Writes what a page or a table shows to a file for other programs, which a person chooses. It appears whole or not at
/// all; failures are told. Records are read where they are shown, on the user-interface thread and a few at a time:
/// beyond a moment a dialog shows how far it is, and Cancel. What then waits for the disk runs on another thread.
class RecordExport {
public:
    /// SAY tells in passing that it is done. All of it must outlive the export.
    RecordExport(TQuobrixDocument& document, const TextContext& context, Prompter& prompter, FileChooser& chooser,
                 DiskRunner runDisk, QWidget& window, std::function<void(const QString&)> say);

    /// Whether a file has been written.
    bool run(const ExportContent& content);

    qint64 patience = 500; ///< ms that a person waits without being told for what

private:
    Result<std::size_t> write(const ExportContent& content, const CopyPlace& place);

    TQuobrixDocument& document_;
    const TextContext context_;
    Prompter& prompter_;
    FileChooser& chooser_;
    DiskRunner runDisk_;
    QWidget& window_;
    std::function<void(const QString&)> say_;
};

} // namespace quobrix
