#include "ui/AppDelegate.h"

#include "support/FakeNotificationCenter.h"
#include "support/FakeWorkspace.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

class AppDelegateTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldOpenThePageOfWhatIsChosen_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("isOpened");
        QTest::newRow("a page") << u"url"_s << u"https://example.com/subscriptions/1/edit"_s << true;
        QTest::newRow("nothing") << u"other"_s << u"https://example.com/"_s << false;
        QTest::newRow("an empty text") << u"url"_s << u""_s << false;
        QTest::newRow("no address") << u"url"_s << u"https://exa mple.com:port/"_s << false;
    }
    void shouldOpenThePageOfWhatIsChosen()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(bool, isOpened);
        const auto center = std::make_shared<FakeNotificationCenter>();
        const auto workspace = std::make_shared<FakeWorkspace>();
        const AppDelegate delegate(center, workspace);
        Q_EMIT center->chosen({{key, value}}, u"token"_s);
        QCOMPARE(workspace->opened, isOpened ? QList<QUrl>{QUrl(value)} : QList<QUrl>());
        // Where another process was told of it.
        workspace->opened.clear();
        delegate.openPage(key == u"url" ? value : QString(), u"token"_s);
        QCOMPARE(workspace->opened, isOpened ? QList<QUrl>{QUrl(value)} : QList<QUrl>());
    }
};

ORBITLEDGE_TEST_MAIN(AppDelegateTest)
#include "AppDelegateTest.moc"
