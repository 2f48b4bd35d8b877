/// A program with an icon in the tray and a panel, as it is told on its standard input, one command a line:
///
///     badge TEXT        the icon's badge; none where the text is missing
///     next TEXT         the next renewal, percent-encoded
///     dark              the color scheme is dark from now on
///     light-bar         the bar is taken to be a light one from now on
///     host              says "host" and none, notifier or embedder
///     open              shows the panel as a second launch would
///     panel             says "panel" and hidden, or its place and size, and whether it has the focus
///     manner            says "manner" and popup or window
///     platform          says "platform" and what shows the windows
///     quit
///
/// It says the first word of each when it has done it, and by itself "known", "host", "shown", "hidden",
/// "settings" and "quit-requested". The panel holds a field to type in.

#include "support/CommandInput.h"
#include "ui/kit/Palette.h"
#include "ui/kit/Style.h"
#include "ui/kit/Typography.h"
#include "ui/tray/PanelWindow.h"
#include "ui/tray/TrayHost.h"
#include "ui/tray/TrayIcon.h"

#include <QApplication>
#include <QCursor>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include <iostream>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace orbitledge::ui;
using namespace Qt::StringLiterals;

namespace {

void say(const QByteArray &line)
{
    std::cout << line.constData() << std::endl; // flushed, as somebody waits for it
}

QWidget *makeContent()
{
    auto *const content = new QWidget;
    auto *const layout = new QVBoxLayout(content);
    layout->addWidget(new QLabel(u"What renews"_s));
    layout->addWidget(new QLineEdit);
    layout->addStretch();
    return content;
}

class Probe {
public:
    Probe()
    {
        QObject::connect(&m_host, &TrayHost::known, &m_host, [] { say("known"); });
        QObject::connect(&m_host, &TrayHost::changed, &m_host, [this] { say("host " + kind()); });
        QObject::connect(&m_icon, &TrayIcon::activated, &m_icon, [this](const PanelAnchor &anchor) {
            m_panel.setManner(PanelWindow::mannerFor(m_icon.isShown()));
            m_panel.toggle(anchor);
        });
        QObject::connect(&m_icon, &TrayIcon::openRequested, &m_icon, [this](const PanelAnchor &anchor) {
            m_panel.setManner(PanelWindow::mannerFor(m_icon.isShown()));
            m_panel.showAt(anchor);
        });
        QObject::connect(&m_icon, &TrayIcon::settingsRequested, &m_icon, [] { say("settings"); });
        QObject::connect(&m_icon, &TrayIcon::quitRequested, &m_icon, [] { say("quit-requested"); });
        QObject::connect(&m_panel, &PanelWindow::shown, &m_panel, [] { say("shown"); });
        QObject::connect(&m_panel, &PanelWindow::hidden, &m_panel, [] { say("hidden"); });
        QObject::connect(&m_panel, &PanelWindow::quitRequested, &m_panel, [] { say("quit-requested"); });
        applyColorScheme(m_panel, ui::ColorScheme::Light);
        applyTextScale(m_panel, 1);
        m_host.start();
    }

    void obey(const QList<QByteArray> &words)
    {
        QByteArray answer;
        if (words[0] == "badge") {
            m_content.badge = QString::fromUtf8(words.value(1));
            m_content.badgeLabel
                = m_content.badge.isEmpty() ? QString() : u"%1 renewals due soon"_s.arg(m_content.badge);
            m_icon.setContent(m_content);
        } else if (words[0] == "next") {
            m_content.nextRenewal = QString::fromUtf8(QByteArray::fromPercentEncoding(words.value(1)));
            m_icon.setContent(m_content);
        } else if (words[0] == "dark") {
            m_icon.setColorScheme(ui::ColorScheme::Dark);
            applyColorScheme(m_panel, ui::ColorScheme::Dark);
        } else if (words[0] == "light-bar") {
            m_icon.setBarColorScheme(ui::ColorScheme::Light);
        } else if (words[0] == "host") {
            answer = kind();
        } else if (words[0] == "open") {
            m_panel.setManner(PanelWindow::mannerFor(m_icon.isShown()));
            m_panel.showAt({.icon = std::nullopt, .pointer = QCursor::pos()});
        } else if (words[0] == "panel") {
            answer = panel();
        } else if (words[0] == "manner") {
            answer = m_panel.manner() == PanelWindow::Manner::Popup ? "popup" : "window";
        } else if (words[0] == "platform") {
            answer = QGuiApplication::platformName().toUtf8();
        } else if (words[0] == "quit") {
            QCoreApplication::quit();
        } else {
            qFatal("unknown command %s", words[0].constData());
        }
        say((words[0] + ' ' + answer).trimmed());
    }

private:
    QByteArray kind() const
    {
        switch (m_host.kind()) {
        case TrayHost::Kind::None:
            return "none";
        case TrayHost::Kind::Notifier:
            return "notifier";
        case TrayHost::Kind::Embedder:
            return "embedder";
        }
        Q_UNREACHABLE();
    }

    QByteArray panel() const
    {
        if (!m_panel.isVisible())
            return "hidden";
        const QRect place = m_panel.frameGeometry();
        QByteArrayList words;
        for (const int number : {place.x(), place.y(), place.width(), place.height()})
            words.append(QByteArray::number(number));
        words.append(m_panel.isActiveWindow() ? "focus" : "aside");
        return words.join(' ');
    }

    TrayHost m_host{TrayHost::windowsAreOnX11()};
    TrayIcon m_icon{m_host};
    MenuBarContent m_content;
    PanelWindow m_panel{makeContent()};
};

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QApplication::setStyle(new Style(Style::Motion::Reduced));
    QApplication::setFont(QFont(u"Inter"_s));
    QCoreApplication::setApplicationName(u"orbitledge"_s);
    QApplication::setQuitOnLastWindowClosed(false);
    Probe probe;
    const CommandInput input(
        [&probe](const auto &words) { probe.obey(words); }, [] { QCoreApplication::quit(); });
    return QApplication::exec();
}
