#pragma once

#include "model/logs.h"
#include "views/page.h"

#include <QDialog>

#include <functional>
#include <memory>
#include <vector>

class QVBoxLayout;

namespace quobrix {

class StatusLine;

/// Edits one record of a log: OK is one step of the document's edits. What is refused leaves the dialog open, with the
/// reason at its foot.
class RecordDialog : public QDialog {
public:
    ~RecordDialog() override;

    void accept() override;

protected:
    /// Of the record in ROW of the log of SPEC, which must be there, and outlive the dialog. NAME is its object name,
    /// and the section of its place in the settings.
    RecordDialog(const ViewContext& context, const LogSpec& spec, RowIndex row, const QString& name,
                 const QString& title, QWidget* parent);
    /// Shows WIDGET above the line and the buttons; called once.
    void setContent(QWidget* widget);
    const ViewContext& context() const { return context_; }
    const LogSpec& spec() const { return spec_; }

    /// Puts what the dialog shows into the record, which stands in ROW by now.
    virtual EditOutcome take(const Table& log, RowIndex row) = 0;

private:
    const ViewContext context_;
    const LogSpec& spec_;
    const RecordKey record_;
    QVBoxLayout* layout_;
    StatusLine* status_;
};

/// The fields of a record that were recorded, whatever its log.
class RecordFieldsDialog final : public RecordDialog {
public:
    RecordFieldsDialog(const ViewContext& context, const LogSpec& spec, RowIndex row, const QString& title,
                       QWidget* parent);

private:
    struct Field {
        std::size_t column;
        QWidget* editor;
        std::function<Parsed(const Table& log, RowIndex row)> read; ///< what is in the editor
        std::function<bool()> edited;
    };

    EditOutcome take(const Table& log, RowIndex row) override;
    Field makeField(const Table& log, std::size_t column, RowIndex row);

    std::vector<Field> fields_;
};

/// The rows of one of the tables that a trip owns, in a table that stands alone.
class TripPartDialog : public RecordDialog {
protected:
    TripPartDialog(const ViewContext& context, RowIndex row, const QString& name, const QString& title,
                   std::unique_ptr<Table> rows, QWidget* parent);
    ~TripPartDialog() override;

    const Table& rows() const { return *rows_; }
    virtual EditOutcome correct(RowIndex row) = 0;

private:
    EditOutcome take(const Table& log, RowIndex row) final;

    std::unique_ptr<Table> rows_;
    TableEdits edits_;
    TSpreadsheet* list_;
};

/// The speed samples of a trip.
class TTripLogSampleDialog final : public TripPartDialog {
public:
    TTripLogSampleDialog(const ViewContext& context, RowIndex row, QWidget* parent);

private:
    EditOutcome correct(RowIndex row) override;
};

/// The ends of its speed bands.
class TTripLogSpeedBandsDialog final : public TripPartDialog {
public:
    TTripLogSpeedBandsDialog(const ViewContext& context, RowIndex row, QWidget* parent);

private:
    EditOutcome correct(RowIndex row) override;
};

} // namespace quobrix
