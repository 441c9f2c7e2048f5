#pragma once

#include "model/record_filter.h"
#include "ui/escape_bar.h"
#include "views/page.h"

#include <array>

class QComboBox;
class QLabel;
class QLineEdit;
class QTimer;
class QToolButton;

namespace quobrix {

/// The line above the list of a log in which a person says which records are to be shown: words, which are found as
/// they are typed, and behind a button a time, a vehicle, a driver and a logger. It knows no records but by what they
/// are called; whoever owns it shows those that meet criteria().
class FilterBar final : public EscapeBar {
    Q_OBJECT
public:
    /// SPEC must outlive the bar.
    FilterBar(const ViewContext& context, const LogSpec& spec, QWidget* parent = nullptr);

    /// What was wanted when changed() was sent last, or taken off.
    const RecordCriteria& criteria() const { return criteria_; }
    /// Takes the keyboard.
    void open();
    /// Takes everything off, without changed().
    void clear();
    /// Wants the records of a period, else of whole days (none: any time), of a vehicle and a driver, as if a person
    /// had chosen them.
    void want(const Period* period, const TimeRange& days, const std::optional<std::string>& vehicle,
              const std::optional<std::string>& driver);
    /// Says that SHOWN of ALL records are shown.
    void setCount(std::size_t shown, std::size_t all);
    /// The records name others than before, or by other names.
    void namesChanged();
    /// Typing has to wait for the end of a word, since the last step took longer than a person notices.
    void setSlow(bool slow);
    /// Where the keyboard goes on from the bar, until it shows more fields.
    QWidget* lastField() const;

signals:
    /// Other records are wanted, or, if a person has pressed Enter, the same ones of what there is by now.
    void changed();
    /// The person goes on to the records.
    void left();

protected:
    void escaped() override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// A box of names that records have.
    struct Names {
        RecordName what;
        std::optional<std::string> RecordCriteria::*wanted;
        QComboBox* box = nullptr;
    };

    void makeFields();
    void offerNames();
    void showFields(bool shown);
    void choosePeriod();
    void enterRange();
    void apply(bool evenIfSame);
    /// The time that the fields want; nothing, and the reason in REASON, if they cannot be understood.
    std::optional<TimeRange> time(QString& reason) const;
    QString dateOf(std::int64_t time) const;
    /// What the fields behind the button want.
    QString fieldsText() const;
    void showState();

    const ViewContext context_;
    const LogSpec& spec_;
    RecordCriteria criteria_;
    std::vector<Names> names_;
    QLineEdit* words_;
    QToolButton* more_;
    QLabel* count_;
    QToolButton* showAll_;
    QComboBox* period_ = nullptr;
    QLineEdit *from_ = nullptr, *to_ = nullptr;
    QLabel* reason_ = nullptr;
    QWidget* fields_ = nullptr; ///< made, with names_ and the four before it, when it is first asked for
    QTimer* typing_;
    bool outdated_ = true; ///< the names that are offered
};

} // namespace quobrix
