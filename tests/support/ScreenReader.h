#pragma once

#include "support/DesktopLab.h"

#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace orbitledge::testing {

class AccessibilityBusAddress;

/// One thing that a screen reader finds in a running program, as it was when it was read.
struct Accessible {
    /// Where it is asked again; empty for nothing at all.
    QString path;
    /// How far below the application, whose windows have 1.
    int depth = 0;
    /// In the words of AT-SPI: "frame", "push button", "text" (a field), "password text", "label" …
    QString role;
    QString name;
    QString description;
    /// What is in a field: its text, or the number of what has one. Nothing where it has neither.
    std::optional<QString> value;
    /// Of "active", "checked", "enabled", "focusable", "focused", "showing", "visible" and the others of
    /// AT-SPI.
    QStringList states;
    /// Names of what can be done with it, for ScreenReader::act.
    QStringList actions;
    /// Names of those that it is labelled by.
    QStringList labels;
    /// The name of its window.
    QString window;
    /// On the screen, in the program's points.
    QRect place;

    [[nodiscard]] bool exists() const { return !path.isEmpty(); }
    [[nodiscard]] bool is(QStringView state) const { return states.contains(state); }
    /// 'push button "Retry" (Tries again) [focusable, enabled]', for messages.
    [[nodiscard]] QString text() const;
};

/// What a program told by itself: "state-changed", "text-changed", "property-change", "children-changed",
/// "announcement" …, with its detail, as "focused", and the name and role of what it is about, which are
/// empty where that has gone meanwhile.
struct AccessibleEvent {
    QString kind;
    QString detail;
    /// For "state-changed": 1 where it is so now.
    int number = 0;
    QString path;
    QString name;
    QString role;
};

/// A person who cannot see the screen: reads a running program over the accessibility bus of a lab.
///
///     DesktopLab lab({.hasDisplay = true});
///     ScreenReader reader(lab);
///     QProcessEnvironment environment = lab.environment();
///     ScreenReader::addVariables(environment);
///     program.setProcessEnvironment(environment);
///     program.start(…);
///     reader.awaitProgram(u"Orbitledge"_s);
///     const Accessible add = reader.await(u"push button"_s, u"Add"_s);
///     reader.act(add, u"Press"_s);
///     reader.awaitFocus(u"text"_s, u"Service"_s);
///
/// What is waited for in vain ends the test with all that there is instead. Keys are typed at the X server,
/// as by XfceDesk::press.
class ScreenReader {
public:
    explicit ScreenReader(DesktopLab &lab);
    ~ScreenReader();
    ScreenReader(const ScreenReader &) = delete;
    ScreenReader &operator=(const ScreenReader &) = delete;

    /// What a program's environment needs, so that it talks.
    static void addVariables(QProcessEnvironment &environment);

    /// Until a program of this name is on the accessibility bus; what is read from then on is its. Called
    /// again for one that was started anew.
    void awaitProgram(const QString &name);

    /// All that is shown, in the order of the tree, parents before what is in them. Where `all` is set, also
    /// what is hidden.
    enum class Extent { Showing, All };
    [[nodiscard]] QList<Accessible> read(Extent extent = Extent::Showing);
    /// The same, of one window.
    [[nodiscard]] QList<Accessible> readWindow(const QString &title);

    /// The first that is shown of a role and a name, as it is now. An empty window stands for any.
    [[nodiscard]] std::optional<Accessible> find(
        const QString &role, const QString &name, const QString &window = {});
    Accessible await(const QString &role, const QString &name, const QString &window = {});
    void awaitGone(const QString &role, const QString &name, const QString &window = {});

    /// What has the keyboard in the window in front; one that does not exist where nothing has.
    [[nodiscard]] Accessible focused();
    Accessible awaitFocus(const QString &role, const QString &name);

    /// As it is now; one that does not exist where it has gone.
    [[nodiscard]] Accessible readAgain(const Accessible &accessible);

    /// Does one of its actions. False where the program refuses.
    bool act(const Accessible &accessible, const QString &action);

    /// What was told since the last forgetEvents, or awaitProgram.
    [[nodiscard]] QList<AccessibleEvent> events() const;
    void forgetEvents();
    /// Until one of such a kind and detail was told about something of this name.
    AccessibleEvent awaitEvent(const QString &kind, const QString &detail, const QString &name);

    /// All of them, a line each, indented.
    static QString textOf(const QList<Accessible> &accessibles);

private:
    struct Bus;
    std::unique_ptr<AccessibilityBusAddress> m_address;
    std::unique_ptr<Bus> m_bus;
    QString m_service;
};

} // namespace orbitledge::testing
