#include "cli/program.h"

#include "base/path_text.h"
#include "platform/wide_text.h"

#include <gtest/gtest.h>

#include <iostream>
#include <mutex>

#include <windows.h>

namespace quobrix::test {
namespace {

/// So that the program's start-up code reads it back as it is.
std::wstring quoted(const std::wstring& text) {
    std::wstring result = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : text) {
        if (c == L'"')
            result.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        result += c;
    }
    return result.append(backslashes, L'\\') + L'"';
}

std::wstring ownVariable(const wchar_t* name) {
    std::wstring value(1000, L'\0');
    value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return value;
}

/// Removes FILE once the last handle of a program that has ended is closed, which may be a moment later.
void removeOutput(const std::filesystem::path& file) {
    std::error_code failed;
    for (int attempt = 0; attempt < 2000; ++attempt, Sleep(1))
        if (std::filesystem::remove(file, failed) || !failed)
            return;
    ADD_FAILURE() << file << ": " << failed.message();
}

HANDLE outputTo(StandardOutput output, const std::filesystem::path& file) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE reader = nullptr, writer = nullptr;
    switch (output) {
    case StandardOutput::Abandoned:
        CreatePipe(&reader, &writer, &inherited, 0);
        CloseHandle(reader);
        return writer;
    case StandardOutput::Captured:
        return CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    case StandardOutput::Refusing:
        return CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    default:
        return nullptr;
    }
}

} // namespace

Outcome runProgram(const std::filesystem::path& folder, const std::string& program,
                   const std::vector<std::string>& arguments, const Circumstances& circumstances) {
    const std::filesystem::path home = folder / "home";
    const auto [out, error] = outputFiles(folder);
    std::filesystem::create_directory(home);

    std::map<std::string, std::string> variables{{"APPDATA", utf8(home)},
                                                 {"LOCALAPPDATA", utf8(home)},
                                                 {"QUOBRIX_LIBRARY", QUOBRIX_SIMULATOR_LIBRARY},
                                                 {"QUOBRIX_SIMULATOR", utf8(folder / "ports")},
                                                 {"SystemRoot", narrow(ownVariable(L"SystemRoot"))},
                                                 {"TZ", "UTC0"}};
    for (const auto& [name, value] : circumstances.environment)
        variables[name] = value;
    std::wstring environment;
    for (const auto& [name, value] : variables)
        environment += wide(name + "=" + value) + L'\0';
    environment += L'\0';

    const std::wstring file = wide(program);
    std::wstring command = quoted(file);
    for (const std::string& argument : arguments)
        command += L" " + quoted(wide(argument));
    static std::mutex starting; // a program inherits whatever can be inherited just then
    std::unique_lock lock(starting);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = outputTo(circumstances.output, out);
    startup.hStdError = outputTo(StandardOutput::Captured, error);
    PROCESS_INFORMATION process{};
    bool started = false;
    for (int attempt = 0; !started && attempt < 3; ++attempt) { // Wine refuses one now and then
        started = CreateProcessW(file.c_str(), command.data(), nullptr, nullptr, TRUE,
                                 CREATE_UNICODE_ENVIRONMENT | CREATE_NO_WINDOW, environment.data(), folder.c_str(),
                                 &startup, &process);
        if (!started) {
            std::cerr << program << " was not started: error " << GetLastError() << '\n';
            Sleep(200);
        }
    }
    if (startup.hStdOutput != nullptr)
        CloseHandle(startup.hStdOutput);
    CloseHandle(startup.hStdError);
    lock.unlock();
    if (!started)
        return {};
    DWORD code = 0;
    const double limit = circumstances.killedAfter;
    if (WaitForSingleObject(process.hProcess, limit > 0 ? static_cast<DWORD>(1000 * limit) : INFINITE) ==
        WAIT_TIMEOUT) {
        TerminateProcess(process.hProcess, static_cast<UINT>(-1));
        WaitForSingleObject(process.hProcess, INFINITE);
    }
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    Outcome outcome{static_cast<int>(code), textOf(out), textOf(error)};
    for (const std::filesystem::path& output : {out, error})
        removeOutput(output);
    return outcome;
}

} // namespace quobrix::test
