#include "demo/Instruments.h"
#include "demo/Levels.h"

#include "Quillmoor/Instrument.h"

#include <QtTest>

#include <complex>
#include <vector>

#include <sndfile.h>

using Demo::Assets;
using Demo::InstrumentPlan;
using Demo::Signal;

/// What is heard of one sample.
struct Measured {
    const char *name() const { return text.constData(); }

    QByteArray text;
    int rate = 0;
    size_t length = 0;
    double peak = 0.0;
    double mean = 0.0;
    double first = 0.0;
    double last = 0.0;
    double loudness = 0.0;
    double lateLoudness = 0.0; ///< between 3.5 and 4 seconds
    double cents = 0.0;        ///< off its frequency; not measured for drums
};

/// Listens to the samples as they come out of the files.
class tst_DemoInstruments : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void tuningIsWrittenForPeople();
    void samplesAreClean_data();
    void samplesAreClean();
    void samplesAreInTune_data();
    void samplesAreInTune();
    void samplesAreEquallyLoud_data();
    void samplesAreEquallyLoud();
    void heldInstrumentsSoundForFourSeconds_data();
    void heldInstrumentsSoundForFourSeconds();

private:
    void addRows(bool withDrums) const;

    std::vector<InstrumentPlan> m_plans;
    std::vector<Assets> m_assets;
    /// For each instrument, what was measured of each sample.
    std::vector<std::vector<Measured>> m_measured;
};

namespace {

constexpr int FourSeconds = 192000;

struct Decoded {
    int rate = 0;
    Signal left;
    Signal right; ///< empty for a mono sample
};

struct Source {
    const QByteArray &bytes;
    sf_count_t position;
};

sf_count_t lengthOf(void *user)
{
    return static_cast<Source *>(user)->bytes.size();
}

sf_count_t seekIn(sf_count_t offset, int whence, void *user)
{
    auto *source = static_cast<Source *>(user);
    const sf_count_t base = whence == SEEK_SET ? 0
        : whence == SEEK_CUR                   ? source->position
                                               : lengthOf(user);
    if (base + offset < 0 || base + offset > lengthOf(user))
        return -1;
    return source->position = base + offset;
}

sf_count_t readFrom(void *to, sf_count_t count, void *user)
{
    auto *source = static_cast<Source *>(user);
    const sf_count_t taken = std::min(count, lengthOf(user) - source->position);
    memcpy(to, source->bytes.constData() + source->position, static_cast<size_t>(taken));
    source->position += taken;
    return taken;
}

sf_count_t tellOf(void *user)
{
    return static_cast<Source *>(user)->position;
}

Decoded decode(const QByteArray &bytes)
{
    Source source{bytes, 0};
    SF_VIRTUAL_IO access{lengthOf, seekIn, readFrom, nullptr, tellOf};
    SF_INFO info{};
    SNDFILE *file = sf_open_virtual(&access, SFM_READ, &info, &source);
    if (file == nullptr)
        return {};
    std::vector<double> frames(static_cast<size_t>(info.frames * info.channels));
    sf_readf_double(file, frames.data(), info.frames);
    sf_close(file);
    Decoded sound;
    sound.rate = info.samplerate;
    for (size_t i = 0; i < frames.size(); i += static_cast<size_t>(info.channels)) {
        sound.left.push_back(frames[i]);
        if (info.channels == 2)
            sound.right.push_back(frames[i + 1]);
    }
    return sound;
}

QByteArray fileOf(const InstrumentPlan &plan, const Assets &assets, const QString &fileName)
{
    return assets.value(QStringLiteral("/sfx/instruments/%1/%2").arg(plan.kind, fileName));
}

using Turned = std::vector<std::complex<double>>;

/// The signal turned down by `hz`, so that a steady sine of that frequency stands still.
Turned turnedDown(const Signal &signal, double hz, size_t count)
{
    Turned turned;
    for (size_t i = 0; i < count; ++i) {
        const double angle = -2.0 * Demo::Pi * hz * static_cast<double>(i) / 48000.0;
        turned.push_back(signal[i] * std::polar(1.0, angle));
    }
    return turned;
}

/// The mean of a frame from `start` under a bell-shaped window: its angle is the phase there.
std::complex<double> frameAt(const Turned &turned, size_t start, size_t length)
{
    std::complex<double> sum;
    for (size_t i = 0; i < length; ++i) {
        const double part = static_cast<double>(i) / static_cast<double>(length);
        sum += (0.5 - 0.5 * std::cos(2.0 * Demo::Pi * part)) * turned[start + i];
    }
    return sum;
}

/// How far the fundamental lies from `hz`, from the drift of its phase.
double centsOff(const Signal &signal, double hz)
{
    const auto count = std::min<size_t>(90000, signal.size() * 6 / 10);
    const auto length = static_cast<size_t>(48000.0 * std::max(0.04, 6.0 / hz));
    const size_t begin = 2400;
    if (begin + 2 * length > count)
        return 9999.0;
    const Turned turned = turnedDown(signal, hz, count);
    double phase = 0.0;
    size_t start = begin;
    std::complex<double> last = frameAt(turned, start, length);
    for (; start + length / 2 + length <= count; start += length / 2) {
        const std::complex<double> next = frameAt(turned, start + length / 2, length);
        phase += std::arg(next * std::conj(last));
        last = next;
    }
    const double seconds = static_cast<double>(start - begin) / 48000.0;
    return 1200.0 * std::log2(1.0 + phase / (2.0 * Demo::Pi * seconds * hz));
}

double mean(const Signal &signal)
{
    double sum = 0.0;
    for (double value : signal)
        sum += value;
    return std::abs(sum) / static_cast<double>(std::max<size_t>(signal.size(), 1));
}

double edge(double left, double right)
{
    return std::max(std::abs(left), std::abs(right));
}

double loudestChannel(const Decoded &sound)
{
    return std::max(Demo::loudness(sound.left), Demo::loudness(sound.right));
}

/// The half second before the end of the fourth.
Signal half(const Signal &signal)
{
    if (signal.size() < FourSeconds)
        return {};
    return Signal(signal.begin() + FourSeconds - 24000, signal.begin() + FourSeconds);
}

Measured measured(const QString &fileName, const Decoded &sound)
{
    const Signal &left = sound.left;
    const Signal &right = sound.right.empty() ? left : sound.right;
    Measured values;
    values.text = fileName.toLatin1();
    values.rate = sound.rate;
    values.length = left.size();
    if (left.empty())
        return values;
    values.peak = std::max(Demo::peak(left), Demo::peak(right));
    values.mean = std::max(mean(left), mean(right));
    values.first = edge(left.front(), right.front());
    values.last = edge(left.back(), right.back());
    values.loudness = loudestChannel(sound);
    values.lateLoudness = loudestChannel({sound.rate, half(sound.left), half(sound.right)});
    return values;
}

std::vector<Measured> measured(const InstrumentPlan &plan, const Assets &assets)
{
    const Instrument tuning = Instrument::fromBytes(
        plan.kind,
        assets.value(QStringLiteral("/sfx/instruments/%1/tuning.config").arg(plan.kind)));
    std::vector<Measured> all;
    for (const Demo::SamplePlan &sample : plan.samples) {
        const Decoded sound = decode(fileOf(plan, assets, sample.fileName));
        all.push_back(measured(sample.fileName, sound));
        if (plan.kind != QLatin1String("drums"))
            all.back().cents =
                centsOff(sound.left, tuning.sample(static_cast<uint>(sample.note)).frequency());
    }
    return all;
}

} // namespace

void tst_DemoInstruments::initTestCase()
{
    m_plans = Demo::gameInstruments();
    m_plans.push_back(Demo::looseModInstrument());
    m_plans.push_back(Demo::packagedModInstrument());
    m_assets = Demo::makeAssets(m_plans);
    QCOMPARE(m_assets.size(), m_plans.size());
    for (size_t i = 0; i < m_plans.size(); ++i)
        m_measured.push_back(measured(m_plans[i], m_assets[i]));
}

void tst_DemoInstruments::addRows(bool withDrums) const
{
    QTest::addColumn<int>("index");
    for (size_t i = 0; i < m_plans.size(); ++i) {
        if (withDrums || m_plans[i].kind != QLatin1String("drums"))
            QTest::newRow(qPrintable(m_plans[i].kind)) << static_cast<int>(i);
    }
}

void tst_DemoInstruments::tuningIsWrittenForPeople()
{
    const QByteArray text =
        m_assets.front().value(QStringLiteral("/sfx/instruments/lute/tuning.config"));
    QVERIFY(text.startsWith("// Gut strings in pairs, plucked with the fingers.\n{\n"
                            "    \"fadeout\": 0.3, // seconds\n"));
    QVERIFY(text.contains("        \"36\": { \"f\": 65.4064, "
                          "\"file\": \"/sfx/instruments/$instrument$/c2.ogg\" },\n"
                          "        \"37\": { \"f\": 69.2957 },\n"));
}

void tst_DemoInstruments::samplesAreClean_data()
{
    addRows(true);
}

void tst_DemoInstruments::samplesAreClean()
{
    QFETCH(int, index);
    for (const Measured &sample : m_measured.at(static_cast<size_t>(index))) {
        QCOMPARE(sample.rate, 48000);
        QVERIFY2(sample.length > 3000, sample.name());
        QVERIFY2(sample.peak <= 0.501, sample.name());
        QVERIFY2(sample.mean < 0.001, sample.name());
        QVERIFY2(sample.first < 0.0005, sample.name());
        QVERIFY2(sample.last < 0.001, sample.name());
    }
}

void tst_DemoInstruments::samplesAreInTune_data()
{
    addRows(false);
}

void tst_DemoInstruments::samplesAreInTune()
{
    QFETCH(int, index);
    for (const Measured &sample : m_measured.at(static_cast<size_t>(index)))
        QVERIFY2(std::abs(sample.cents) < 3.0, sample.name());
}

void tst_DemoInstruments::samplesAreEquallyLoud_data()
{
    addRows(false);
}

void tst_DemoInstruments::samplesAreEquallyLoud()
{
    QFETCH(int, index);
    for (const Measured &sample : m_measured.at(static_cast<size_t>(index)))
        QVERIFY2(sample.loudness > -29.0 && sample.loudness < -21.5, sample.name());
}

void tst_DemoInstruments::heldInstrumentsSoundForFourSeconds_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"fiddle", "cello", "flute", "clarinet", "shawm", "horn", "accordion",
                             "organ", "tinwhistle"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void tst_DemoInstruments::heldInstrumentsSoundForFourSeconds()
{
    QFETCH(QString, kind);
    size_t index = 0;
    while (m_plans.at(index).kind != kind)
        ++index;
    for (const Measured &sample : m_measured.at(index)) {
        QVERIFY2(sample.length >= FourSeconds, sample.name());
        QVERIFY2(sample.lateLoudness > -31.0, sample.name());
    }
}

QTEST_GUILESS_MAIN(tst_DemoInstruments)
#include "tst_DemoInstruments.moc"
