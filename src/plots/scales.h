#pragma once

#include <vector>

namespace quobrix {

/// Where values of a panel lie, from its least to its greatest value.
struct ValueScale {
    double least = 0, greatest = 1; ///< in base units
    double top = 0, bottom = 1;     ///< of the plot area
    bool downward = false;          ///< greater values are further down

    double y(double value) const {
        const double part = (value - least) / (greatest - least) * (bottom - top);
        return downward ? top + part : bottom - part;
    }
    /// The row of pixels, cut off to a whole one.
    int row(double value) const;
    double valueAt(double y) const;
};

/// Where places of the axis lie.
struct PlaceScale {
    double from = 0, to = 1;    ///< on the axis
    double left = 0, right = 1; ///< of the plot area

    double x(double place) const { return left + (place - from) / (to - from) * (right - left); }
    double placeAt(double x) const { return from + (x - left) / (right - left) * (to - from); }
};

/// Even steps of 1, 2 or 5 times a power of ten.
struct Steps {
    double step = 1;
    int decimals = 0; ///< with which multiples of the step read different
};
/// The smallest such step that is LEAST (above 0) at least.
Steps stepsFrom(double least);

/// The smallest step of time (s) that is LEAST at least: 1, 2, 5, 10, 15, 30 s, the same in minutes, 1, 2, 3, 6, 12 h,
/// then whole days of 1, 2 or 5 times a power of ten.
double timeStepFrom(double least);

/// The multiples of STEP from FROM to TO, both within rounding.
std::vector<double> multiples(double step, double from, double to);

} // namespace quobrix
