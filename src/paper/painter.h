#pragma once

#include "base/bytes.h"
#include "base/result.h"
#include "drawing/text_measure.h"

#include <functional>
#include <memory>
#include <string>

namespace quobrix {

/// The size of texts on paper, in points: lists have many columns.
inline constexpr double kPaperFontSize = 9, kListFontSize = 8;

/// Pages of one size, made when they are asked for.
struct PageSource {
    std::string title{};
    Size paper{}; ///< in points
    std::size_t count = 0;
    std::function<Drawing(std::size_t index)> page{};
};

/// Makes files of drawings, in the fonts of this computer and in the colours of paper. The window has it built in
/// (paper/ui); programs without one load it when they need it. Nothing here throws but for want of memory.
class FilePainter {
public:
    virtual ~FilePainter() = default;

    /// How large texts of the size FONT_SIZE come out.
    virtual std::unique_ptr<const TextMeasure> measure(double fontSize) const = 0;
    /// A PDF file with the fonts of its texts.
    virtual Bytes pdf(const PageSource& pages) const = 0;
    /// A PNG file with SCALE pixels for a unit of DRAWING. Empty if that would be too large for one.
    virtual Bytes png(const Drawing& drawing, double scale) const = 0;
};

/// The painter of the library that lies beside a program without a window; it ends before main() does. NotFound where
/// the program was built or installed without it, Unsupported where it cannot be loaded.
Result<std::unique_ptr<FilePainter>> loadFilePainter();

/// What the library exports for that: a new FilePainter, or null if the program has another VERSION of it.
using MakeFilePainter = FilePainter* (*)(const char* version);
inline constexpr const char* kMakeFilePainter = "quobrixMakeFilePainter";

} // namespace quobrix
