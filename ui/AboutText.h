#pragma once

#include <QString>

/// What the about box says, as rich text of our own.
QString aboutText(const QString &version);
