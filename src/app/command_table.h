#pragma once

#include "texts/source_text.h"

#include <span>
#include <string_view>

namespace quobrix {

/// Every command of menus and toolbar; the value is the command's id.
enum class CommandId : int {
#define COMMAND(Name, Id, Text, Prompt) Name = Id,
#include "app/commands.def"
};

/// How many recent files the File menu lists. Their commands take the ids from RecentFile on.
inline constexpr int kRecentFileCount = 9;

/// One line of the description of menus and toolbar.
struct MenuRow {
    enum class Kind { Menu, Submenu, ToolBar, ToolBarMenu, End, Separator, Command, Toggle, RecentFiles, Page, Button };
    Kind kind;
    CommandId id{};          ///< commands only, which are from Kind::Command on
    std::string_view name{}; ///< the command's name, in scripts and tests
    SourceText text{};       ///< '&' marks the mnemonic, a tab precedes the shortcut
    SourceText prompt{};     ///< up to a line break; what follows is shown nowhere
    std::string_view icon{}; ///< of pages and buttons
};

std::span<const MenuRow> menuRows();

/// TEXT up to the first SEPARATOR.
constexpr std::string_view upTo(std::string_view text, char separator) { return text.substr(0, text.find(separator)); }
/// What follows the first SEPARATOR of TEXT; empty if it has none.
constexpr std::string_view behind(std::string_view text, char separator) {
    const std::size_t at = text.find(separator);
    return at == std::string_view::npos ? std::string_view() : text.substr(at + 1);
}

} // namespace quobrix
