#include "Sound/ChannelPool.h"
#include "Sound/LiveMix.h"

#include <QtTest>

#include <algorithm>
#include <future>
#include <memory>
#include <vector>

namespace {

using Samples = std::vector<float>;

constexpr std::size_t Block = 1024;
constexpr std::size_t Blocks = 24;
constexpr std::size_t Voices = 150;
constexpr unsigned Sounds = 6;

unsigned scattered(unsigned &state)
{
    state = state * 1664525U + 1013904223U;
    return state >> 8;
}

Samples noise(std::size_t count, unsigned seed)
{
    Samples samples(count);
    for (float &sample : samples)
        sample = static_cast<float>(scattered(seed)) / 16777216.0F - 0.5F;
    return samples;
}

/// A pool with sounds of different lengths, rates and numbers of channels, of which some hundred
/// notes are played. Everything depends on nothing but the clock, so that two of these do the same.
class Scene {
public:
    Scene()
    {
        for (unsigned i = 0; i < Sounds; ++i)
            m_sounds.push_back(sound(i));
    }

    ChannelPool &channels() { return m_channels; }

    /// Sets all notes going, and waits until everything is ready for them.
    void play()
    {
        for (std::size_t i = 0; i < Voices; ++i)
            playNote();
    }

    /// Turns, fades and stops some of the notes, as by a script.
    void act(std::size_t block)
    {
        for (std::size_t i = block % 3; i < m_notes.size(); i += 3)
            actOn(m_notes[i], (5 * block + i) % 29);
    }

private:
    ChannelSound sound(unsigned number)
    {
        const std::size_t frames = 2000 + 3000 * std::size_t{number};
        const bool isStereo = number % 2 == 0;
        const double rate = number % 3 == 0 ? 48000 : 32000;
        const auto make = [=](AudioSample &sample) {
            sample.rate = rate;
            sample.left = noise(frames, number);
            sample.right = isStereo ? noise(frames, number + 100) : Samples();
            return FMOD_OK;
        };
        return {rate, isStereo, m_pool.add(make)};
    }

    void playNote()
    {
        const ChannelSound &sound = m_sounds[scattered(m_state) % Sounds];
        const float pitch = scattered(m_state) % 3 == 0 ? 1.5F : 1.0F;
        const float frequency = static_cast<float>(sound.rate) * pitch;
        SampleCache::Sample prepared;
        m_cache.prepare(sound.samples, double{frequency}, prepared);
        prepared->sample();
        FMOD::Channel *note = nullptr;
        m_channels.open(sound, &note);
        note->setFrequency(frequency);
        note->setVolume(0.25F);
        note->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, scattered(m_state) % 16000);
        note->setPaused(false);
        m_notes.push_back(note);
    }

    static void actOn(FMOD::Channel *&note, std::size_t what)
    {
        if (note != nullptr && what == 0)
            note->setPan(-0.5F);
        if (note != nullptr && what < 8)
            note->setVolume(0.05F * static_cast<float>(what));
        if (note != nullptr && what == 28)
            std::exchange(note, nullptr)->stop();
    }

    PreparePool m_pool;
    SampleCache m_cache{48000, 1000000000, m_pool};
    ChannelPool m_channels{m_cache};
    std::vector<ChannelSound> m_sounds;
    std::vector<FMOD::Channel *> m_notes;
    unsigned m_state = 1;
};

Samples offlineMix()
{
    Scene scene;
    scene.play();
    Samples mix;
    for (std::size_t block = 0; block < Blocks; ++block) {
        scene.act(block);
        Samples left(Block);
        Samples right(Block);
        scene.channels().mix(left.data(), right.data(), Block);
        for (std::size_t i = 0; i < Block; ++i) {
            mix.push_back(left[i]);
            mix.push_back(right[i]);
        }
    }
    return mix;
}

/// With what happens at the same clock, but taken in pieces.
Samples liveMix(std::size_t piece)
{
    Scene scene;
    LiveMix live(scene.channels().mixer());
    scene.play();
    Samples mix(2 * Block * Blocks);
    for (std::size_t clock = 0; clock < Block * Blocks; clock += piece) {
        if (clock % Block == 0)
            scene.act(clock / Block);
        scene.channels().update();
        live.fill(mix.data() + 2 * clock, piece);
    }
    return scene.channels().lateStarts() == 0 ? mix : Samples();
}

/// A sound whose sample is not ready before the test says so.
struct SlowSound {
    std::promise<void> opened;

    ChannelSound in(PreparePool &pool)
    {
        const auto gate = opened.get_future().share();
        return {48000, false, pool.add([gate](AudioSample &sample) {
                    gate.wait();
                    sample.left = {0.125F, 0.25F, 0.5F};
                    return FMOD_OK;
                })};
    }
};

} // namespace

class tst_ChannelPool : public QObject {
    Q_OBJECT

private slots:
    void liveMixIsTheOfflineMix_data();
    void liveMixIsTheOfflineMix();
    void updateWaitsForNoSample();
    void stoppedChannelIsNotProvided();
};

void tst_ChannelPool::liveMixIsTheOfflineMix_data()
{
    QTest::addColumn<int>("piece");
    for (const int piece : {1, 64, 512, 1024})
        QTest::addRow("blocks of %d", piece) << piece;
}

void tst_ChannelPool::liveMixIsTheOfflineMix()
{
    QFETCH(const int, piece);
    Samples expected = offlineMix();
    QVERIFY(std::count(expected.begin(), expected.end(), 0.0F) < 2000);
    for (float &sample : expected)
        sample = std::clamp(sample, -1.0F, 1.0F);
    QVERIFY(liveMix(static_cast<std::size_t>(piece)) == expected);
}

void tst_ChannelPool::updateWaitsForNoSample()
{
    SlowSound slow;
    PreparePool pool(1);
    SampleCache cache(48000, 1000000, pool);
    ChannelPool channels(cache);
    LiveMix live(channels.mixer());
    const ChannelSound sound = slow.in(pool);
    FMOD::Channel *note = nullptr;
    QCOMPARE(channels.open(sound, &note), FMOD_OK);
    note->setPan(-1);
    note->setDelay(FMOD_DELAYTYPE_DSPCLOCK_START, 0, 2);
    note->setPaused(false);
    QCOMPARE(channels.update(), FMOD_OK); // would never come back
    Samples samples(20, 99.0F);
    live.fill(samples.data(), 10);
    QVERIFY(samples == Samples(20, 0.0F));
    slow.opened.set_value();
    sound.samples->sample();
    QCOMPARE(channels.update(), FMOD_OK);
    live.fill(samples.data(), 4);
    samples.resize(8);
    QVERIFY((samples == Samples{0.125F, 0, 0.25F, 0, 0.5F, 0, 0, 0}));
    QCOMPARE(channels.lateStarts(), std::uint64_t{1});
}

void tst_ChannelPool::stoppedChannelIsNotProvided()
{
    SlowSound slow;
    PreparePool pool(1);
    SampleCache cache(48000, 1000000, pool);
    ChannelPool channels(cache);
    LiveMix live(channels.mixer());
    const ChannelSound sound = slow.in(pool);
    FMOD::Channel *note = nullptr;
    channels.open(sound, &note);
    note->setPaused(false);
    QCOMPARE(channels.update(), FMOD_OK);
    QCOMPARE(note->stop(), FMOD_OK);
    slow.opened.set_value();
    sound.samples->sample();
    QCOMPARE(channels.update(), FMOD_OK);
    Samples samples(20, 99.0F);
    live.fill(samples.data(), 10);
    QVERIFY(samples == Samples(20, 0.0F));
}

QTEST_APPLESS_MAIN(tst_ChannelPool)
#include "tst_ChannelPool.moc"
