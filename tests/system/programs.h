#pragma once

#include "cli/parsing.h"
#include "cli/program.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace quobrix::test {

/// Runs the programs in a folder of the test's own, which has simulated ports and a home of its own.
class Programs : public testing::Test {
protected:
    using Arguments = std::vector<std::string>;

    Outcome cli(const Arguments& arguments) { return runProgram(folder_.path(), QUOBRIX_CLI, arguments); }
    Outcome sim(const Arguments& arguments) { return runProgram(folder_.path(), QUOBRIX_SIM, arguments); }

    /// Runs quobrix-cli behind a program that changes its circumstances, such as env.
    Outcome cliUnder(const std::string& program, Arguments before, const Arguments& arguments) {
        before.push_back(QUOBRIX_CLI);
        before.insert(before.end(), arguments.begin(), arguments.end());
        return runProgram(folder_.path(), program, before);
    }

    Outcome download(const std::string& file, const std::string& port = "COM3") {
        return cli({"download", "--port", port, "--into", file});
    }

    /// A logger on PORT with a generated history of its own.
    void attachHistory(const std::string& port, const std::string& serial, int trips) {
        ASSERT_EQ(sim({"attach", port, "--serial", serial}).exitCode, 0);
        const Outcome generated = sim({"generate", port, "--trips", std::to_string(trips), "--seed", "7"});
        ASSERT_EQ(generated.exitCode, 0) << generated.error;
    }

    /// The names of what is in the folder besides the ports and the home.
    std::vector<std::string> files() const;

    TemporaryFolder folder_;
};

} // namespace quobrix::test
