#pragma once

#include <QStringList>

/// The instrument for a new track, as an index into `names`.
///
/// `instructions` are the values of the track's header field "I" in stored order, as
/// Track::headers() answers them. A value "instrument NAME" chooses the first of `names` that is
/// NAME, without regard to case; a later choice overrides an earlier one. Without a choice, or
/// for names that are not in the list, the answer is `startIndex`.
int chooseInstrument(const QStringList &instructions, const QStringList &names, int startIndex);
