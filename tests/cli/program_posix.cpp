#include "cli/program.h"

#include <cstdlib>

#include <sys/wait.h>

namespace quobrix::test {
namespace {

std::string shellText(const std::string& text) {
    std::string result = "'";
    for (const char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

} // namespace

Outcome runProgram(const std::filesystem::path& folder, const std::string& program,
                   const std::vector<std::string>& arguments, const Circumstances& circumstances) {
    std::filesystem::create_directory(folder / "home");
    const auto [out, error] = outputFiles(folder);
    std::string command = "cd " + shellText(folder.string()) +
                          " && env -i LC_ALL=de_DE.UTF-8 TZ=UTC HOME=" + shellText((folder / "home").string()) +
                          " QUOBRIX_LIBRARY=" + shellText(QUOBRIX_SIMULATOR_LIBRARY) +
                          " QUOBRIX_SIMULATOR=" + shellText((folder / "ports").string());
    for (const auto& [name, value] : circumstances.environment)
        command += " " + name + "=" + shellText(value);
    if (circumstances.killedAfter > 0)
        command += " /usr/bin/timeout --foreground --signal=KILL " + std::to_string(circumstances.killedAfter);
    command += " " + shellText(program);
    for (const std::string& argument : arguments)
        command += " " + shellText(argument);
    command += " 2>" + shellText(error.string());
    switch (circumstances.output) {
    case StandardOutput::Captured:
        command += " >" + shellText(out.string());
        break;
    case StandardOutput::None:
        command += " >&-";
        break;
    case StandardOutput::Abandoned: // whose exit code is the reader's
        command = "{ " + command + "; exit $?; } | true; exit ${PIPESTATUS[0]}";
        break;
    case StandardOutput::Refusing:
        command += " >/dev/full";
        break;
    }
    const int status = std::system(("exec bash -c " + shellText(command)).c_str());
    Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -1, textOf(out), textOf(error)};
    std::filesystem::remove(out);
    std::filesystem::remove(error);
    return outcome;
}

} // namespace quobrix::test
