#include "app/command_table.h"

namespace quobrix {
namespace {

using Kind = MenuRow::Kind;

constexpr MenuRow kRows[] = {
#define MENU(Text) {.kind = Kind::Menu, .text = SourceText(Text)},
#define SUBMENU(Text) {.kind = Kind::Submenu, .text = SourceText(Text)},
#define TOOLBAR {.kind = Kind::ToolBar},
#define TOOLBAR_MENU {.kind = Kind::ToolBarMenu},
#define END {.kind = Kind::End},
#define SEPARATOR {.kind = Kind::Separator},
#define COMMAND(Name, Id, Text, Prompt) {Kind::Command, CommandId::Name, #Name, SourceText(Text), SourceText(Prompt)},
#define TOGGLE(Name, Id, Text, Prompt) {Kind::Toggle, CommandId::Name, #Name, SourceText(Text), SourceText(Prompt)},
#define PAGE(Name, Id, Text, Prompt, Icon)                                                                             \
    {Kind::Page, CommandId::Name, #Name, SourceText(Text), SourceText(Prompt), Icon},
#define BUTTON(Name, Id, Text, Prompt, Icon)                                                                           \
    {Kind::Button, CommandId::Name, #Name, SourceText(Text), SourceText(Prompt), Icon},
#define RECENT_FILES(Name, Id, Text, Prompt)                                                                           \
    {Kind::RecentFiles, CommandId::Name, #Name, SourceText(Text), SourceText(Prompt)},
#include "app/commands.def"
};

constexpr bool idsAreUnique() {
    for (const MenuRow& a : kRows)
        for (const MenuRow& b : kRows)
            if (&a != &b && !a.name.empty() && a.id == b.id)
                return false;
    return true;
}
static_assert(idsAreUnique());

constexpr bool menusAreBalanced() {
    int depth = 0;
    for (const MenuRow& row : kRows) {
        const bool outermost = row.kind == Kind::Menu || row.kind == Kind::ToolBar || row.kind == Kind::ToolBarMenu;
        depth += outermost || row.kind == Kind::Submenu ? 1 : row.kind == Kind::End ? -1 : 0;
        if (depth < 0 || (outermost && depth != 1))
            return false;
    }
    return depth == 0;
}
static_assert(menusAreBalanced());

} // namespace

std::span<const MenuRow> menuRows() { return kRows; }

} // namespace quobrix
