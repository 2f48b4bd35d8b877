#include "demo/EditPage.h"

#include "demo/Database.h"
#include "demo/ExchangeRates.h"
#include "demo/Money.h"
#include "timeline/EntryTexts.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

struct Field {
    QLatin1StringView name;
    QString label;
    QString hint;
};

/// A labelled field with what is wrong with it.
template <typename MakeControl>
Html field(const EditForm &form, const Field &field, const MakeControl &makeControl)
{
    const auto problem = std::ranges::find(form.problems, field.name, &FieldProblem::field);
    const bool isWrong = problem != form.problems.end();
    const QString note = QString(field.name) + u"-note"_s;
    Html content = element("label"_L1, {{"for"_L1, QString(field.name)}}, field.label)
        + makeControl(isWrong, isWrong || !field.hint.isEmpty() ? note : QString());
    if (isWrong)
        content += element("span"_L1, {{"class"_L1, u"problem"_s}, {"id"_L1, note}}, problem->sentence);
    else if (!field.hint.isEmpty())
        content += element("span"_L1, {{"class"_L1, u"hint"_s}, {"id"_L1, note}}, field.hint);
    return element("p"_L1, {{"class"_L1, isWrong ? u"field wrong"_s : u"field"_s}}, content);
}

Html input(const EditForm &form, const Field &description, const QString &type, const QString &value,
    bool isRequired, const QString &mode = {})
{
    return field(form, description, [&](bool isWrong, const QString &note) {
        const QString name(description.name);
        return voidElement("input"_L1,
            {{"id"_L1, name}, {"name"_L1, name}, {"type"_L1, type}, {"value"_L1, value},
                {"inputmode"_L1, mode, !mode.isEmpty()}, {"dir"_L1, u"auto"_s, type == u"text"_s},
                {"maxlength"_L1, QString::number(maximumNameLength), name == u"name"_s},
                flag("required"_L1, isRequired), {"aria-invalid"_L1, u"true"_s, isWrong},
                {"aria-describedby"_L1, note, !note.isEmpty()}});
    });
}

struct Choice {
    QString value;
    QString label;
};

Html select(
    const EditForm &form, const Field &description, const QList<Choice> &choices, const QString &value)
{
    return field(form, description, [&](bool isWrong, const QString &note) {
        Html options;
        bool isKnown = false;
        for (const Choice &choice : choices) {
            const bool isSelected = choice.value.compare(value, Qt::CaseInsensitive) == 0;
            isKnown = isKnown || isSelected;
            options += element(
                "option"_L1, {{"value"_L1, choice.value}, flag("selected"_L1, isSelected)}, choice.label);
        }
        if (!isKnown)
            options += element("option"_L1, {{"value"_L1, value}, flag("selected"_L1)}, value);
        const QString name(description.name);
        return element("select"_L1,
            {{"id"_L1, name}, {"name"_L1, name}, {"aria-invalid"_L1, u"true"_s, isWrong},
                {"aria-describedby"_L1, note, !note.isEmpty()}},
            options);
    });
}

QList<Choice> currencyChoices()
{
    QList<Choice> result;
    for (const Currency &currency : currencies())
        result.append({currency.code, currency.code + u" · "_s + currency.name});
    return result;
}

QList<Choice> cycleChoices()
{
    return {{u"monthly"_s, u"Monthly"_s}, {u"yearly"_s, u"Yearly"_s}, {u"weekly"_s, u"Weekly"_s},
        {u"quarterly"_s, u"Quarterly"_s}};
}

QString statusText(const Subscription &subscription)
{
    if (subscription.cancellationDate)
        return u"Cancelled; paid until %1."_s.arg(subscription.cancellationDate->text());
    if (subscription.status == "active"_L1)
        return u"Active."_s;
    QString status = subscription.status;
    status[0] = status[0].toUpper();
    return status + u'.';
}

QString convertedText(const Subscription &subscription)
{
    if (!subscription.convertedCost || !subscription.convertedCurrency)
        return {};
    return u"About "_s + moneyText(*subscription.convertedCost, *subscription.convertedCurrency) + u'.';
}

Html action(const QString &value, const QString &text, const QString &kind)
{
    return element("button"_L1,
        {{"class"_L1, kind}, {"name"_L1, u"action"_s}, {"value"_L1, value}, {"id"_L1, value}}, text);
}

} // namespace

EditForm EditForm::of(const Subscription &subscription)
{
    const Currency *const currency = findCurrency(subscription.currency);
    EditForm form;
    form.name = subscription.name;
    form.cost = fixedText(subscription.cost, currency != nullptr ? currency->digits : 0);
    form.currency = subscription.currency;
    form.billingCycle = subscription.billingCycle;
    form.nextBillingDate = subscription.nextBillingDate.text();
    form.trialEndDate = subscription.trialEndDate ? subscription.trialEndDate->text() : QString();
    return form;
}

EditForm EditForm::typed(const FormFields &fields)
{
    EditForm form;
    form.name = fields.value("name"_L1);
    form.cost = fields.value("cost"_L1);
    form.currency = fields.value("currency"_L1);
    form.billingCycle = fields.value("billing_cycle"_L1);
    form.nextBillingDate = fields.value("next_billing_date"_L1);
    form.trialEndDate = fields.value("trial_end_date"_L1);
    return form;
}

Html editContent(const Viewer &viewer, const Subscription &subscription, const EditForm &form)
{
    Html content = element("div"_L1, {{"class"_L1, u"title"_s}},
        logo(subscription.name)
            + element("div"_L1, {},
                element("h1"_L1, {{"dir"_L1, u"auto"_s}}, subscription.name)
                    + element("p"_L1, {{"class"_L1, u"soft"_s}},
                        statusText(subscription)
                            + (subscription.categoryName ? u' ' + *subscription.categoryName + u'.'
                                                         : QString()))));
    if (!form.message.isEmpty())
        content += element("p"_L1,
            {{"class"_L1, u"notice"_s}, {"id"_L1, u"message"_s}, {"role"_L1, u"status"_s}}, form.message);
    if (!form.refusal.isEmpty())
        content += element("p"_L1, {{"class"_L1, u"problem"_s}, {"role"_L1, u"alert"_s}}, form.refusal);
    if (!form.problems.isEmpty())
        content += element("p"_L1, {{"class"_L1, u"problem"_s}, {"role"_L1, u"alert"_s}},
            u"Not saved yet: please correct what is marked."_s);

    const Html fields = formTokenField(viewer)
        // The first button is what Return does.
        + input(form, {"name"_L1, u"Name"_s, {}}, u"text"_s, form.name, true)
        + element("div"_L1, {{"class"_L1, u"pair"_s}},
            input(form, {"cost"_L1, u"Cost"_s, convertedText(subscription)}, u"text"_s, form.cost, true,
                u"decimal"_s)
                + select(form, {"currency"_L1, u"Currency"_s, {}}, currencyChoices(), form.currency))
        + element("div"_L1, {{"class"_L1, u"pair"_s}},
            select(form, {"billing_cycle"_L1, u"Billing cycle"_s, {}}, cycleChoices(), form.billingCycle)
                + input(form, {"next_billing_date"_L1, u"Next renewal"_s, {}}, u"date"_s,
                    form.nextBillingDate, true))
        + input(form, {"trial_end_date"_L1, u"Trial ends"_s, u"Leave empty where there is no trial."_s},
            u"date"_s, form.trialEndDate, false)
        + element("div"_L1, {{"class"_L1, u"actions"_s}},
            action(u"save"_s, u"Save"_s, u"button"_s)
                + element("a"_L1, {{"class"_L1, u"button plain"_s}, {"href"_L1, u"/calendar"_s}},
                    u"To the calendar"_s));
    const QString target = u"/subscriptions/%1/edit"_s.arg(stored(subscription.id).toString());
    content += element("form"_L1, {{"method"_L1, u"post"_s}, {"action"_L1, target}}, fields);

    const bool cancelled = isCancelled(subscription);
    const QString explanation = cancelled
        ? u"It will renew again, in the rhythm that it had."_s
        : u"This marks the subscription as cancelled here. It does not contact the merchant."_s;
    content += element("form"_L1, {{"method"_L1, u"post"_s}, {"action"_L1, target}, {"class"_L1, u"aside"_s}},
        formTokenField(viewer) + element("p"_L1, {{"class"_L1, u"soft"_s}}, explanation)
            + (cancelled ? action(u"uncancel"_s, u"Take the cancellation back"_s, u"button plain"_s)
                         : action(u"cancel"_s, u"Mark as cancelled"_s, u"button danger"_s)));
    return element("section"_L1, {{"class"_L1, u"card narrow edit"_s}}, content);
}

} // namespace orbitledge::demo
