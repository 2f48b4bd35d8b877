#include "composition/logos/SystemLogos.h"

#include "platform/curl/CurlHttpSession.h"
#include "platform/linux/PosixFileStore.h"
#include "support/TestMain.h"

#include <QBuffer>

using namespace orbitledge;
using namespace Qt::StringLiterals;

class SystemLogosTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldShowWhatItsFolderHolds()
    {
        QImage picture(4, 4, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QByteArray content;
        QBuffer buffer(&content);
        QVERIFY(picture.save(&buffer, "png"));
        const QUrl address(u"https://127.0.0.1:1/logo"_s); // where nobody listens
        LogoCache cache(qgetenv("XDG_CACHE_HOME").toStdString() + "/app.orbitledge.Orbitledge/logos",
            std::make_shared<PosixFileStore>());
        QVERIFY(cache.keep(address,
            {.content = content,
                .freshUntil = *Instant::fromText("2099-01-01T00:00:00Z"),
                .entityTag = {},
                .lastModified = {}}));

        const auto logos = makeLogos(std::make_shared<CurlHttpSession>("Agent/1"));
        QVERIFY(logos->image(address).isNull());
        QTRY_COMPARE(logos->image(address).size(), QSize(4, 4));
    }
};

ORBITLEDGE_TEST_MAIN(SystemLogosTest)
#include "SystemLogosTest.moc"
