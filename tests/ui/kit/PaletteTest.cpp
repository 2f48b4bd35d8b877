#include "ui/kit/Palette.h"

#include "support/Pixels.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/FooterButton.h"
#include "ui/kit/ThemedLabel.h"

#include <QHBoxLayout>

#include <array>

using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

constexpr std::array allSchemes{
    ColorScheme::Light, ColorScheme::Dark, ColorScheme::LightHighContrast, ColorScheme::DarkHighContrast};

} // namespace

class PaletteTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldKnowTheColorOfAText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("light");
        QTest::addColumn<QString>("dark");
        QTest::newRow("a tint of the brand") << u"#B7FF4A"_s << u"#4d7c0f"_s << u"#b7ff4a"_s;
        QTest::newRow("a tint in lower case") << u"#ffb44c"_s << u"#b45309"_s << u"#ffb44c"_s;
        QTest::newRow("a tint without its sign is any colour") << u"B7FF4A"_s << u"#b7ff4a"_s << u"#b7ff4a"_s;
        QTest::newRow("any colour") << u"#123456"_s << u"#123456"_s << u"#123456"_s;
        QTest::newRow("with blanks and brackets") << u" (#00ff7F); "_s << u"#00ff7f"_s << u"#00ff7f"_s;
        QTest::newRow("black") << u"000000"_s << u"#000000"_s << u"#000000"_s;
        QTest::newRow("empty") << QString() << u"#0e7490"_s << u"#67e8f9"_s;
        QTest::newRow("nothing but signs") << u"##--"_s << u"#0e7490"_s << u"#67e8f9"_s;
        QTest::newRow("three digits") << u"#fff"_s << u"#0e7490"_s << u"#67e8f9"_s;
        QTest::newRow("seven digits") << u"#1234567"_s << u"#0e7490"_s << u"#67e8f9"_s;
        QTest::newRow("not hexadecimal") << u"#12345G"_s << u"#0e7490"_s << u"#67e8f9"_s;
        QTest::newRow("a sign inside") << u"12-345"_s << u"#0e7490"_s << u"#67e8f9"_s;
        QTest::newRow("digits of another script")
            << u"\u0661\u0662\u0663\u0664\u0665\u0666"_s << u"#0e7490"_s << u"#67e8f9"_s;
        QTest::newRow("letters around it are part of it") << u"x123456"_s << u"#0e7490"_s << u"#67e8f9"_s;
    }
    void shouldKnowTheColorOfAText()
    {
        QFETCH(QString, text);
        QFETCH(QString, light);
        QFETCH(QString, dark);
        QCOMPARE(colorOfText(text, ColorScheme::Light).name(), light);
        QCOMPARE(colorOfText(text, ColorScheme::Dark).name(), dark);
        QCOMPARE(colorOfText(text, ColorScheme::Light).alpha(), 255);
    }

    void shouldTintWithTheForeground_data()
    {
        QTest::addColumn<Tone>("tone");
        QTest::addColumn<double>("light");
        QTest::addColumn<double>("dark");
        QTest::newRow("fill") << Tone::Fill << 0.08 << 0.07;
        QTest::newRow("veil") << Tone::Veil << 0.05 << 0.04;
        QTest::newRow("stroke") << Tone::Stroke << 0.10 << 0.09;
    }
    void shouldTintWithTheForeground()
    {
        QFETCH(Tone, tone);
        QFETCH(double, light);
        QFETCH(double, dark);
        QCOMPARE_LT(std::abs(colorOf(tone, ColorScheme::Light).alphaF() - light), 0.001);
        QCOMPARE_LT(std::abs(colorOf(tone, ColorScheme::Dark).alphaF() - dark), 0.001);
        QCOMPARE_LT(colorOf(tone, ColorScheme::Light).lightness(), 16);
        QCOMPARE(colorOf(tone, ColorScheme::Dark).lightness(), 255);
    }

    void shouldLayATintOnAGround()
    {
        QColor half(Qt::black);
        half.setAlphaF(0.5F);
        QCOMPARE_LE(std::abs(over(half, Qt::white).red() - 128), 1);
        QCOMPARE(over(Qt::red, Qt::white), QColor(Qt::red));
    }

    void shouldBeReadableWhereverTextStands_data()
    {
        QTest::addColumn<QColor>("text");
        QTest::addColumn<QColor>("ground");
        QTest::addColumn<double>("contrast");
        for (const ColorScheme colorScheme : allSchemes) {
            QByteArray name = isDark(colorScheme) ? "dark: " : "light: ";
            if (isHighContrast(colorScheme))
                name.prepend("high contrast, ");
            constexpr double least = 4.5;
            const QColor paper = colorOf(Tone::Paper, colorScheme);
            const auto onPaper = [&](Tone tint) { return over(colorOf(tint, colorScheme), paper); };
            const auto add = [&](const char *pair, Tone text, const QColor &ground) {
                QTest::newRow(name + pair) << colorOf(text, colorScheme) << ground << least;
            };
            for (const Tone text :
                {Tone::Ink, Tone::Slate, Tone::BlackAndWhite, Tone::InkAndWhite, Tone::Cyan, Tone::Alert}) {
                const QByteArray number = QByteArray::number(static_cast<int>(text));
                add("tone " + number + " on paper", text, paper);
                add("tone " + number + " on a surface", text, onPaper(Tone::Surface));
            }
            add("ink on a hovered row", Tone::Ink, onPaper(Tone::Fill));
            add("black and white on today", Tone::BlackAndWhite, onPaper(Tone::Emphasis));
            add("slate on today", Tone::Slate, onPaper(Tone::Emphasis));
            add("slate on a hovered row", Tone::Slate, onPaper(Tone::Fill));
            const QPalette palette = paletteFor(colorScheme);
            const auto addRoles
                = [&](const char *pair, QPalette::ColorRole text, QPalette::ColorRole ground) {
                      QTest::newRow(name + pair) << palette.color(text) << palette.color(ground) << least;
                  };
            addRoles("windows", QPalette::WindowText, QPalette::Window);
            addRoles("lists", QPalette::Text, QPalette::Base);
            addRoles("every other line of a list", QPalette::Text, QPalette::AlternateBase);
            addRoles("placeholders", QPalette::PlaceholderText, QPalette::Base);
            addRoles("buttons", QPalette::ButtonText, QPalette::Button);
            addRoles("what is selected", QPalette::HighlightedText, QPalette::Highlight);
            addRoles("tooltips", QPalette::ToolTipText, QPalette::ToolTipBase);
            addRoles("links", QPalette::Link, QPalette::Window);
        }
        QTest::newRow("a badge") << QColor(Qt::white) << QColor::fromRgb(badgeRed) << 4.5;
        for (const ColorScheme colorScheme :
            {ColorScheme::LightHighContrast, ColorScheme::DarkHighContrast}) {
            const QByteArray name = isDark(colorScheme) ? "high contrast, dark: " : "high contrast, light: ";
            const QColor paper = colorOf(Tone::Paper, colorScheme);
            for (const Tone text : {Tone::Ink, Tone::Slate, Tone::BlackAndWhite, Tone::InkAndWhite})
                QTest::newRow(name + "all but the brand's, " + QByteArray::number(static_cast<int>(text)))
                    << colorOf(text, colorScheme) << paper << 15.0;
            QTest::newRow(name + "grey") << colorOf(Tone::Grey, colorScheme) << paper << 7.0;
            QTest::newRow(name + "lines") << over(colorOf(Tone::Stroke, colorScheme), paper) << paper << 4.5;
        }
    }
    void shouldBeReadableWhereverTextStands()
    {
        QFETCH(QColor, text);
        QFETCH(QColor, ground);
        QFETCH(double, contrast);
        QCOMPARE(text.alpha(), 255);
        QCOMPARE_GE(contrastOf(text, ground), contrast);
    }

    void shouldRecogniseItsPalettes()
    {
        for (const ColorScheme colorScheme : allSchemes)
            QCOMPARE(colorSchemeOf(paletteFor(colorScheme)), colorScheme);
    }

    void shouldTellWhatIsDisabled()
    {
        for (const ColorScheme colorScheme : allSchemes) {
            const QPalette palette = paletteFor(colorScheme);
            for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
                QVERIFY(palette.color(QPalette::Disabled, role) != palette.color(QPalette::Active, role));
        }
    }

    void shouldRedrawWhatIsInAWindow()
    {
        QWidget window;
        auto *const layout = new QHBoxLayout(&window);
        auto *const label = new ThemedLabel(u"■■■"_s, &window);
        layout->addWidget(label);
        layout->addWidget(new FooterButton(u"Add"_s, &window));
        applyColorScheme(window, ColorScheme::Light);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE_GT(pixelsOf(pictureOf(*label), colorOf(Tone::Ink, ColorScheme::Light)), 10);

        applyColorScheme(window, ColorScheme::Dark);
        const QImage dark = pictureOf(window);
        QCOMPARE(mostFrequentColor(dark), colorOf(Tone::Paper, ColorScheme::Dark));
        QCOMPARE(pixelsOf(dark, colorOf(Tone::Ink, ColorScheme::Light)), 0);
        QCOMPARE_GT(pixelsOf(pictureOf(*label), colorOf(Tone::Ink, ColorScheme::Dark)), 10);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(PaletteTest)
#include "PaletteTest.moc"
