// Runs programs as a user would and collects what they print.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

namespace TestSupport {

/// What came of a program.
struct ProcessResult {
    int exitCode = -1; ///< -1 when a signal ended it
    std::string output;
    std::string errors;
};

/// A program that runs in a folder.
class Process {
public:
    /// The first argument is the program, which is looked for in PATH when it has no slash.
    Process(const std::vector<std::string>& arguments, const std::filesystem::path& folder);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    void send(int signal) const;
    ProcessResult wait();

private:
    pid_t pid = -1;
    int outputFile = -1;
    int errorFile = -1;
};

} // namespace TestSupport
