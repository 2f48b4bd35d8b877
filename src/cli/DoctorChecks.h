#pragma once

#include "model/Instant.h"
#include "platform/Diagnosis.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <utility>
#include <variant>

namespace orbitledge {

enum class CheckLevel {
    Ok,
    /// Neither good nor bad.
    Info,
    /// The program does without it, but not as well.
    Missing,
    /// It is there, but not as it should be.
    Warning,
    /// The program needs it.
    Failure,
};

/// One thing that was looked at, for people and for programs.
struct Check {
    using Detail = std::variant<std::monostate, bool, qint64, QString, QStringList>;

    /// For programs, as is the state: neither changes once it is published.
    QByteArray subject;
    QString title;
    CheckLevel level = CheckLevel::Ok;
    QByteArray state;
    QString text;
    /// What to do about it, one sentence; empty where there is nothing to do.
    QString advice;
    QList<std::pair<QByteArray, Detail>> details;
};

/// Where the service's address comes from.
enum class ServiceAddress {
    BuiltIn,
    Environment,
    /// The environment has one that is not accepted.
    Refused,
};

/// What the program knows of itself without asking anybody.
struct OwnFacts {
    QString version;
    QString build;
    QString icuVersion;
    /// ICU locale identifiers, in the order of the members of `Locale`.
    QString dates;
    QString money;
    QString collation;
    QString encoding;
    QString timeZone;
    ServiceAddress service = ServiceAddress::BuiltIn;
    Instant now;
};

/// What there is to say about the findings, with nothing in it that tells who the person is.
QList<Check> checksOf(const Findings &findings, const OwnFacts &own);

} // namespace orbitledge
