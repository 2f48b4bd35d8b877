/// A program that keeps and shows notifications in a desktop session as it is told on its standard input, one
/// command a line, the fields separated by spaces and each but the first percent-encoded:
///
///     start                       shows from now on what comes due
///     clock INSTANT               the clock shows that; it begins with 2026-03-17T12:00:00Z
///     schedule NAME DATE          a reminder for 09:00 UTC, of something that renews three days later
///     now NAME                    a reminder for two seconds from now
///     save
///     forget
///     pending                     says "pending" and the names
///     settings                    says "settings", 0 to 3 for the permission, and whether alerts are on
///     ask                         says "permission" and whether there is
///     quit
///
/// It does one after the other, and says the first word of each when it has done it, with what is to be told.
/// What a person chooses it opens with xdg-open. Arguments: the file; and perhaps the name and the number of
/// a step: it kills itself there, when it comes to that step for the so manieth time: before-show,
/// while-showing, after-show, before-save, after-save.

#include "platform/linux/DesktopWorkspace.h"
#include "platform/linux/PosixFileStore.h"
#include "platform/linux/notifications/DesktopNotificationCenter.h"
#include "platform/linux/notifications/DesktopNotificationDisplay.h"
#include "support/CommandInput.h"
#include "support/FakeWallClockAlarm.h"

#include <QCoreApplication>

#include <unistd.h>

#include <csignal>
#include <iostream>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

void say(const QByteArray &line)
{
    std::cout << line.constData() << std::endl; // flushed, as somebody waits for it
}

/// Where this process dies.
class DeadlyStep {
public:
    DeadlyStep(QByteArray name, int number)
        : m_name(std::move(name))
        , m_left(number)
    {
    }

    void come(const char *name)
    {
        if (m_name == name && --m_left == 0)
            ::kill(::getpid(), SIGKILL);
    }

private:
    QByteArray m_name;
    int m_left;
};

class MortalFileStore final : public FileStore {
public:
    explicit MortalFileStore(std::shared_ptr<DeadlyStep> step)
        : m_step(std::move(step))
    {
    }

    tl::expected<QByteArray, FileError> read(const std::filesystem::path &path) override
    {
        return m_files.read(path);
    }
    tl::expected<void, FileError> replace(
        const std::filesystem::path &path, const QByteArray &content) override
    {
        m_step->come("before-save");
        const auto result = m_files.replace(path, content);
        m_step->come("after-save");
        return result;
    }
    tl::expected<void, FileError> remove(const std::filesystem::path &path) override
    {
        return m_files.remove(path);
    }

private:
    PosixFileStore m_files;
    std::shared_ptr<DeadlyStep> m_step;
};

class MortalDisplay final : public NotificationDisplay {
public:
    explicit MortalDisplay(std::shared_ptr<DeadlyStep> step)
        : m_step(std::move(step))
    {
        connect(&m_display, &NotificationDisplay::appeared, this, &NotificationDisplay::appeared);
        connect(&m_display, &NotificationDisplay::chosen, this, &NotificationDisplay::chosen);
        connect(&m_display, &NotificationDisplay::closed, this, &NotificationDisplay::closed);
    }

    QCoro::Task<bool> awaken() override { return m_display.awaken(); }
    [[nodiscard]] QString name() const override { return m_display.name(); }
    QCoro::Task<std::optional<quint32>> show(NotificationContent content, quint32 replaced) override
    {
        m_step->come("before-show");
        auto showing = m_display.show(std::move(content), replaced);
        m_step->come("while-showing");
        const auto number = co_await showing;
        m_step->come("after-show");
        co_return number;
    }
    [[nodiscard]] QString sender() const override { return m_display.sender(); }
    QCoro::Task<bool> isSenderThere(QString sender) override
    {
        return m_display.isSenderThere(std::move(sender));
    }
    void close(quint32 number) override { m_display.close(number); }

private:
    std::shared_ptr<DeadlyStep> m_step;
    DesktopNotificationDisplay m_display{{u"Orbitledge"_s, u"app.orbitledge.Orbitledge"_s}, 20s};
};

class AllOn final : public NotificationSwitches {
public:
    QCoro::Task<NotificationSwitchPositions> read() override { co_return NotificationSwitchPositions(); }
};

class NobodyElse final : public UnattendedDelivery {
public:
    QCoro::Task<tl::expected<void, QString>> arrange(std::optional<Instant> /*next*/) override
    {
        co_return {};
    }
};

class Probe {
public:
    Probe(const std::filesystem::path &file, std::shared_ptr<DeadlyStep> step)
        : m_center(DesktopNotificationCenter::Parts{
              .file = file,
              .files = std::make_shared<MortalFileStore>(step),
              .clock = m_clock,
              .timeZone = [] { return *TimeZone::named("UTC"); },
              .alarm = m_alarm,
              .display = std::make_shared<MortalDisplay>(step),
              .switches = std::make_shared<AllOn>(),
              .unattended = std::make_shared<NobodyElse>(),
          })
    {
        QObject::connect(&m_center, &UserNotificationCenter::chosen, &m_center,
            [this](const auto &userInfo, const QString &token) { open(userInfo.value(u"url"_s), token); });
    }

    /// One after the other.
    QCoro::Task<> obey()
    {
        if (std::exchange(m_isBusy, true))
            co_return;
        while (!commands.isEmpty()) {
            const QList<QByteArray> words = commands.takeFirst();
            co_await obey(words);
        }
        m_isBusy = false;
    }

    QList<QList<QByteArray>> commands;

private:
    QCoro::Task<> obey(QList<QByteArray> words)
    {
        QByteArray answer;
        if (words[0] == "start") {
            m_center.start();
        } else if (words[0] == "clock") {
            m_alarm->moveTo(*Instant::fromText(words[1].toStdString()), FakeWallClockAlarm::Move::Set);
        } else if (words[0] == "schedule" || words[0] == "now") {
            const auto added = co_await m_center.add(request(words));
            answer = added ? QByteArray() : added.error().errorDescription.toUtf8();
        } else if (words[0] == "save") {
            const auto saved = co_await m_center.save();
            answer = saved ? QByteArray() : saved.error().errorDescription.toUtf8();
        } else if (words[0] == "forget") {
            const auto forgotten = co_await m_center.forget(u"orbitledge.renewal."_s);
            answer = forgotten ? QByteArray() : forgotten.error().errorDescription.toUtf8();
        } else if (words[0] == "pending") {
            const auto pending = co_await m_center.pendingRequests();
            QByteArrayList names;
            for (const PendingNotification &notification : pending.value_or(QList<PendingNotification>()))
                names.append(notification.request.content.title.toUtf8().toPercentEncoding());
            answer = names.join(' ');
        } else if (words[0] == "settings") {
            const NotificationSettings settings = co_await m_center.settings();
            answer = QByteArray::number(static_cast<int>(settings.authorization)) + ' '
                + (settings.alertsEnabled ? "on" : "off");
        } else if (words[0] == "ask") {
            const auto granted = co_await m_center.requestAuthorization(NotificationOption::Alert);
            answer = granted && *granted ? "yes" : "no";
        } else if (words[0] == "quit") {
            QCoreApplication::quit();
        } else {
            qFatal("unknown command %s", words[0].constData());
        }
        say((words[0] + ' ' + answer).trimmed());
    }

    static NotificationRequest request(const QList<QByteArray> &words)
    {
        const QString name = QString::fromUtf8(QByteArray::fromPercentEncoding(words[1]));
        const LocalDate date
            = LocalDate::fromText(words.value(2, "2026-03-18").toStdString()).value_or(LocalDate());
        NotificationTrigger trigger = TimeIntervalTrigger{2s};
        if (words[0] == "schedule")
            trigger = CalendarTrigger{.timeZone = "UTC", .date = date, .hour = 9, .minute = 0};
        return {
            .identifier = u"orbitledge.renewal."_s + name,
            .content = {
                .title = name,
                .body = u"<b>AT&T</b> renews soon."_s,
                .sound = NotificationSound::Default,
                .userInfo = {{u"url"_s, u"https://example.com/"_s + name}},
            },
            .trigger = trigger,
            .lastDay = LocalDate::fromDaysSinceEpoch(date.daysSinceEpoch() + 3),
        };
    }

    QCoro::Task<> open(QString url, QString token)
    {
        const bool isOpened = co_await m_workspace.open(QUrl(url), token);
        say(("chosen " + url.toUtf8() + (isOpened ? " opened " : " failed ") + token.toUtf8()).trimmed());
    }

    std::shared_ptr<StoppedClock> m_clock
        = std::make_shared<StoppedClock>(*Instant::fromText("2026-03-17T12:00:00Z"));
    std::shared_ptr<FakeWallClockAlarm> m_alarm = std::make_shared<FakeWallClockAlarm>(m_clock);
    DesktopWorkspace m_workspace{std::nullopt};
    DesktopNotificationCenter m_center;
    bool m_isBusy = false;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    Probe probe(arguments.value(1).toStdString(),
        std::make_shared<DeadlyStep>(arguments.value(2).toLatin1(), arguments.value(3).toInt()));

    const CommandInput input(
        [&probe](const auto &words) {
            probe.commands.append(words);
            probe.obey();
        },
        [] { QCoreApplication::quit(); });
    return QCoreApplication::exec();
}
