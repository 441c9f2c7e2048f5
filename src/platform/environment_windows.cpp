#include "platform/environment.h"

#include "platform/wide_text.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

namespace quobrix {

namespace {

UINT codePageBefore = 0;

} // namespace

ProgramArguments::ProgramArguments(int, char**) {
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 0; i < count; ++i)
        texts_.push_back(narrow(arguments[i]));
    LocalFree(arguments);
}

std::optional<std::string> environmentVariable(const char* name) {
    const std::wstring wideName = wide(name);
    std::wstring value(GetEnvironmentVariableW(wideName.c_str(), nullptr, 0), L'\0'); // and its NUL
    const DWORD length = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
    if (length == 0 || length >= value.size()) // not set, empty, or longer than a moment ago
        return std::nullopt;
    value.resize(length);
    return narrow(value);
}

void useUtf8Streams() {
    for (std::FILE* stream : {stdin, stdout, stderr})
        if (const int number = _fileno(stream); number >= 0) // else the program was started without it
            _setmode(number, _O_BINARY);
    // The terminal belongs to who started the program, and is handed back as it was.
    codePageBefore = GetConsoleOutputCP();
    if (codePageBefore == 0 || codePageBefore == CP_UTF8 || !SetConsoleOutputCP(CP_UTF8))
        return;
    std::atexit([] { SetConsoleOutputCP(codePageBefore); });
}

int streamError() {
    const int error = errno;
    return error == EINVAL && _doserrno == ERROR_NO_DATA ? EPIPE : error; // what a pipe without a reader comes to
}

} // namespace quobrix
