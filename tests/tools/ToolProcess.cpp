#include <tests/tools/ToolProcess.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

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
    : outputFile(::memfd_create("output", MFD_CLOEXEC)),
      errorFile(::memfd_create("errors", MFD_CLOEXEC)),
      pid(::fork()) {
    if (pid < 0)
        throw std::system_error(errno, std::generic_category(), line);
    if (pid == 0) {
        ::dup2(outputFile, STDOUT_FILENO);
        ::dup2(errorFile, STDERR_FILENO);
        if (::chdir(folder.c_str()) == 0)
            ::execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
        ::_exit(127);
    }
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
