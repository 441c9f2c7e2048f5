/// A list of 1,200 trips as pages: how many there are, and the first one painted, beside a text document of the toolkit
/// that lays the same texts out as a table; and all pages as a PDF file beside that document's.
#include "ratios.h"

#include "paper/printout.h"
#include "paper/ui/paper_painter.h"

#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QTextDocument>

#include <fmt/format.h>

namespace quobrix::bench {
namespace {

constexpr int kTrips = 1200, kColumns = 16;

Report list(int trips) {
    Grid grid;
    for (int column = 0; column < kColumns; ++column)
        grid.columns.push_back({fmt::format("Heading {}", column), column % 3 != 1});
    for (int trip = 0; trip < trips; ++trip) {
        std::vector<std::string>& cells = grid.rows.emplace_back();
        for (int column = 0; column < kColumns; ++column)
            cells.push_back(column == 0 ? std::to_string(trip + 1) : fmt::format("{}.{} Miles", trip * column, column));
    }
    Report report{"Trip Log", {}, true};
    report.blocks.emplace_back(std::move(grid));
    return report;
}

std::unique_ptr<QTextDocument> document(const Report& report) {
    QString html = QStringLiteral("<h1>Trip Log</h1><table><thead><tr>");
    const Grid& grid = std::get<Grid>(report.blocks.front());
    for (const Grid::Column& column : grid.columns)
        html += QStringLiteral("<th>%1</th>").arg(QString::fromStdString(column.heading));
    html += QStringLiteral("</tr></thead>");
    for (const std::vector<std::string>& row : grid.rows) {
        html += QStringLiteral("<tr>");
        for (const std::string& cell : row)
            html += QStringLiteral("<td>%1</td>").arg(QString::fromStdString(cell));
        html += QStringLiteral("</tr>");
    }
    auto result = std::make_unique<QTextDocument>();
    QFont font = paperFont();
    font.setPointSizeF(6);
    result->setDefaultFont(font);
    result->setHtml(html + QStringLiteral("</table>"));
    result->setPageSize({842, 595});
    return result;
}

template <class Work>
void enter(const char* name, Work work) {
    benchmark::RegisterBenchmark(name, [work](benchmark::State& state) {
        for (auto _ : state)
            work();
    })->Unit(benchmark::kMillisecond);
}

int run(int argc, char** argv) {
    const QApplication application(argc, argv);
    const Report trips = list(kTrips), fleet = list(100'000);
    QImage page(842, 595, QImage::Format_RGB32);
    const auto look = [&page](const Report& report) {
        const PageSource pages = layOut(report, {}, PaperPainter());
        QPainter painter(&page);
        paintPage(painter, pages.page(0));
    };
    enter("First page/ours", [&] { look(trips); });
    enter("First page/document", [&] {
        const auto peer = document(trips);
        QPainter painter(&page);
        benchmark::DoNotOptimize(peer->pageCount());
        peer->drawContents(&painter, {0, 0, 842, 595});
    });
    enter("PDF/ours", [&] {
        const PaperPainter painter;
        benchmark::DoNotOptimize(painter.pdf(layOut(trips, {}, painter)));
    });
    enter("PDF/document", [&] {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        QPdfWriter writer(&buffer);
        writer.setPageSize(QPageSize(QSizeF(842, 595), QPageSize::Point, {}, QPageSize::ExactMatch));
        document(trips)->print(&writer);
    });
    enter("First of 100,000 trips/ours", [&] { look(fleet); });
    return runAndCompare(
        argc, argv,
        {{"Number of pages and the first one, 1,200 trips", "First page/ours", "First page/document", 0.1},
         {"PDF file of 1,200 trips", "PDF/ours", "PDF/document", 0.5},
         {"First of 100,000 trips, to 1,200 of them", "First of 100,000 trips/ours", "First page/ours", 0}});
}

} // namespace
} // namespace quobrix::bench

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return quobrix::bench::run(argc, argv);
}
