#include "demo/Instruments.h"

#include "demo/Levels.h"
#include "demo/Voices.h"
#include "demo/VorbisFile.h"

#include "model/Ticks.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>

namespace Demo {

namespace {

constexpr double VorbisQuality = 0.5;
constexpr double ToneLoudness = -23.0;

using Voice = Sound (*)(int note, Noise &noise);

/// What distinguishes one pitched instrument from another, apart from its sound.
struct Character {
    const char *name;
    const char *kind;
    const char *description;
    double fadeout;
    int lowest; ///< the range in which it is at home and sampled closely
    int highest;
    int step;     ///< semitones between the samples there
    double level; ///< decibels against the other instruments
    IconPainter icon;
    Voice voice;
};

constexpr int FarStep = 11;

QString noteFileName(int note)
{
    static constexpr const char *Names[] = {"c",  "cs", "d",  "ds", "e",  "f",
                                            "fs", "g",  "gs", "a",  "as", "b"};
    return QStringLiteral("%1%2.ogg").arg(QLatin1String(Names[note % 12])).arg(note / 12 - 1);
}

quint64 seedOf(const QString &kind, int note, int variant)
{
    quint64 seed = 0xCBF29CE484222325U;
    for (QChar letter : kind)
        seed = (seed ^ letter.unicode()) * 0x100000001B3U;
    return seed + static_cast<quint64>(note) * 1000U + static_cast<quint64>(variant);
}

/// Close together at home, far apart below and above, so that no note is stretched by much.
std::vector<int> sampledNotes(const Character &character)
{
    std::vector<int> notes;
    for (int note = character.lowest; note <= character.highest; note += character.step)
        notes.push_back(note);
    for (int note = notes.back() + FarStep; note <= int{Ticks::HighestPitch}; note += FarStep)
        notes.push_back(note);
    for (int note = notes.front() - FarStep; note > int{Ticks::LowestPitch}; note -= FarStep)
        notes.insert(notes.begin(), note);
    return notes;
}

SamplePlan tonePlan(const Character &character, int note)
{
    const QString kind = QLatin1String(character.kind);
    const auto make = [voice = character.voice, level = character.level, kind, note]() {
        Noise noise(seedOf(kind, note, 0));
        Sound sound = voice(note, noise);
        finishTone(sound, ToneLoudness + level);
        return sound;
    };
    return {note, noteFileName(note), make};
}

InstrumentPlan pitched(const Character &character)
{
    InstrumentPlan plan{QLatin1String(character.name),
                        QLatin1String(character.kind),
                        QLatin1String(character.description),
                        character.fadeout,
                        character.icon,
                        {}};
    for (int note : sampledNotes(character))
        plan.samples.push_back(tonePlan(character, note));
    return plan;
}

SamplePlan hitPlan(const Drum &drum, int variant)
{
    const auto make = [drum, variant]() {
        Noise noise(seedOf(drum.fileName, drum.note, variant));
        Sound sound = drum.hit(noise);
        finishDrum(sound, drum.peak);
        return sound;
    };
    return {drum.note, QStringLiteral("%1_%2.ogg").arg(drum.fileName).arg(variant + 1), make};
}

InstrumentPlan drums()
{
    InstrumentPlan plan{QStringLiteral("Drums"),
                        QStringLiteral("drums"),
                        QStringLiteral("A kit of drums, cymbals and small percussion."),
                        0.6,
                        paintDrums,
                        {}};
    for (const Drum &drum : drumKit()) {
        for (int variant = 0; variant < drum.variants; ++variant)
            plan.samples.push_back(hitPlan(drum, variant));
    }
    return plan;
}

QString folderOf(const InstrumentPlan &plan)
{
    return QStringLiteral("/sfx/instruments/%1/").arg(plan.kind);
}

QByteArray descriptionFile(const InstrumentPlan &plan)
{
    const QJsonObject description{
        {QStringLiteral("itemName"), plan.kind},
        {QStringLiteral("shortdescription"), plan.name},
        {QStringLiteral("description"), plan.description},
        {QStringLiteral("kind"), plan.kind},
        {QStringLiteral("inventoryIcon"), QStringLiteral("%1.png").arg(plan.kind)},
    };
    return QByteArrayLiteral("// One instrument: its tuning and samples are in the folder of its "
                             "kind.\n")
        + QJsonDocument(description).toJson();
}

QStringList filesOf(const InstrumentPlan &plan, int note)
{
    QStringList files;
    for (const SamplePlan &sample : plan.samples) {
        if (sample.note == note)
            files << QStringLiteral("\"/sfx/instruments/$instrument$/%1\"").arg(sample.fileName);
    }
    return files;
}

/// What a note's entry says besides its frequency: nothing when it is derived.
QString samplePart(const QStringList &files)
{
    if (files.isEmpty())
        return QString();
    if (files.size() == 1)
        return QStringLiteral(", \"file\": %1").arg(files.first());
    return QStringLiteral(", \"files\": [%1]").arg(files.join(QStringLiteral(", ")));
}

QString noteEntry(const InstrumentPlan &plan, int note)
{
    return QStringLiteral("        \"%1\": { \"f\": %2%3 }")
        .arg(note)
        .arg(frequencyOfNote(note), 0, 'f', 4)
        .arg(samplePart(filesOf(plan, note)));
}

QByteArray tuningFile(const InstrumentPlan &plan)
{
    QStringList entries;
    for (int note = Ticks::LowestPitch; note <= int{Ticks::HighestPitch}; ++note)
        entries << noteEntry(plan, note);
    return QStringLiteral("// %1\n"
                          "{\n"
                          "    \"fadeout\": %2, // seconds\n"
                          "    // Notes that name no sample borrow the nearest one below.\n"
                          "    \"mapping\": {\n"
                          "%3\n"
                          "    }\n"
                          "}\n")
        .arg(plan.description)
        .arg(plan.fadeout)
        .arg(entries.join(QStringLiteral(",\n")))
        .toUtf8();
}

Assets textsAndIcon(const InstrumentPlan &plan)
{
    const QString item = QStringLiteral("/items/instruments/%1");
    return {
        {item.arg(plan.name + QStringLiteral(".instrument")), descriptionFile(plan)},
        {item.arg(plan.kind + QStringLiteral(".png")), iconFile(plan.icon)},
        {folderOf(plan) + QStringLiteral("tuning.config"), tuningFile(plan)},
    };
}

/// A sample on its way: each thread takes the next one and writes to that one's own place, so
/// the result does not depend on who is faster.
struct Job {
    const SamplePlan *plan;
    int serial;
    QByteArray file;
    std::exception_ptr error;
};

void run(Job &job)
{
    try {
        job.file = vorbisFile(job.plan->make(), VorbisQuality, job.serial);
    } catch (...) {
        job.error = std::current_exception();
    }
}

void runAll(std::vector<Job> &jobs)
{
    std::atomic<size_t> next{0};
    const auto work = [&jobs, &next]() {
        for (size_t i = next++; i < jobs.size(); i = next++)
            run(jobs[i]);
    };
    std::vector<std::thread> threads;
    const unsigned helpers = std::clamp(std::thread::hardware_concurrency(), 1U, 16U) - 1;
    for (unsigned i = 0; i < helpers; ++i)
        threads.emplace_back(work);
    work();
    for (std::thread &thread : threads)
        thread.join();
}

std::vector<Job> jobsFor(const std::vector<InstrumentPlan> &plans)
{
    std::vector<Job> jobs;
    for (const InstrumentPlan &plan : plans) {
        for (const SamplePlan &sample : plan.samples)
            jobs.push_back({&sample, static_cast<int>(jobs.size()) + 1, {}, {}});
    }
    return jobs;
}

} // namespace

std::vector<Assets> makeAssets(const std::vector<InstrumentPlan> &plans)
{
    std::vector<Job> jobs = jobsFor(plans);
    runAll(jobs);
    std::vector<Assets> assets;
    auto job = jobs.cbegin();
    for (const InstrumentPlan &plan : plans) {
        assets.push_back(textsAndIcon(plan));
        for (size_t i = 0; i < plan.samples.size(); ++i, ++job) {
            if (job->error)
                std::rethrow_exception(job->error);
            assets.back().insert(folderOf(plan) + job->plan->fileName, job->file);
        }
    }
    return assets;
}

std::vector<InstrumentPlan> gameInstruments()
{
    static constexpr Character Characters[] = {
        {"Lute", "lute", "Gut strings in pairs, plucked with the fingers.", 0.3, 36, 86, 5, -2.5,
         paintLute, lute},
        {"Harp", "harp", "Long strings that ring on.", 0.6, 31, 96, 5, -2.5, paintHarp, harp},
        {"Piano", "piano", "Hammers on steel strings, three to a note.", 0.25, 24, 99, 5, -1.0,
         paintPiano, piano},
        {"Bass", "bass", "A large plucked string for the lowest part.", 0.15, 24, 60, 4, 1.0,
         paintBass, bass},
        {"Fiddle", "fiddle", "A bowed string, lively and bright.", 0.14, 55, 95, 5, 0.0,
         paintFiddle, fiddle},
        {"Cello", "cello", "A bowed string, deep and warm.", 0.2, 36, 71, 5, 0.0, paintCello,
         cello},
        {"Flute", "flute", "A wooden flute with a little breath in it.", 0.12, 60, 95, 5, 0.0,
         paintFlute, flute},
        {"Clarinet", "clarinet", "A single reed on a narrow tube, round and even.", 0.1, 50, 90, 5,
         0.0, paintClarinet, clarinet},
        {"Shawm", "shawm", "A double reed, loud and nasal.", 0.08, 53, 83, 5, -1.5, paintShawm,
         shawm},
        {"Horn", "horn", "Coiled brass, soft when it begins and broad when it speaks.", 0.18, 41,
         77, 4, 0.0, paintHorn, horn},
        {"Accordion", "accordion", "Free reeds that beat against each other.", 0.1, 41, 93, 6, -2.5,
         paintAccordion, accordion},
        {"Organ", "organ", "Four stops of a small church organ.", 0.35, 36, 92, 7, -4.5, paintOrgan,
         organ},
        {"Bells", "bells", "Small cast bells, struck.", 0.8, 60, 100, 5, -2.0, paintBells, bells},
        {"Marimba", "marimba", "Wooden bars over tubes, struck with soft mallets.", 0.3, 45, 96, 5,
         -1.0, paintMarimba, marimba},
    };
    std::vector<InstrumentPlan> plans;
    for (const Character &character : Characters)
        plans.push_back(pitched(character));
    plans.push_back(drums());
    return plans;
}

InstrumentPlan looseModInstrument()
{
    return pitched({"Tin Whistle", "tinwhistle", "Six holes, two octaves, and off to the dance.",
                    0.08, 74, 98, 4, -1.0, paintWhistle, whistle});
}

InstrumentPlan packagedModInstrument()
{
    return pitched({"Music Box", "musicbox", "Steel tines, plucked by pins on a drum.", 0.5, 60,
                    100, 5, -1.0, paintMusicBox, musicBox});
}

} // namespace Demo
