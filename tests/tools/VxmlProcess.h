#pragma once
// Runs the built vxml as a child process with files for its standard streams, so that the
// tests see exactly what a shell would.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

namespace vxml_test {

struct Result {
    int status = -1;
    std::string out;
    std::string err;
};

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline void WriteFile(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

// Runs vxml with args in dir; input becomes its standard input.
inline Result RunVxml(const std::filesystem::path& dir, std::initializer_list<std::string> args,
                      const std::string& input = "") {
    const std::filesystem::path in = dir / "stdin", out = dir / "stdout", err = dir / "stderr";
    WriteFile(in, input);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<std::string> argv{VXML_PATH};
    argv.insert(argv.end(), args);
    std::vector<char*> pointers;
    for (std::string& arg : argv)
        pointers.push_back(arg.data());
    pointers.push_back(nullptr);
    Result result;
    pid_t pid = 0;
    if (posix_spawn(&pid, VXML_PATH, &actions, nullptr, pointers.data(), environ) == 0) {
        int wait = 0;
        waitpid(pid, &wait, 0);
        result.status = WIFEXITED(wait) ? WEXITSTATUS(wait) : -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    result.out = ReadFile(out);
    result.err = ReadFile(err);
    return result;
}

}  // namespace vxml_test
