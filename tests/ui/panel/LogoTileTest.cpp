#include "ui/panel/LogoTile.h"

#include "support/Pixels.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QHash>
#include <QSignalSpy>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

/// Has what it is given, and counts who asks.
class FewImages final : public LogoImages {
public:
    QImage image(const QUrl &url) override
    {
        ++questions;
        return images.value(url);
    }
    void clear() override { images.clear(); }

    void arrive(const QUrl &url, const QImage &image)
    {
        images.insert(url, image);
        Q_EMIT arrived(url);
    }

    QHash<QUrl, QImage> images;
    int questions = 0;
};

QImage plain(QSize size, const QColor &color)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(color);
    return image;
}

} // namespace

class LogoTileTest : public QObject {
    Q_OBJECT

private:
    static constexpr int side = 26;
    const QUrl m_url{u"https://cdn.example.com/a.png"_s};
    const LogoContent m_content{.image = m_url, .initials = u"TM"_s, .tint = {}};
    FewImages m_images;
    std::unique_ptr<QWidget> m_window;
    LogoTile *m_tile = nullptr;

    [[nodiscard]] QColor middle() const { return pictureOf(*m_window).pixelColor(side / 2, side / 2); }

private Q_SLOTS:
    void init()
    {
        m_images.images.clear();
        m_images.questions = 0;
        m_window = std::make_unique<QWidget>();
        applyTextScale(*m_window, 1);
        applyColorScheme(*m_window, ColorScheme::Light);
        m_window->setAutoFillBackground(true);
        m_tile = new LogoTile(
            {.side = side, .radius = 7, .imageInset = 3, .initialsSize = 10, .groundOpacity = 0.18},
            &m_images, m_window.get());
        m_tile->setGeometry(0, 0, side, side);
        m_tile->setContent(m_content);
        m_window->resize(side, side);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void shouldShowInitialsUntilTheLogoIsThere()
    {
        const QImage initials = pictureOf(*m_window);
        QVERIFY(pixelsOf(initials, Qt::blue) == 0);
        m_images.arrive(m_url, plain({64, 64}, Qt::blue));
        QCOMPARE(middle(), QColor(Qt::blue));
        m_images.clear();
        QCOMPARE(pictureOf(*m_window), initials);
    }

    void shouldBePaintedAnewForItsOwnLogoOnly()
    {
        QTRY_VERIFY(m_images.questions > 0);
        QCoreApplication::processEvents();
        m_images.questions = 0;
        m_images.arrive(QUrl(u"https://cdn.example.com/b.png"_s), plain({64, 64}, Qt::green));
        m_images.arrive(QUrl(u"https://cdn.example.com/c.png"_s), plain({64, 64}, Qt::green));
        QCoreApplication::processEvents();
        QCOMPARE(m_images.questions, 0);
        m_images.arrive(m_url, plain({64, 64}, Qt::blue));
        QTRY_COMPARE(m_images.questions, 1);
    }

    void shouldKeepTheLogosProportionsWithinItsInset()
    {
        const QColor ground = pictureOf(*m_window).pixelColor(0, 0);
        m_images.arrive(m_url, plain({128, 64}, Qt::blue));
        const QImage picture = pictureOf(*m_window);
        QCOMPARE(picture.pixelColor(4, 13), QColor(Qt::blue));
        QCOMPARE(picture.pixelColor(21, 13), QColor(Qt::blue));
        QCOMPARE(picture.pixelColor(2, 13), ground); // the inset is three wide
        QCOMPARE(picture.pixelColor(23, 13), ground);
        QCOMPARE(picture.pixelColor(13, 9), QColor(Qt::blue)); // ten high, in the middle
        QCOMPARE(picture.pixelColor(13, 16), QColor(Qt::blue));
        QCOMPARE(picture.pixelColor(13, 6), ground);
        QCOMPARE(picture.pixelColor(13, 19), ground);
    }

    void shouldLoseNothingOfWhatIsFine()
    {
        QImage fine({256, 256}, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < fine.height(); ++y) {
            for (int x = 0; x < fine.width(); ++x)
                fine.setPixelColor(x, y, (x / 2 + y / 2) % 2 == 0 ? Qt::black : Qt::white);
        }
        m_images.arrive(m_url, fine);
        const QImage picture = pictureOf(*m_window);
        for (int y = 8; y < 18; ++y) {
            for (int x = 8; x < 18; ++x) {
                const int gray = qGray(picture.pixel(x, y));
                QVERIFY2(gray > 96 && gray < 160, qPrintable(QString::number(gray)));
            }
        }
    }

    void shouldCutTheCornersOff()
    {
        m_images.arrive(m_url, plain({64, 64}, Qt::blue));
        const QImage picture = pictureOf(*m_window);
        for (const QPoint corner : {QPoint(3, 3), QPoint(22, 3), QPoint(3, 22), QPoint(22, 22)})
            QVERIFY(picture.pixelColor(corner) != QColor(Qt::blue));
    }

    void shouldShowInitialsWithoutPictures()
    {
        LogoTile tile({.side = side, .radius = 7, .imageInset = 3, .initialsSize = 10, .groundOpacity = 0.18},
            nullptr, m_window.get());
        tile.setGeometry(0, 0, side, side);
        tile.setContent(m_content);
        QCOMPARE(pictureOf(tile), pictureOf(*m_tile));
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(LogoTileTest)
#include "LogoTileTest.moc"
