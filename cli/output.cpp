#include "cli/output.h"

#include "base/utf8.h"

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

namespace quobrix::cli {

void complain(std::string_view text) {
    const std::string line = "quobrix-cli: " + oneLine(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

bool Output::putData(std::string_view text) {
    if (failure_ == 0 && std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        failure_ = errno;
    return failure_ == 0;
}

ExitCode Output::finish(ExitCode code) {
    if (failure_ == 0 && std::fflush(stdout) != 0)
        failure_ = errno;
    if (failure_ == 0)
        return code;
    if (failure_ != EPIPE)
        complain("standard output cannot be written: " + std::generic_category().message(failure_));
    return kFailed;
}

} // namespace quobrix::cli
