#pragma once

#include "model/Decimal.h"
#include "model/DecodingError.h"
#include "model/Instant.h"
#include "model/LocalDate.h"

#include <QTest>

// Found by Qt Test, so that a failed comparison shows the values.
namespace orbitledge {

inline char *toString(const Decimal &value)
{
    return QTest::toString(value.toString());
}

inline char *toString(const LocalDate &value)
{
    return QTest::toString(value.text());
}

inline char *toString(const Instant &value)
{
    return QTest::toString(QString::fromLatin1(value.text()) + QLatin1String(" (")
        + QString::number(value.millisecondsSinceEpoch()) + QLatin1String(" ms)"));
}

inline char *toString(const DecodingError &error)
{
    return QTest::toString(error.pathText() + QLatin1String(": ") + error.debugDescription);
}

} // namespace orbitledge
