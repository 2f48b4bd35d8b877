#pragma once

#include <QList>
#include <QString>

namespace orbitledge {

/// One character as people count them (an extended grapheme cluster, UAX #29).
struct Grapheme {
    QString text;
    /// The columns it takes where all characters have the same pitch: 0, 1 or 2 (UAX #11).
    int columns = 1;
};

QList<Grapheme> graphemesOf(const QString &text);

} // namespace orbitledge
