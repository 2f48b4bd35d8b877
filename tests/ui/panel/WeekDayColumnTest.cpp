#include "ui/panel/WeekDayColumn.h"

#include "support/WidgetTestMain.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Typography.h"

#include <QImage>

using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

class WeekDayColumnTest : public QObject {
    Q_OBJECT

private:
    /// Where something is drawn in the column, that is so wide and has nothing but the day in it.
    static QRect drawn(const QString &day, int width)
    {
        QWidget window;
        applyTextScale(window, 1);
        WeekDayColumn column(&window);
        column.setContent({.weekday = {}, .day = day, .isToday = false, .dots = {}, .label = day});
        column.resize(width, 44);
        QImage image(column.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        column.render(&image, {}, {}, QWidget::DrawChildren);
        QRect all;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (qAlpha(image.pixel(x, y)) > 64)
                    all |= QRect(x, y, 1, 1);
            }
        }
        return all;
    }

private Q_SLOTS:
    /// In some languages the day of the month has a word or a sign after it.
    void shouldDrawALongDayNarrower()
    {
        const QString day = u"14 W"_s;
        const QRect room = drawn(day, 100);
        QVERIFY(room.width() > 24);
        const QRect narrow = drawn(day, 24);
        QVERIFY2(narrow.width() <= 24 && narrow.width() >= 16, qPrintable(QString::number(narrow.width())));
        QVERIFY2(narrow.height() >= room.height() / 2, qPrintable(QString::number(narrow.height())));
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(WeekDayColumnTest)
#include "WeekDayColumnTest.moc"
