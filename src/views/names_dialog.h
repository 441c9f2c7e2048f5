#pragma once

#include "model/names.h"
#include "views/list_dialog.h"

#include <span>
#include <string>

namespace quobrix {

struct EditOutcome;

/// Edits a name table: keys, their names, and whether records refer to them.
class NamesDialog : public ListDialog {
public:
    void refresh() override;
    /// Selects the rows of KEYS and opens the name of the first one for typing.
    void nameKeys(std::span<const std::string> keys);

protected:
    /// NAMES must be a table of CONTEXT's document.
    NamesDialog(const ViewContext& context, NamesTable& names, const ListDialogSpec& spec, QWidget* parent);
    /// The name that an entry gets when the user adds it.
    virtual std::string newName() const;

private:
    /// Widens the column of keys for the one that has been typed.
    void cellChanged() override;

    NamesTable& names_;
};

class TVehicleNamesDialog final : public NamesDialog {
public:
    TVehicleNamesDialog(const ViewContext& context, QWidget* parent);
};

/// Tells of a serial number that is refused, since the person may choose how often to be reminded of its form.
class TQuobrixNamesDialog final : public NamesDialog {
public:
    TQuobrixNamesDialog(const ViewContext& context, QWidget* parent);

private:
    void tellRefusal(const EditOutcome& outcome);

    bool telling_ = false;
};

/// Keeps beside the drivers the names that new ones get at first.
class DriverNamesDialog final : public NamesDialog {
public:
    DriverNamesDialog(const ViewContext& context, QWidget* parent);

private:
    std::string newName() const override;
};

} // namespace quobrix
