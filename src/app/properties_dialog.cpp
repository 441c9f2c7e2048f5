#include "app/properties_dialog.h"

#include "base/ui/qt_text.h"
#include "model/document_properties.h"
#include "texts/text.h"
#include "ui/fields.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace quobrix {

// Before these rows stands a line.
constexpr std::string_view kFirstOfRecords = "Trips", kFirstOfFormat = "Objects";

/// How much of the file is in use, as a bar.
class PropertiesDialog::SpaceBar final : public QWidget {
public:
    SpaceBar() {
        setObjectName(QStringLiteral("SpaceBar"));
        setFixedHeight(fontMetrics().height() / 2);
    }

    void show(const CompoundFile::Space& space) {
        const auto whole = static_cast<double>(space.fileBytes);
        used_ = whole > 0 ? 1 - static_cast<double>(space.freeBytes) / whole : 1;
        setAccessibleName(tr("%1 percent of the file is in use").arg(qRound(100 * used_)));
        setToolTip(accessibleName());
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF whole = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        QPainterPath outline;
        outline.addRoundedRect(whole, whole.height() / 2, whole.height() / 2);
        painter.fillPath(outline, palette().color(QPalette::Base));
        painter.save();
        painter.setClipPath(outline);
        painter.fillRect(QRectF(whole.topLeft(), QSizeF(whole.width() * used_, whole.height())),
                         palette().color(QPalette::Highlight));
        painter.restore();
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawPath(outline);
    }

private:
    double used_ = 1;
};

PropertiesDialog::PropertiesDialog(const ViewContext& context, std::function<void()> compact, QWidget* parent)
    : QDialog(parent), context_(context), compact_(std::move(compact)), form_(new QFormLayout), bar_(new SpaceBar),
      compactButton_(new QPushButton(tr("&Compact"))), folderButton_(new QPushButton(tr("Open &Folder"))) {
    setObjectName(QStringLiteral("PropertiesDialog"));
    setWindowTitle(tr("%1 Properties").arg(toQt(context.document.title())));

    compactButton_->setObjectName(QStringLiteral("CompactButton"));
    connect(compactButton_, &QPushButton::clicked, this, [this] {
        compact_();
        refresh();
    });
    folderButton_->setObjectName(QStringLiteral("FolderButton"));
    folderButton_->setToolTip(tr("Shows the folder in which this file lies."));
    connect(folderButton_, &QPushButton::clicked, this, &PropertiesDialog::openFolder);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->addButton(folderButton_, QDialogButtonBox::ActionRole);
    buttons->addButton(compactButton_, QDialogButtonBox::ActionRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    for (QPushButton* button : {compactButton_, folderButton_})
        button->setAutoDefault(false);
    buttons->button(QDialogButtonBox::Close)->setDefault(true);
    buttons->button(QDialogButtonBox::Close)->setFocus();

    form_->setHorizontalSpacing(24);
    form_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form_);
    layout->addSpacing(layout->spacing());
    layout->addWidget(buttons);
    refresh();
    setMinimumWidth(fontMetrics().averageCharWidth() * 72);
}

void PropertiesDialog::refresh() {
    TQuobrixDocument& document = context_.document;
    for (const DocumentProperty& property : documentProperties(document, context_.text()))
        show(property.key, text(property.label), toQt(property.value));
    bar_->show(document.space());
    bar_->setVisible(document.hasFile());
    folderButton_->setEnabled(document.hasFile());
    const QString why = !document.hasFile()               ? tr("This file has not been saved yet.")
                        : document.isExample()            ? tr("The example is never changed.")
                        : document.readOnly()             ? tr("This file is read-only.")
                        : document.space().freeBytes == 0 ? tr("There is no unused space in this file.")
                                                          : QString();
    compactButton_->setEnabled(why.isEmpty());
    compactButton_->setToolTip(why.isEmpty() ? tr("Removes the unused space from this file.") : why);
}

/// Adds the row KEY, or shows its new value.
void PropertiesDialog::show(std::string_view key, std::string_view label, const QString& value) {
    const QString name = toQt(key);
    auto* field = findChild<QLineEdit*>(name);
    if (!field) {
        field = new QLineEdit;
        field->setObjectName(name);
        field->setReadOnly(true);
        field->setFrame(false);
        QPalette flat = field->palette();
        flat.setColor(QPalette::Base, Qt::transparent);
        field->setPalette(flat);
        if (key == kFirstOfRecords || key == kFirstOfFormat) {
            auto* line = new QFrame;
            line->setFrameShape(QFrame::HLine);
            line->setFrameShadow(QFrame::Sunken);
            form_->addRow(line);
        }
        form_->addRow(fieldLabel(toQt(label) + QLatin1Char(':'), *field), field);
        if (key == "FreeSpace")
            form_->addRow(QString(), bar_);
    }
    field->setText(value);
    field->setCursorPosition(0);
    field->setToolTip(key == "Path" || key == "ReadOnly" ? value : QString());
}

void PropertiesDialog::openFolder() {
    QDesktopServices::openUrl(QUrl::fromLocalFile(toQtPath(context_.document.path().parent_path())));
}

} // namespace quobrix
