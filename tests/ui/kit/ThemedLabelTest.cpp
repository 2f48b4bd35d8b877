#include "ui/kit/ThemedLabel.h"

#include "support/Pixels.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/Typography.h"

#include <QAccessible>
#include <QHBoxLayout>

using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

const QString longText = u"A very long subscription name that has to give way"_s;

QString nameOf(ThemedLabel &label)
{
    return QAccessible::queryAccessibleInterface(&label)->text(QAccessible::Name);
}

QImage drawn(ThemedLabel &label)
{
    applyColorScheme(label, ColorScheme::Light);
    return pictureOf(label);
}

QImage edge(const QImage &image, bool isRight)
{
    return image.copy(isRight ? image.width() - 1 : 0, 0, 1, image.height());
}

} // namespace

class ThemedLabelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldBeAsLargeAsItsText()
    {
        ThemedLabel label(u"MMMMM"_s, ThemedLabel::Look{13, QFont::DemiBold});
        applyTextScale(label, 1);
        label.resize(label.sizeHint() + QSize(20, 0));
        const QImage image = drawn(label);
        const int hinted = label.sizeHint().width();
        const QColor paper = colorOf(Tone::Paper, ColorScheme::Light);
        QCOMPARE_GT(highestContrast(image.copy(hinted - 4, 0, 4, image.height()), paper), 1.5);
        QCOMPARE(highestContrast(image.copy(hinted + 1, 0, 19, image.height()), paper), 1.0);
    }

    void shouldTellAllOfItsTextHoweverLittleIsSeen()
    {
        ThemedLabel::Look look;
        look.overflow = ThemedLabel::Overflow::Elide;
        ThemedLabel label(longText, look);
        label.resize(80, 20);
        QVERIFY(label.isElided());
        QCOMPARE(nameOf(label), longText);
        QCOMPARE_LT(label.minimumSizeHint().width(), 30);
        label.resize(label.sizeHint());
        QVERIFY(!label.isElided());
    }

    void shouldElideAtTheEndOfTheText()
    {
        ThemedLabel::Look look;
        look.overflow = ThemedLabel::Overflow::Elide;
        ThemedLabel label(longText, look);
        label.resize(label.sizeHint().width() / 2, label.sizeHint().height());
        const QColor paper = colorOf(Tone::Paper, ColorScheme::Light);
        QCOMPARE(highestContrast(edge(drawn(label), true), paper), 1.0);
    }

    void shouldGoOnInTheNextLine()
    {
        ThemedLabel::Look look;
        look.overflow = ThemedLabel::Overflow::Wrap;
        ThemedLabel label(longText, look);
        QVERIFY(label.sizePolicy().hasHeightForWidth());
        const int oneLine = label.heightForWidth(2000);
        QCOMPARE_GE(label.heightForWidth(120), 3 * oneLine);
        ThemedLabel kept(longText);
        QCOMPARE(oneLine, kept.sizeHint().height());
        QCOMPARE(kept.heightForWidth(120), -1);
    }

    void shouldTakeTextForTextAndNotForMarkup()
    {
        ThemedLabel label(u"<b>AT&T</b>"_s);
        const QFontMetrics metrics(fontOf(label, 12));
        QCOMPARE_GE(label.sizeHint().width(), metrics.horizontalAdvance(u"<b>AT&T</b>"_s));
    }

    void shouldTellAHeading()
    {
        ThemedLabel label(u"Can’t reach Orbitledge"_s);
        QCOMPARE(QAccessible::queryAccessibleInterface(&label)->role(), QAccessible::StaticText);
        label.setHeading(true);
        QCOMPARE(QAccessible::queryAccessibleInterface(&label)->role(), QAccessible::Heading);
        label.setAccessibleName(u"Another name"_s);
        QCOMPARE(nameOf(label), u"Another name"_s);
    }

    void shouldKeepItsWidthWhileDigitsChange()
    {
        ThemedLabel::Look look;
        look.designSize = 26;
        look.digits = ThemedLabel::Digits::Tabular;
        ThemedLabel label(u"$111.11"_s, look);
        const QSize before = label.sizeHint();
        label.setText(u"$888.88"_s);
        QCOMPARE(label.sizeHint(), before);
    }

    void shouldNotCountTheTrackingBehindTheLastLetter()
    {
        ThemedLabel::Look look;
        look.tracking = 10;
        ThemedLabel tracked(u"HH"_s, look);
        look.tracking = 0;
        ThemedLabel plain(u"HH"_s, look);
        applyTextScale(tracked, 1);
        applyTextScale(plain, 1);
        QCOMPARE_LE(std::abs(tracked.sizeHint().width() - plain.sizeHint().width() - 10), 1);
    }

    void shouldStandWhereItsAlignmentSays_data()
    {
        QTest::addColumn<Qt::Alignment>("alignment");
        QTest::addColumn<Qt::LayoutDirection>("direction");
        QTest::addColumn<bool>("isTabular");
        QTest::addColumn<bool>("isRight");
        for (const bool isTabular : {false, true}) {
            const QByteArray kind = isTabular ? "figures, " : "text, ";
            const auto add = [&](const char *name, Qt::Alignment alignment, Qt::LayoutDirection direction,
                                 bool isRight) {
                QTest::newRow((kind + name).constData()) << alignment << direction << isTabular << isRight;
            };
            add("leading", Qt::AlignLeading, Qt::LeftToRight, false);
            add("trailing", Qt::AlignTrailing, Qt::LeftToRight, true);
            add("leading from the right", Qt::AlignLeading, Qt::RightToLeft, true);
            add("trailing from the right", Qt::AlignTrailing, Qt::RightToLeft, false);
        }
    }
    void shouldStandWhereItsAlignmentSays()
    {
        QFETCH(Qt::Alignment, alignment);
        QFETCH(Qt::LayoutDirection, direction);
        QFETCH(bool, isTabular);
        QFETCH(bool, isRight);
        ThemedLabel::Look look;
        look.alignment = alignment | Qt::AlignVCenter;
        look.digits = isTabular ? ThemedLabel::Digits::Tabular : ThemedLabel::Digits::Proportional;
        ThemedLabel label(u"M18M"_s, look);
        label.setLayoutDirection(direction);
        label.resize(200, 20);
        const QImage image = drawn(label);
        const QColor paper = colorOf(Tone::Paper, ColorScheme::Light);
        const QImage left = image.copy(0, 0, 60, 20);
        const QImage right = image.copy(140, 0, 60, 20);
        QCOMPARE_GT(highestContrast(isRight ? right : left, paper), 4.5);
        QCOMPARE(highestContrast(isRight ? left : right, paper), 1.0);
    }

    void shouldAskForRoomInALayoutAsItsTextGrows()
    {
        QWidget window;
        auto *const layout = new QHBoxLayout(&window);
        auto *const label = new ThemedLabel(u"Short"_s);
        layout->addWidget(label);
        window.show();
        const int before = label->width();
        label->setText(longText);
        QTRY_COMPARE_GT(label->width(), 2 * before);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(ThemedLabelTest)
#include "ThemedLabelTest.moc"
