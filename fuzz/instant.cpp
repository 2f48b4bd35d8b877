#include "model/Instant.h"

#include "Require.h"

#include <QDateTime>

using namespace orbitledge;
using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text = fuzz::textOf(data, size);
    const auto instant = Instant::fromText(text);
    if (!instant)
        return 0;
    const QByteArray printed = instant->text();
    fuzz::require(printed.size() == 20, "an instant is printed in whole seconds");
    const auto again = Instant::fromText(printed.toStdString());
    fuzz::require(again.has_value(), "what was printed can be read");
    fuzz::require(again->text() == printed, "what was printed is what was read");
    const qint64 lost = instant->millisecondsSinceEpoch() - again->millisecondsSinceEpoch();
    fuzz::require(lost >= 0 && lost < 1000, "printing rounds down to the second");

    // The wall time and the offset, read by others. More than three digits of a fraction they round.
    const auto wall = QDateTime::fromString(QString::fromLatin1(text.data(), 19), u"yyyy-MM-dd'T'HH:mm:ss"_s)
                          .toString(Qt::ISODate);
    fuzz::require(wall == QString::fromLatin1(text.data(), 19), "the wall time exists");
    const std::string_view fractionAndZone = text.substr(19);
    const std::size_t zoneAt = fractionAndZone.find_first_of("Z+-");
    const QString zone = QString::fromLatin1(
        fractionAndZone.data() + zoneAt, static_cast<qsizetype>(fractionAndZone.size() - zoneAt));
    const int sign = zone.startsWith(u'-') ? -1 : 1;
    const int offset
        = sign * (zone.mid(1, 2).toInt() * 3600 + zone.last(zone.size() > 3 ? 2 : 0).toInt() * 60);
    const QDateTime utc = QDateTime::fromString(wall + u'Z', Qt::ISODate).addSecs(-offset);
    fuzz::require(utc.toSecsSinceEpoch() == again->millisecondsSinceEpoch() / 1000,
        "the instant is the wall time less the offset");
    const QByteArray fraction = QByteArray(fractionAndZone.data(), static_cast<qsizetype>(zoneAt))
                                    .mid(1)
                                    .leftJustified(3, '0', true);
    fuzz::require(lost == fraction.toInt(), "three digits of the fraction count");
    return 0;
}
