#pragma once

#include <QProcess>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <vector>

/// A sound server of the test's own, with a sink that nobody hears, and what is played to it.
///
/// It knows neither the machine's server nor its sound cards, and while an object lives, this
/// process knows no other server. Buffers are long: a busy machine shall not cause gaps.
class SoundServer {
public:
    /// While it waits it does `meanwhile` again and again, which takes some milliseconds.
    explicit SoundServer(std::function<void()> meanwhile);
    ~SoundServer();
    Q_DISABLE_COPY(SoundServer)

    /// Answers whether it is ready. One that does not get ready is tried again.
    bool start();
    /// From one moment to the next, as a crash does.
    void kill();
    /// It does not answer any more, until it is resumed.
    void suspend();
    void resume();

    bool startRecording();
    /// Frames of the left side, from the start on.
    std::vector<float> recorded() const;
    std::vector<float> stopRecording();
    /// Whether it has told that a recording lost something, or that it did not join a stream to
    /// the sink in time, as happens once in hundreds of starts.
    bool hasFailed() const;

    /// What went wrong, for the test's log.
    QString report() const;

private:
    class Process;

    bool comesTrue(const std::function<bool()> &condition, int patience) const;
    bool tryToStart();
    bool hasFile(const QString &name) const;
    bool isAnswering() const;
    QByteArray contentsOf(const QString &name) const;
    std::unique_ptr<Process> run(const QString &program, const QStringList &arguments);
    void signalAll(int signal);
    void writeConfig(const QString &name, const QByteArray &text);

    std::function<void()> m_meanwhile;
    QTemporaryDir m_folder;
    QProcessEnvironment m_environment;
    std::unique_ptr<Process> m_bus;
    std::vector<std::unique_ptr<Process>> m_servers;
    std::unique_ptr<Process> m_recorder;
};
