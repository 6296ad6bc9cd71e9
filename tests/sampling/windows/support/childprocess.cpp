#include "support/childprocess.h"

#include <array>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace {

[[noreturn]] void throwLastError(const char *what)
{
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

struct Pipe
{
    OwnedHandle readEnd;
    OwnedHandle writeEnd;
};

/// A pipe whose one end, and only that, the next process inherits.
Pipe makePipe(bool inheritReadEnd)
{
    SECURITY_ATTRIBUTES inheritable{.nLength = sizeof(SECURITY_ATTRIBUTES),
                                    .lpSecurityDescriptor = nullptr,
                                    .bInheritHandle = TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inheritable, 0))
        throwLastError("CreatePipe");
    Pipe pipe{OwnedHandle(readEnd), OwnedHandle(writeEnd)};
    if (!SetHandleInformation(inheritReadEnd ? writeEnd : readEnd, HANDLE_FLAG_INHERIT, 0))
        throwLastError("SetHandleInformation");
    return pipe;
}

} // namespace

ChildProcess::ChildProcess(const std::filesystem::path &program)
{
    Pipe toChild = makePipe(true);
    Pipe fromChild = makePipe(false);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = toChild.readEnd.get();
    startup.hStdOutput = fromChild.writeEnd.get();
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(program.c_str(), nullptr, nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                        &startup, &started))
        throwLastError("CreateProcessW");
    const OwnedHandle mainThread(started.hThread);
    process.reset(started.hProcess);
    processId = started.dwProcessId;
    input = std::move(toChild.writeEnd);
    output = std::move(fromChild.readEnd);
}

ChildProcess::~ChildProcess()
{
    if (process)
        finish();
}

void ChildProcess::writeLine(const std::string &line)
{
    const std::string text = line + '\n';
    DWORD written = 0;
    if (!WriteFile(input.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr))
        throwLastError("WriteFile");
}

std::string ChildProcess::readLine()
{
    std::string line;
    char letter = 0;
    DWORD got = 0;
    while (ReadFile(output.get(), &letter, 1, &got, nullptr) && got == 1 && letter != '\n') {
        if (letter != '\r')
            line += letter;
    }
    return line;
}

bool ChildProcess::finish()
{
    constexpr DWORD patience = 20'000; // ms
    input.reset();
    const bool ended = WaitForSingleObject(process.get(), patience) == WAIT_OBJECT_0;
    if (!ended && TerminateProcess(process.get(), 1))
        WaitForSingleObject(process.get(), patience);
    output.reset();
    process.reset();
    return ended;
}

std::filesystem::path socketOwnerProgram()
{
    std::array<wchar_t, 32'768> self{};
    const DWORD length = GetModuleFileNameW(nullptr, self.data(), static_cast<DWORD>(self.size()));
    if (length == 0)
        throwLastError("GetModuleFileNameW");
    return std::filesystem::path(self.data()).parent_path() / SOCKET_OWNER;
}
