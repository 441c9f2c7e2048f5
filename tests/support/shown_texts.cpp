#include "support/shown_texts.h"

#include "base/ui/qt_text.h"
#include "drawing/text_measure.h"
#include "report/report.h"

#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QHeaderView>
#include <QMetaProperty>
#include <QTabBar>
#include <QTextDocumentFragment>

#include <algorithm>
#include <string_view>

namespace quobrix::test {
namespace {

constexpr int kRows = 40; // of a list: what follows is made by the same code

/// What OBJECT is called, or what it is within what is called something.
QString nameOf(const QObject& object) {
    const QObject* named = &object;
    while (named->parent() && (named->objectName().isEmpty() || named->objectName().startsWith(QLatin1String("qt_"))))
        named = named->parent();
    const QString type = QLatin1String(object.metaObject()->className());
    return (named == &object ? type : type + QStringLiteral(" in")) + QLatin1Char(' ') + named->objectName();
}

void add(SeenTexts& all, const QString& where, std::initializer_list<QString> texts) {
    for (const QString& text : texts)
        if (!text.isEmpty())
            all.push_back({where, text});
}

/// What a person sees of TEXT.
QString plainText(const QString& text) {
    return Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
}

void addOwn(SeenTexts& all, QWidget& widget) {
    const QString where = nameOf(widget);
    constexpr std::string_view kNotShown[] = {"objectName", "styleSheet", "inputMask", "windowFilePath",
                                              "windowIconText"};
    const QMetaObject& type = *widget.metaObject();
    for (int i = 0; i < type.propertyCount(); ++i)
        if (const QMetaProperty property = type.property(i);
            property.metaType().id() == QMetaType::QString &&
            std::ranges::find(kNotShown, property.name()) == std::end(kNotShown))
            add(all, where, {plainText(property.read(&widget).toString())});
    if (const auto* tabs = qobject_cast<const QTabBar*>(&widget))
        for (int i = 0; i < tabs->count(); ++i)
            add(all, where, {tabs->tabText(i), tabs->tabToolTip(i)});
    if (const auto* choices = qobject_cast<const QComboBox*>(&widget))
        addTexts(all, *choices->model(), where);
    if (const auto* view = qobject_cast<const QAbstractItemView*>(&widget);
        view && view->model() && !qobject_cast<const QHeaderView*>(view))
        addTexts(all, *view->model(), where);
    for (const QAction* action : widget.actions())
        addTexts(all, *action);
}

} // namespace

void addTexts(SeenTexts& all, const QAction& action) {
    add(all, nameOf(action), {action.text(), action.toolTip(), action.statusTip()});
}

void addTexts(SeenTexts& all, const QAbstractItemModel& model, const QString& where) {
    constexpr int kRoles[] = {Qt::DisplayRole, Qt::ToolTipRole, Qt::StatusTipRole, Qt::AccessibleTextRole,
                              Qt::AccessibleDescriptionRole};
    for (const int role : kRoles) {
        for (int column = 0; column < model.columnCount(); ++column) {
            add(all, where, {model.headerData(column, Qt::Horizontal, role).toString()});
            for (int row = 0; row < std::min(model.rowCount(), kRows); ++row)
                add(all, where, {model.data(model.index(row, column), role).toString()});
        }
        for (int row = 0; row < std::min(model.rowCount(), kRows); ++row)
            add(all, where, {model.headerData(row, Qt::Vertical, role).toString()});
    }
}

void addTexts(SeenTexts& all, QWidget& window) {
    addOwn(all, window);
    for (QWidget* widget : window.findChildren<QWidget*>())
        addOwn(all, *widget);
}

namespace {

/// The parts of a report.
class ReportTexts {
public:
    ReportTexts(SeenTexts& all, QString where) : all_(all), where_(std::move(where)) {}

    void operator()(const Heading& heading) { say(heading.text); }
    void operator()(const Paragraph& paragraph) { say(paragraph.text); }
    void operator()(const Facts& facts) {
        for (const Facts::Fact& fact : facts.facts)
            say(fact.label), say(fact.text);
    }
    void operator()(const Grid& grid) {
        for (const Grid::Column& column : grid.columns)
            say(column.heading);
        for (const std::vector<std::string>& row : grid.rows)
            for (const std::string& cell : row)
                say(cell);
    }
    void operator()(const Picture& picture) { say(picture.draw({kWide, kWide}, measure_)); }

private:
    static constexpr double kWide = 2000; // nothing is broken or shortened

    void say(const std::string& text) { add(all_, where_, {toQt(text)}); }
    void say(const Drawing& drawing) {
        say(drawing.title);
        say(drawing.description);
        for (const DrawingCommand& command : drawing.commands)
            if (const auto* text = std::get_if<Text>(&command))
                say(text->text);
    }

    SeenTexts& all_;
    QString where_;
    TableTextMeasure measure_{10};
};

} // namespace

void addTexts(SeenTexts& all, const Report& report) {
    ReportTexts texts(all, QStringLiteral("report ") + toQt(report.title));
    texts(Heading{report.title});
    for (const Block& block : report.blocks)
        std::visit(texts, block);
}

} // namespace quobrix::test
