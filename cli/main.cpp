/// quobrix-cli: the logger, its documents and their reports without a window.
#include "cli/run.h"
#include "platform/process.h"
#include "platform/translations.h"

#include <cstdio>
#include <exception>
#include <new>

int main(int argc, char** argv) {
    using namespace quobrix;
    secureStandardStreams();
    ignoreWriteSignals();
    useUtf8Streams();
    try {
        useTranslation();
        return cli::run(ProgramArguments(argc, argv));
    } catch (const std::bad_alloc&) { // nothing here may need more of it
        std::fputs("quobrix-cli: there is not enough memory; close other programs and try again\n", stderr);
        return cli::kFailed;
    } catch (const std::exception& error) {
        cli::complain(ShownText::asItIs(error.what()));
        return cli::kFailed;
    }
}
