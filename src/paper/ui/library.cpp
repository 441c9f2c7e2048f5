/// The painter as a library that programs without a window load.
#include "paper/ui/paper_painter.h"

#include <QGuiApplication>

#include <string_view>

namespace quobrix {
namespace {

/// What the toolkit says about its surroundings is no news to who runs a program in a terminal.
void keepQuiet(QtMsgType, const QMessageLogContext&, const QString&) {}

/// Paints without a display.
class DisplaylessPainter final : public PaperPainter {
private:
    const QtMessageHandler quiet_ = qInstallMessageHandler(keepQuiet); // before the application begins
    char name_[8] = "quobrix", option_[10] = "-platform", platform_[10] = "offscreen";
    char* arguments_[4] = {name_, option_, platform_, nullptr};
    int count_ = 3;
    QGuiApplication application_{count_, arguments_};
};

} // namespace
} // namespace quobrix

extern "C" Q_DECL_EXPORT quobrix::FilePainter* quobrixMakeFilePainter(const char* version) {
    return std::string_view(version) == QUOBRIX_VERSION ? new quobrix::DisplaylessPainter : nullptr;
}
