#pragma once

#include "model/Subscription.h"

#include <QTest>

#include <ostream>

namespace orbitledge {

/// Found by rapidcheck, so that a counterexample can be read.
inline void showValue(const Subscription &subscription, std::ostream &out)
{
    out << qPrintable(subscription.name) << " (" << qPrintable(subscription.status)
        << "): " << subscription.cost.toAscii() << ' ' << qPrintable(subscription.currency);
    if (subscription.convertedCost)
        out << " = " << subscription.convertedCost->toAscii();
    if (subscription.convertedCurrency)
        out << " in " << qPrintable(*subscription.convertedCurrency);
    out << ", " << qPrintable(subscription.billingCycle) << ", on "
        << qPrintable(subscription.nextBillingDate.text());
}

namespace testing {

inline Decimal decimal(const QString &text)
{
    const auto value = Decimal::fromText(text.toStdString());
    if (!value)
        qFatal("%s is not a number", qPrintable(text));
    return *value;
}

/// An active monthly subscription of 10 USD, changed as the test needs it:
///
///     SampleSubscription(u"Disk space"_s).costs(u"9.99"_s, u"EUR"_s).renewsOn({2026, 3, 14})
class SampleSubscription {
public:
    explicit SampleSubscription(const QString &name = QStringLiteral("Sample"))
    {
        m_value.id = QUuid::createUuidV5(QUuid(), name);
        m_value.name = name;
        m_value.cost = Decimal(10);
        m_value.currency = QStringLiteral("USD");
        m_value.billingCycle = QStringLiteral("monthly");
        m_value.nextBillingDate = {2026, 3, 14};
        m_value.status = QStringLiteral("active");
    }

    SampleSubscription &costs(const QString &amount, const QString &currency = QStringLiteral("USD"))
    {
        m_value.cost = decimal(amount);
        m_value.currency = currency;
        return *this;
    }
    SampleSubscription &convertedTo(const QString &amount, const QString &currency)
    {
        m_value.convertedCost = decimal(amount);
        m_value.convertedCurrency = currency;
        return *this;
    }
    SampleSubscription &every(const QString &billingCycle)
    {
        m_value.billingCycle = billingCycle;
        return *this;
    }
    SampleSubscription &renewsOn(const LocalDate &date)
    {
        m_value.nextBillingDate = date;
        return *this;
    }
    SampleSubscription &withStatus(const QString &status)
    {
        m_value.status = status;
        return *this;
    }
    SampleSubscription &inCategory(const QString &name)
    {
        m_value.categoryName = name;
        return *this;
    }
    SampleSubscription &cancelledFrom(const LocalDate &date)
    {
        m_value.cancellationDate = date;
        return *this;
    }

    operator Subscription() const { return m_value; } // NOLINT: it stands for one

    [[nodiscard]] const Subscription &value() const { return m_value; }

private:
    Subscription m_value;
};

} // namespace testing
} // namespace orbitledge
