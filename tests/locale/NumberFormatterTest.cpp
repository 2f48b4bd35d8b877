#include "locale/NumberFormatter.h"

#include "support/TestMain.h"
#include "support/Times.h"

#include <limits>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class NumberFormatterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldWriteNumbersAsTheLocaleDoes_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<qint64>("number");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *locale, qint64 number, const QString &text) {
            QTest::addRow("%lld in %s", number, locale) << QByteArray(locale) << number << text;
        };
        row("en_US", 0, u"0"_s);
        row("en_US", 14, u"14"_s);
        row("en_US", 1234, u"1,234"_s);
        row("en_US", -1234, u"-1,234"_s);
        row("de_DE", 1234567, u"1.234.567"_s);
        row("es_ES", 1234, u"1234"_s);
        row("hi_IN", 1234567, u"12,34,567"_s);
        row("ar_EG", 14, u"١٤"_s);
        row("en_US", std::numeric_limits<qint64>::max(), u"9,223,372,036,854,775,807"_s);
        row("en_US", std::numeric_limits<qint64>::min(), u"-9,223,372,036,854,775,808"_s);
    }
    void shouldWriteNumbersAsTheLocaleDoes()
    {
        QFETCH(QByteArray, locale);
        QFETCH(qint64, number);
        QFETCH(QString, text);
        QCOMPARE(NumberFormatter(localeNamed(locale)).text(number), text);
    }
};

ORBITLEDGE_TEST_MAIN(NumberFormatterTest)
#include "NumberFormatterTest.moc"
