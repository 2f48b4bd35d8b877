#include "cli/Concealment.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class ConcealmentTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldHideWhoSomebodyIs_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("concealed");
        QTest::newRow("the home folder") << u"/home/ada"_s << u"~"_s;
        QTest::newRow("a file in it") << u"/home/ada/.config/a.json"_s << u"~/.config/a.json"_s;
        QTest::newRow("in the middle of a sentence")
            << u"/home/ada/x starts /home/ada, which"_s << u"~/x starts ~, which"_s;
        QTest::newRow("a folder whose name begins like it") << u"/home/adamant/x"_s << u"/home/<user>/x"_s;
        QTest::newRow("somebody else's folder") << u"/home/grace/x"_s << u"/home/<user>/x"_s;
        QTest::newRow("the name elsewhere") << u"/media/ada/disk"_s << u"/media/<user>/disk"_s;
        QTest::newRow("a part of a file's name") << u"/srv/ada-data/x"_s << u"/srv/<user>-data/x"_s;
        QTest::newRow("another name of the same person") << u"/srv/lovelace"_s << u"/srv/<user>"_s;
        QTest::newRow("a longer word") << u"/srv/adapters/nevada"_s << u"/srv/adapters/nevada"_s;
        QTest::newRow("an address") << u"/srv/ada.l@example.com/x"_s << u"/srv/<address>/x"_s;
        QTest::newRow("a modifier of a locale") << u"ca_ES.UTF-8@valencia"_s << u"ca_ES.UTF-8@valencia"_s;
        QTest::newRow("nothing of that") << u"/usr/bin/orbitledge"_s << u"/usr/bin/orbitledge"_s;
        QTest::newRow("nothing") << QString() << QString();
    }
    void shouldHideWhoSomebodyIs()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, concealed);
        const Concealment concealment(u"/home/ada"_s, {u"ada"_s, u"lovelace"_s});
        QCOMPARE(concealment.concealed(text), concealed);
    }

    void shouldTakeNamesAsTheyAre()
    {
        const Concealment concealment(u"/srv/a+b (c)/"_s, {u"a+b"_s, u"d.e"_s});
        QCOMPARE(concealment.concealed(u"/srv/a+b (c)/x"_s), u"~/x"_s);
        QCOMPARE(concealment.concealed(u"/a+b/aab/d.e/dxe"_s), u"/<user>/aab/<user>/dxe"_s);
    }

    void shouldHideNothingOfAMachineWithoutNames_data()
    {
        QTest::addColumn<QString>("home");
        QTest::newRow("no home") << QString();
        QTest::newRow("the root") << u"/"_s;
    }
    void shouldHideNothingOfAMachineWithoutNames()
    {
        QFETCH(const QString, home);
        QCOMPARE(Concealment(home, {}).concealed(u"/etc/x"_s), u"/etc/x"_s);
        QCOMPARE(Concealment(home, {QString()}).concealed(u"/etc/x"_s), u"/etc/x"_s);
    }
};

ORBITLEDGE_TEST_MAIN(ConcealmentTest)
#include "ConcealmentTest.moc"
