// Runs the tool as a user would and collects what it prints.
#pragma once

#include <tests/TestSupport.h>

#include <string>

#include <sys/types.h>

namespace TestSupport {

/// What came of a program.
struct ProcessResult {
    int exitCode = -1; ///< -1 when a signal ended it
    std::string output;
    std::string errors;
};

/// A command line that a shell runs in a folder.
class Process {
public:
    Process(const std::string& line, const std::filesystem::path& folder);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    void send(int signal) const;
    ProcessResult wait();

private:
    int outputFile, errorFile;
    pid_t pid;
};

/// A folder for zet to run in, removed at its end. Arguments are written as a shell reads them.
class ToolFolder {
public:
    /// The command that begins with it is the process that signals are sent to.
    Process start(const std::string& arguments) const {
        return Process("exec '" ZET_PROGRAM "' " + arguments, folder.path());
    }
    /// A script, for which zet is a command like any other.
    ProcessResult run(const std::string& script) const {
        return Process("zet() { '" ZET_PROGRAM "' \"$@\"; }; " + script, folder.path()).wait();
    }
    ProcessResult zet(const std::string& arguments) const { return start(arguments).wait(); }

    /// zet refuses to begin and says why.
    void expectRefused(const std::string& arguments, const std::string& reason) const {
        const ProcessResult result = zet(arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments;
        EXPECT_THAT(result.errors, testing::HasSubstr(reason)) << arguments;
    }

    void overwrite(const std::string& file, std::streamoff offset, int byte) const {
        std::fstream stream(folder / file, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(offset).put(static_cast<char>(byte));
    }

    const TemporaryFolder folder;
};

} // namespace TestSupport
