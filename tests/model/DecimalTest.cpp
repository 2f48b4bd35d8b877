#include "support/Printing.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class DecimalTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldKeepEveryDigitOfAJsonNumber_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("cents") << u"9.99"_s << u"9.99"_s;
        QTest::newRow("zeros after the point go") << u"10.500"_s << u"10.5"_s;
        QTest::newRow("zeros before the point stay") << u"1000"_s << u"1000"_s;
        QTest::newRow("negative zero is zero") << u"-0.00"_s << u"0"_s;
        QTest::newRow("38 digits") << u"12345678901234567890.123456789012345678"_s
                                   << u"12345678901234567890.123456789012345678"_s;
    }
    void shouldKeepEveryDigitOfAJsonNumber()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        const auto number = Decimal::fromJsonNumber(text.toStdString());
        QVERIFY(number);
        QCOMPARE(number->toString(), expected);
    }
};

ORBITLEDGE_TEST_MAIN(DecimalTest)
#include "DecimalTest.moc"
