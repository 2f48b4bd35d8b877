#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <compare>

namespace orbitledge {

/// A version in the manner of Semantic Versioning 2.0.0, read from whatever text there is: a leading "v" and
/// build metadata do not count, missing numbers are 0. No text is refused.
class Version {
public:
    static Version fromText(const QString &text);

    /// The numbers between the dots, as many as there are; digits beyond the range count as the largest.
    [[nodiscard]] const QList<qint64> &core() const { return m_core; }
    /// What stands behind the first hyphen, between its dots; empty where there is none.
    [[nodiscard]] const QStringList &preRelease() const { return m_preRelease; }

    /// Precedence (section 11): by the numbers, of which missing ones are 0; then what has no pre-release
    /// identifiers is above what has; then by these one by one, numbers by their value and below other
    /// texts, other texts by their characters; then more of them are above fewer.
    friend std::weak_ordering operator<=>(const Version &left, const Version &right);
    friend bool operator==(const Version &left, const Version &right) { return (left <=> right) == 0; }

private:
    QList<qint64> m_core;
    QStringList m_preRelease;
};

} // namespace orbitledge
