#include "tables/ui/cell_clipboard.h"

#include "base/markup.h"
#include "tables/ui/spreadsheet_model.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QRegularExpression>

namespace quobrix {
namespace {

/// Cells as this program writes them for itself: figures are not rounded to what is shown.
const QString kExactCells = QStringLiteral("application/x-quobrix-cells");
/// The form that they are in: a row of the date order, the decimal separator and the thousands separator.
const QString kForm = QStringLiteral("application/x-quobrix-cells-form");
/// More are for other spreadsheet programs only, which read the tabbed text.
constexpr std::size_t kMostHtmlCells = 100'000;

template <class TextOf>
QByteArray blockText(const CellBlock& block, const TextOf& textOf) {
    TabbedText text(block.columns.size());
    for (const int place : block.places)
        for (const int column : block.columns)
            text.add(textOf(place, column).toStdString());
    return QByteArray::fromStdString(text.text());
}

std::optional<TabbedText> textsOf(const QByteArray& bytes) {
    return TabbedText::parse({bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

/// BLOCK as a table for word processors, mails and other spreadsheet programs. These take no text for a formula.
QString htmlTable(const SpreadsheetModel& model, const CellBlock& block) {
    std::string html = "<html><head><meta charset=\"utf-8\"></head><body><table>\n";
    for (const int place : block.places) {
        html += "<tr>";
        for (const int column : block.columns) {
            html += model.isFigure(column) ? "<td align=\"right\">" : "<td style=\"mso-number-format:'\\@'\">";
            for (const char c : escapeMarkup(model.text(place, column).toStdString()))
                html += c == '\n' ? std::string("<br>") : std::string(1, c);
            html += "</td>";
        }
        html += "</tr>\n";
    }
    return QString::fromStdString(html + "</table></body></html>\n");
}

QByteArray writeForm(const TUnitSystem& units) {
    const NumberFormat& numbers = units.locale().numbers;
    TabbedText form(3);
    form.add(std::string(units.unitName(UnitTypeId::Date)));
    form.add(numbers.decimalSeparator);
    form.add(numbers.thousandsSeparator);
    return QByteArray::fromStdString(form.text());
}

/// UNITS in the form of what writeForm() has written; as they are, if BYTES are nothing of that kind.
std::unique_ptr<const TUnitSystem> readForm(const QByteArray& bytes, const TUnitSystem& units) {
    TextLocale locale = units.locale();
    UnitChoices choices = units.choices();
    if (const auto form = textsOf(bytes); form && form->rows() == 1 && form->columns() == 3) {
        for (const UnitId order : unitTypeRecord(UnitTypeId::Date).units)
            if (unitRecord(order).name == form->cell(0, 0))
                choices.choose(UnitTypeId::Date, order);
        locale.numbers.decimalSeparator = form->cell(0, 1);
        locale.numbers.thousandsSeparator = form->cell(0, 2);
    }
    auto result = std::make_unique<TUnitSystem>(std::move(locale));
    result->replace(std::move(choices));
    return result;
}

} // namespace

void copyCells(const SpreadsheetModel& model, const CellBlock& block, const TUnitSystem& units) {
    auto* data = new QMimeData;
    QString shown =
        QString::fromUtf8(blockText(block, [&](int place, int column) { return model.text(place, column); }));
    // A lone text is pasted into fields, too: these want neither line break nor quotation marks that were not there.
    const bool alone = block.places.size() == 1 && block.columns.size() == 1;
    if (alone)
        if (const QString text = model.text(block.places.front(), block.columns.front());
            !text.contains(QRegularExpression(QStringLiteral("^\"|[\t\r\n]"))))
            shown = text;
    data->setText(shown);
    if (!alone && block.places.size() * block.columns.size() <= kMostHtmlCells)
        data->setHtml(htmlTable(model, block));
    data->setData(kExactCells, blockText(block, [&](int place, int column) { return model.exactText(place, column); }));
    data->setData(kForm, writeForm(units));
    QGuiApplication::clipboard()->setMimeData(data);
}

std::optional<ClipboardCells> cellsOnClipboard(const TUnitSystem& units) {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (!data)
        return {};
    const bool own = data->hasFormat(kExactCells);
    std::optional<TabbedText> texts = textsOf(own ? data->data(kExactCells) : data->text().toUtf8());
    if (!texts)
        return {};
    return ClipboardCells{*std::move(texts), readForm(own ? data->data(kForm) : QByteArray(), units)};
}

} // namespace quobrix
