#pragma once

#include "summary/driving_statistics.h"
#include "views/page.h"

#include <functional>
#include <vector>

class QAction;
class QLabel;
class QScrollArea;
class QVBoxLayout;

namespace quobrix {

class DrivingPanel;
struct DrivingDetail;

/// What the home page offers; the actions must outlive it.
struct HomeActions {
    QAction* download;
    QAction* open;
    QAction* create;
    QAction* tripLog;
    std::vector<QAction*> recent; ///< those that are visible; the tooltip is the path
    std::function<void(const DrivingChoice&)> showTrips{};
};
/// A property of an action for a recent file: whether that is missing.
inline constexpr const char* kMissingProperty = "missing";

/// The page that the program starts with: the usual next steps, the recent files, and the document in a few figures.
class HomePage final : public Page {
public:
    HomePage(const ViewContext& context, const HomeActions& actions, QWidget* parent = nullptr);

    std::vector<PathPart> path() const override;
    /// A detail of the statistics, or the page itself.
    PagePlace place() const override;
    void goTo(const PagePlace& place) override;
    void refresh() override;
    /// How was driven, else the figures of the document.
    std::optional<Report> printable(const std::optional<RecordRange>& range) const override;
    std::optional<ExportContent> exported() override;
    bool canExport() const override;
    /// The recent files are others, or some of them are missing.
    void showRecentFiles();

private:
    void showDetail(const DrivingDetail& detail);
    QLabel* addFigure(QVBoxLayout& layout, const char* objectName, const QString& caption);

    ViewContext context_;
    HomeActions actions_;
    DrivingPanel* driving_ = nullptr; ///< none: no statistics are kept
    QWidget *first_, *title_;
    std::vector<QWidget*> starts_; ///< what is not shown with a detail, but for the recent files
    QScrollArea* scroll_;
    QLabel* documentName_;
    QLabel* hint_;
    QLabel* trips_;
    QLabel* distance_;
    QLabel* lastTrip_;
    QLabel* vehicles_;
    QWidget* recentCard_;
    QVBoxLayout* recentList_;
};

} // namespace quobrix
