#include "model/speed_bands.h"

#include "texts/text.h"

namespace quobrix {

ShownText speedBandLabel(const RealColumn& from, const RealColumn& to, RowIndex row, const TextContext& context) {
    const auto standing = [&](RowIndex band) { return to.has(band) && from.at(band) == 0 && to.at(band) == 0; };
    if (standing(row))
        return text(TextId::BandIdle);
    if (!to.has(row))
        return text(TextId::BandOver, from.text(row, context));
    return text(TextId::BandNumber, standing(0) ? row : row + 1);
}

} // namespace quobrix
