#include "cli/describe.h"

#include "model/trouble_log.h"
#include "texts/text.h"

namespace quobrix::cli {

ExitCode describe(const std::vector<std::string>& codes) {
    Output output;
    for (const std::string& code : codes)
        output.put(ShownText::asItIs(oneLine(code) + "  " + text(troubleCodeDescription(code)) + "\n"));
    return output.finish(kDone);
}

} // namespace quobrix::cli
