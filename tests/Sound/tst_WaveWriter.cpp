#include "Sound/ReplacingFile.h"
#include "Sound/WaveHeader.h"
#include "Sound/WaveWriter.h"
#include "SoundFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sndfile.h>

#include <cstring>
#include <limits>

#include <sys/stat.h>

namespace {

using Samples = std::vector<float>;

/// Keeps the bytes, and fails when told to.
class MemorySink final : public ByteSink {
public:
    struct Log {
        QByteArray bytes;
        bool isCommitted = false;
        bool isFull = false;
    };

    explicit MemorySink(Log &log)
        : m_log(log)
    {
    }

    bool append(const void *bytes, std::size_t count) override
    {
        if (!m_log.isFull)
            m_log.bytes.append(static_cast<const char *>(bytes), static_cast<int>(count));
        return !m_log.isFull;
    }

    bool rewriteStart(const void *bytes, std::size_t count) override
    {
        if (!m_log.isFull)
            m_log.bytes.replace(0, static_cast<int>(count), static_cast<const char *>(bytes),
                                static_cast<int>(count));
        return !m_log.isFull;
    }

    bool commit() override
    {
        m_log.isCommitted = true;
        return true;
    }

private:
    Log &m_log;
};

std::vector<short> written(const Samples &left, const Samples &right, WaveOutput::Report &report)
{
    MemorySink::Log log;
    WaveWriter writer(std::make_unique<MemorySink>(log));
    if (!writer.begin() || !writer.write(left.data(), right.data(), left.size()))
        qFatal("writing failed");
    report = writer.report();
    std::vector<short> samples(left.size() * 2);
    if (!samples.empty())
        std::memcpy(samples.data(), log.bytes.constData() + WaveHeader::Size, samples.size() * 2);
    return samples;
}

std::vector<short> writtenLeft(const Samples &samples, WaveOutput::Report &report)
{
    const std::vector<short> both = written(samples, Samples(samples.size(), 0.0F), report);
    std::vector<short> left;
    for (std::size_t i = 0; i < both.size(); i += 2)
        left.push_back(both[i]);
    return left;
}

/// A file of any length that holds zeros behind its header.
struct LongFile {
    std::array<unsigned char, WaveHeader::Size> header;
    sf_count_t length;
    sf_count_t position;
};

LongFile &longFile(void *user)
{
    return *static_cast<LongFile *>(user);
}

sf_count_t longLength(void *user)
{
    return longFile(user).length;
}

sf_count_t longSeek(sf_count_t offset, int whence, void *user)
{
    LongFile &file = longFile(user);
    const sf_count_t base = whence == SEEK_SET ? 0
        : whence == SEEK_CUR                   ? file.position
                                               : file.length;
    file.position = base + offset;
    return file.position;
}

sf_count_t longRead(void *target, sf_count_t count, void *user)
{
    LongFile &file = longFile(user);
    auto *const bytes = static_cast<unsigned char *>(target);
    sf_count_t done = 0;
    for (; done < count && file.position < file.length; ++done, ++file.position)
        bytes[done] = file.position < static_cast<sf_count_t>(WaveHeader::Size)
            ? file.header[static_cast<std::size_t>(file.position)]
            : 0;
    return done;
}

sf_count_t longWrite(const void *, sf_count_t, void *)
{
    return 0;
}

sf_count_t longTell(void *user)
{
    return longFile(user).position;
}

QByteArray headerBytes(std::uint64_t frames)
{
    const auto header = WaveHeader::forFrames(frames);
    return {reinterpret_cast<const char *>(header.data()), static_cast<int>(header.size())};
}

QByteArray contents(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
}

void put(const QString &name, const QByteArray &bytes)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write a test file");
}

QStringList entries(const QTemporaryDir &directory)
{
    return QDir(directory.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

std::unique_ptr<ReplacingFile> openFile(const QString &name)
{
    return ReplacingFile::open(QFile::encodeName(name).constData());
}

} // namespace

class tst_WaveWriter : public QObject {
    Q_OBJECT

private slots:
    void sixteenBitsComeBackExactly();
    void samplesAreRoundedToTheNearest();
    void samplesBeyondFullScaleAreClampedAndCounted();
    void fullScaleItselfIsNotClipped();
    void peakIsThatBeforeClamping();
    void channelsAreInterleaved();
    void headerIsPlainWav();
    void lengthIsFilledInAtTheEnd();
    void fileWithoutSamplesIsValid();
    void longFilesAreRf64_data();
    void longFilesAreRf64();
    void sameSamplesGiveTheSameBytes();
    void failedWriteIsReportedAndNotCounted();
    void failedHeaderIsReported();

    void fileAppearsOnlyWhenComplete();
    void unfinishedFileLeavesNothingBehind();
    void olderFileSurvivesAnUnfinishedOne();
    void olderFileIsReplacedAndItsPermissionsKept();
    void longestNameIsFine();
    void nameWithoutDirectoryIsFine();
    void symbolicLinkIsFollowed();
    void nameIsBytes();
    void deviceIsWrittenDirectly();
    void fullDeviceFails();
    void whatCannotBeWrittenIsRefused_data();
    void whatCannotBeWrittenIsRefused();
    void vanishedDirectoryFailsTheCommit();
};

void tst_WaveWriter::sixteenBitsComeBackExactly()
{
    Samples samples;
    std::vector<short> expected;
    for (int value = -32768; value <= 32767; ++value) {
        samples.push_back(static_cast<float>(value) / 32768.0F);
        expected.push_back(static_cast<short>(value));
    }
    WaveOutput::Report report;
    QVERIFY(writtenLeft(samples, report) == expected);
    QCOMPARE(report.clipped, std::uint64_t{0});
}

void tst_WaveWriter::samplesAreRoundedToTheNearest()
{
    constexpr float Step = 1 / 32768.0F;
    const Samples samples = {0.49F * Step, 0.51F * Step,  -0.49F * Step,   -0.51F * Step,
                             0.5F * Step,  1.5F * Step,   2.5F * Step,     -0.5F * Step,
                             -1.5F * Step, 100.6F * Step, 32766.4F * Step, -32767.6F * Step};
    WaveOutput::Report report;
    QVERIFY(writtenLeft(samples, report)
            == (std::vector<short>{0, 1, 0, -1, 0, 2, 2, 0, -2, 101, 32766, -32768}));
}

void tst_WaveWriter::samplesBeyondFullScaleAreClampedAndCounted()
{
    WaveOutput::Report report;
    const std::vector<short> samples =
        written({1.5F, -1.5F, 0.5F, 65536.0F * 65536.0F}, {0, -2.0F, 0, 1.01F}, report);
    QVERIFY(samples == (std::vector<short>{32767, 0, -32768, -32768, 16384, 0, 32767, 32767}));
    QCOMPARE(report.clipped, std::uint64_t{5});
    QCOMPARE(report.frames, std::uint64_t{4});
}

void tst_WaveWriter::fullScaleItselfIsNotClipped()
{
    WaveOutput::Report report;
    QVERIFY(writtenLeft({1.0F, -1.0F}, report) == (std::vector<short>{32767, -32768}));
    QCOMPARE(report.clipped, std::uint64_t{0});
    QCOMPARE(report.peak, 1.0F);
}

void tst_WaveWriter::peakIsThatBeforeClamping()
{
    WaveOutput::Report report;
    written({0.5F, 0.25F}, {0, -2.5F}, report);
    QCOMPARE(report.peak, 2.5F);
    written({}, {}, report);
    QCOMPARE(report.peak, 0.0F);
}

void tst_WaveWriter::channelsAreInterleaved()
{
    WaveOutput::Report report;
    QVERIFY(written({0.25F, 0.5F}, {-0.25F, -0.5F}, report)
            == (std::vector<short>{8192, -8192, 16384, -16384}));
}

void tst_WaveWriter::headerIsPlainWav()
{
    const QByteArray expected = QByteArrayLiteral("RIFF\x50\x00\x00\x00"
                                                  "WAVE"
                                                  "JUNK\x1C\x00\x00\x00")
        + QByteArray(28, '\0')
        + QByteArrayLiteral("fmt \x10\x00\x00\x00\x01\x00\x02\x00\x80\xBB\x00\x00"
                            "\x00\xEE\x02\x00\x04\x00\x10\x00"
                            "data\x08\x00\x00\x00");
    QCOMPARE(headerBytes(2), expected);
}

void tst_WaveWriter::lengthIsFilledInAtTheEnd()
{
    MemorySink::Log log;
    WaveWriter writer(std::make_unique<MemorySink>(log));
    const Samples samples(100, 0.5F);
    QVERIFY(writer.begin());
    QVERIFY(writer.write(samples.data(), samples.data(), 60));
    QVERIFY(writer.write(samples.data(), samples.data(), 40));
    QVERIFY(!log.isCommitted);
    QVERIFY(writer.finish());
    QVERIFY(log.isCommitted);
    QCOMPARE(log.bytes.left(WaveHeader::Size), headerBytes(100));
    QCOMPARE(log.bytes.size(), 80 + 400);
}

void tst_WaveWriter::fileWithoutSamplesIsValid()
{
    const QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("empty.wav"));
    WaveWriter writer(openFile(name));
    QVERIFY(writer.begin());
    QVERIFY(writer.finish());
    const SoundFiles::Contents file = SoundFiles::read(name);
    QVERIFY(file.isValid);
    QCOMPARE(file.frames, qint64{0});
    QCOMPARE(file.channels, 2);
    QCOMPARE(file.rate, 48000);
    QCOMPARE(contents(name).size(), 80);
}

void tst_WaveWriter::longFilesAreRf64_data()
{
    constexpr qint64 LastOfWav = (0xFFFFFFFFLL - 72) / 4;
    QTest::addColumn<qint64>("frames");
    QTest::addColumn<int>("format");
    QTest::newRow("short") << qint64{1000} << int{SF_FORMAT_WAV};
    QTest::newRow("2 GiB") << qint64{0x20000000} << int{SF_FORMAT_WAV};
    QTest::newRow("just below 4 GiB") << LastOfWav << int{SF_FORMAT_WAV};
    QTest::newRow("just beyond") << LastOfWav + 1 << int{SF_FORMAT_RF64};
    QTest::newRow("data of 4 GiB") << qint64{0x40000000} << int{SF_FORMAT_RF64};
    QTest::newRow("a day") << qint64{86400LL * 48000} << int{SF_FORMAT_RF64};
}

void tst_WaveWriter::longFilesAreRf64()
{
    QFETCH(qint64, frames);
    QFETCH(int, format);
    LongFile file = {WaveHeader::forFrames(static_cast<std::uint64_t>(frames)),
                     static_cast<sf_count_t>(WaveHeader::Size) + frames * 4, 0};
    SF_VIRTUAL_IO access = {longLength, longSeek, longRead, longWrite, longTell};
    SF_INFO info = {};
    SNDFILE *const sound = sf_open_virtual(&access, SFM_READ, &info, &file);
    QVERIFY2(sound != nullptr, sf_strerror(nullptr));
    QCOMPARE(info.format & SF_FORMAT_TYPEMASK, format);
    QCOMPARE(info.format & SF_FORMAT_SUBMASK, int{SF_FORMAT_PCM_16});
    QCOMPARE(info.frames, frames);
    QCOMPARE(info.channels, 2);
    QCOMPARE(info.samplerate, 48000);
    QCOMPARE(sf_seek(sound, -10, SEEK_END), frames - 10);
    short samples[40];
    QCOMPARE(sf_readf_short(sound, samples, 20), sf_count_t{10});
    sf_close(sound);
}

void tst_WaveWriter::sameSamplesGiveTheSameBytes()
{
    const QTemporaryDir directory;
    const Samples samples(1000, 0.3F);
    for (const char *const name : {"a.wav", "b.wav"}) {
        WaveWriter writer(openFile(directory.filePath(QLatin1String(name))));
        QVERIFY(writer.begin());
        QVERIFY(writer.write(samples.data(), samples.data(), samples.size()));
        QVERIFY(writer.finish());
    }
    QCOMPARE(contents(directory.filePath(QStringLiteral("a.wav"))),
             contents(directory.filePath(QStringLiteral("b.wav"))));
}

void tst_WaveWriter::failedWriteIsReportedAndNotCounted()
{
    MemorySink::Log log;
    WaveWriter writer(std::make_unique<MemorySink>(log));
    const Samples samples(100, 0.5F);
    const Samples loud(100, 3.0F);
    QVERIFY(writer.begin());
    QVERIFY(writer.write(samples.data(), samples.data(), 100));
    log.isFull = true;
    QVERIFY(!writer.hasFailed());
    QVERIFY(!writer.write(loud.data(), loud.data(), 100));
    QVERIFY(writer.hasFailed());
    log.isFull = false;
    QVERIFY(!writer.write(samples.data(), samples.data(), 100));
    QCOMPARE(writer.report().frames, std::uint64_t{100});
    QCOMPARE(writer.report().peak, 0.5F);
    QCOMPARE(writer.report().clipped, std::uint64_t{0});
    QVERIFY(!writer.finish());
    QVERIFY(!log.isCommitted);
}

void tst_WaveWriter::failedHeaderIsReported()
{
    MemorySink::Log log;
    log.isFull = true;
    WaveWriter writer(std::make_unique<MemorySink>(log));
    QVERIFY(!writer.begin());
    QVERIFY(!writer.finish());
}

void tst_WaveWriter::fileAppearsOnlyWhenComplete()
{
    const QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("out.wav"));
    const auto file = openFile(name);
    QVERIFY(file->append("hello world", 11));
    QVERIFY(!QFile::exists(name));
    QVERIFY(file->rewriteStart("H", 1));
    QVERIFY(file->commit());
    QCOMPARE(contents(name), QByteArray("Hello world"));
    QCOMPARE(entries(directory), QStringList{QStringLiteral("out.wav")});
}

void tst_WaveWriter::unfinishedFileLeavesNothingBehind()
{
    const QTemporaryDir directory;
    auto file = openFile(directory.filePath(QStringLiteral("out.wav")));
    QVERIFY(file->append("hello", 5));
    QCOMPARE(entries(directory).size(), 1);
    file.reset();
    QCOMPARE(entries(directory), QStringList());
}

void tst_WaveWriter::olderFileSurvivesAnUnfinishedOne()
{
    const QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("out.wav"));
    put(name, "old");
    openFile(name)->append("new", 3);
    QCOMPARE(contents(name), QByteArray("old"));
    QCOMPARE(entries(directory).size(), 1);
}

void tst_WaveWriter::olderFileIsReplacedAndItsPermissionsKept()
{
    const QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("out.wav"));
    put(name, "much older and longer");
    QVERIFY(QFile::setPermissions(name, QFile::ReadOwner | QFile::WriteOwner));
    const QFile::Permissions before = QFile::permissions(name);
    const auto file = openFile(name);
    QVERIFY(file->append("new", 3));
    QVERIFY(file->commit());
    QCOMPARE(contents(name), QByteArray("new"));
    QCOMPARE(QFile::permissions(name), before);
}

void tst_WaveWriter::longestNameIsFine()
{
    const QTemporaryDir directory;
    const QString name =
        directory.filePath(QString(251, QLatin1Char('x')) + QStringLiteral(".wav"));
    const auto file = openFile(name);
    QVERIFY(file != nullptr);
    QVERIFY(file->append("x", 1));
    QVERIFY(file->commit());
    QCOMPARE(contents(name), QByteArray("x"));
    QVERIFY(openFile(directory.filePath(QString(256, QLatin1Char('x')))) == nullptr
            || !openFile(directory.filePath(QString(256, QLatin1Char('x'))))->commit());
    QCOMPARE(entries(directory).size(), 1);
}

void tst_WaveWriter::nameWithoutDirectoryIsFine()
{
    const QTemporaryDir directory;
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(directory.path()));
    const auto file = openFile(QStringLiteral("out.wav"));
    const bool worked = file != nullptr && file->commit();
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(worked);
    QCOMPARE(entries(directory), QStringList{QStringLiteral("out.wav")});
}

void tst_WaveWriter::symbolicLinkIsFollowed()
{
    const QTemporaryDir directory;
    const QString target = directory.filePath(QStringLiteral("target.wav"));
    const QString link = directory.filePath(QStringLiteral("link.wav"));
    put(target, "old");
    QVERIFY(QFile::link(target, link));
    const auto file = openFile(link);
    QVERIFY(file->append("new", 3));
    QVERIFY(file->commit());
    QCOMPARE(contents(target), QByteArray("new"));
    QCOMPARE(QFile::symLinkTarget(link), target);
}

void tst_WaveWriter::nameIsBytes()
{
    const QTemporaryDir directory;
    const QByteArray name = QFile::encodeName(directory.path()) + "/\xFF\xFE.wav";
    const auto file = ReplacingFile::open(name.constData());
    QVERIFY(file->commit());
    QCOMPARE(std::remove(name.constData()), 0);
}

void tst_WaveWriter::deviceIsWrittenDirectly()
{
    const auto file = openFile(QStringLiteral("/dev/null"));
    QVERIFY(file != nullptr);
    QVERIFY(file->append("x", 1));
    QVERIFY(file->rewriteStart("y", 1));
    QVERIFY(file->commit());
    struct stat status = {};
    QCOMPARE(stat("/dev/null", &status), 0);
    QVERIFY(S_ISCHR(status.st_mode));
}

void tst_WaveWriter::fullDeviceFails()
{
    const auto file = openFile(QStringLiteral("/dev/full"));
    QVERIFY(file != nullptr);
    QVERIFY(!file->append("x", 1));
}

void tst_WaveWriter::whatCannotBeWrittenIsRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("no directory") << QStringLiteral("/nowhere/out.wav");
    QTest::newRow("a directory") << QStringLiteral("/tmp");
    QTest::newRow("a directory's name") << QStringLiteral("/tmp/");
    QTest::newRow("no name") << QString();
    QTest::newRow("below a file") << QStringLiteral("/etc/passwd/out.wav");
    QTest::newRow("nothing but dots") << QStringLiteral("..");
}

void tst_WaveWriter::whatCannotBeWrittenIsRefused()
{
    QFETCH(QString, name);
    QVERIFY(openFile(name) == nullptr);
}

void tst_WaveWriter::vanishedDirectoryFailsTheCommit()
{
    const QTemporaryDir directory;
    const QString inner = directory.filePath(QStringLiteral("inner"));
    QVERIFY(QDir().mkdir(inner));
    const auto file = openFile(inner + QStringLiteral("/out.wav"));
    QVERIFY(file->append("x", 1));
    QVERIFY(QDir(inner).removeRecursively());
    QVERIFY(!file->commit());
}

QTEST_APPLESS_MAIN(tst_WaveWriter)
#include "tst_WaveWriter.moc"
