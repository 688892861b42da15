// Realigning tracks of several sizes, beside std::stable_sort of the same events.
//
//     bench_realign
//
// All times are processor time of this process. The limit is 0.2 s for a million events.

#include "MIDI/Realignment.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <random>
#include <vector>

namespace {

constexpr int Rounds = 7;

double seconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// The least time of some rounds, in seconds.
template <typename Work> double timed(Work work)
{
    double best = 1e9;
    for (int round = 0; round < Rounds; ++round) {
        const double start = seconds();
        work();
        best = std::min(best, seconds() - start);
    }
    return best;
}

/// Notes as they are played: up to four begin together or nearly so, none on a grid.
Track playedTrack(int events)
{
    std::mt19937 random(1);
    Track track;
    quint64 time = 0;
    for (int i = 0; i < events; ++i) {
        if (i % 4 == 0)
            time += 5000 + random() % 10000;
        const auto pitch = static_cast<quint32>(40 + random() % 50);
        track.addEvent(TrackEvent::makeNote(pitch, time + random() % 300, 3000 + random() % 40000));
    }
    track.sortEvents();
    return track;
}

bool comesBefore(const TrackEvent &a, const TrackEvent &b)
{
    return a.time() != b.time() ? a.time() < b.time() : a.duration() < b.duration();
}

void print(const char *name, int events, double time, double reference)
{
    std::printf("%-36s %8.1f ms %7.1f ns an event %7.2f x\n", name, time * 1e3, time / events * 1e9,
                time / reference);
}

void bench(int events)
{
    const Track track = playedTrack(events);
    const double ours = timed([&] { quickRealignTrack(track); });
    const double one = timed([&] { realignTrack(track, {16}); });
    const double sorting = timed([&] {
        std::vector<TrackEvent> sorted(track.events().begin(), track.events().end());
        std::stable_sort(sorted.begin(), sorted.end(), comesBefore);
    });
    const double copying =
        timed([&] { std::vector<TrackEvent> copy(track.events().begin(), track.events().end()); });
    std::printf("%d events\n", events);
    print("quickRealignTrack, five grids", events, ours, ours);
    print("realignTrack, one grid", events, one, ours);
    print("copy and std::stable_sort, in order", events, sorting, ours);
    print("copy alone", events, copying, ours);
}

} // namespace

int main()
{
    for (const int events : {250000, 500000, 1000000, 2000000})
        bench(events);
    return 0;
}
