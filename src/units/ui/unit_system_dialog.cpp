#include "units/ui/unit_system_dialog.h"

#include "base/ui/qt_text.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "ui/windows.h"
#include "units/ui/decimals_box.h"
#include "units/ui/unit_delegates.h"
#include "units/ui/unit_system_name_dialogs.h"
#include "units/unit_example.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>

namespace quobrix {
namespace {

constexpr std::string_view kSection = "UnitSys";

/// A change of the choices, from one state to another. The first redo() is the change itself, which has been made.
class Change final : public QUndoCommand {
public:
    Change(const QString& what, TUnitSystem& units, UnitChoices before, UnitChoices after)
        : QUndoCommand(what), units_(units), before_(std::move(before)), after_(std::move(after)) {}

    void undo() override { take(before_); }
    void redo() override {
        if (units_.choices() != after_)
            take(after_);
    }

private:
    void take(UnitChoices choices) {
        choices.modified = true; // the other state may have been saved meanwhile
        choices.locked = units_.locked();
        units_.replace(std::move(choices));
    }

    TUnitSystem& units_;
    UnitChoices before_, after_;
};

template <class Widget>
Widget* named(Widget* widget, const char* name, const QString& tip) {
    widget->setObjectName(QLatin1String(name));
    widget->setToolTip(tip);
    widget->setAccessibleDescription(tip);
    return widget;
}

QPushButton* button(const QString& text, const char* name, const QString& tip) {
    auto* result = named(new QPushButton(text), name, tip);
    result->setAutoDefault(false); // Enter ends an entry, not the dialog
    return result;
}

} // namespace

UnitSystemDialog::UnitSystemDialog(TUnitSystem& units, UnitSystemStore& store, Settings& settings, Prompter& prompter,
                                   QWidget* parent)
    : QDialog(parent), units_(units), store_(store), settings_(settings), prompter_(prompter) {
    setObjectName(QStringLiteral("UnitSys"));
    setWindowTitle(tr("Unit Systems"));
    makeFields();
    makeButtons();
    layOut();
    for (const UnitTypeId offered : offeredUnitTypes()) {
        auto* item = new QListWidgetItem(toQt(text(unitTypeRecord(offered).shownName)), types_);
        item->setData(Qt::UserRole, static_cast<int>(offered));
    }
    types_->setMinimumWidth(types_->sizeHintForColumn(0) + style()->pixelMetric(QStyle::PM_ScrollBarExtent));
    showSystem();
    connectFields();
    selectType(
        static_cast<UnitTypeId>(settings_.getInteger(kSection, "Type", static_cast<std::int32_t>(UnitTypeId::Speed))));
    units_.addListener(*this);
}

UnitSystemDialog::~UnitSystemDialog() {
    units_.removeListener(*this);
    settings_.setInteger(kSection, "Type", static_cast<std::int32_t>(type()));
    (void)store_.saveChanges(); // what fails stays modified, and is tried again and told of at the end of the program
}

void UnitSystemDialog::makeFields() {
    systems_ = named(new QComboBox, "UsFldUS",
                     tr("Select the current unit system; use New, Rename and Delete to manage this list"));
    systems_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    types_ = named(new QListWidget, "UsFldUT", tr("Select a kind of quantity to see its units"));
    types_->setItemDelegate(new TypeDelegate(units_, types_));
    typeUnits_ = named(new QListWidget, "UsFldU", tr("Select the units in which this kind of quantity is shown"));
    typeUnits_->setItemDelegate(new RowDelegate(typeUnits_));
    decimals_ =
        named(new DecimalsBox, "UsFldD", tr("Select the number of decimal places to associate with the current units"));
    decimals_->setMinimumWidth(fontMetrics().averageCharWidth() * 10);
    fractions_ = named(new QCheckBox(tr("Show diameters as &fractions of an inch")), "UsFldFD",
                       tr("Displays diameters as fractions when using inches as units"));
    example_ = new QLabel;
    example_->setObjectName(QStringLiteral("example"));
    example_->setWordWrap(true);
    locked_ = new QLabel(tr("This unit system is locked. Choose New to keep what you change in it."));
    locked_->setObjectName(QStringLiteral("locked"));
    for (QLabel* note : {example_, locked_})
        note->setForegroundRole(QPalette::PlaceholderText);
}

void UnitSystemDialog::makeButtons() {
    new_ = button(tr("&New..."), "UsNew", tr("Allows you to create a new unit system"));
    rename_ = button(tr("&Rename..."), "UsRename", {});
    delete_ = button(tr("De&lete"), "UsDelete", {});
    undo_ = button(tr("Und&o"), "UsUndo", {});
    redo_ = button(tr("R&edo"), "UsRedo", {});
    const auto connectChange = [this](QPushButton* pressed, QAction* action, const QList<QKeySequence>& keys) {
        action->setShortcuts(keys);
        addAction(action);
        followAction(*pressed, *action, textWithKeys);
    };
    connectChange(undo_, changes_.createUndoAction(this), QKeySequence::keyBindings(QKeySequence::Undo));
    QList<QKeySequence> redoKeys = QKeySequence::keyBindings(QKeySequence::Redo);
    const QKeySequence habit(Qt::CTRL | Qt::Key_Y); // not every desktop's, but many people's
    if (!redoKeys.contains(habit))
        redoKeys << habit;
    connectChange(redo_, changes_.createRedoAction(this), redoKeys);
}

void UnitSystemDialog::layOut() {
    auto* systemRow = new QHBoxLayout;
    systemRow->addWidget(fieldLabel(tr("Unit &system:"), *systems_));
    systemRow->addWidget(systems_, 1);
    for (QPushButton* action : {new_, rename_, delete_})
        systemRow->addWidget(action);

    auto* decimalsRow = new QHBoxLayout;
    decimalsRow->setSpacing(8);
    decimalsRow->addWidget(fieldLabel(tr("&Decimals:"), *decimals_));
    decimalsRow->addWidget(decimals_);
    decimalsRow->addStretch();

    auto* lists = new QGridLayout;
    lists->setHorizontalSpacing(16);
    lists->addWidget(fieldLabel(tr("&Quantity:"), *types_), 0, 0);
    lists->addWidget(types_, 1, 0, 3, 1);
    lists->addWidget(fieldLabel(tr("&Units:"), *typeUnits_), 0, 1);
    lists->addWidget(typeUnits_, 1, 1);
    lists->addLayout(decimalsRow, 2, 1);
    lists->addWidget(example_, 3, 1);
    lists->setColumnStretch(0, 3);
    lists->setColumnStretch(1, 2);
    example_->setMinimumHeight(2 * fontMetrics().lineSpacing());
    example_->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)->setAutoDefault(false);
    buttons->addButton(undo_, QDialogButtonBox::ResetRole);
    buttons->addButton(redo_, QDialogButtonBox::ResetRole);
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(systemRow);
    layout->addWidget(locked_);
    layout->addSpacing(layout->spacing());
    layout->addLayout(lists, 1);
    layout->addWidget(fractions_);
    layout->addSpacing(layout->spacing());
    layout->addWidget(buttons);
    QSizePolicy kept = locked_->sizePolicy();
    kept.setRetainSizeWhenHidden(true);
    locked_->setSizePolicy(kept);

    QWidget* before = systems_;
    for (QWidget* next : std::initializer_list<QWidget*>{new_, rename_, delete_, types_, typeUnits_, decimals_,
                                                         fractions_, undo_, redo_}) {
        setTabOrder(before, next);
        before = next;
    }
    types_->setFocus();
    if (!quobrix::restoreGeometry(*this, settings_, kSection))
        resize(fontMetrics().averageCharWidth() * 84, fontMetrics().lineSpacing() * 30);
}

void UnitSystemDialog::connectFields() {
    connect(systems_, &QComboBox::activated, this, [this] { chooseSystem(systems_->currentText().toStdString()); });
    connect(types_, &QListWidget::currentRowChanged, this, [this] { showType(); });
    connect(typeUnits_, &QListWidget::currentRowChanged, this, [this] { chooseUnit(); });
    connect(decimals_, &QSpinBox::valueChanged, this, [this](int decimals) { chooseDecimals(decimals); });
    connect(fractions_, &QCheckBox::toggled, this,
            [this](bool on) { edit(tr("Fractions"), [on](TUnitSystem& units) { units.setFractionDiameters(on); }); });
    connect(new_, &QPushButton::clicked, this, [this] { newSystem({}); });
    connect(rename_, &QPushButton::clicked, this, [this] { renameSystem(); });
    connect(delete_, &QPushButton::clicked, this, [this] { deleteSystem(); });
}

UnitTypeId UnitSystemDialog::type() const {
    return static_cast<UnitTypeId>(types_->currentItem()->data(Qt::UserRole).toInt());
}

void UnitSystemDialog::selectType(UnitTypeId type) {
    int row = 0;
    for (int i = 0; i < types_->count(); ++i)
        if (types_->item(i)->data(Qt::UserRole).toInt() == static_cast<int>(type))
            row = i;
    types_->setCurrentRow(row);
    types_->scrollToItem(types_->currentItem(), QAbstractItemView::PositionAtCenter);
}

void UnitSystemDialog::unitsChanged(UnitsChange reason, std::optional<UnitTypeId>) {
    if (reason == UnitsChange::SystemLoaded)
        showSystem();
    showChoice();
}

void UnitSystemDialog::showSystem() {
    const QSignalBlocker quiet(systems_);
    systems_->clear();
    for (const std::string& name : store_.listSystems())
        systems_->addItem(toQt(name));
    if (systems_->findText(toQt(units_.name())) < 0) // its file has gone
        systems_->addItem(toQt(units_.name()));
    systems_->setCurrentText(toQt(units_.name()));
    const bool locked = units_.locked();
    locked_->setVisible(locked);
    const auto show = [locked](QPushButton* button, const QString& tip, const QString& lockedTip) {
        button->setEnabled(!locked);
        button->setToolTip(locked ? lockedTip : tip);
        button->setAccessibleDescription(button->toolTip());
    };
    show(rename_, tr("Allows you to rename the current unit system"),
         tr("The current unit system is locked and cannot be renamed"));
    show(delete_, tr("Deletes the current unit system. This cannot be undone!"),
         tr("The current unit system is locked and cannot be deleted"));
}

void UnitSystemDialog::showType() {
    const QSignalBlocker quiet(typeUnits_);
    typeUnits_->clear();
    for (const UnitId unit : unitTypeRecord(type()).units) {
        auto* item = new QListWidgetItem(toQt(text(unitRecord(unit).shownName)), typeUnits_);
        item->setData(Qt::UserRole, static_cast<int>(unit));
    }
    showChoice();
}

void UnitSystemDialog::showChoice() {
    const QSignalBlocker quietUnits(typeUnits_);
    const QSignalBlocker quietDecimals(decimals_);
    const QSignalBlocker quietFractions(fractions_);
    for (int i = 0; i < typeUnits_->count(); ++i)
        if (typeUnits_->item(i)->data(Qt::UserRole).toInt() == static_cast<int>(units_.unit(type())))
            typeUnits_->setCurrentRow(i);
    decimals_->setEnabled(!unitTypeRecord(type()).base.empty()); // a date has none
    if (decimals_->value() != units_.decimals(type()))           // what is being typed stays as it is
        decimals_->setValue(units_.decimals(type()));
    fractions_->setChecked(units_.fractionDiameters());
    example_->setText(toQt(unitExample(units_, type())));
    for (int i = 0; i < types_->count(); ++i) {
        const auto shown = static_cast<UnitTypeId>(types_->item(i)->data(Qt::UserRole).toInt());
        types_->item(i)->setData(Qt::AccessibleDescriptionRole, toQt(units_.unitName(shown)));
    }
    types_->viewport()->update();
}

void UnitSystemDialog::chooseUnit() {
    const QListWidgetItem* item = typeUnits_->currentItem();
    if (!item)
        return;
    const auto unit = static_cast<UnitId>(item->data(Qt::UserRole).toInt());
    if (unit != units_.unit(type()))
        edit(item->text(), [type = type(), unit](TUnitSystem& units) { units.setUnit(type, unit); });
}

void UnitSystemDialog::chooseDecimals(int decimals) {
    if (decimals != units_.decimals(type()))
        edit(tr("Decimals"), [type = type(), decimals](TUnitSystem& units) { units.setDecimals(type, decimals); });
}

void UnitSystemDialog::edit(const QString& what, const std::function<void(TUnitSystem&)>& change) {
    UnitChoices before = units_.choices();
    change(units_);
    changes_.push(new Change(what, units_, std::move(before), units_.choices()));
}

void UnitSystemDialog::chooseSystem(const std::string& name) {
    if (name != units_.name() && settleChanges() && told(store_.switchSystem(name), FileAction::Open, name))
        changes_.clear();
    showSystem(); // also after a refusal: the list shows what is current
}

bool UnitSystemDialog::newSystem(const std::string& suggestion) {
    NewUnitSystemDialog dialog(store_, prompter_, suggestion, units_.name(), this);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    // On another base, what was changed in this one does not come along.
    if (dialog.base() != units_.name() && !settleChanges())
        return false;
    if (!told(store_.newSystem(dialog.name(), dialog.base()), FileAction::Save, dialog.name()))
        return false;
    changes_.clear();
    return true;
}

void UnitSystemDialog::renameSystem() {
    RenameUnitSystemDialog dialog(store_, prompter_, units_.name(), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (told(store_.renameSystem(dialog.name()), FileAction::Save, dialog.name()))
        changes_.clear(); // they would bring the old name back
    showSystem();
}

void UnitSystemDialog::deleteSystem() {
    const std::string name = units_.name();
    if (prompter_.ask(makeMessage(MessageId::DeleteUnitSystem, name)) != Answer::Yes)
        return;
    if (told(store_.deleteSystem(), FileAction::Delete, name))
        changes_.clear();
    showSystem();
}

bool UnitSystemDialog::settleChanges() {
    if (!units_.locked()) {
        const Result<void> saved = store_.saveChanges();
        if (saved || !units_.locked())
            return told(saved, FileAction::Save, units_.name());
        showSystem(); // its file has become read-only
    }
    if (!units_.modified() || changes_.isClean())
        return true;
    const auto keep = prompter_.askOrCancel(makeMessage(MessageId::KeepUnitChanges, units_.name()));
    if (keep == Answer::Yes)
        return newSystem(freeName());
    return keep == Answer::No;
}

std::string UnitSystemDialog::freeName() const {
    std::string name = text(TextId::MyUnits);
    for (int i = 2; store_.checkName(name); ++i)
        name = text(TextId::MyUnitsNumbered, i);
    return name;
}

bool UnitSystemDialog::told(const Result<void>& result, FileAction action, std::string_view name) {
    if (!result)
        prompter_.tell(fileMessage(result.error(), action, text(TextId::TheUnitSystem, name)));
    return static_cast<bool>(result);
}

void UnitSystemDialog::reject() {
    // What cannot be saved stays in force, and is tried again at the end of the program.
    if (!settleChanges() && units_.locked())
        return;
    rememberGeometry(*this, settings_, kSection);
    QDialog::reject();
}

} // namespace quobrix
