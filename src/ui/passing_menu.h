#pragma once

#include <QMenu>

namespace quobrix {

/// A menu that ends when it is closed, while the commands in it, and in the menus that belong to it, go on: any of them
/// may be in the next one. The toolkit tells a screen reader of an action as an entry of the menu in which it was met
/// first, and of nothing once that menu has gone; so what is known of them goes with this menu.
class PassingMenu final : public QMenu {
public:
    PassingMenu(const char* name, QWidget& parent);
    ~PassingMenu() override;
};

} // namespace quobrix
