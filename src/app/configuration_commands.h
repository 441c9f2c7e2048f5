#pragma once

#include "config/configuration_flow.h"
#include "config/ui/table_dialog.h"

#include <functional>

namespace quobrix {

class LoggerSession;
class TQuobrixFrame;

/// The commands that show and change what is set in the logger, and the thresholds of the parameters.
class ConfigurationCommands {
public:
    /// Both must outlive the commands.
    ConfigurationCommands(TQuobrixFrame& frame, LoggerSession& session);

private:
    using Show = std::function<void(ConfigurationFlow&, const LoggerConfiguration& present)>;
    /// SHOW runs with what has been read from the logger, when there is one and it could be read.
    void withConfiguration(const Show& show);
    TableDialogContext context() const;

    TQuobrixFrame& frame_;
    LoggerSession& session_;
};

} // namespace quobrix
