#pragma once

#include <csignal>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

/// Processes that do nothing but compute, for as long as it lives.
class Busy {
public:
    /// They end by themselves after `seconds`, should this process not come to it.
    explicit Busy(int processes, unsigned seconds)
    {
        for (int i = 0; i < processes; ++i)
            m_children.push_back(start(seconds));
    }
    ~Busy()
    {
        for (const pid_t child : m_children)
            end(child);
    }
    Busy(const Busy &) = delete;
    Busy &operator=(const Busy &) = delete;

private:
    static pid_t start(unsigned seconds)
    {
        const pid_t child = fork();
        if (child != 0)
            return child;
        alarm(seconds);
        for (volatile unsigned count = 0;; count = count + 1) { }
    }

    static void end(pid_t child)
    {
        if (child <= 0)
            return;
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }

    std::vector<pid_t> m_children;
};
