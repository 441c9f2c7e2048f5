#include "app/command_table.h"

namespace quobrix {
namespace {

using Kind = MenuRow::Kind;

constexpr MenuRow kRows[] = {
#define MENU(Text) {.kind = Kind::Menu, .text = SourceText(Text)},
#define SUBMENU(Text) {.kind = Kind::Submenu, .text = SourceText(Text)},
#define END {.kind = Kind::End},
#define SEPARATOR {.kind = Kind::Separator},
#define COMMAND(Name, Id, Text, Prompt) {Kind::Command, CommandId::Name, #Name, SourceText(Text), SourceText(Prompt)},
#define TOGGLE(Name, Id, Text, Prompt) {Kind::Toggle, CommandId::Name, #Name, SourceText(Text), SourceText(Prompt)},
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
        depth += row.kind == Kind::Menu || row.kind == Kind::Submenu ? 1 : row.kind == Kind::End ? -1 : 0;
        if (depth < 0 || (row.kind == Kind::Menu && depth != 1))
            return false;
    }
    return depth == 0;
}
static_assert(menusAreBalanced());

} // namespace

std::span<const MenuRow> menuRows() { return kRows; }

} // namespace quobrix
