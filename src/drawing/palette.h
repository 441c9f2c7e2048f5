#pragma once

#include "drawing/drawing.h"

#include <array>
#include <cstdint>

namespace quobrix {

struct Colour {
    std::uint8_t red = 0, green = 0, blue = 0;
    bool operator==(const Colour&) const = default;
};

/// The colour of every role. All are opaque: see-through ones are slow to paint and darker where they overlap.
struct Palette {
    std::array<Colour, kColourRoles> colours; ///< in the order of the roles

    constexpr Colour operator[](ColourRole role) const { return colours[static_cast<std::size_t>(role)]; }
    constexpr Colour& operator[](ColourRole role) { return colours[static_cast<std::size_t>(role)]; }
};

/// For light and dark pages. Texts have a contrast of 4.5 : 1 at least (WCAG 2.1, 1.4.3), bars one of 3 : 1 (1.4.11),
/// as have the steps of a scale and the lines of a plot against the ground. The six lines differ by 17 at least
/// (CIEDE2000) to people who see no red, no green or no blue; they are taken from the palettes of Petroff, Tol, IBM and
/// of Okabe and Ito.
inline constexpr Palette kLightPalette{std::to_array<Colour>({{0x1d, 0x21, 0x25},
                                                              {0x60, 0x66, 0x6c},
                                                              {0xff, 0xff, 0xff},
                                                              {0xee, 0xf0, 0xf2},
                                                              {0xc0, 0xc4, 0xc8},
                                                              {0xec, 0xed, 0xee},
                                                              {0x1f, 0x6f, 0xc4},
                                                              {0x3a, 0x91, 0x5f},
                                                              {0xa8, 0x84, 0x00},
                                                              {0xd0, 0x65, 0x10},
                                                              {0xbe, 0x22, 0x2b},
                                                              {0x1f, 0x6f, 0xc4},
                                                              {0xd5, 0xe4, 0xf7},
                                                              {0x00, 0x00, 0x00},
                                                              {0x57, 0x90, 0xfc},
                                                              {0xee, 0x66, 0x77},
                                                              {0x11, 0x77, 0x33},
                                                              {0x7a, 0x21, 0xdd},
                                                              {0x88, 0x22, 0x55}})};
inline constexpr Palette kDarkPalette{std::to_array<Colour>({{0xe6, 0xe8, 0xea},
                                                             {0xa0, 0xa5, 0xaa},
                                                             {0x1b, 0x1e, 0x21},
                                                             {0x2a, 0x2e, 0x33},
                                                             {0x50, 0x56, 0x5c},
                                                             {0x2b, 0x2f, 0x33},
                                                             {0x2b, 0x78, 0xcf},
                                                             {0x4f, 0xae, 0x7b},
                                                             {0xd8, 0xb1, 0x3c},
                                                             {0xe8, 0x83, 0x35},
                                                             {0xf0, 0x5d, 0x5d},
                                                             {0x63, 0xa8, 0xee},
                                                             {0x22, 0x38, 0x50},
                                                             {0xff, 0xff, 0xff},
                                                             {0x88, 0xcc, 0xee},
                                                             {0xd5, 0x5e, 0x00},
                                                             {0x00, 0x99, 0x88},
                                                             {0x78, 0x5e, 0xf0},
                                                             {0xdd, 0xcc, 0x77}})};
/// Paper is white whatever the screen is.
inline constexpr Palette kPaperPalette = kLightPalette;

} // namespace quobrix
