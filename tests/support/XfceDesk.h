#pragma once

#include "support/DesktopLab.h"
#include "ui/kit/Palette.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QProcess>
#include <QRect>
#include <QSettings>
#include <QTest>

#include <functional>
#include <optional>
#include <utility>

namespace orbitledge::testing {

/// The bar of a real desktop, which shows what is in the tray, and a person with a mouse and a keyboard
/// before it.
class XfceDesk {
public:
    static QString watcherName() { return QStringLiteral("org.kde.StatusNotifierWatcher"); }

    enum class Edge { Top, Bottom, Left, Right };

    struct Bar {
        Edge edge = Edge::Top;
        /// Along whose edge it is, of one or more that make up the screen.
        QRect monitor = QRect(0, 0, 1024, 768);
        int thickness = 30;
        int iconSize = 22;
    };

    explicit XfceDesk(DesktopLab &lab, Edge edge = Edge::Top)
        : XfceDesk(lab, Bar{.edge = edge})
    {
    }
    XfceDesk(DesktopLab &lab, const Bar &bar)
        : m_lab(lab)
    {
        const QString folder = lab.path(QStringLiteral("config/xfce4/xfconf/xfce-perchannel-xml"));
        QFile file(folder + QStringLiteral("/xfce4-panel.xml"));
        if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly) || file.write(configuration(bar)) < 0)
            qFatal("cannot write the bar's configuration");
        startSettings();
    }

    void startBar()
    {
        m_lab.startService(
            watcherName(), QStringLiteral("xfce4-panel"), {QStringLiteral("--disable-wm-check")});
    }
    void killBar() { m_lab.killService(watcherName()); }

    /// One that knows nothing of the bus, at the top.
    void startTrayOfWindows()
    {
        const QStringList arguments{QStringLiteral("--edge"), QStringLiteral("top"),
            QStringLiteral("--heighttype"), QStringLiteral("pixel"), QStringLiteral("--height"),
            QStringLiteral("24"), QStringLiteral("--SetPartialStrut"), QStringLiteral("true")};
        m_lab.startProgram(
            QStringLiteral("trayer"), QStringLiteral("trayer"), arguments, [] { return true; });
    }
    void killTrayOfWindows() { m_lab.killService(QStringLiteral("trayer")); }

    /// Until the window manager has done what it was asked for up to now. A click that is older than the last
    /// change of the focus is too late for it.
    void settleWindows()
    {
        m_desktops = m_desktops == 1 ? 2 : 1;
        const QString count = QString::number(m_desktops);
        m_lab.run(QStringLiteral("xdotool"), {QStringLiteral("set_num_desktops"), count});
        DesktopLab::await("the window manager", [&] {
            return m_lab.run(QStringLiteral("xdotool"), {QStringLiteral("get_num_desktops")}).trimmed()
                == count.toLatin1();
        });
    }

    enum class Compositing { Off, On };
    /// One that gives the focus to what is clicked.
    void startWindowManager(Compositing compositing)
    {
        const bool isOn = compositing == Compositing::On;
        m_lab.startProgram(QStringLiteral("xfwm4"), QStringLiteral("xfwm4"),
            {QStringLiteral("--compositor=") + (isOn ? QStringLiteral("on") : QStringLiteral("off"))}, [&] {
                const QByteArray check = m_lab.run(QStringLiteral("xprop"),
                    {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK")});
                return check.contains("window id");
            });
    }

    /// What the whole screen shows.
    [[nodiscard]] QImage screen()
    {
        // A kind of file that is quickly written.
        const QString file = m_lab.path(QStringLiteral("screen.ppm"));
        m_lab.run(QStringLiteral("import"),
            {QStringLiteral("-window"), QStringLiteral("root"), QStringLiteral("-depth"), QStringLiteral("8"),
                file});
        return QImage(file).convertToFormat(QImage::Format_RGB32);
    }

    /// Where something is as red as a badge; empty where nothing is.
    [[nodiscard]] QRect badge()
    {
        const QImage image = screen();
        QRect place;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixel(x, y) == ui::badgeRed)
                    place |= QRect(x, y, 1, 1);
            }
        }
        return place;
    }
    /// Where it has come to rest: a bar that starts, or gets another icon, moves those that it has.
    QRect awaitBadge()
    {
        QRect place;
        DesktopLab::await("a badge on the bar", [&] {
            const QRect before = std::exchange(place, badge());
            return !place.isEmpty() && place == before;
        });
        return place;
    }
    void awaitNoBadge()
    {
        DesktopLab::await("no badge on the bar", [&] { return badge().isEmpty(); });
    }

    void pointAt(QPoint place)
    {
        m_lab.run(QStringLiteral("xdotool"),
            {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())});
    }
    void click(QPoint place, int button = 1)
    {
        pointAt(place);
        m_lab.run(QStringLiteral("xdotool"), {QStringLiteral("click"), QString::number(button)});
    }
    /// Whether so many windows of this title are shown.
    [[nodiscard]] bool isWindowOpen(const QString &title, int count = 1)
    {
        QProcess search;
        search.setProcessEnvironment(m_lab.environment());
        search.start(QStringLiteral("xdotool"),
            {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"),
                QLatin1Char('^') + title + QLatin1Char('$')});
        return search.waitForFinished() && search.readAll().count('\n') >= count;
    }
    /// Of the window that is shown, in pixels; the largest one where there are more. Waits for one.
    [[nodiscard]] QRect placeOf(const QStringList &criteria)
    {
        QRect largest;
        DesktopLab::await("a window", [&] {
            largest = {};
            const auto found
                = ask(QStringList{QStringLiteral("search"), QStringLiteral("--onlyvisible")} + criteria);
            if (!found)
                return false;
            for (const QByteArray &window : found->trimmed().split('\n')) {
                const auto told = ask({QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"),
                    QString::fromLatin1(window)});
                if (!told)
                    return false;
                QHash<QByteArray, int> values;
                for (const QByteArray &line : told->split('\n'))
                    values.insert(line.left(line.indexOf('=')), line.mid(line.indexOf('=') + 1).toInt());
                const QRect place(values["X"], values["Y"], values["WIDTH"], values["HEIGHT"]);
                if (place.width() * place.height() > largest.width() * largest.height())
                    largest = place;
            }
            return !largest.isEmpty();
        });
        return largest;
    }
    /// Until a window of this title has the keyboard.
    void awaitActive(const QString &title)
    {
        DesktopLab::await("the keyboard in a window", [&] {
            const auto name = ask({QStringLiteral("getwindowfocus"), QStringLiteral("getwindowname")});
            return name && QString::fromUtf8(*name).trimmed() == title;
        });
    }
    void press(const QString &key) { m_lab.run(QStringLiteral("xdotool"), {QStringLiteral("key"), key}); }
    /// As an impatient person does it: one key after the other, and all of them again as long as it is not
    /// so.
    void pressUntil(const QStringList &keys, const char *what, const std::function<bool()> &isSo)
    {
        constexpr qint64 patience = 2000; // milliseconds
        QElapsedTimer sincePress;
        DesktopLab::await(what, [&] {
            if (isSo())
                return true;
            if (!sincePress.isValid() || sincePress.hasExpired(patience)) {
                for (const QString &key : keys)
                    press(key);
                sincePress.start();
            }
            return false;
        });
    }

private:
    /// What xdotool tells; nothing where a window that it looks at is closed meanwhile.
    [[nodiscard]] std::optional<QByteArray> ask(const QStringList &arguments)
    {
        QProcess question;
        question.setProcessEnvironment(m_lab.environment());
        question.start(QStringLiteral("xdotool"), arguments);
        const bool isAnswered = question.waitForFinished() && question.exitStatus() == QProcess::NormalExit
            && question.exitCode() == 0;
        return isAnswered ? std::optional(question.readAllStandardOutput()) : std::nullopt;
    }

    /// As a child of the lab, so that it has ended when the lab's folder goes.
    void startSettings()
    {
        const QSettings entry(
            QStringLiteral("/usr/share/dbus-1/services/org.xfce.Xfconf.service"), QSettings::IniFormat);
        const QString program = entry.value(QStringLiteral("D-BUS Service/Exec")).toString();
        if (program.isEmpty())
            qFatal("xfconf is not installed");
        m_lab.startService(QStringLiteral("org.xfce.Xfconf"), program, {});
    }

    static QByteArray configuration(const Bar &bar)
    {
        // Where the bar clings to, and where its middle is.
        const QRect monitor = bar.monitor;
        const int half = bar.thickness / 2;
        QByteArray clings;
        QPoint middle = monitor.center();
        switch (bar.edge) {
        case Edge::Top:
            clings = "p=11";
            middle.setY(monitor.top() + half);
            break;
        case Edge::Bottom:
            clings = "p=12";
            middle.setY(monitor.bottom() - half);
            break;
        case Edge::Left:
            clings = "p=7";
            middle.setX(monitor.left() + half);
            break;
        case Edge::Right:
            clings = "p=3";
            middle.setX(monitor.right() - half);
            break;
        }
        const QByteArray position
            = clings + ";x=" + QByteArray::number(middle.x()) + ";y=" + QByteArray::number(middle.y());
        const bool isUpright = bar.edge == Edge::Left || bar.edge == Edge::Right;
        QFile file(QStringLiteral(ORBITLEDGE_TEST_SUPPORT "/xfce_bar.xml"));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read the bar's configuration");
        return file.readAll()
            .replace("@POSITION@", position)
            .replace("@MODE@", isUpright ? "1" : "0")
            .replace("@THICKNESS@", QByteArray::number(bar.thickness))
            .replace("@ICON_SIZE@", QByteArray::number(bar.iconSize));
    }

    DesktopLab &m_lab;
    int m_desktops = 1;
};

} // namespace orbitledge::testing
