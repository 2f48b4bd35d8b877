#pragma once

#include <QByteArray>

#include <functional>
#include <optional>

namespace orbitledge {

/// Whose conventions texts follow. On a Unix desktop people may choose them apart, for instance English
/// texts with German dates; each member is an ICU locale identifier.
struct Locale {
    QByteArray dates;
    QByteArray money;
    QByteArray collation;

    /// One locale for everything, from its BCP 47 tag ("de-CH") or its POSIX name ("de_CH.UTF-8"); "C" and
    /// "POSIX" mean American English. Absent where the name is malformed, or where its language or region
    /// is unknown.
    static std::optional<Locale> named(const QByteArray &name);

    /// The locale that LC_ALL, LC_TIME, LC_MONETARY, LC_COLLATE and LANG name, in the order of POSIX.
    /// A name that is not known counts as not set; American English where none is.
    static Locale fromEnvironment(const std::function<QByteArray(const char *)> &variable);

    friend bool operator==(const Locale &, const Locale &) = default;
};

} // namespace orbitledge
