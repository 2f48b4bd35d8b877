#include "demo/SubscriptionInput.h"

#include "demo/Categories.h"
#include "demo/ExchangeRates.h"
#include "demo/Money.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

constexpr qint64 maximumCost = 999'999'999;
constexpr qint64 maximumNotificationDays = 365;

std::optional<QString> nameProblem(const QString &name)
{
    if (name.isEmpty())
        return u"Give the subscription a name."_s;
    if (name.size() > maximumNameLength)
        return u"The name is too long; keep it to %1 characters."_s.arg(maximumNameLength);
    const bool hasControl = std::ranges::any_of(
        name, [](QChar c) { return c.category() == QChar::Other_Control || c.isNull(); });
    if (hasControl)
        return u"The name holds characters that cannot be shown; type it again."_s;
    return std::nullopt;
}

std::optional<QString> costProblem(const Decimal &cost, const Currency *currency)
{
    if (cost.isNegative())
        return u"The cost must not be negative."_s;
    if (cost > Decimal(maximumCost))
        return u"The cost is too large; the most is 999,999,999."_s;
    if (currency == nullptr)
        return std::nullopt;
    if (fractionDigits(cost) <= currency->digits)
        return std::nullopt;
    if (currency->digits == 0)
        return u"Amounts in %1 have no digits after the point."_s.arg(currency->code);
    return u"Amounts in %1 have at most %2 digits after the point."_s.arg(currency->code)
        .arg(currency->digits);
}

std::optional<QString> dateProblem(const LocalDate &date)
{
    if (date < earliestDate || date > latestDate)
        return u"The date must lie between %1 and %2."_s.arg(earliestDate.text(), latestDate.text());
    return std::nullopt;
}

QString unknownCycle()
{
    return u"The billing cycle must be monthly, yearly, weekly or quarterly."_s;
}

QString noDate()
{
    return u"Write the date as year-month-day, for instance 2026-03-18; it must be a day that exists."_s;
}

} // namespace

tl::expected<SubscriptionDraft, FieldProblems> checkSubscription(
    const CreateSubscriptionRequest &request, const QString &defaultCurrency, const LocalDate &today)
{
    FieldProblems problems;
    const auto note = [&problems](QLatin1StringView field, std::optional<QString> problem) {
        if (problem)
            problems.append({field, *std::move(problem)});
    };

    SubscriptionDraft draft;
    draft.name = request.name.trimmed();
    note("name"_L1, nameProblem(draft.name));

    const QString code = request.currency.value_or(defaultCurrency).trimmed();
    const Currency *const currency = findCurrency(code);
    draft.cost = request.cost;
    note("cost"_L1, costProblem(request.cost, currency));
    if (currency != nullptr)
        draft.currency = currency->code;
    else
        note("currency"_L1, u"The service does not know this currency; use a code such as EUR or USD."_s);

    const auto cycle = cycleFromText(request.billingCycle.trimmed());
    draft.cycle = cycle.value_or(BillingCycle::Monthly);
    if (!cycle)
        note("billing_cycle"_L1, unknownCycle());

    draft.nextBillingDate = request.nextBillingDate.value_or(renewal(today, draft.cycle, 1));
    note("next_billing_date"_L1, dateProblem(draft.nextBillingDate));

    draft.categoryID = request.categoryID;
    if (request.categoryID && !categoryName(*request.categoryID))
        note("category_id"_L1, u"There is no such category; leave it out or use one that exists."_s);

    draft.trialEndDate = request.trialEndDate;
    if (request.trialEndDate)
        note("trial_end_date"_L1, dateProblem(*request.trialEndDate));

    draft.trialNotificationDays = request.trialNotificationDays;
    if (const auto days = request.trialNotificationDays) {
        if (*days < 0 || *days > maximumNotificationDays)
            note("trial_notification_days"_L1, u"Give a number of days from 0 to 365."_s);
        else if (!request.trialEndDate)
            note("trial_notification_days"_L1, u"Without a trial's end there is nothing to tell."_s);
    }

    if (!problems.isEmpty())
        return tl::unexpected(std::move(problems));
    return draft;
}

tl::expected<SubscriptionDraft, FieldProblems> checkSubscriptionForm(
    const FormFields &form, const QString &defaultCurrency, const LocalDate &today)
{
    FieldProblems unread;
    CreateSubscriptionRequest request;
    request.name = form.value("name"_L1);
    request.currency = form.value("currency"_L1);
    request.billingCycle = form.value("billing_cycle"_L1);

    const QString typedCost = form.value("cost"_L1).trimmed().replace(u',', u'.');
    const QByteArray costText = typedCost.toUtf8();
    const auto cost = costText.size() > 64 ? tl::unexpected(Decimal::ParseError::Malformed)
                                           : Decimal::fromText(costText.toStdString());
    if (cost)
        request.cost = *cost;
    else
        unread.append({"cost"_L1, u"Write the cost as a number, for instance 9.99."_s});

    const auto readDate = [&form, &unread](QLatin1StringView field, bool required) {
        const QString text = form.value(field).trimmed();
        const auto date = LocalDate::fromText(text.toStdString());
        if (!date && (required || !text.isEmpty()))
            unread.append({field, noDate()});
        return date;
    };
    request.nextBillingDate = readDate("next_billing_date"_L1, true);
    request.trialEndDate = readDate("trial_end_date"_L1, false);

    auto draft = checkSubscription(request, defaultCurrency, today);
    if (unread.isEmpty())
        return draft;
    // What could not be read is the first thing to say, and the only thing about its field.
    if (!draft) {
        for (const FieldProblem &problem : draft.error()) {
            if (std::ranges::find(unread, problem.field, &FieldProblem::field) == unread.end())
                unread.append(problem);
        }
    }
    return tl::unexpected(std::move(unread));
}

} // namespace orbitledge::demo
