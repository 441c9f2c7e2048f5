#pragma once

#include "settings/settings.h"
#include "support/sample_trip.h"
#include "units/time_zone.h"
#include "units/unit_system.h"
#include "views/page.h"

#include <gtest/gtest.h>

#include <memory>

namespace quobrix::test {

/// A document without trips, metric units, Greenwich time and settings that end with the test.
class ViewTest : public ::testing::Test {
protected:
    TQuobrixDocument document_;
    Settings settings_{std::make_unique<MemorySettings>()};
    TUnitSystem units_;
    TimeZone zone_;
    ViewContext context_{document_, settings_, units_, zone_};
};

} // namespace quobrix::test
