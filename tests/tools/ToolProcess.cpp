#include <tests/tools/ToolProcess.h>

#include <array>
#include <csignal>
#include <system_error>

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace TestSupport {
namespace {

std::string contentOf(int file) {
    std::string content;
    std::array<char, 4096> piece;
    ::lseek(file, 0, SEEK_SET);
    for (ssize_t count; (count = ::read(file, piece.data(), piece.size())) > 0;)
        content.append(piece.data(), static_cast<std::size_t>(count));
    return content;
}

} // namespace

Process::Process(const std::string& line, const std::filesystem::path& folder)
    : outputFile(::memfd_create("output", MFD_CLOEXEC)), errorFile(::memfd_create("errors", MFD_CLOEXEC)) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    posix_spawn_file_actions_adddup2(&actions, outputFile, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errorFile, STDERR_FILENO);
    const std::array<const char*, 4> shell{"sh", "-c", line.c_str(), nullptr};
    const int error =
        ::posix_spawn(&pid, "/bin/sh", &actions, nullptr, const_cast<char* const*>(shell.data()), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), line);
}

Process::~Process() {
    if (pid > 0) {
        send(SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }
    ::close(outputFile);
    ::close(errorFile);
}

void Process::send(int signal) const { ::kill(pid, signal); }

ProcessResult Process::wait() {
    int status = 0;
    ::waitpid(pid, &status, 0);
    pid = -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(outputFile), contentOf(errorFile)};
}

} // namespace TestSupport
