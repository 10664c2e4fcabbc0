#include "stepper.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/** What a listing complains of, a line each: "-- ..."; at most five. */
std::string complaints(const std::string& listing) {
    std::istringstream lines(listing);
    std::string found;
    int most = 5;
    for (std::string line; std::getline(lines, line) && most > 0;)
        if (line.starts_with("--") || line.find("rror") != std::string::npos) {
            found += "\n" + line;
            --most;
        }
    return found;
}

} // namespace

TemporaryDirectory::TemporaryDirectory() {
    std::string name = (fs::temp_directory_path() / "benchex-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw ExplainError(name + ": " + std::strerror(errno));
    m_path = name;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

int runToEnd(const std::vector<std::string>& words, std::string& output) {
    std::vector<char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str())); // NOLINT: the interface is older than const
    arguments.push_back(nullptr);
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), 0) != 0)
        throw ExplainError(std::string("no pipe: ") + std::strerror(errno));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
    pid_t process = 0;
    const int problem = posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (problem != 0) {
        close(ends[0]);
        throw ExplainError(words[0] + ": " + std::strerror(problem));
    }
    std::array<char, 4096> part{};
    for (ssize_t got = 0; (got = read(ends[0], part.data(), part.size())) != 0;) {
        if (got > 0)
            output.append(part.data(), static_cast<std::size_t>(got));
        else if (errno != EINTR)
            break;
    }
    close(ends[0]);
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {}
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::vector<SteppedCall> stepThrough(const std::string& function, const StepperRules& rules) {
    const TemporaryDirectory directory;
    const fs::path file = directory.path() / "calls.steps";
    std::vector<std::string> words = {rules.program.string(), "-B", "-dInstructions=yes",
                                      "-dInstructionsMost=" + std::to_string(rules.most),
                                      "-dInstructionsFile=" + file.string()};
    if (!function.empty())
        words.push_back("-f=" + function);
    if (rules.row > 0)
        words.push_back("-dInstructionsRow=" + std::to_string(rules.row));
    if (rules.precise)
        words.emplace_back("-dPrecise=yes");
    words.insert(words.end(), rules.keys.begin(), rules.keys.end());
    std::string shown;
    const int status = runToEnd(words, shown);
    std::ifstream input(file, std::ios::binary);
    std::vector<SteppedCall> calls;
    if (input)
        calls = readSteps(input, file.string());
    if (!calls.empty())
        return calls;
    const std::string wanted = rules.row > 0 ? " combination " + std::to_string(rules.row) + " of" : "";
    throw ExplainError("nothing of" + wanted + " " + (function.empty() ? "all functions" : function) +
                       " could be counted: " + rules.program.string() + " ended with status " +
                       std::to_string(status) + complaints(shown));
}
