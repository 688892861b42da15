// Packages and tuning files from hostile bytes. The first byte chooses what the rest is: a whole
// package, changes to a sound one (which get deeper), or a tuning file.

#include "Quillmoor/Instrument.h"
#include "Quillmoor/PakReader.h"
#include "Quillmoor/PakWriter.h"

#include <QByteArray>
#include <QtGlobal>

#include <cstdint>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace {

void ignore(QtMsgType, const QMessageLogContext &, const QString &) { }

/// A package in memory that can be opened by its path.
class MemoryFile {
public:
    MemoryFile()
        : m_descriptor(memfd_create("package", MFD_CLOEXEC))
    {
    }
    ~MemoryFile() { ::close(m_descriptor); }
    Q_DISABLE_COPY(MemoryFile)

    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

    void replace(const QByteArray &bytes)
    {
        const auto size = static_cast<size_t>(bytes.size());
        if (ftruncate(m_descriptor, 0) != 0
            || pwrite(m_descriptor, bytes.constData(), size, 0) != bytes.size())
            abort();
    }

private:
    int m_descriptor;
};

const QByteArray &soundPackage()
{
    static const QByteArray bytes = [] {
        PakWriter writer(64);
        for (int i = 0; i < 6; ++i)
            writer.add(QStringLiteral("/%1").arg(i), QByteArray(i * 29, 'v'));
        return writer.toBytes();
    }();
    return bytes;
}

/// Each three bytes put one byte: two for the place, one for the value.
QByteArray changedPackage(const QByteArray &changes)
{
    QByteArray bytes = soundPackage();
    for (int i = 0; i + 2 < changes.size(); i += 3) {
        const int place =
            static_cast<uchar>(changes.at(i)) * 256 + static_cast<uchar>(changes.at(i + 1));
        bytes[place % bytes.size()] = changes.at(i + 2);
    }
    return bytes;
}

template <typename Call> void run(Call call)
{
    try {
        call();
    } catch (const QString &message) {
        if (message.isEmpty())
            abort();
    }
}

void readPackage(const QByteArray &bytes)
{
    static MemoryFile file;
    file.replace(bytes);
    PakReader reader(file.path());
    run([&] { reader.fileList(); });
    for (int i = 0; i < 7; ++i)
        run([&] { reader.getFile(QStringLiteral("/%1").arg(i)); });
}

void readTuning(const QByteArray &bytes)
{
    run([&] {
        const Instrument instrument =
            Instrument::fromBytes(QStringLiteral("lute"), bytes, QStringLiteral("pak://x::"));
        for (const InstrumentSample &sample : instrument.mapping()) {
            if (!(sample.pitch() > 0.0) || !(instrument.fadeout() >= 0.0))
                abort();
            sample.randomFile();
        }
    });
}

} // namespace

// Qt 5.15 loses the first of two objects under one key of a JSON object.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libQt5Core.so.5\n";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, size_t size)
{
    static const QtMessageHandler previous = qInstallMessageHandler(ignore);
    Q_UNUSED(previous)
    if (size == 0)
        return 0;
    const QByteArray rest(reinterpret_cast<const char *>(data + 1), static_cast<int>(size - 1));
    switch (data[0] % 3) {
    case 0:
        readPackage(rest);
        break;
    case 1:
        readPackage(changedPackage(rest));
        break;
    default:
        readTuning(rest);
        break;
    }
    return 0;
}
