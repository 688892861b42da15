#pragma once

#include <QByteArray>
#include <QString>

/// A game directory that is made in no time: two instruments in its package and one in a mod.
///
/// "Lute" maps the notes 60 and 61 to two seconds of a sine at half of full scale (60 has it,
/// 61 borrows it) and fades for a quarter of a second; it has an icon. "Drum" maps only note 60,
/// to the same sound, and has no icon. The mod directory "more" holds "Whistle", made as "Drum".
void makeSmallGame(const QString &directory);

/// The directory tree of a mod with the instruments "Lute" and "Drum".
void makeInstrumentTree(const QString &directory);

/// What is said on standard error when the game's instruments are read: an icon is missing.
extern const QByteArray SmallGameLog;

/// Twenty hours of a note that every instrument of the game has.
extern const QByteArray EndlessTune;
