#include "ui/kit/Style.h"

#include "support/Pixels.h"
#include "support/WidgetTestMain.h"
#include "ui/kit/DateField.h"
#include "ui/kit/Field.h"
#include "ui/kit/Palette.h"
#include "ui/kit/RoundedFrame.h"
#include "ui/kit/Typography.h"

#include <QCalendarWidget>
#include <QCheckBox>
#include <QComboBox>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

const QColor cyan = colorOf(Tone::Cyan, ColorScheme::Light);

class Window : public QWidget {
public:
    explicit Window(ColorScheme colorScheme = ColorScheme::Light)
        : m_layout(this)
    {
        applyColorScheme(*this, colorScheme);
        applyTextScale(*this, 1);
        move(200, 200);
    }

    void showWith(QWidget *widget)
    {
        m_layout.addWidget(widget);
        show();
        QApplication::setActiveWindow(this);
        setFocus();
    }

private:
    QVBoxLayout m_layout;
};

} // namespace

class StyleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldAnswerNoDurationWhereMotionIsReduced()
    {
        Style style(Style::Motion::Reduced);
        QCOMPARE(style.styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, nullptr, nullptr), 0);
        style.setMotion(Style::Motion::Full);
        QCOMPARE(style.styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, nullptr, nullptr), 180);
    }

    void shouldShowWhereOneWrites()
    {
        Window window;
        auto *const field = new Field;
        window.showWith(field);
        QCOMPARE(field->height(), 34);
        QCOMPARE(pixelsOf(pictureOf(*field), cyan), 0);
        // A field shows it however it was reached.
        field->setFocus(Qt::MouseFocusReason);
        const QImage image = pictureOf(*field);
        for (const int row : {0, 1, field->height() - 2, field->height() - 1})
            QCOMPARE(image.pixelColor(field->width() / 2, row), cyan);
        QVERIFY(image.pixelColor(field->width() / 2, 2) != cyan);
        QCOMPARE(image.pixelColor(0, field->height() / 2), cyan);
    }

    void shouldShowItsPlaceholder()
    {
        Window window;
        auto *const field = new Field;
        window.showWith(field);
        const QImage empty = pictureOf(*field);
        field->setPlaceholderText(u"Password"_s);
        const QImage image = pictureOf(*field);
        QVERIFY(image != empty);
        QCOMPARE_GE(highestContrast(image, mostFrequentColor(image)), 4.5);
    }

    void shouldMakeFieldsOfTheToolkitsOwn_data()
    {
        QTest::addColumn<bool>("isDate");
        QTest::newRow("combo box") << false;
        QTest::newRow("date") << true;
    }
    void shouldMakeFieldsOfTheToolkitsOwn()
    {
        QFETCH(bool, isDate);
        Window window;
        QWidget *control = nullptr;
        if (isDate) {
            control = new DateField(QDate(2026, 3, 20));
        } else {
            auto *const box = new QComboBox;
            box->addItems({u"Monthly"_s, u"Yearly"_s});
            control = box;
        }
        window.showWith(control);
        QCOMPARE(control->height(), 34);
        QCOMPARE(pixelsOf(pictureOf(*control), cyan), 0);
        control->setFocus(Qt::TabFocusReason);
        const QImage image = pictureOf(*control);
        QCOMPARE(image.pixelColor(control->width() / 2, 0), cyan);
        QCOMPARE(image.pixelColor(control->width() / 2, control->height() - 1), cyan);
    }

    void shouldDressTheCalendarInEachAppearance()
    {
        Window window;
        auto *const field = new DateField(QDate(2026, 3, 20));
        window.showWith(field);
        const auto drawnCalendar = [field] {
            field->calendarWidget()->setFixedSize(320, 240);
            return pictureOf(*field->calendarWidget());
        };
        for (const ColorScheme colorScheme : {ColorScheme::Light, ColorScheme::Dark}) {
            applyColorScheme(window, colorScheme);
            const QImage image = drawnCalendar();
            QCOMPARE(pixelsOf(image, Qt::red), 0);
            QCOMPARE(mostFrequentColor(image), paletteFor(colorScheme).color(QPalette::Base));
            // The selected day, and nothing else, is on cyan.
            const int marked = pixelsOf(image, colorOf(Tone::Cyan, colorScheme));
            QCOMPARE_GT(marked, 200);
            QCOMPARE_LT(marked, 320 * 240 / 20);
        }
    }

    void shouldShowARingWhereTheKeyboardLed()
    {
        Window window;
        auto *const button = new QPushButton(u"Keep subscription"_s);
        button->setAutoDefault(false);
        window.showWith(button);
        button->setFocus(Qt::MouseFocusReason);
        window.setAttribute(Qt::WA_KeyboardFocusChange, false);
        QCOMPARE(pixelsOf(pictureOf(*button), cyan), 0);
        window.setFocus();
        QTest::keyClick(&window, Qt::Key_Tab);
        QVERIFY(button->hasFocus());
        QCOMPARE_GT(pixelsOf(pictureOf(*button), cyan), 2 * button->width());
    }

    void shouldCountUpAndDownByItsArrows_data()
    {
        QTest::addColumn<Qt::LayoutDirection>("direction");
        QTest::newRow("from the left") << Qt::LeftToRight;
        QTest::newRow("from the right") << Qt::RightToLeft;
    }
    void shouldCountUpAndDownByItsArrows()
    {
        QFETCH(Qt::LayoutDirection, direction);
        Window window;
        window.setLayoutDirection(direction);
        auto *const box = new QSpinBox;
        box->setValue(10);
        window.showWith(box);
        QCOMPARE(box->height(), 34);
        const int arrows = direction == Qt::LeftToRight ? box->width() - 12 : 12;
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(arrows, 8));
        QCOMPARE(box->value(), 11);
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(arrows, 26));
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(arrows, 26));
        QCOMPARE(box->value(), 9);
    }

    void shouldTellWhatIsChosen()
    {
        Window window;
        auto *const button = new QRadioButton(u"Dark"_s);
        window.showWith(button);
        QCOMPARE(pixelsOf(pictureOf(*button), cyan), 0);
        button->setChecked(true);
        QCOMPARE_GT(pixelsOf(pictureOf(*button), cyan), 80);
    }

    void shouldTellWhatIsChecked()
    {
        Window window;
        auto *const box = new QCheckBox(u"Show a badge"_s);
        window.showWith(box);
        QCOMPARE(pixelsOf(pictureOf(*box), cyan), 0);
        box->setChecked(true);
        QCOMPARE_GT(pixelsOf(pictureOf(*box), cyan), 80);
    }

    void shouldGiveMenusThePaletteAndTheTextSizeOfTheirWindow()
    {
        Window window(ColorScheme::Dark);
        applyTextScale(window, 1.5);
        window.show();
        QMenu menu(&window);
        menu.addAction(u"Open in Web"_s);
        menu.ensurePolished();
        QCOMPARE(colorSchemeOf(menu.palette()), ColorScheme::Dark);
        QCOMPARE(menu.font().pointSizeF(), window.font().pointSizeF());
    }

    void shouldLeadThroughALongListWithoutArrows()
    {
        Window window;
        auto *const bar = new QScrollBar(Qt::Vertical);
        bar->setRange(0, 900);
        bar->setPageStep(100);
        bar->setFixedHeight(200);
        window.showWith(bar);
        QCOMPARE(bar->width(), 10);
        // A tenth of the list is seen, but a thumb must be large enough to hit. It starts at the top.
        QTest::mousePress(bar, Qt::LeftButton, {}, QPoint(5, 5));
        QTest::mouseMove(bar, QPoint(5, 300));
        QTest::mouseRelease(bar, Qt::LeftButton, {}, QPoint(5, 300));
        QCOMPARE(bar->value(), 900);
        QTest::mouseClick(bar, Qt::LeftButton, {}, QPoint(5, 5));
        QCOMPARE(bar->value(), 800);
    }

    void shouldFrameWhatStandsOut()
    {
        Window window;
        auto *const frame = new RoundedFrame;
        frame->setFixedSize(80, 40);
        window.showWith(frame);
        const QImage image = pictureOf(*frame);
        const QColor paper = colorOf(Tone::Paper, ColorScheme::Light);
        QCOMPARE(image.pixelColor(0, 0), paper);
        QCOMPARE(image.pixelColor(40, 20), QColor(Qt::white));
        QCOMPARE_GT(contrastOf(image.pixelColor(40, 0), Qt::white), 1.1);
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(StyleTest)
#include "StyleTest.moc"
