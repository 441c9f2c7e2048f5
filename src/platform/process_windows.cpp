#include "platform/process.h"

#include "platform/wide_text.h"

#include <string>

#include <windows.h>

namespace quobrix {
namespace {

std::wstring variable(const wchar_t* name) {
    std::wstring value(256, L'\0');
    const DWORD length = GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
    value.resize(length < value.size() ? length : 0);
    return value;
}

} // namespace

// Handles of streams are no small numbers here that a file could take, and there are no signals for what fails to be
// written.
void secureStandardStreams() {}
void ignoreWriteSignals() {}

ProcessName thisProcess() {
    return {.host = narrow(variable(L"COMPUTERNAME")),
            .boot = {},
            .user = narrow(variable(L"USERNAME")),
            .process = GetCurrentProcessId()};
}

bool hasEnded(const ProcessName& name) {
    if (name.host != thisProcess().host || name.host.empty())
        return false;
    const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(name.process));
    if (process == nullptr)
        return GetLastError() == ERROR_INVALID_PARAMETER; // what it says of a number without a process
    DWORD code = 0;
    const bool ended = GetExitCodeProcess(process, &code) && code != STILL_ACTIVE;
    CloseHandle(process);
    return ended;
}

} // namespace quobrix
