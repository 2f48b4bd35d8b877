#include "cli/RemindersCommand.h"

#include "cli/HelpTexts.h"
#include "cli/Terminal.h"
#include "cli/ViewArguments.h"
#include "locale/DateFormatter.h"
#include "model/json/JsonWriter.h"
#include "reminders/DeliveredLedger.h"
#include "reminders/RenewalNotificationPlanner.h"
#include "service/ServiceAddresses.h"
#include "state/AppSettings.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

struct RemindersArguments {
    ViewArguments view;
    /// Absent for the setting.
    std::optional<qint64> leadDays;
    /// A file with a JSON array of keys; absent for the person's own ledger.
    std::optional<std::filesystem::path> ledger;
};

tl::expected<RemindersArguments, QString> parse(std::span<const QByteArray> words)
{
    RemindersArguments arguments;
    const auto setLeadDays = [&arguments](const QByteArray &value) -> std::optional<QString> {
        bool isNumber = false;
        arguments.leadDays = value.toLongLong(&isNumber);
        if (!isNumber)
            return u"\"%1\" is not a number of days"_s.arg(QString::fromUtf8(value));
        return std::nullopt;
    };
    const auto setLedger = [&arguments](const QByteArray &value) -> std::optional<QString> {
        if (value.isEmpty())
            return u"--ledger needs the name of a file"_s;
        arguments.ledger = std::filesystem::path(value.toStdString());
        return std::nullopt;
    };
    auto view = parseViewArguments(words, {{"--lead-days", setLeadDays}, {"--ledger", setLedger}});
    if (!view)
        return tl::make_unexpected(std::move(view.error()));
    arguments.view = *std::move(view);
    return arguments;
}

tl::expected<QSet<QString>, QString> ledgerOf(const std::optional<std::filesystem::path> &path,
    const UserDefaults &defaults, const Environment &environment)
{
    if (!path)
        return readDeliveredLedger(defaults);
    const QString name = QString::fromStdString(path->string());
    const auto content = environment.files->read(*path);
    if (!content)
        return tl::make_unexpected(name + u": "_s + content.error().errorDescription);
    const QJsonDocument document = QJsonDocument::fromJson(*content);
    const QJsonArray array = document.array();
    const bool isLedger = document.isArray()
        && std::ranges::all_of(array, [](const QJsonValue &value) { return value.isString(); });
    if (!isLedger)
        return tl::make_unexpected(name + u": A JSON array of texts was expected"_s);
    QSet<QString> ledger;
    for (const QJsonValue value : array)
        ledger.insert(value.toString());
    return ledger;
}

QByteArray remindersJson(const RenewalNotificationPlanning &planning)
{
    json::JsonWriter writer;
    const auto member = [&writer](std::string_view key, const auto &value) {
        writer.key(key);
        json::write(writer, value);
    };
    writer.beginObject();
    writer.key("plans");
    writer.beginArray();
    for (const RenewalNotificationPlan &plan : planning.plans) {
        writer.beginObject();
        member("key", plan.key);
        member("identifier", plan.identifier);
        member("title", plan.title);
        member("body", plan.body);
        member("destinationURL", plan.destinationURL);
        writer.key("delivery");
        if (const auto instant = plan.delivery.instant()) {
            writer.beginObject();
            member("scheduled", *instant);
            writer.endObject();
        } else {
            writer.string("immediate"_L1);
        }
        writer.endObject();
    }
    writer.endArray();
    QList<QString> ledger(planning.ledger.begin(), planning.ledger.end());
    std::ranges::sort(ledger);
    member("ledger", ledger);
    member("skippedOverBudget", planning.skippedOverBudget);
    writer.endObject();
    return writer.take() + '\n';
}

/// "09:00" by the wall clock
QString timeOfDay(Instant instant, const Calendar &calendar)
{
    constexpr qint64 minute = 60'000;
    constexpr qint64 minutesPerHour = 60;
    constexpr qint64 minutesPerDay = 24 * minutesPerHour;
    const qint64 minutes
        = (calendar.timeZone().wallClock(instant) / minute % minutesPerDay + minutesPerDay) % minutesPerDay;
    const auto twoDigits = [](qint64 number) { return QString::number(number).rightJustified(2, u'0'); };
    return twoDigits(minutes / minutesPerHour) + u':' + twoDigits(minutes % minutesPerHour);
}

QString remindersText(const RenewalNotificationPlanning &planning, const Calendar &calendar)
{
    if (planning.plans.isEmpty())
        return u"No reminders are planned.\n"_s;
    // As they will come.
    QList<RenewalNotificationPlan> plans = planning.plans;
    std::ranges::stable_sort(
        plans, {}, [](const RenewalNotificationPlan &plan) { return plan.delivery.instant(); });
    DateFormatter dates(calendar.locale());
    QStringList moments;
    int widest = 0;
    for (const RenewalNotificationPlan &plan : plans) {
        const auto instant = plan.delivery.instant();
        moments.append(instant
                ? dates.monthAndDay(calendar.localDate(*instant)) + u' ' + timeOfDay(*instant, calendar)
                : u"at once"_s);
        widest = std::max(widest, displayWidth(moments.last()));
    }
    QString text;
    for (qsizetype i = 0; i < moments.size(); ++i) {
        const RenewalNotificationPlan &plan = plans[i];
        text += padded(moments[i], widest, Align::Left) + u"  "_s + printable(plan.title) + u": "_s
            + printable(plan.body) + u'\n';
    }
    if (planning.skippedOverBudget > 0)
        text += u"%1 more, which come later, wait until there is room.\n"_s.arg(planning.skippedOverBudget);
    return text;
}

} // namespace

ExitCode runReminders(std::span<const QByteArray> words, const Environment &environment)
{
    const auto arguments = parse(words);
    if (!arguments) {
        reportError(environment, u"reminders: "_s + arguments.error());
        return ExitCode::Usage;
    }
    if (arguments->view.help)
        return finish(environment, writeText(environment, remindersHelp()));

    const auto addresses = ServiceAddresses::fromEnvironment(environment.variable);
    if (!addresses)
        return failure(environment, addresses.error());
    const auto snapshot = loadSnapshot(arguments->view, environment);
    if (!snapshot)
        return failure(environment, snapshot.error());

    const std::shared_ptr<const UserDefaults> defaults = environment.userDefaults();
    const auto ledger = ledgerOf(arguments->ledger, *defaults, environment);
    if (!ledger)
        return failure(environment, ledger.error());
    const View view = viewOf(arguments->view, *snapshot, environment);
    const ReminderSettings settings{
        .leadDays = arguments->leadDays.value_or(AppSettings::storedLeadDays(*defaults)),
        .currency = view.currency,
        .webURL = addresses->web,
    };
    const auto planning = planReminders(snapshot->subscriptions, settings, view.now, view.calendar, *ledger);
    if (arguments->view.json)
        return finish(environment, environment.writeOutput(remindersJson(planning)));
    return finish(environment, writeText(environment, remindersText(planning, view.calendar)));
}

} // namespace orbitledge
