#pragma once

#include "support/ProgramDesk.h"
#include "support/ScreenReader.h"

namespace orbitledge::testing {

/// Somebody who uses the program by the keyboard alone, and hears where they are.
class Typist {
public:
    Typist(ProgramDesk &desk, ScreenReader &reader)
        : m_desk(desk)
        , m_reader(reader)
    {
    }

    void press(const QString &keys) { m_desk.desk().press(keys); }
    void type(const QString &text)
    {
        m_desk.lab().run(QStringLiteral("xdotool"), {QStringLiteral("type"), QStringLiteral("--"), text});
    }
    /// Over what the field holds.
    void typeAnew(const QString &text)
    {
        press(QStringLiteral("ctrl+a"));
        type(text);
    }

    /// By Tab, or other keys, until the keyboard is at what has this name, or this label.
    Accessible goTo(const QString &name, const QString &keys = QStringLiteral("Tab"))
    {
        constexpr int mostStops = 60;
        QStringList stops;
        Accessible stop = m_reader.focused();
        for (int i = 0; i < mostStops; ++i) {
            if (stop.exists() && (stop.name == name || stop.labels.contains(name)))
                return stop;
            stops.append(stop.text());
            const Accessible before = stop;
            press(keys);
            // Within a date, a stop is the next part of it.
            (void)QTest::qWaitFor(
                [&] {
                    stop = m_reader.focused();
                    return stop.exists() && stop.path != before.path;
                },
                stopLimit);
        }
        qFatal(
            "no way leads to %s, but to:\n%s", qPrintable(name), qPrintable(stops.join(QLatin1Char('\n'))));
    }

    /// Presses the button of this name.
    void use(const QString &name, const QString &keys = QStringLiteral("Tab"))
    {
        goTo(name, keys);
        press(QStringLiteral("space"));
    }

private:
    static constexpr int stopLimit = 1500; // milliseconds

    ProgramDesk &m_desk;
    ScreenReader &m_reader;
};

} // namespace orbitledge::testing
