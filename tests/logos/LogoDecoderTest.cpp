#include "logos/LogoDecoder.h"

#include "logos/EncodedPicture.h"
#include "logos/cache/LogoCache.h"
#include "support/SamplePictures.h"
#include "support/TestMain.h"

#include <QImageReader>

#include <sys/resource.h>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(orbitledge::LogoFault)

namespace {

QByteArray repeated(const QByteArray &what, int times)
{
    return what.repeated(times);
}

/// The largest that this process has been, in bytes.
qint64 peakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return qint64{usage.ru_maxrss} * 1024;
}

bool isAlmost(QColor a, QColor b)
{
    return std::abs(a.red() - b.red()) < 8 && std::abs(a.green() - b.green()) < 8
        && std::abs(a.blue() - b.blue()) < 8 && a.alpha() == b.alpha();
}

QByteArray lossyWebp(QSize size, const QColor &color = Qt::red)
{
    return picture("webp", size, color, 80);
}

} // namespace

class LogoDecoderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // What is told about vectors below means nothing where they could not be read anyway.
        QVERIFY(QImageReader::supportedImageFormats().contains("svg"));
    }

    void shouldDecodeEachFormat_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QSize>("size");
        for (const char *format : {"png", "jpeg", "webp"}) {
            QTest::addRow("%s", format) << picture(format) << QSize(8, 8);
            QTest::addRow("%s as wide as it gets", format) << picture(format, {256, 100}) << QSize(256, 100);
            QTest::addRow("%s a bit larger", format) << picture(format, {257, 257}) << QSize(256, 256);
            QTest::addRow("%s wide", format) << picture(format, {2048, 1024}) << QSize(256, 128);
            QTest::addRow("%s a line", format) << picture(format, {2048, 1}) << QSize(256, 1);
        }
        QTest::newRow("webp that loses something") << lossyWebp({320, 80}) << QSize(256, 64);
        QTest::newRow("gif") << animatedGif() << QSize(1, 1);
        QTest::newRow("something behind") << picture("png") + "and more" << QSize(8, 8);
    }
    void shouldDecodeEachFormat()
    {
        QFETCH(QByteArray, content);
        QFETCH(QSize, size);
        const auto image = decodeLogo(content);
        QVERIFY(image);
        QCOMPARE(image->size(), size);
        QCOMPARE(image->format(), QImage::Format_ARGB32_Premultiplied);
        // For a picture that is one pixel high the scaled one is its middle.
        QVERIFY(isAlmost(image->pixelColor(size.width() / 2, size.height() / 2), Qt::red));
    }

    void shouldKeepWhatIsTransparent()
    {
        const auto image = decodeLogo(picture("png", {4, 4}, QColor(0, 0, 255, 128)));
        QVERIFY(image);
        QCOMPARE(image->pixelColor(1, 1).alpha(), 128);

        const auto lossy = decodeLogo(lossyWebp({320, 80}, QColor(0, 0, 255, 128)));
        QVERIFY(lossy);
        QCOMPARE(lossy->size(), QSize(256, 64));
        QCOMPARE(lossy->pixelColor(128, 30).alpha(), 128);
    }

    void shouldRefuseWhatIsNoLogo_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<LogoFault>("fault");
        QTest::newRow("nothing") << ""_ba << LogoFault::UnknownFormat;
        QTest::newRow("a page") << "<!doctype html><html></html>"_ba << LogoFault::UnknownFormat;
        QTest::newRow("a vector picture") << vectorPicture() << LogoFault::UnknownFormat;
        QTest::newRow("a vector picture behind a signature")
            << "\x89PNG\r\n\x1a\n"_ba + vectorPicture() << LogoFault::Damaged;
        QTest::newRow("a bitmap") << picture("bmp") << LogoFault::UnknownFormat;
        QTest::newRow("noise") << repeated("\x01\xfe\x7f", 100) << LogoFault::UnknownFormat;
        QTest::newRow("noise behind a signature of PNG")
            << "\x89PNG\r\n\x1a\n"_ba + repeated("\x01\xfe\x7f", 100) << LogoFault::Damaged;
        QTest::newRow("noise behind a signature of JPEG")
            << "\xff\xd8\xff"_ba + repeated("\x01\xfe\x7f", 100) << LogoFault::Damaged;
        QTest::newRow("noise behind a signature of GIF")
            << "GIF89a"_ba + repeated("\x01\xfe\x7f", 5) << LogoFault::Damaged;
        QTest::newRow("noise behind a signature of WebP")
            << "RIFF\x04\x01\x00\x00WEBP"_ba + repeated("\x01\xfe\x7f", 100) << LogoFault::Damaged;
        QTest::newRow("no pixels") << pngThatClaims(0, 8) << LogoFault::Damaged;
        QTest::newRow("the wrong pixels") << pngThatClaims(100, 100) << LogoFault::Damaged;
        QTest::newRow("a side too long") << picture("png", {2049, 1}) << LogoFault::TooLarge;
        QTest::newRow("a PNG that claims to be huge")
            << pngThatClaims(100'000, 100'000) << LogoFault::TooLarge;
        QTest::newRow("a PNG that claims to be beyond")
            << pngThatClaims(0xffff'ffff, 0xffff'ffff) << LogoFault::Damaged;
        QTest::newRow("a GIF that claims to be huge") << animatedGif({65'535, 65'535}) << LogoFault::TooLarge;
        QTest::newRow("too many bytes")
            << picture("png") + QByteArray(largestLogo, '\0') << LogoFault::TooLarge;
    }
    void shouldRefuseWhatIsNoLogo()
    {
        QFETCH(QByteArray, content);
        QFETCH(LogoFault, fault);
        const auto image = decodeLogo(content);
        QVERIFY(!image);
        QCOMPARE(image.error(), fault);
    }

    void shouldRefuseWhatIsCutOffAnywhere_data()
    {
        QTest::addColumn<QByteArray>("content");
        for (const char *format : {"png", "jpeg", "webp"})
            QTest::newRow(format) << picture(format, {16, 16});
        QTest::newRow("webp that loses something") << lossyWebp({16, 16});
        QTest::newRow("webp that loses something, transparent")
            << lossyWebp({16, 16}, QColor(0, 0, 255, 128));
        const QByteArray gif = animatedGif();
        // The frames behind the first are not needed.
        QTest::newRow("gif") << gif.first(inspectPicture(gif)->content.size() - 1);
    }
    void shouldRefuseWhatIsCutOffAnywhere()
    {
        QFETCH(QByteArray, content);
        QVERIFY(decodeLogo(content));
        for (qsizetype size = 0; size < content.size(); ++size)
            QVERIFY2(!decodeLogo(content.first(size)), qPrintable(QString::number(size)));
    }

    void shouldSurviveAChangeOfAnyByte_data()
    {
        QTest::addColumn<QByteArray>("content");
        for (const char *format : {"png", "jpeg", "webp"})
            QTest::newRow(format) << picture(format, {16, 16});
        QTest::newRow("webp that loses something") << lossyWebp({16, 16});
        QTest::newRow("webp that loses something, transparent")
            << lossyWebp({16, 16}, QColor(0, 0, 255, 128));
        QTest::newRow("gif") << animatedGif();
    }
    void shouldSurviveAChangeOfAnyByte()
    {
        QFETCH(QByteArray, content);
        for (qsizetype place = 0; place < content.size(); ++place) {
            for (const int change : {0x01, 0x80, 0xff}) {
                QByteArray changed = content;
                changed[place] = static_cast<char>(changed[place] ^ change);
                if (const auto image = decodeLogo(changed))
                    QVERIFY(image->width() <= longestDecodedSide && image->height() <= longestDecodedSide);
            }
        }
    }

    void shouldShowTheFirstFrameOnly()
    {
        const auto image = decodeLogo(animatedGif());
        QVERIFY(image);
        QCOMPARE(image->pixelColor(0, 0), QColor(Qt::red));
    }

    void shouldUnpackNoTexts()
    {
        // 900 texts of a megabyte each, in a few kilobytes.
        QByteArray packed(1 << 16, '\0');
        const QByteArray text(1 << 20, 'a');
        auto size = static_cast<uLongf>(packed.size());
        QCOMPARE(compress2(reinterpret_cast<Bytef *>(packed.data()), &size,
                     reinterpret_cast<const Bytef *>(text.constData()), uLong(text.size()), 9),
            Z_OK);
        packed.truncate(static_cast<qsizetype>(size));
        const QByteArray chunk = pngChunk("zTXt", "Comment\0\0"_ba + packed);
        const QByteArray good = picture("png");
        constexpr qsizetype head = 33;
        const QByteArray bomb = good.first(head) + repeated(chunk, 900) + good.sliced(head);
        QVERIFY(bomb.size() <= largestLogo);

        const qint64 before = peakMemory();
        const auto image = decodeLogo(bomb);
        QVERIFY(image);
        QVERIFY(image->textKeys().isEmpty());
        QVERIFY2(peakMemory() - before < (16 << 20), qPrintable(QString::number(peakMemory() - before)));
    }

    void shouldRefuseAJpegOfMoreScansThanAnyoneNeeds()
    {
        QByteArray content = picture("jpeg");
        const qsizetype scan = content.lastIndexOf("\xff\xda");
        const QByteArray scanBytes = content.sliced(scan, content.size() - scan - 2);
        content.insert(scan, repeated(scanBytes, 101));
        const auto image = decodeLogo(content);
        QVERIFY(!image);
        QCOMPARE(image.error(), LogoFault::Damaged);
    }
};

ORBITLEDGE_TEST_MAIN(LogoDecoderTest)
#include "LogoDecoderTest.moc"
