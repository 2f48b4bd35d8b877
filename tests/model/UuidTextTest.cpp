#include "model/UuidText.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class UuidTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldReadTheCanonicalFormInAnyCase_data();
    void shouldReadTheCanonicalFormInAnyCase();
    void shouldRefuseAnyOtherForm_data();
    void shouldRefuseAnyOtherForm();
    void shouldRefuseAHyphenAndADigitOutOfPlace();
    void shouldPutEveryDigitInItsPlace();
};

void UuidTextTest::shouldReadTheCanonicalFormInAnyCase_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("printed");
    const QString printed = u"12345678-9ABC-DEF0-1234-56789ABCDEF0"_s;
    QTest::newRow("upper case") << QByteArray("12345678-9ABC-DEF0-1234-56789ABCDEF0") << printed;
    QTest::newRow("lower case") << QByteArray("12345678-9abc-def0-1234-56789abcdef0") << printed;
    QTest::newRow("mixed case") << QByteArray("12345678-9aBc-DeF0-1234-56789AbCdEf0") << printed;
    QTest::newRow("nil") << QByteArray("00000000-0000-0000-0000-000000000000")
                         << u"00000000-0000-0000-0000-000000000000"_s;
    QTest::newRow("all ones") << QByteArray("ffffffff-ffff-ffff-ffff-ffffffffffff")
                              << u"FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF"_s;
}

void UuidTextTest::shouldReadTheCanonicalFormInAnyCase()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, printed);
    const auto uuid = uuidFromText(text.toStdString());
    QVERIFY(uuid);
    QCOMPARE(uuidText(*uuid), printed);
    QCOMPARE(*uuid, QUuid(QString::fromLatin1(text)));
}

void UuidTextTest::shouldRefuseAnyOtherForm_data()
{
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *name, const QByteArray &text) { QTest::newRow(name) << text; };
    row("empty", "");
    row("braces", "{12345678-9abc-def0-1234-56789abcdef0}");
    row("braces in 36 characters", "{2345678-9abc-def0-1234-56789abcdef}");
    row("no hyphens", "123456789abcdef0123456789abcdef0");
    row("a hyphen missing", "123456789abc-def0-1234-56789abcdef0");
    row("a hyphen too many", "12345678-9abc-def0-1234-56789abc-def0");
    row("a hyphen shifted", "1234567-89abc-def0-1234-56789abcdef0");
    row("a digit too few", "12345678-9abc-def0-1234-56789abcdef");
    row("a digit too many", "12345678-9abc-def0-1234-56789abcdef01");
    row("a letter beyond f", "12345678-9abc-def0-1234-56789abcdefg");
    row("an upper-case letter beyond F", "12345678-9ABC-DEF0-1234-56789ABCDEFG");
    row("blank before", " 12345678-9abc-def0-1234-56789abcdef0");
    row("blank after", "12345678-9abc-def0-1234-56789abcdef0 ");
    row("blank for a digit", "12345678-9abc-def0-1234-56789abcdef ");
    row("a sign for a digit", "+2345678-9abc-def0-1234-56789abcdef0");
    row("underscores", "12345678_9abc_def0_1234_56789abcdef0");
    row("a URN", "urn:uuid:12345678-9abc-def0-1234-56789abcdef0");
    row("hexadecimal prefix", "0x345678-9abc-def0-1234-56789abcdef0");
    row("null character at the end", QByteArray("12345678-9abc-def0-1234-56789abcdef\0", 36));
    row("null character behind the end", QByteArray("12345678-9abc-def0-1234-56789abcdef0\0", 37));
    row("full-width digit in 36 bytes",
        "\uff11"
        "45678-9abc-def0-1234-56789abcdef0");
    row("a hyphen of typography", "12345678\u20109abc-def0-1234-56789abcdef0");
    row("characters next to the digits", "1234567:-9abc-def0-1234-56789abcdef/");
    row("characters next to the letters", "1234567@-9abc-def0-1234-56789abcdef`");
}

void UuidTextTest::shouldRefuseAnyOtherForm()
{
    QFETCH(QByteArray, text);
    QVERIFY(!uuidFromText(text.toStdString()));
}

void UuidTextTest::shouldRefuseAHyphenAndADigitOutOfPlace()
{
    const std::string whole = "12345678-9abc-def0-1234-56789abcdef0";
    for (std::size_t i = 0; i < whole.size(); ++i) {
        std::string text = whole;
        text[i] = whole[i] == '-' ? '0' : '-';
        QVERIFY2(!uuidFromText(text), text.c_str());
        QVERIFY(!uuidFromText(whole.substr(0, i)));
    }
}

void UuidTextTest::shouldPutEveryDigitInItsPlace()
{
    const std::string zeros = "00000000-0000-0000-0000-000000000000";
    for (std::size_t i = 0; i < zeros.size(); ++i) {
        if (zeros[i] == '-')
            continue;
        for (const char digit : std::string_view("123456789abcdefABCDEF")) {
            std::string text = zeros;
            text[i] = digit;
            const auto uuid = uuidFromText(text);
            QVERIFY(uuid);
            QCOMPARE(uuidText(*uuid), QString::fromStdString(text).toUpper());
        }
    }
}

ORBITLEDGE_TEST_MAIN(UuidTextTest)
#include "UuidTextTest.moc"
