#pragma once

#include "tables/columns.h"

namespace quobrix {

/// How the band of ROW is called, of bands that go FROM one speed TO another: "Idle" for standing still, "Over 70 MPH"
/// for the top one, "Speed Band n" between.
ShownText speedBandLabel(const RealColumn& from, const RealColumn& to, RowIndex row, const TextContext& context);

} // namespace quobrix
