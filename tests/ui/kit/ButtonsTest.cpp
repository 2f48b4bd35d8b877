#include "support/Pixels.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/CompactIconButton.h"
#include "ui/kit/FooterButton.h"
#include "ui/kit/Palette.h"
#include "ui/kit/PlainButton.h"
#include "ui/kit/PrimaryButton.h"
#include "ui/kit/ProgressIndicator.h"
#include "ui/kit/Typography.h"

#include <QAccessible>
#include <QSignalSpy>
#include <QVBoxLayout>

#include <array>

using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

/// One of each.
struct Buttons {
    QWidget window;
    PrimaryButton primary{u"Add a subscription"_s};
    FooterButton footer{Symbol::Plus, u"Add"_s};
    PlainButton plain{u"Retry"_s};
    CompactIconButton compact{Symbol::Close, u"Dismiss"_s, u"Not now"_s};
    std::array<ButtonBase *, 4> all{&primary, &footer, &plain, &compact};

    explicit Buttons(ColorScheme colorScheme = ColorScheme::Light)
    {
        applyColorScheme(window, colorScheme);
        applyTextScale(window, 1);
        auto *const layout = new QVBoxLayout(&window);
        for (ButtonBase *button : all)
            layout->addWidget(button);
        window.move(200, 200);
        window.show();
        QApplication::setActiveWindow(&window);
        window.setFocus();
    }

    ~Buttons()
    {
        for (ButtonBase *button : all)
            button->setParent(nullptr);
    }

    int ringPixels(QWidget &button) const
    {
        return pixelsOf(pictureOf(button), colorOf(Tone::Cyan, colorSchemeOf(window.palette())));
    }
};

enum class State { Plain, Hovered, Pressed };

} // namespace

class ButtonsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldBeReadableInEveryState_data()
    {
        QTest::addColumn<ColorScheme>("colorScheme");
        QTest::addColumn<State>("state");
        QTest::addColumn<int>("index");
        const std::array kinds{"primary", "footer", "plain"};
        for (int index = 0; index < 3; ++index) {
            const QByteArray kind = kinds.at(static_cast<std::size_t>(index));
            for (const ColorScheme colorScheme : {ColorScheme::Light, ColorScheme::Dark}) {
                const QByteArray name = kind + (colorScheme == ColorScheme::Light ? ", light" : ", dark");
                QTest::newRow(name.constData()) << colorScheme << State::Plain << index;
                QTest::newRow((name + ", hovered").constData()) << colorScheme << State::Hovered << index;
                QTest::newRow((name + ", pressed").constData()) << colorScheme << State::Pressed << index;
            }
        }
    }
    void shouldBeReadableInEveryState()
    {
        QFETCH(ColorScheme, colorScheme);
        QFETCH(State, state);
        QFETCH(int, index);
        Buttons buttons(colorScheme);
        // Large, so that the letters are wider than what smooths their edges.
        applyTextScale(buttons.window, 2);
        ButtonBase &button = *buttons.all.at(static_cast<std::size_t>(index));
        button.setDown(state == State::Pressed);
        button.setAttribute(Qt::WA_UnderMouse, state == State::Hovered);
        const QRect inner = button.rect().adjusted(8, 8, -8, -8);
        const QImage image = pictureOf(button).copy(inner);
        QCOMPARE_GE(highestContrast(image, mostFrequentColor(image)), 4.5);
    }

    void shouldLookOtherwiseWhileHoveredPressedAndDisabled()
    {
        Buttons buttons;
        for (ButtonBase *button : buttons.all) {
            const QImage plain = pictureOf(*button);
            button->setAttribute(Qt::WA_UnderMouse);
            QVERIFY(pictureOf(*button) != plain);
            button->setAttribute(Qt::WA_UnderMouse, false);
            button->setDown(true);
            QVERIFY(pictureOf(*button) != plain);
            button->setDown(false);
            button->setEnabled(false);
            QVERIFY(pictureOf(*button) != plain);
            button->setEnabled(true);
            QCOMPARE(pictureOf(*button), plain);
        }
    }

    void shouldShowARingWhereTheKeyboardLed()
    {
        Buttons buttons;
        for (ButtonBase *button :
            {static_cast<ButtonBase *>(&buttons.footer), static_cast<ButtonBase *>(&buttons.compact)}) {
            QCOMPARE(buttons.ringPixels(*button), 0);
            button->setFocus(Qt::MouseFocusReason);
            QVERIFY(button->hasFocus());
            QCOMPARE(buttons.ringPixels(*button), 0);
            buttons.window.setFocus();
            button->setFocus(Qt::TabFocusReason);
            // All round, two pixels wide, without its corners.
            QCOMPARE_GT(buttons.ringPixels(*button), 2 * (button->width() + button->height()) - 48);
            buttons.window.setFocus();
            QCOMPARE(buttons.ringPixels(*button), 0);
        }
    }

    void shouldShowARingOnTheAccentToo()
    {
        Buttons buttons;
        const int before = pixelsOf(pictureOf(buttons.primary), Qt::white);
        buttons.primary.setFocus(Qt::TabFocusReason);
        QCOMPARE_GT(pixelsOf(pictureOf(buttons.primary), Qt::white), before + 2 * buttons.primary.width());
    }

    void shouldBePressedByKeys_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("space") << Qt::Key_Space;
        QTest::newRow("return") << Qt::Key_Return;
        QTest::newRow("enter") << Qt::Key_Enter;
    }
    void shouldBePressedByKeys()
    {
        QFETCH(Qt::Key, key);
        Buttons buttons;
        for (ButtonBase *button : buttons.all) {
            QSignalSpy clicks(button, &QAbstractButton::clicked);
            button->setFocus(Qt::TabFocusReason);
            QTest::keyClick(button, key);
            QTRY_COMPARE(clicks.count(), 1);
        }
    }

    void shouldHaveNames()
    {
        Buttons buttons;
        const std::array<QString, 4> names{u"Add a subscription"_s, u"Add"_s, u"Retry"_s, u"Dismiss"_s};
        for (std::size_t index = 0; index < names.size(); ++index) {
            QAccessibleInterface *const accessible
                = QAccessible::queryAccessibleInterface(buttons.all.at(index));
            QVERIFY(accessible);
            QCOMPARE(accessible->text(QAccessible::Name), names.at(index));
            QCOMPARE(accessible->role(), QAccessible::Button);
        }
        QCOMPARE(buttons.compact.toolTip(), u"Not now"_s);
        QCOMPARE(buttons.compact.size(), QSize(24, 24));
    }

    void shouldNotBePressedWhileBusy()
    {
        Buttons buttons;
        QSignalSpy clicks(&buttons.primary, &QAbstractButton::clicked);
        buttons.primary.setFocus(Qt::TabFocusReason);
        buttons.primary.setBusy(u"Adding…"_s);
        QCOMPARE(buttons.primary.text(), u"Adding…"_s);
        QVERIFY(buttons.primary.findChild<ProgressIndicator *>()->isVisible());
        QTest::mouseClick(&buttons.primary, Qt::LeftButton);
        QTest::keyClick(&buttons.primary, Qt::Key_Space);
        QTest::keyClick(&buttons.primary, Qt::Key_Return);
        QVERIFY(buttons.primary.hasFocus());
        QVERIFY(buttons.primary.isBusy());

        buttons.primary.setIdle();
        QCOMPARE(buttons.primary.text(), u"Add a subscription"_s);
        QVERIFY(!buttons.primary.findChild<ProgressIndicator *>()->isVisible());
        QTest::mouseClick(&buttons.primary, Qt::LeftButton);
        // A click that came late from before would be a second one.
        QTRY_COMPARE(clicks.count(), 1);
    }

    void shouldMirrorWhereTextRunsFromTheRight()
    {
        Buttons buttons;
        const QImage plain = pictureOf(buttons.footer);
        buttons.footer.setLayoutDirection(Qt::RightToLeft);
        const QImage mirrored = pictureOf(buttons.footer);
        // The plus is at the other side.
        const QRect left(0, 0, 24, plain.height());
        QVERIFY(plain.copy(left) != mirrored.copy(left));
        QCOMPARE_GT(highestContrast(mirrored.copy(mirrored.width() - 24, 0, 24, mirrored.height()),
                        mostFrequentColor(mirrored)),
            4.5);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(ButtonsTest)
#include "ButtonsTest.moc"
