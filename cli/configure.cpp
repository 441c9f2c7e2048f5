#include "cli/configure.h"

#include "base/path_text.h"
#include "cli/logger_connection.h"
#include "cli/option_prompter.h"
#include "config/configuration_flow.h"
#include "config/configuration_text.h"
#include "messages/file_messages.h"
#include "platform/file_system.h"
#include "settings/file_settings.h"
#include "texts/text.h"

namespace quobrix::cli {
namespace {

/// Writes CONTENT to the new file OPTIONS.save.
ExitCode save(const std::string& content, const ConfigureOptions& options) {
    const auto write = [&]() -> Result<void> {
        Result<ReplacementFile> file = ReplacementFile::create(pathFromUtf8(options.save));
        if (!file)
            return file.error();
        QUOBRIX_TRY(
            file->file().writeAt(0, ByteView(reinterpret_cast<const std::uint8_t*>(content.data()), content.size())));
        return file->commit(options.force ? IfThere::Replace : IfThere::Refuse);
    };
    const Result<void> written = write();
    if (written)
        return kDone;
    if (written.error().kind == ErrorKind::Exists)
        complain(text(TextId::CliSaveExists, options.save));
    else
        complain(fileMessage(written.error(), FileAction::Save, options.save).text);
    return written.error().kind == ErrorKind::NotDurable ? kIncomplete : kFailed;
}

Result<LoggerConfiguration> load(const std::string& file) {
    const Result<Bytes> bytes = readFile(pathFromUtf8(file), kMaxConfigurationText);
    if (!bytes && bytes.error().kind == ErrorKind::Unsupported)
        return Error{ErrorKind::NotADocument, text(TextId::ConfigurationTooLarge)};
    if (!bytes)
        return bytes.error();
    return readConfigurationText({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
}

} // namespace

ExitCode configure(const ConfigureOptions& options) {
    std::optional<LoggerConfiguration> wanted;
    if (!options.load.empty()) {
        const Result<LoggerConfiguration> loaded = load(options.load); // before the logger is touched
        if (!loaded && (loaded.error().kind == ErrorKind::NotADocument || loaded.error().kind == ErrorKind::Corrupt)) {
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
    const std::string content = configurationText(*present);
    if (!options.save.empty())
        return done(save(content, options));
    Output output;
    output.putData(content);
    return done(output.finish(kDone));
}

} // namespace quobrix::cli
