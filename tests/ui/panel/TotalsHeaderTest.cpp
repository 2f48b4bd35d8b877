#include "ui/panel/TotalsHeader.h"

#include "support/WidgetTestMain.h"
#include "ui/kit/Typography.h"

using namespace orbitledge;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

class TotalsHeaderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldHaveRoomForEachLine_data()
    {
        QTest::addColumn<QString>("month");
        QTest::addColumn<QString>("active");
        QTest::addColumn<qreal>("textScale");
        for (const qreal scale : {1.0, 1.25, 1.5, 1.75, 2.0}) {
            QTest::addRow("May at %g", scale) << u"May 2026"_s << u"3 active"_s << scale;
            QTest::addRow("September at %g", scale) << u"September 2026"_s << u"3 active"_s << scale;
            QTest::addRow("septiembre at %g", scale)
                << u"septiembre de 2026"_s << u"1.234.567 active subscriptions"_s << scale;
        }
    }
    /// Also where not everything could be counted, which is told beside the month.
    void shouldHaveRoomForEachLine()
    {
        QFETCH(const QString, month);
        QFETCH(const QString, active);
        QFETCH(const qreal, textScale);
        QWidget window;
        applyTextScale(window, textScale);
        TotalsHeader header(&window);
        header.setContent({.month = month,
            .monthlyTotal = u"$1,463.26"_s,
            .perMonth = u" / month"_s,
            .active = active,
            .remaining = u"$1,240.00"_s,
            .remainingCaption = u"left this month"_s,
            .isPartial = true,
            .partialLabel = u"Partial total"_s,
            .partialHelp = u"Some could not be counted."_s});
        header.resize(360, header.sizeHint().height());
        window.show();
        const auto placeOf = [&header](const QString &text) {
            for (const ThemedLabel *label : header.findChildren<ThemedLabel *>()) {
                if (label->text() == text)
                    return label->geometry();
            }
            return QRect();
        };
        const auto gapBetween = [&](const QString &left, const QString &right) {
            return placeOf(right).left() - placeOf(left).right() - 1;
        };
        // The symbol stands in it.
        QVERIFY2(gapBetween(month, u"Partial total"_s) >= scaled(header, 12 + 2 * 4),
            qPrintable(QString::number(gapBetween(month, u"Partial total"_s))));
        QVERIFY(gapBetween(active, u"left this month"_s) >= scaled(header, 4));
        for (const ThemedLabel *label : header.findChildren<ThemedLabel *>()) {
            QVERIFY2(header.rect().contains(label->geometry()), qPrintable(label->text()));
            QVERIFY2(label->width() >= label->sizeHint().width(), qPrintable(label->text()));
        }
    }
};

ORBITLEDGE_WIDGET_TEST_MAIN(TotalsHeaderTest)
#include "TotalsHeaderTest.moc"
