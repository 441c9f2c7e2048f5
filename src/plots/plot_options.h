#pragma once

#include "model/logger_tables.h"

#include <span>

namespace quobrix {

class Settings;

/// How plots are drawn: one set for all of them.
struct PlotOptions {
    bool lines = false;             ///< instead of areas
    bool coordinatesOnCtrl = false; ///< shown only while that key is held
    bool normalize = false;         ///< speeds up to the maximum, in every plot
    double maximum = 0;             ///< m/s; 0: as fast as the plot's own
    bool bands = true;
    bool brakes = true;
    bool accelerations = true;
    bool operator==(const PlotOptions&) const = default;
};

/// The columns of an OptionTable in which they are edited, in the order of the dialog.
std::span<const PersistentType* const> plotOptionColumns();
/// As a person has set them, else as they are delivered.
PlotOptions plotOptions(Settings& settings);
/// One of those that are on or off, by its column.
bool plotOption(Settings& settings, const PersistentType& column);
void setPlotOption(Settings& settings, const PersistentType& column, bool on);

} // namespace quobrix
