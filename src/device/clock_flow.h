#pragma once

#include "device/clear_flow.h"
#include "tables/column.h"

namespace quobrix {

/// Sets a logger's clock, which clears its memory: what has not been downloaded is asked about first.
class ClockFlow {
public:
    /// TEXT: how times are shown.
    ClockFlow(const FlowContext& context, const TextContext& text) : context_(context), text_(text) {}

    /// Sets it to the computer's time, that of the answer and not of the question. Whether it was set.
    bool synchronize();
    /// Sets it after a download from SERIAL_TEXT; if REFUSED records are not in the document, asks first.
    bool synchronizeDownloaded(const std::string& serialText, std::uint64_t refused);
    /// Shows it beside the computer's.
    void show();
    /// Sets it to what a person enters. Whether it was set.
    bool enter();

private:
    struct Clocks {
        LoggerStatus logger; // with the time that it shows
        std::int64_t computer = 0;
    };

    std::optional<Clocks> read();
    bool set(const std::string& serialText, bool whileCurrent, std::optional<std::int32_t> time);
    std::string textOf(std::int64_t time) const;

    FlowContext context_;
    TextContext text_;
};

} // namespace quobrix
