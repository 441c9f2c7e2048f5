#include "units/unit_system_file.h"

#include "texts/text.h"

#include <algorithm>

namespace quobrix {

Bytes encodeUnitSystem(const UnitChoices& choices) {
    ByteWriter out;
    out.u8(1);
    out.u8(1);
    out.u8(kUnitTypeCount);
    for (std::size_t i = 0; i < kUnitTypeCount; ++i) {
        out.u8(static_cast<std::uint8_t>(choices.units[i]));
        out.u8(choices.decimals[i]);
    }
    out.u8(choices.fractionDiameters ? 1 : 0);
    return out.take();
}

Result<UnitChoices> decodeUnitSystem(std::string_view name, ByteView bytes) {
    ByteReader in(bytes);
    UnitChoices choices;
    choices.name = name;
    choices.locked = false;
    const int version = in.u8();
    in.u8();
    const std::size_t count = in.u8();
    for (std::size_t i = 0; i < count; ++i) {
        const auto unit = static_cast<UnitId>(in.u8());
        const std::uint8_t decimals = in.u8();
        if (i >= kUnitTypeCount)
            continue;
        const UnitTypeRecord& type = allUnitTypes()[i];
        if (type.offers(unit))
            choices.choose(type.id, unit);
        choices.decimals[i] = std::min<std::uint8_t>(decimals, 9);
    }
    if (version >= 1)
        choices.fractionDiameters = in.u8() == 1;
    if (!in.complete())
        return Error{ErrorKind::Corrupt, text(TextId::UnitSystemFileCutShort)};
    return choices;
}

} // namespace quobrix
