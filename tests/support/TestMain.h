#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace orbitledge::testing {

/// Takes the machine out of a test: zone, locale and the user's folders are the same everywhere.
/// Must run before the application object, which reads some of them once.
inline void pinEnvironment(const QTemporaryDir &home)
{
    qputenv("TZ", "UTC");
    for (const char *name : {"LC_TIME", "LC_MONETARY", "LC_COLLATE", "LC_MESSAGES", "LC_CTYPE", "LANGUAGE"})
        qunsetenv(name);
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("HOME", home.path().toUtf8());
    for (const char *name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
        qputenv(name, (home.path() + QLatin1Char('/') + QLatin1StringView(name)).toUtf8());
}

template <typename TestClass> int runTest(int argc, char **argv)
{
    const QTemporaryDir home;
    pinEnvironment(home);
    const QCoreApplication application(argc, argv);
    TestClass test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace orbitledge::testing

#define ORBITLEDGE_TEST_MAIN(TestClass)                                                                      \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        return orbitledge::testing::runTest<TestClass>(argc, argv);                                          \
    }
