#include "composition/ReminderDelivery.h"

#include "BuildInfo.h"
#include "composition/SystemParts.h"
#include "platform/Completion.h"
#include "platform/linux/DesktopWorkspace.h"
#include "platform/linux/application/RunningApplication.h"
#include "platform/linux/notifications/NotificationDisplay.h"

#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Who has not chosen it by then will find it in the panel.
constexpr auto clickPatience = 24h;

/// More than the two minutes that the bus gives a program to come up.
constexpr auto startPatience = 130s;

} // namespace

class ReminderDelivery::Clicks final : public QObject {
public:
    Clicks()
        : m_display(SystemParts::makeNotificationDisplay(Presence::Short))
        , m_center(SystemParts::makeNotifications(m_display))
        , m_running(QString::fromLatin1(build::applicationId), startPatience)
    {
        // Before the first is shown: it may be chosen while the next one is.
        connect(m_display.get(), &NotificationDisplay::chosen, this, &Clicks::choose);
        connect(m_display.get(), &NotificationDisplay::closed, this, &Clicks::close);
        connect(m_display.get(), &NotificationDisplay::gone, this, &Clicks::end);
    }

    QCoro::Task<NotificationDelivery> deliver(std::chrono::milliseconds limit)
    {
        auto delivering = m_center->deliverDue(limit);
        const NotificationDelivery outcome = co_await delivering;
        m_shown = m_center->shown();
        m_center.reset();
        for (const quint32 number : std::exchange(m_closed, {}))
            close(number);
        co_return outcome;
    }

    QCoro::Task<void> follow()
    {
        m_day.setSingleShot(true);
        connect(&m_day, &QTimer::timeout, this, &Clicks::end);
        m_day.start(clickPatience);
        endWhenNothingIsLeft();
        co_await Completion::wait(m_ended);
    }

private:
    void choose(quint32 number, const QString &activationToken)
    {
        const QList<ShownNotification> shown = m_center ? m_center->shown() : m_shown;
        const auto chosen = std::ranges::find(shown, number, &ShownNotification::number);
        if (chosen != shown.end())
            open(QUrl(chosen->userInfo.value(u"url"_s), QUrl::StrictMode), activationToken);
    }

    void close(quint32 number)
    {
        if (m_center) {
            m_closed.append(number);
            return;
        }
        m_shown.removeIf([number](const ShownNotification &shown) { return shown.number == number; });
        endWhenNothingIsLeft();
    }

    void end()
    {
        m_isOver = true;
        endWhenNothingIsLeft();
    }

    void endWhenNothingIsLeft()
    {
        if (!m_center && m_openings == 0 && (m_isOver || m_shown.isEmpty()))
            m_ended->complete();
    }

    /// By the program, or, where that cannot be started, by this process. One that does not answer opens it
    /// when it comes to itself.
    QCoro::Task<void> open(QUrl page, QString activationToken)
    {
        ++m_openings;
        const QString address = QString::fromLatin1(page.toEncoded());
        auto asking = m_running.openReminder(address, activationToken);
        const PageOpening outcome = co_await asking;
        if (outcome == PageOpening::Absent || outcome == PageOpening::Refused) {
            auto opening = m_workspace.open(page, activationToken);
            (void)co_await opening;
        }
        --m_openings;
        endWhenNothingIsLeft();
    }

    std::shared_ptr<NotificationDisplay> m_display;
    /// Until it has delivered.
    std::shared_ptr<DesktopNotificationCenter> m_center;
    QList<quint32> m_closed;
    QList<ShownNotification> m_shown;
    RunningApplication m_running;
    DesktopWorkspace m_workspace{std::nullopt};
    QTimer m_day;
    int m_openings = 0;
    bool m_isOver = false;
    std::shared_ptr<Completion> m_ended = std::make_shared<Completion>();
};

ReminderDelivery::ReminderDelivery()
    : m_clicks(std::make_unique<Clicks>())
{
}

ReminderDelivery::~ReminderDelivery() = default;

QCoro::Task<NotificationDelivery> ReminderDelivery::deliver(std::chrono::milliseconds limit)
{
    return m_clicks->deliver(limit);
}

QCoro::Task<void> ReminderDelivery::followClicks()
{
    return m_clicks->follow();
}

} // namespace orbitledge
