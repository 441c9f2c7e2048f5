#include "cli/configure.h"

#include "base/path_text.h"
#include "cli/logger_connection.h"
#include "cli/option_prompter.h"
#include "config/configuration_flow.h"
#include "config/configuration_text.h"
#include "config/value_file.h"
#include "messages/file_messages.h"
#include "settings/file_settings.h"
#include "texts/text.h"

namespace quobrix::cli {
namespace {

/// Writes CONFIGURATION to the new file OPTIONS.save.
ExitCode save(const LoggerConfiguration& configuration, const ConfigureOptions& options) {
    const Result<void> written = saveValues(configurationText(configuration), pathFromUtf8(options.save),
                                            options.force ? IfThere::Replace : IfThere::Refuse);
    if (written)
        return kDone;
    if (written.error().kind == ErrorKind::Exists)
        complain(text(TextId::CliSaveExists, options.save));
    else
        complain(fileMessage(written.error(), FileAction::Save, options.save).text);
    return written.error().kind == ErrorKind::NotDurable ? kIncomplete : kFailed;
}

} // namespace

ExitCode configure(const ConfigureOptions& options) {
    std::optional<LoggerConfiguration> wanted;
    if (!options.load.empty()) {
        const Result<std::string> file = loadValues(pathFromUtf8(options.load)); // before the logger is touched
        const auto loaded = file ? readConfigurationText(*file) : Result<LoggerConfiguration>(file.error());
        if (!loaded && isNoValues(loaded.error())) {
            complain(text(TextId::CliNoConfiguration, options.load, loaded.error().detail));
            return kFailed;
        }
        if (!loaded) {
            complain(fileMessage(loaded.error(), FileAction::Open, options.load).text);
            return kFailed;
        }
        wanted = *loaded;
    }
    const Settings settings(userSettings());
    LoggerConnection connection(settings, options.port);
    if (!connection.open(LoggerCommand::GetConfiguration))
        return kFailed;
    DirectCalls calls(connection.link());
    OptionPrompter prompter({});
    ProgressReporter noProgress;
    ConfigurationFlow flow(calls, prompter, noProgress);
    const auto done = [&](ExitCode code) {
        connection.close();
        return code;
    };
    const auto written = [&](bool success) {
        Output output;
        if (success)
            output.put(text(TextId::CliConfigured, flow.serialText()));
        return done(output.finish(success ? kDone : kFailed, text(TextId::CliHasBeenConfigured, flow.serialText())));
    };
    if (options.defaults)
        return written(flow.writeDefaults());
    const std::optional<LoggerConfiguration> present = flow.read();
    if (!present)
        return done(kFailed);
    if (wanted)
        return written(flow.write(*wanted));
    if (!options.save.empty())
        return done(save(*present, options));
    Output output;
    output.putData(configurationText(*present));
    return done(output.finish(kDone));
}

} // namespace quobrix::cli
