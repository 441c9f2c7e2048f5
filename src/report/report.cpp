#include "report/report.h"

namespace quobrix {

std::vector<Section> sections(const Report& report) {
    const std::span<const Block> blocks(report.blocks);
    std::vector<Section> result;
    for (std::size_t begin = 0, end = 0; begin < blocks.size(); begin = end) {
        const auto* heading = std::get_if<Heading>(&blocks[begin]);
        end = begin + 1;
        while (end < blocks.size() && !std::holds_alternative<Heading>(blocks[end]))
            ++end;
        const std::size_t first = heading ? begin + 1 : begin;
        result.push_back({heading, blocks.subspan(first, end - first)});
    }
    return result;
}

} // namespace quobrix
