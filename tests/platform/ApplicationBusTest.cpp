#include "platform/linux/application/ApplicationBus.h"

#include "platform/ApplicationService.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class ApplicationBusTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldMakeThePathOfTheName()
    {
        QCOMPARE(ApplicationBus::pathOf(u"app.orbitledge.Orbitledge"_s), u"/app/orbitledge/Orbitledge"_s);
        QCOMPARE(ApplicationBus::pathOf(u"org.my-place.App"_s), u"/org/my_place/App"_s);
    }

    void shouldPassTheTokenUnderBothNames()
    {
        QCOMPARE(ApplicationBus::platformData(u"t"_s),
            (QVariantMap{{u"activation-token"_s, u"t"_s}, {u"desktop-startup-id"_s, u"t"_s}}));
        QCOMPARE(ApplicationBus::platformData(QString()), QVariantMap());
    }

    void shouldTakeTheTokenUnderEitherName_data()
    {
        QTest::addColumn<QVariantMap>("data");
        QTest::addColumn<QString>("token");
        QTest::newRow("none") << QVariantMap() << QString();
        QTest::newRow("Wayland's") << QVariantMap{{u"activation-token"_s, u"w"_s}} << u"w"_s;
        QTest::newRow("X11's") << QVariantMap{{u"desktop-startup-id"_s, u"x"_s}} << u"x"_s;
        QTest::newRow("both") << QVariantMap{{u"activation-token"_s, u"w"_s},
            {u"desktop-startup-id"_s, u"x"_s}}
                              << u"w"_s;
        QTest::newRow("something else") << QVariantMap{{u"other"_s, u"o"_s}} << QString();
    }
    void shouldTakeTheTokenUnderEitherName()
    {
        QFETCH(QVariantMap, data);
        QFETCH(QString, token);
        QCOMPARE(ApplicationBus::activationToken(data), token);
    }

    void shouldKnowActionsByTheirNames()
    {
        for (const ApplicationAction action : {ApplicationAction::Open, ApplicationAction::QuickAdd,
                 ApplicationAction::Settings, ApplicationAction::Quit})
            QCOMPARE(applicationActionNamed(nameOf(action)), std::optional(action));
        QCOMPARE(nameOf(ApplicationAction::QuickAdd), u"quick-add"_s);
        QCOMPARE(applicationActionNamed(u"Open"_s), std::nullopt);
        QCOMPARE(applicationActionNamed(QString()), std::nullopt);
    }
};

ORBITLEDGE_TEST_MAIN(ApplicationBusTest)
#include "ApplicationBusTest.moc"
