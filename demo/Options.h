#pragma once

#include "model/LocalDate.h"

#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <chrono>
#include <optional>

namespace orbitledge::demo {

struct Options {
    quint16 port = 8420;
    QString dataFolder;
    std::chrono::seconds sessionLifetime{604'800};
    /// The day that it is, instead of the machine's.
    std::optional<LocalDate> today;
    /// Fill the sample account up to so many subscriptions.
    qint64 populate = 0;

    /// Add this account and end.
    std::optional<QString> addAccount;
    bool isUnverified = false;
    QString currency;

    bool help = false;
    bool version = false;
};

/// The options, or one line that says what is wrong with the arguments.
tl::expected<Options, QString> parseOptions(const QStringList &arguments, const QString &defaultFolder);

QString helpText(const QString &defaultFolder);

} // namespace orbitledge::demo
