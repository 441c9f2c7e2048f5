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
/// as have the steps of a scale against the ground.
inline constexpr Palette kLightPalette{{{{0x1d, 0x21, 0x25},
                                         {0x60, 0x66, 0x6c},
                                         {0xff, 0xff, 0xff},
                                         {0xee, 0xf0, 0xf2},
                                         {0xc0, 0xc4, 0xc8},
                                         {0xec, 0xed, 0xee},
                                         {0x1f, 0x6f, 0xc4},
                                         {0x3a, 0x91, 0x5f},
                                         {0xa8, 0x84, 0x00},
                                         {0xd0, 0x65, 0x10},
                                         {0xbe, 0x22, 0x2b}}}};
inline constexpr Palette kDarkPalette{{{{0xe6, 0xe8, 0xea},
                                        {0xa0, 0xa5, 0xaa},
                                        {0x1b, 0x1e, 0x21},
                                        {0x2a, 0x2e, 0x33},
                                        {0x50, 0x56, 0x5c},
                                        {0x2b, 0x2f, 0x33},
                                        {0x2b, 0x78, 0xcf},
                                        {0x4f, 0xae, 0x7b},
                                        {0xd8, 0xb1, 0x3c},
                                        {0xe8, 0x83, 0x35},
                                        {0xf0, 0x5d, 0x5d}}}};
/// Paper is white whatever the screen is.
inline constexpr Palette kPaperPalette = kLightPalette;

} // namespace quobrix
