#include "platform/process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <initializer_list>

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

namespace quobrix {

void secureStandardStreams() {
    // The lowest free descriptor is the one that open() hands out. The wrong direction makes every use an error.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(stream, F_GETFD) == -1)
            (void)::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

void ignoreWriteSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

ProcessName thisProcess() {
    ProcessName name;
    std::array<char, 256> host{};
    if (::gethostname(host.data(), host.size() - 1) == 0)
        name.host = host.data();
    std::ifstream("/proc/sys/kernel/random/boot_id") >> name.boot;
    if (const passwd* user = ::getpwuid(::geteuid()); user != nullptr)
        name.user = user->pw_name;
    name.process = static_cast<std::uint64_t>(::getpid());
    return name;
}

bool hasEnded(const ProcessName& name) {
    const ProcessName here = thisProcess();
    if (name.host != here.host || name.host.empty())
        return false;
    if (name.boot != here.boot) // it did not live through that
        return !name.boot.empty() && !here.boot.empty();
    const auto process = static_cast<pid_t>(name.process);
    return process <= 0 || (::kill(process, 0) != 0 && errno == ESRCH);
}

} // namespace quobrix
