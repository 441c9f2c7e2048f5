#include "cli/program.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <sys/wait.h>

namespace quobrix::test {
namespace {

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

} // namespace

Outcome runProgram(const std::filesystem::path& folder, const std::string& program,
                   const std::vector<std::string>& arguments, const std::string& redirect) {
    std::filesystem::create_directory(folder / "home");
    const std::filesystem::path out = folder / "home.out", error = folder / "home.err";
    std::string command = "cd " + quoted(folder.string()) +
                          " && env -i LC_ALL=de_DE.UTF-8 TZ=UTC HOME=" + quoted((folder / "home").string()) +
                          " QUOBRIX_LIBRARY=" + quoted(QUOBRIX_SIMULATOR_LIBRARY) +
                          " QUOBRIX_SIMULATOR=" + quoted((folder / "ports").string()) + " " + quoted(program);
    for (const std::string& argument : arguments)
        command += " " + quoted(argument);
    command += " 2>" + quoted(error.string()) + " " + (redirect.empty() ? ">" + quoted(out.string()) : redirect);
    const int status = std::system(command.c_str());
    Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(out), contentOf(error)};
    std::filesystem::remove(out);
    std::filesystem::remove(error);
    return outcome;
}

std::string contentOf(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

} // namespace quobrix::test
