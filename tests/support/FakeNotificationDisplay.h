#pragma once

#include "platform/OneShot.h"
#include "platform/linux/notifications/NotificationDisplay.h"

#include <QMap>

namespace orbitledge::testing {

/// A screen of one's own, on which the test reads, chooses and closes.
class FakeNotificationDisplay final : public NotificationDisplay {
public:
    struct Showing {
        quint32 number = 0;
        NotificationContent content;
        quint32 replaced = 0;
    };

    /// Nobody answers where it is not.
    bool isThere = true;
    /// It takes notifications, but goes away before it tells that it shows them.
    bool diesWhileShowing = false;
    /// Answers to `show` wait until `answerAll`.
    bool isSlow = false;
    /// Answers to `awaken` wait until `answerAll`.
    bool isMute = false;
    QString ownName = QStringLiteral("bus:1.1");
    /// Everything that was ever shown, in order.
    QList<Showing> shown;
    QList<quint32> closings;

    QCoro::Task<bool> awaken() override
    {
        if (isMute) {
            OneShot<bool> answer;
            m_waiting.append(&answer);
            (void)co_await answer.settled();
        }
        if (isThere)
            m_name = ownName;
        co_return isThere;
    }

    [[nodiscard]] QString name() const override { return m_name; }

    QString ownSender = QStringLiteral(":1.100");
    /// Other processes that are there.
    QStringList senders;
    [[nodiscard]] QString sender() const override { return ownSender; }
    QCoro::Task<bool> isSenderThere(QString sender) override { co_return senders.contains(sender); }

    QCoro::Task<std::optional<quint32>> show(NotificationContent content, quint32 replaced) override
    {
        if (!isThere)
            co_return std::nullopt;
        const quint32 number = replaced != 0 ? replaced : ++m_lastNumber;
        shown.append({number, content, replaced});
        if (isSlow) {
            OneShot<bool> answer;
            m_waiting.append(&answer);
            (void)co_await answer.settled();
        }
        if (diesWhileShowing) {
            isThere = false;
            m_name.clear();
            co_return std::nullopt;
        }
        co_return number;
    }

    void close(quint32 number) override { closings.append(number); }

    /// Another run of the daemon, which shows nothing yet.
    void restart()
    {
        ownName += QStringLiteral("'");
        m_name.clear();
        m_lastNumber = 0;
        isThere = true;
        Q_EMIT appeared();
    }

    /// The daemon ends, as some do that have nothing to show, and is started again when it is needed.
    void leave()
    {
        ownName += QStringLiteral("'");
        m_name.clear();
        m_lastNumber = 0;
    }

    void answerAll()
    {
        for (OneShot<bool> *const waiting : std::exchange(m_waiting, {}))
            waiting->settle(true);
    }

    [[nodiscard]] qsizetype waitingCount() const { return m_waiting.size(); }
    [[nodiscard]] QStringList titles() const
    {
        QStringList titles;
        for (const Showing &showing : shown)
            titles.append(showing.content.title);
        return titles;
    }

private:
    QString m_name;
    quint32 m_lastNumber = 0;
    QList<OneShot<bool> *> m_waiting;
};

} // namespace orbitledge::testing
