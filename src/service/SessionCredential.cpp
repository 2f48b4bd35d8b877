#include "service/SessionCredential.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 referenceDate = 978'307'200'000; // 2001-01-01T00:00:00Z, in milliseconds since 1970
constexpr double millisecondsPerSecond = 1000.0;

bool isControl(QChar c)
{
    constexpr char16_t firstPrintable = 0x20;
    constexpr char16_t deleteCharacter = 0x7F;
    return c < firstPrintable || c == deleteCharacter;
}

} // namespace

QByteArray encodeSessionCredential(const SessionCredential &credential)
{
    const qint64 milliseconds = credential.expiresAt.millisecondsSinceEpoch() - referenceDate;
    return QJsonDocument(QJsonObject{
                             {u"value"_s, credential.value},
                             {u"expiresAt"_s, static_cast<double>(milliseconds) / millisecondsPerSecond},
                         })
        .toJson(QJsonDocument::Compact);
}

std::optional<SessionCredential> decodeSessionCredential(const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    const QJsonValue value = object[u"value"_s];
    const QJsonValue expiresAt = object[u"expiresAt"_s];
    if (!value.isString() || !expiresAt.isDouble())
        return std::nullopt;
    // Ten thousand years either way.
    constexpr double longest = 10'000.0 * 366 * 86'400;
    const double seconds = expiresAt.toDouble();
    QString text = value.toString();
    if (!(std::abs(seconds) < longest) || std::ranges::any_of(text, isControl))
        return std::nullopt;
    return SessionCredential{
        .value = std::move(text),
        .expiresAt
        = Instant::fromMillisecondsSinceEpoch(referenceDate + std::llround(seconds * millisecondsPerSecond)),
    };
}

} // namespace orbitledge
