#include "cli/output.h"

#include "base/utf8.h"
#include "platform/environment.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

namespace quobrix::cli {

void complain(const ShownText& text) {
    const std::string line = "quobrix-cli: " + oneLine(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

bool Output::putData(std::string_view text) {
    if (failure_ == 0 && std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        failure_ = streamError();
    return failure_ == 0;
}

ExitCode Output::finish(ExitCode code, const ShownText& done) {
    if (failure_ == 0 && std::fflush(stdout) != 0)
        failure_ = streamError();
    if (failure_ == 0)
        return code;
    if (failure_ != EPIPE) {
        const ShownText why = text(TextId::CliOutputFailed, std::generic_category().message(failure_));
        complain(done.empty() ? why : text(TextId::CliDoneBut, done, why));
    }
    return done.empty() ? kFailed : kIncomplete;
}

} // namespace quobrix::cli
