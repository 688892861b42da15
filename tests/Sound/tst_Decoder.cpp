#include "Sound/Decoder.h"
#include "SoundFiles.h"
#include "WholeSample.h"
#include "support/ResourceWatch.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sndfile.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include <sys/stat.h>

namespace {

constexpr int Wav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
constexpr int Vorbis = SF_FORMAT_OGG | SF_FORMAT_VORBIS;

struct Outcome {
    FMOD_RESULT result;
    WholeSample sample;
};

Outcome decoded(SoundFile &file, FMOD_RESULT opened)
{
    Outcome outcome{opened, {}};
    if (opened != FMOD_OK)
        return outcome;
    AudioSample sample;
    outcome.result = file.decode(sample, Preparation::All);
    outcome.sample = WholeSample(sample);
    return outcome;
}

Outcome decoded(const QByteArray &bytes)
{
    SoundFile file;
    return decoded(file,
                   file.openMemory(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

Outcome decodedFile(const QByteArray &name)
{
    SoundFile file;
    return decoded(file, file.openFile(name.constData()));
}

std::vector<float> sine(std::size_t count, int channels = 1)
{
    std::vector<float> samples;
    for (std::size_t i = 0; i < count; ++i)
        for (int channel = 0; channel < channels; ++channel)
            samples.push_back(0.5F * static_cast<float>(std::sin(0.05 * static_cast<double>(i))));
    return samples;
}

/// Does not pack well, so that a cut takes away sound.
std::vector<float> noise(std::size_t count)
{
    std::vector<float> samples;
    unsigned state = 1;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525U + 1013904223U;
        samples.push_back(static_cast<float>(state >> 8) / 33554432.0F - 0.25F);
    }
    return samples;
}

void writeFile(const QString &name, const QByteArray &bytes)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write a test file");
}

float lastOf(const std::vector<float> &values)
{
    return values.empty() ? 0.0F : values.back();
}

} // namespace

class tst_Decoder : public QObject {
    Q_OBJECT

private slots:
    void sixteenBitSamplesAreExact();
    void stereoIsTakenApart();
    void formatsAreKnown_data();
    void formatsAreKnown();
    void rateIsThatOfTheFile();
    void moreChannelsAreMixedToStereo_data();
    void moreChannelsAreMixedToStereo();
    void whatIsNoNumberBecomesSilence();
    void hugeValuesAreLimited();
    void emptySoundIsNoError();
    void fileAndMemoryGiveTheSame();
    void fileNameIsBytes();
    void missingFileIsNotFound();
    void whatIsNoFileIsRefused();
    void dashIsAFileName();
    void rubbishIsAnUnknownFormat_data();
    void rubbishIsAnUnknownFormat();
    void truncatedFileGivesWhatIsThere_data();
    void truncatedFileGivesWhatIsThere();
    void everyTruncationAndDamageEnds_data();
    void everyTruncationAndDamageEnds();
    void announcedLengthIsNotBelieved();
    void tooLongSoundIsRefused();
    void absurdRateIsRefused();
    void piecesGiveTheWhole_data() { formatsAreKnown_data(); }
    void piecesGiveTheWhole();
    void headIsNotTheWhole();
    void implausibleLengthIsShownAtTheEnd();
    void onlyLargeFilesStayOpen();
};

void tst_Decoder::sixteenBitSamplesAreExact()
{
    const Outcome outcome =
        decoded(SoundFiles::encode16(48000, 1, {0, 1, -1, 12345, 32767, -32768}));
    QCOMPARE(outcome.result, FMOD_OK);
    const std::vector<float> expected = {
        0, 1 / 32768.0F, -1 / 32768.0F, 12345 / 32768.0F, 32767 / 32768.0F, -1};
    QVERIFY(outcome.sample.left == expected);
    QVERIFY(!outcome.sample.isStereo());
}

void tst_Decoder::stereoIsTakenApart()
{
    const Outcome outcome = decoded(SoundFiles::encode16(48000, 2, {16384, -16384, 8192, -8192}));
    QVERIFY(outcome.sample.left == (std::vector<float>{0.5F, 0.25F}));
    QVERIFY(outcome.sample.right == (std::vector<float>{-0.5F, -0.25F}));
}

void tst_Decoder::formatsAreKnown_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<float>("tolerance");
    QTest::newRow("WAV") << Wav16 << 1e-4F;
    QTest::newRow("WAV of floats") << (SF_FORMAT_WAV | SF_FORMAT_FLOAT) << 0.0F;
    QTest::newRow("FLAC") << (SF_FORMAT_FLAC | SF_FORMAT_PCM_24) << 1e-6F;
    QTest::newRow("Ogg Vorbis") << Vorbis << 0.05F;
    QTest::newRow("MP3") << (SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III) << 0.05F;
}

void tst_Decoder::formatsAreKnown()
{
    QFETCH(int, format);
    QFETCH(float, tolerance);
    const std::vector<float> samples = sine(20000);
    const Outcome outcome = decoded(SoundFiles::encode(format, 48000, 1, samples));
    QCOMPARE(outcome.result, FMOD_OK);
    QCOMPARE(outcome.sample.frames(), samples.size());
    for (std::size_t i = 1000; i < 19000; ++i)
        QVERIFY(std::abs(outcome.sample.left[i] - samples[i]) <= tolerance);
}

void tst_Decoder::rateIsThatOfTheFile()
{
    const QByteArray bytes = SoundFiles::encode16(22050, 1, {1, 2});
    SoundFile file;
    QCOMPARE(file.openMemory(bytes.constData(), static_cast<std::size_t>(bytes.size())), FMOD_OK);
    QCOMPARE(file.rate(), 22050.0);
}

void tst_Decoder::moreChannelsAreMixedToStereo_data()
{
    QTest::addColumn<int>("channel");
    QTest::addColumn<int>("channels");
    QTest::addColumn<float>("left");
    QTest::addColumn<float>("right");
    QTest::newRow("left of 3") << 0 << 3 << 0.292893F << 0.0F;
    QTest::newRow("centre of 3") << 2 << 3 << 0.207107F << 0.207107F;
    QTest::newRow("back left of 4") << 2 << 4 << 0.207107F << 0.0F;
    QTest::newRow("back right of 4") << 3 << 4 << 0.0F << 0.207107F;
    QTest::newRow("bass of 6") << 3 << 6 << 0.0F << 0.0F;
    QTest::newRow("back left of 6") << 4 << 6 << 0.146447F << 0.0F;
    QTest::newRow("back right of 6") << 5 << 6 << 0.0F << 0.146447F;
}

void tst_Decoder::moreChannelsAreMixedToStereo()
{
    QFETCH(int, channel);
    QFETCH(int, channels);
    QFETCH(float, left);
    QFETCH(float, right);
    std::vector<float> frame(static_cast<std::size_t>(channels), 0.0F);
    frame[static_cast<std::size_t>(channel)] = 0.5F;
    const Outcome outcome =
        decoded(SoundFiles::encode(SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, channels, frame));
    QVERIFY(outcome.sample.isStereo());
    QVERIFY(std::abs(lastOf(outcome.sample.left) - left) < 1e-5F);
    QVERIFY(std::abs(lastOf(outcome.sample.right) - right) < 1e-5F);
}

void tst_Decoder::whatIsNoNumberBecomesSilence()
{
    const float infinity = std::numeric_limits<float>::infinity();
    const float none = std::numeric_limits<float>::quiet_NaN();
    const float denormal = std::numeric_limits<float>::denorm_min();
    const Outcome outcome = decoded(SoundFiles::encode(
        SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 1, {0.5F, infinity, -infinity, none, denormal}));
    QVERIFY(outcome.sample.left == (std::vector<float>{0.5F, 0, 0, 0, 0}));
}

void tst_Decoder::hugeValuesAreLimited()
{
    const Outcome outcome = decoded(
        SoundFiles::encode(SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 1, {2.0F, 3e38F, -3e38F}));
    QVERIFY(outcome.sample.left == (std::vector<float>{2.0F, 65536.0F, -65536.0F}));
}

void tst_Decoder::emptySoundIsNoError()
{
    const Outcome outcome = decoded(SoundFiles::encode16(48000, 2, {}));
    QCOMPARE(outcome.result, FMOD_OK);
    QCOMPARE(outcome.sample.frames(), std::size_t{0});
}

void tst_Decoder::fileAndMemoryGiveTheSame()
{
    const QTemporaryDir directory;
    for (const int format : {Wav16, Vorbis, SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III}) {
        const QByteArray bytes = SoundFiles::encode(format, 44100, 2, sine(10000, 2));
        writeFile(directory.filePath(QStringLiteral("sound")), bytes);
        const Outcome outcome =
            decodedFile(QFile::encodeName(directory.filePath(QStringLiteral("sound"))));
        QCOMPARE(outcome.result, FMOD_OK);
        QVERIFY(outcome.sample.left == decoded(bytes).sample.left);
        QVERIFY(outcome.sample.right == decoded(bytes).sample.right);
    }
}

void tst_Decoder::fileNameIsBytes()
{
    const QTemporaryDir directory;
    const QByteArray name = QFile::encodeName(directory.path()) + "/not \xFF\xFE utf-8.wav";
    FILE *const file = fopen(name.constData(), "wb");
    const QByteArray bytes = SoundFiles::encode16(48000, 1, {7});
    fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), file);
    fclose(file);
    QCOMPARE(decodedFile(name).result, FMOD_OK);
    QCOMPARE(remove(name.constData()), 0); // Qt's own clean-up passes over such names
}

void tst_Decoder::missingFileIsNotFound()
{
    QCOMPARE(decodedFile("/nowhere/sound.wav").result, FMOD_ERR_FILE_NOTFOUND);
    QCOMPARE(decodedFile("").result, FMOD_ERR_FILE_NOTFOUND);
}

void tst_Decoder::whatIsNoFileIsRefused()
{
    const QTemporaryDir directory;
    const QByteArray path = QFile::encodeName(directory.path());
    QCOMPARE(decodedFile(path).result, FMOD_ERR_FILE_BAD);
    // Opening it for reading waits for a writer, unless told not to.
    QCOMPARE(mkfifo((path + "/pipe").constData(), 0600), 0);
    QCOMPARE(decodedFile(path + "/pipe").result, FMOD_ERR_FILE_BAD);
    QCOMPARE(decodedFile("/dev/zero").result, FMOD_ERR_FILE_BAD);
}

void tst_Decoder::dashIsAFileName()
{
    QCOMPARE(decodedFile("-").result, FMOD_ERR_FILE_NOTFOUND);
}

void tst_Decoder::rubbishIsAnUnknownFormat_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("one byte") << QByteArray("R");
    QTest::newRow("text") << QByteArray("X:1\nT:not a sound at all\nK:C\nCDEF|\n").repeated(100);
    QTest::newRow("zeros") << QByteArray(100000, '\0');
    QTest::newRow("ones") << QByteArray(100000, '\xFF');
    QTest::newRow("only a tag") << QByteArray("RIFF");
    QTest::newRow("only the Ogg tag") << QByteArray("OggS");
    QTest::newRow("only the FLAC tag") << QByteArray("fLaC");
}

void tst_Decoder::rubbishIsAnUnknownFormat()
{
    QFETCH(QByteArray, bytes);
    QCOMPARE(decoded(bytes).result, FMOD_ERR_FORMAT);
    const QTemporaryDir directory;
    writeFile(directory.filePath(QStringLiteral("rubbish")), bytes);
    QCOMPARE(decodedFile(QFile::encodeName(directory.filePath(QStringLiteral("rubbish")))).result,
             FMOD_ERR_FORMAT);
}

void tst_Decoder::truncatedFileGivesWhatIsThere_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("WAV") << Wav16;
    QTest::newRow("FLAC") << (SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    QTest::newRow("Ogg Vorbis") << Vorbis;
    QTest::newRow("MP3") << (SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
}

void tst_Decoder::truncatedFileGivesWhatIsThere()
{
    QFETCH(int, format);
    QByteArray bytes = SoundFiles::encode(format, 48000, 1, noise(200000));
    bytes.truncate(bytes.size() * 2 / 3);
    const Outcome outcome = decoded(bytes);
    QCOMPARE(outcome.result, FMOD_OK);
    QVERIFY(outcome.sample.frames() > 50000);
    QVERIFY(outcome.sample.frames() < 200000);
}

void tst_Decoder::everyTruncationAndDamageEnds_data()
{
    truncatedFileGivesWhatIsThere_data();
}

void tst_Decoder::everyTruncationAndDamageEnds()
{
    QFETCH(int, format);
    const QByteArray bytes = SoundFiles::encode(format, 48000, 2, sine(4000, 2));
    const ResourceWatch watch;
    for (int size = 0; size < bytes.size(); size += size < 300 ? 7 : 997)
        QVERIFY(decoded(bytes.left(size)).sample.frames() <= 20000);
    unsigned state = 1;
    for (int round = 0; round < 100; ++round) {
        QByteArray damaged = bytes;
        for (int i = 0; i < 5; ++i) {
            state = state * 1664525U + 1013904223U;
            const int reach = round % 2 == 0 ? qMin(200, damaged.size()) : damaged.size();
            damaged[static_cast<int>((state >> 8) % static_cast<unsigned>(reach))] =
                static_cast<char>(state >> 24);
        }
        decoded(damaged);
    }
    QVERIFY(watch.isWithinLimits());
}

void tst_Decoder::announcedLengthIsNotBelieved()
{
    QByteArray bytes = SoundFiles::encode16(48000, 1, {1, 2, 3});
    // Both sizes of a WAV file claim 4 GiB.
    bytes.replace(4, 4, "\xF0\xFF\xFF\xFF");
    bytes.replace(bytes.indexOf("data") + 4, 4, "\xF0\xFF\xFF\xFF");
    const Outcome outcome = decoded(bytes);
    QCOMPARE(outcome.result, FMOD_OK);
    QCOMPARE(outcome.sample.frames(), std::size_t{3});

    // Without its last page an Ogg file claims 2^63 - 1 frames.
    QByteArray ogg = SoundFiles::encode(Vorbis, 48000, 1, sine(100000));
    ogg.truncate(ogg.lastIndexOf("OggS"));
    QVERIFY(decoded(ogg).sample.frames() < 100000);
}

void tst_Decoder::tooLongSoundIsRefused()
{
    // Silence packs so well that the file is small.
    const std::vector<float> silence(Decoder::MaxSamples + 1, 0.0F);
    const int flac = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    const QByteArray tooLong = SoundFiles::encode(flac, 48000, 1, silence);
    QVERIFY(tooLong.size() < 1000000);
    const ResourceWatch watch;
    const Outcome outcome = decoded(tooLong);
    QCOMPARE(outcome.result, FMOD_ERR_MEMORY);
    QCOMPARE(outcome.sample.frames(), std::size_t{0});
    QVERIFY(watch.isWithinLimits());
}

void tst_Decoder::absurdRateIsRefused()
{
    QCOMPARE(decoded(SoundFiles::encode16(999, 1, {1})).result, FMOD_ERR_FORMAT);
    QCOMPARE(decoded(SoundFiles::encode16(768001, 1, {1})).result, FMOD_ERR_FORMAT);
    QCOMPARE(decoded(SoundFiles::encode16(768000, 1, {1})).result, FMOD_OK);
}

void tst_Decoder::piecesGiveTheWhole()
{
    QFETCH(int, format);
    for (const int channels : {1, 2}) {
        const QByteArray bytes = SoundFiles::encode(format, 48000, channels, sine(50000, channels));
        SoundFile file;
        file.openMemory(bytes.constData(), static_cast<std::size_t>(bytes.size()));
        AudioSample sample;
        while (!sample.isComplete())
            QCOMPARE(file.decode(sample, sample.frames() + 777), FMOD_OK);
        QVERIFY(WholeSample(sample).left == decoded(bytes).sample.left);
        QVERIFY(WholeSample(sample).right == decoded(bytes).sample.right);
    }
}

void tst_Decoder::headIsNotTheWhole()
{
    const QByteArray bytes = SoundFiles::encode(Vorbis, 48000, 2, sine(100000, 2));
    SoundFile file;
    file.openMemory(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    AudioSample sample;
    QCOMPARE(file.decode(sample, 14400), FMOD_OK);
    QVERIFY(sample.frames() >= 14400);
    QVERIFY(sample.frames() < 14400 + 4096);
    QCOMPARE(sample.maxFrames(), std::size_t{100000});
    QVERIFY(sample.isStereo());
}

void tst_Decoder::implausibleLengthIsShownAtTheEnd()
{
    QByteArray bytes = SoundFiles::encode(Vorbis, 48000, 1, noise(100000));
    bytes.chop(1); // it announces 2^63 - 1 frames now
    SoundFile file;
    file.openMemory(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    AudioSample sample;
    QCOMPARE(file.decode(sample, 1), FMOD_OK);
    QVERIFY(sample.isComplete());
    QVERIFY(sample.frames() > 50000);
}

void tst_Decoder::onlyLargeFilesStayOpen()
{
    const QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("sound"));
    writeFile(name, SoundFiles::encode(Wav16, 48000, 1, std::vector<float>(100000, 0.5F)));
    SoundFile small;
    QCOMPARE(small.openFile(QFile::encodeName(name).constData()), FMOD_OK);
    writeFile(name, QByteArray());
    AudioSample smallSample;
    QCOMPARE(small.decode(smallSample, 1), FMOD_OK);
    QVERIFY(!smallSample.isComplete());
    QCOMPARE(small.decode(smallSample, Preparation::All), FMOD_OK);
    QCOMPARE(smallSample.frames(), std::size_t{100000});

    // Over 8 MiB. It is closed as soon as it can be.
    writeFile(name, SoundFiles::encode(Wav16, 48000, 1, std::vector<float>(4200000, 0.5F)));
    SoundFile large;
    QCOMPARE(large.openFile(QFile::encodeName(name).constData()), FMOD_OK);
    AudioSample largeSample;
    QCOMPARE(large.decode(largeSample, 1), FMOD_OK);
    QVERIFY(largeSample.isComplete());
    QCOMPARE(largeSample.frames(), std::size_t{4200000});
}

QTEST_APPLESS_MAIN(tst_Decoder)
#include "tst_Decoder.moc"
