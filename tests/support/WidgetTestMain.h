#pragma once

#include "support/TestMain.h"
#include "ui/kit/Style.h"

#include <QApplication>

namespace orbitledge::testing {

/// What a program with windows has before its first one. CTest runs these without a display.
class WidgetApplication : public QApplication {
public:
    WidgetApplication(int &argc, char **argv)
        : QApplication(argc, argv)
    {
        setStyle(new ui::Style(ui::Style::Motion::Reduced));
        setFont(QFont(QStringLiteral("Inter")));
    }
};

template <typename TestClass> int runWidgetTest(int argc, char **argv)
{
    const QTemporaryDir home;
    pinEnvironment(home);
    const WidgetApplication application(argc, argv);
    TestClass test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace orbitledge::testing

#define ORBITLEDGE_WIDGET_TEST_MAIN(TestClass)                                                               \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        return orbitledge::testing::runWidgetTest<TestClass>(argc, argv);                                    \
    }
