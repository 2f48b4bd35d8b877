#pragma once

#include "support/DesktopLab.h"

#include <QByteArrayList>
#include <QDir>
#include <QFile>
#include <QProcessEnvironment>
#include <QString>

namespace orbitledge::testing {

/// In place of the person's browser: only writes down what it is to open. The lab has to live as long.
class PageRecorder {
public:
    /// For the programs that are started with these variables.
    PageRecorder(const DesktopLab &lab, QProcessEnvironment &environment)
        : m_lab(lab)
    {
        const QString bin = lab.path(QStringLiteral("bin"));
        QFile browser(bin + QStringLiteral("/xdg-open"));
        if (!QDir().mkpath(bin) || !browser.open(QIODevice::WriteOnly)
            || browser.write("#!/bin/sh\necho \"$1\" >>\"$OPENED_PAGES\"\n") < 0
            || !browser.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
            qFatal("cannot make a browser");
        const QString path = QStringLiteral("PATH");
        environment.insert(path, bin + QLatin1Char(':') + environment.value(path));
        environment.insert(QStringLiteral("OPENED_PAGES"), file());
    }

    /// In their order.
    [[nodiscard]] QByteArrayList pages() const
    {
        QFile pages(file());
        QByteArrayList lines = (pages.open(QIODevice::ReadOnly) ? pages.readAll() : QByteArray()).split('\n');
        lines.removeLast(); // what follows the last line's end
        return lines;
    }

private:
    [[nodiscard]] QString file() const { return m_lab.path(QStringLiteral("opened")); }

    const DesktopLab &m_lab;
};

} // namespace orbitledge::testing
