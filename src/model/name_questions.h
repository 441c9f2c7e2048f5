#pragma once

#include "messages/prompter.h"
#include "model/names.h"

#include <span>
#include <string>
#include <vector>

namespace quobrix {

/// Keys that a download has brought and no name table had, as texts.
struct NewKeys {
    std::vector<std::string> loggers, vehicles, drivers;
};

/// Asks whether the new loggers and vehicles are to be named, each once and only if there are some; gives the keys that
/// are. New drivers are listed without a question: a download brings their numbers only, and they may not be known yet.
NewKeys askForNames(const NewKeys& added, Prompter& prompter);

/// The vehicle that a person means with TYPED: a VIN, in lower case, too, or the name of one of KNOWN; empty if it is
/// neither.
std::string vinOf(std::string_view typed, std::span<const KnownVehicle> known);

/// Whether ROWS of a name table may be deleted: asks for it, where the table has a question, and then refuses all of
/// them if any is in use.
bool mayDelete(const NamesTable& names, std::span<const RowIndex> rows, Prompter& prompter);

} // namespace quobrix
