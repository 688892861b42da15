#pragma once

#include <QByteArray>

#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

/// A pseudo-terminal to be the program's standard error.
class Terminal {
public:
    Terminal()
        : m_master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        grantpt(m_master);
        unlockpt(m_master);
        m_slave = open(ptsname(m_master), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    ~Terminal()
    {
        close(m_slave);
        close(m_master);
    }

    int slave() const { return m_slave; }

    /// Reads until `text` has come; false if that takes too long.
    bool waitFor(const QByteArray &text)
    {
        pollfd entry = {m_master, POLLIN, 0};
        while (!m_seen.contains(text)) {
            QByteArray bytes(4096, '\0');
            if (poll(&entry, 1, 60000) != 1)
                return false;
            const ssize_t got = read(m_master, bytes.data(), static_cast<size_t>(bytes.size()));
            if (got <= 0)
                return false;
            m_seen += bytes.left(static_cast<int>(got));
        }
        return true;
    }

private:
    int m_master;
    int m_slave;
    QByteArray m_seen;
};
