#pragma once

#include "base/shown_text.h"
#include "base/utf8.h"

#include <string_view>

namespace quobrix::cli {

/// How the program ends; --help states it.
enum ExitCode : int {
    kDone = 0,
    kFailed = 1,
    kUsage = 2,
    kIncomplete = 3,
};

/// One line "quobrix-cli: TEXT" on standard error.
void complain(const ShownText& text);

/// Standard output. Remembers the first failure, after which it takes nothing more.
class Output {
public:
    /// Lines for people; what a terminal would obey is taken out of them. False once something could not be written:
    /// there is no sense in going on.
    bool put(const ShownText& text) { return putData(harmlessLines(text)); }
    /// The same, byte for byte: for formats with rules of their own for such characters.
    bool putData(std::string_view text);
    /// CODE, or kFailed with a complaint if something could not be written. A reader that has gone away is no news to
    /// anybody, so that ends without a complaint. A command that did more than print says what it has DONE: that stays
    /// done, and the code is then kIncomplete.
    ExitCode finish(ExitCode code, const ShownText& done = {});

private:
    int failure_ = 0; ///< an errno value
};

} // namespace quobrix::cli
