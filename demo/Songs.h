#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace Demo {

/// One part of a demo song, as it is kept in the program.
struct SongPart {
    QString song;
    QString fileName; ///< "01 Fiddle.abc"
    QByteArray abc;
};

/// The parts of all demo songs, by song and then in playing order.
std::vector<SongPart> songParts();

} // namespace Demo
