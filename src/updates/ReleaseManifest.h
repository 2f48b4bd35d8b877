#pragma once

#include "model/DecodingError.h"
#include "model/Instant.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

namespace orbitledge {

/// What the release host announces.
struct ReleaseManifest {
    QString version;
    QString build;
    QString minimumSystemVersion;
    Instant publishedAt;
    /// Of a page or a file, to be opened by the person.
    QUrl url;
    /// Of the download, in bytes.
    qint64 size = 0;
    /// Of the download, in hexadecimal.
    QString sha256;
    QList<QString> architectures;
    /// Announced, but not there yet.
    bool comingSoon = false;

    friend bool operator==(const ReleaseManifest &, const ReleaseManifest &) = default;
};

/// One JSON object, every key required. Safe to call from any thread.
Decoded<ReleaseManifest> decodeReleaseManifest(QByteArray json);

} // namespace orbitledge
