#include "reminders/DeliveredLedger.h"

namespace orbitledge {

namespace {

QString deliveredLedgerKey()
{
    return QStringLiteral("notifications.immediateLedger");
}

} // namespace

QSet<QString> readDeliveredLedger(const UserDefaults &defaults)
{
    const QStringList keys = defaults.read<QStringList>(deliveredLedgerKey()).value_or(QStringList());
    return {keys.begin(), keys.end()};
}

void writeDeliveredLedger(UserDefaults &defaults, const QSet<QString> &ledger)
{
    QStringList keys(ledger.begin(), ledger.end());
    keys.sort();
    defaults.setValue(deliveredLedgerKey(), keys);
}

void removeDeliveredLedger(UserDefaults &defaults)
{
    defaults.remove(deliveredLedgerKey());
}

} // namespace orbitledge
