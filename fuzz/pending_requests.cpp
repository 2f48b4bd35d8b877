#include "Require.h"
#include "platform/linux/notifications/NotificationQueue.h"

using namespace orbitledge;

namespace {

/// A life of what was read: days pass, and what is due is shown.
void live(NotificationQueue queue)
{
    Instant now = *Instant::fromText("2026-03-18T09:00:00Z");
    const Instant start = now;
    constexpr qint64 day = qint64{24} * 3600 * 1000;
    quint32 number = 0;
    for (int i = 0; i < 4; ++i) {
        // Each batch takes at least one of those that wait away.
        std::size_t left = static_cast<std::size_t>(queue.pending(now).size()) + 64;
        while (const auto batch = queue.nextBatch(now, start)) {
            fuzz::require(!batch->identifiers.isEmpty(), "what is shown stands for something");
            fuzz::require(left-- > 0, "what was shown is not shown for ever");
            queue.recordShown(*batch, now, QStringLiteral(":1.7"), ++number);
        }
        fuzz::require(!queue.hasDue(now), "what was due was shown");
        if (const auto due = queue.nextDue(now))
            fuzz::require(*due > now, "what comes next comes later");
        now = Instant::fromMillisecondsSinceEpoch(now.millisecondsSinceEpoch() + 40 * day);
        queue.followClock(now);
        queue.expire(now, *LocalDate::fromText("2026-03-18"));
    }
    queue.forget(QString());
    fuzz::require(queue.pending(now).isEmpty(), "what is forgotten does not wait");
}

} // namespace

// The file of reminders as the program finds it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto json
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto queue = NotificationQueue::decoded(json);
    if (!queue) {
        fuzz::require(!queue.error().isEmpty(), "a fault is described");
        return 0;
    }
    const QByteArray written = queue->encoded();
    const auto again = NotificationQueue::decoded(written);
    fuzz::require(again.has_value(), "what was saved can be loaded");
    fuzz::require(again->encoded() == written, "the same requests are saved the same way");
    live(*queue);
    return 0;
}
