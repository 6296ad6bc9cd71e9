#pragma once

#include <windows.h>

#include <filesystem>
#include <memory>
#include <string>

/// Closes a handle of the test's own.
struct HandleCloser
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<HANDLE, HandleCloser>;

/// A process of the test's own with a pipe to its standard input and one from its standard output.
/// It is expected to end when its input ends, and is ended by force when it does not.
class ChildProcess
{
public:
    /// Starts the program. Throws std::system_error when it cannot be started.
    explicit ChildProcess(const std::filesystem::path &program);
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;
    ~ChildProcess();

    [[nodiscard]] DWORD pid() const { return processId; }

    void writeLine(const std::string &line);
    /// Waits for the next line, without its end; empty when the output ended.
    std::string readLine();
    /// Ends the process's input and waits until the process has ended and nothing of it is left
    /// open. Returns false when it had to be ended by force.
    bool finish();

private:
    OwnedHandle process;
    OwnedHandle input;
    OwnedHandle output;
    DWORD processId = 0;
};

/// Path of the program that owns known sockets, beside the running test.
std::filesystem::path socketOwnerProgram();
