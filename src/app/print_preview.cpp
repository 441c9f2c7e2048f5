#include "app/print_preview.h"

#include "base/ui/qt_text.h"
#include "paper/printout.h"
#include "paper/ui/paper_painter.h"
#include "settings/settings.h"
#include "ui/fields.h"
#include "ui/windows.h"

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace quobrix {
namespace {

constexpr std::string_view kPreviewSection = "Print Preview";
constexpr int kPercents[] = {25, 50, 75, 100, 125, 150, 200, 400};
constexpr int kFitPage = 0, kFitWidth = 1; // entries of the box before them

} // namespace

PrintPreviewDialog::PrintPreviewDialog(const ViewContext& context, Report report, Commands commands,
                                       Background& layouts, QWidget* parent)
    : QDialog(parent), context_(context), report_(std::move(report)), commands_(std::move(commands)), layouts_(layouts),
      view_(new PageView), bar_(new QToolBar), page_(new QSpinBox), scale_(new QComboBox) {
    setObjectName(QStringLiteral("PrintPreview"));
    setWindowTitle(tr("Print Preview - %1").arg(toQt(report_.title)));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    bar_->setObjectName(QStringLiteral("previewBar"));
    bar_->setIconSize(QSize(20, 20));

    addAction("PreviewPrint", tr("&Print..."), QKeySequence(Qt::CTRL | Qt::Key_P), nullptr,
              [this] { commands_.print(*this); });
    addAction("PreviewSavePdf", tr("Save as &PDF..."), QKeySequence(Qt::CTRL | Qt::Key_S), nullptr,
              [this] { commands_.savePdf(*this); });
    addAction("PreviewSetup", tr("Page Set&up..."), {}, nullptr, [this] {
        commands_.setUp(*this);
        layOut();
    });
    bar_->addSeparator();
    first_ = addAction("PreviewFirst", tr("First Page"), QKeySequence(Qt::CTRL | Qt::Key_Home), "first",
                       [this] { view_->goTo(0); });
    previous_ = addAction("PreviewPrevious", tr("Previous Page"), QKeySequence(Qt::ALT | Qt::Key_Left), "back",
                          [this] { view_->step(-1); });
    addPageBox();
    next_ = addAction("PreviewNext", tr("Next Page"), QKeySequence(Qt::ALT | Qt::Key_Right), "forward",
                      [this] { view_->step(1); });
    last_ = addAction("PreviewLast", tr("Last Page"), QKeySequence(Qt::CTRL | Qt::Key_End), "last",
                      [this] { view_->goTo(view_->count() - 1); });
    bar_->addSeparator();
    addAction("PreviewZoomOut", tr("Zoom Out"), QKeySequence(Qt::CTRL | Qt::Key_Minus), "zoom-out",
              [this] { view_->stepScale(-1); });
    addScaleBox();
    addAction("PreviewZoomIn", tr("Zoom In"), QKeySequence(Qt::CTRL | Qt::Key_Plus), "zoom-in", [this] {
        view_->stepScale(1);
    })->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_Plus), QKeySequence(Qt::CTRL | Qt::Key_Equal)});
    QAction* two = addAction("PreviewTwoPages", tr("Two Pages"), QKeySequence(Qt::CTRL | Qt::Key_2), "two-pages", {});
    two->setCheckable(true);
    connect(two, &QAction::toggled, this, [this](bool on) {
        view_->setColumns(on ? 2 : 1);
        context_.settings.setBoolean(kPreviewSection, "TwoPages", on);
    });

    auto* close = new QDialogButtonBox(QDialogButtonBox::Close);
    close->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("PreviewClose"));
    close->button(QDialogButtonBox::Close)->setAutoDefault(false);
    close->button(QDialogButtonBox::Close)->setText(tr("&Close"));
    connect(close, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 8);
    layout->addWidget(bar_);
    layout->addWidget(view_, 1);
    close->setContentsMargins(0, 0, 8, 0);
    layout->addWidget(close);

    connect(view_, &PageView::currentChanged, this, &PrintPreviewDialog::showCurrent);
    connect(view_, &PageView::scaleChanged, this, &PrintPreviewDialog::showScale);
    two->setChecked(context_.settings.getBoolean(kPreviewSection, "TwoPages", false));
    if (!quobrix::restoreGeometry(*this, context_.settings, kPreviewSection))
        resize(QSize(1000, 760).boundedTo(screen()->availableSize() * 9 / 10));
    layOut();
    showCurrent();
    showScale();
    view_->setFocus();
}

PrintPreviewDialog::~PrintPreviewDialog() { rememberGeometry(*this, context_.settings, kPreviewSection); }

QAction* PrintPreviewDialog::addAction(const char* name, const QString& text, const QKeySequence& keys,
                                       const char* icon, std::function<void()> run) {
    auto* action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(keys);
    const QString plain = QString(text).remove(QLatin1Char('&')).remove(QLatin1String("..."));
    action->setToolTip(keys.isEmpty() ? plain
                                      : QStringLiteral("%1 (%2)").arg(plain, keys.toString(QKeySequence::NativeText)));
    action->setIconText(text); // or the button would lose its dots
    if (icon)
        action->setIcon(QIcon(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(icon))));
    if (run)
        connect(action, &QAction::triggered, this, std::move(run));
    QDialog::addAction(action); // its keys hold wherever the keyboard is
    bar_->addAction(action);
    auto* button = qobject_cast<QToolButton*>(bar_->widgetForAction(action));
    button->setObjectName(action->objectName() + QStringLiteral("Button"));
    button->setAccessibleName(plain);
    button->setFocusPolicy(Qt::TabFocus);
    return action;
}

void PrintPreviewDialog::addField(const QString& label, QWidget& field) {
    QLabel* name = fieldLabel(label, field);
    name->setContentsMargins(6, 0, 4, 0);
    bar_->addWidget(name);
    bar_->addWidget(&field);
}

void PrintPreviewDialog::addPageBox() {
    page_->setObjectName(QStringLiteral("PreviewPage"));
    page_->setKeyboardTracking(false);
    connect(page_, &QSpinBox::valueChanged, this,
            [this](int page) { view_->goTo(static_cast<std::size_t>(page - 1)); });
    addField(tr("Pa&ge:"), *page_);
}

void PrintPreviewDialog::addScaleBox() {
    scale_->setObjectName(QStringLiteral("PreviewZoom"));
    scale_->addItems({tr("Fit Page"), tr("Fit Width")});
    for (const int percent : kPercents)
        scale_->addItem(tr("%1 %").arg(percent), percent);
    scale_->setPlaceholderText(tr("%1 %").arg(1000)); // as wide as that
    connect(scale_, &QComboBox::activated, this, [this](int entry) {
        if (entry == kFitPage || entry == kFitWidth)
            view_->setFit(entry == kFitPage ? PageView::Fit::Page : PageView::Fit::Width);
        else
            view_->setScale(scale_->itemData(entry).toInt() / 100.0);
        view_->setFocus();
    });
    addField(tr("&Zoom:"), *scale_);
}

void PrintPreviewDialog::layOut() {
    laidOut_ = std::make_unique<QObject>();
    layouts_.run(
        *laidOut_,
        [report = report_, setup = PageSetup::load(context_.settings)] {
            return quobrix::layOut(report, setup, PaperPainter());
        },
        [this](PageSource pages) { view_->setPages(std::move(pages)); });
}

void PrintPreviewDialog::showCurrent() {
    const QSignalBlocker quiet(page_);
    page_->setEnabled(view_->count() > 0);
    page_->setRange(1, static_cast<int>(view_->count()));
    page_->setSuffix(view_->count() > 0 ? tr(" of %1").arg(view_->count()) : QString());
    page_->setValue(static_cast<int>(view_->current() + 1));
    const bool before = view_->current() > 0, after = view_->current() + 1 < view_->count();
    first_->setEnabled(before);
    previous_->setEnabled(before);
    next_->setEnabled(after);
    last_->setEnabled(after);
}

void PrintPreviewDialog::showScale() {
    if (view_->fit() != PageView::Fit::Scale)
        return scale_->setCurrentIndex(view_->fit() == PageView::Fit::Page ? kFitPage : kFitWidth);
    const int percent = static_cast<int>(std::lround(view_->scale() * 100));
    scale_->setPlaceholderText(tr("%1 %").arg(percent));
    scale_->setCurrentIndex(scale_->findData(percent));
}

} // namespace quobrix
