#include "platform/standard_streams.h"

#include <csignal>
#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace quobrix {

void secureStandardStreams() {
    // The lowest free descriptor is the one that open() hands out. The wrong direction makes every use an error.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(stream, F_GETFD) == -1)
            (void)::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    std::signal(SIGPIPE, SIG_IGN);
}

} // namespace quobrix
