#pragma once

#include <QByteArray>

class QPainter;

namespace Demo {

/// Draws an instrument on a field of 48 by 48 units.
using IconPainter = void (*)(QPainter &);

/// The picture as a PNG file of 48 by 48 pixels, on the plate that all icons share. Needs no
/// application object.
QByteArray iconFile(IconPainter painter);

void paintLute(QPainter &painter);
void paintHarp(QPainter &painter);
void paintPiano(QPainter &painter);
void paintBass(QPainter &painter);
void paintFiddle(QPainter &painter);
void paintCello(QPainter &painter);
void paintFlute(QPainter &painter);
void paintWhistle(QPainter &painter);
void paintClarinet(QPainter &painter);
void paintShawm(QPainter &painter);
void paintHorn(QPainter &painter);
void paintAccordion(QPainter &painter);
void paintOrgan(QPainter &painter);
void paintBells(QPainter &painter);
void paintMarimba(QPainter &painter);
void paintMusicBox(QPainter &painter);
void paintDrums(QPainter &painter);

} // namespace Demo
