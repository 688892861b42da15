#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// A file whose tunes go below a directory.
struct Source {
    QString file;
    QString folder; ///< where below that directory, such as "sub/folder"; empty for itself
};

/// Where tunes go below a directory: the tune of x.abc to x.abc, those of the MIDI file x.mid to
/// x-1.abc, x-2.abc and so on.
class Destinations {
public:
    explicit Destinations(const QString &directory);

    /// The directory for a file's tunes.
    QString folder(const Source &source) const;

    /// The files for so many tunes.
    QStringList files(const Source &source, bool isMidi, int count) const;

    /// Throws a QString if two files could go to one place, or if one could replace a file that
    /// is among the sources. How many tunes a MIDI file has is not known yet: all its numbers
    /// count.
    void check(const QVector<Source> &sources) const;

private:
    QString base(const Source &source) const;

    QString m_directory;
};
