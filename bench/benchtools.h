#pragma once

// What the drivers share: the cheapest way to run a baseline tool, and the median of timings.

#include <algorithm>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

// Runs `argv` (found on PATH) to its end and returns what it printed on standard output; empty
// when it could not be started.
inline std::string runTool(std::vector<std::string> argv)
{
    int out[2];
    if (::pipe(out) != 0)
        return {};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    posix_spawn_file_actions_addclose(&actions, out[1]);
    std::vector<char *> pointers;
    for (std::string &arg : argv)
        pointers.push_back(arg.data());
    pointers.push_back(nullptr);
    pid_t pid;
    const bool started =
        posix_spawnp(&pid, pointers[0], &actions, nullptr, pointers.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    std::string output;
    char buffer[4096];
    ssize_t got;
    while (started && (got = ::read(out[0], buffer, sizeof buffer)) > 0)
        output.append(buffer, size_t(got));
    ::close(out[0]);
    int status;
    if (started)
        ::waitpid(pid, &status, 0);
    return output;
}

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}
