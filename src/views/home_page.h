#pragma once

#include "views/page.h"

#include <vector>

class QAction;
class QLabel;
class QVBoxLayout;

namespace quobrix {

/// What the home page offers; the actions must outlive it.
struct HomeActions {
    QAction* download;
    QAction* open;
    QAction* create;
    QAction* tripLog;
    std::vector<QAction*> recent; ///< those that are visible
};

/// The page that the program starts with: the usual next steps, the recent files, and the document in a few figures.
class HomePage final : public Page {
public:
    HomePage(const ViewContext& context, const HomeActions& actions, QWidget* parent = nullptr);

    void refresh() override;

private:
    QLabel* addFigure(QVBoxLayout& layout, const char* objectName, const QString& caption);
    void showRecentFiles();

    ViewContext context_;
    HomeActions actions_;
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
