#include "paper/painter.h"

#include "platform/dynamic_library.h"
#include "platform/paths.h"
#include "texts/text.h"

#include <filesystem>

namespace quobrix {

Result<std::unique_ptr<FilePainter>> loadFilePainter() {
    const std::filesystem::path program = programFolder(executablePath());
    Error error{ErrorKind::NotFound, text(TextId::PathDoesNotExist, QUOBRIX_PAINTER_FILE)};
    if (program.empty())
        return error;
    for (const std::filesystem::path& folder : {program, program / ".." / "lib" / "quobrix"}) {
        const Result<DynamicLibrary> library = DynamicLibrary::open(folder / QUOBRIX_PAINTER_FILE);
        if (!library) {
            if (library.error().kind != ErrorKind::NotFound)
                error = library.error();
            continue;
        }
        const auto make = reinterpret_cast<MakeFilePainter>(library->symbol(kMakeFilePainter));
        if (FilePainter* painter = make ? make(QUOBRIX_VERSION) : nullptr) {
            // It stays loaded to the end: the toolkit is not made to be unloaded.
            static const DynamicLibrary kept = *library;
            return std::unique_ptr<FilePainter>(painter);
        }
        error = {ErrorKind::Unsupported, text(TextId::PainterOfAnotherVersion, QUOBRIX_PAINTER_FILE)};
    }
    return error;
}

} // namespace quobrix
