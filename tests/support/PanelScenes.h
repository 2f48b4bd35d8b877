#pragma once

#include "support/SampleSubscriptions.h"
#include "support/StoreDesk.h"

#include <QAbstractButton>
#include <QLineEdit>

#include <functional>
#include <vector>

namespace orbitledge::testing {

/// A state of the store that the panel shows in its own way.
struct PanelScene {
    QString name;
    /// Brings the desk's store into it.
    std::function<void(StoreDesk &)> prepare;
    /// What somebody does then, in the panel; may be absent.
    std::function<void(QWidget &panel, StoreDesk &)> act = nullptr;
};

/// Types into the field of that accessible name.
inline void typeInto(QWidget &panel, const QString &name, const QString &text)
{
    const QList<QLineEdit *> fields = panel.findChildren<QLineEdit *>();
    for (QLineEdit *const field : fields) {
        if (field->accessibleName() == name && field->isVisible())
            return field->setText(text);
    }
    qFatal("there is no field %s", qPrintable(name));
}

/// Presses the button with that text.
inline void pressIn(QWidget &panel, const QString &text)
{
    const QList<QAbstractButton *> buttons = panel.findChildren<QAbstractButton *>();
    for (QAbstractButton *const button : buttons) {
        if (button->text() == text && button->isVisible())
            return button->click();
    }
    qFatal("there is no button %s", qPrintable(text));
}

/// Entries of a catalogue, of that many names at most.
inline QList<SubscriptionTemplate> sampleTemplates(qsizetype count = 5)
{
    QList<SubscriptionTemplate> list;
    for (const char *const name : {"Tidewater Music", "Tidy Notes", "Tide and Current Almanac",
             "The complete tides of all harbours of the world, with charts", "Tidbit"}) {
        SubscriptionTemplate entry;
        entry.name = QString::fromUtf8(name);
        entry.typicalMonthlyCost = Decimal(5);
        list.append(entry);
    }
    return list.first(std::min(count, list.size()));
}

/// What somebody may have subscribed to, on the 18th of March 2026.
inline QList<Subscription> sampleList()
{
    using namespace Qt::StringLiterals;
    const auto sample = [](const char *name) { return SampleSubscription(QString::fromUtf8(name)); };
    return {
        sample("Northlight Video").costs(u"15.99"_s).renewsOn({2026, 3, 18}).inCategory(u"Streaming"_s),
        sample("Tidewater Music").costs(u"10.99"_s).renewsOn({2026, 3, 20}).inCategory(u"Music"_s),
        sample("Paper Post").costs(u"7.50"_s, u"EUR"_s).renewsOn({2026, 3, 21}).inCategory(u"News"_s),
        sample("Arcade Cellar").costs(u"9.99"_s).renewsOn({2026, 3, 20}).inCategory(u"Games"_s),
        sample("Cloud Attic").costs(u"2.99"_s).renewsOn({2026, 3, 24}).inCategory(u"Storage"_s),
        sample("Harbour Gym").costs(u"39"_s).renewsOn({2026, 3, 30}),
        sample("Compiler Weekly").costs(u"120"_s).renewsOn({2026, 4, 2}).inCategory(u"Learning"_s),
        sample("A very long subscription name that has to give way")
            .costs(u"1234.5"_s)
            .renewsOn({2026, 4, 9})
            .inCategory(u"Software"_s),
        sample("Lighthouse Insurance").costs(u"89.40"_s).renewsOn({2026, 7, 1}).every(u"quarterly"_s),
        sample("Old Gazette")
            .costs(u"4"_s)
            .renewsOn({2026, 3, 28})
            .cancelledFrom({2026, 3, 28})
            .withStatus(u"cancelled"_s),
        sample("Puzzle Club").costs(u"3.49"_s).renewsOn({2026, 4, 1}).withStatus(u"paused"_s),
    };
}

inline UserProfile sampleAmerican()
{
    UserProfile profile = sampleProfile();
    profile.defaultCurrency = QStringLiteral("USD");
    return profile;
}

/// Signed in, with these; the fetch was at 9:41.
inline void showList(StoreDesk &desk, const QList<Subscription> &subscriptions)
{
    desk.zone = "UTC";
    desk.clock->set(at("2026-03-18T09:41:00Z"));
    desk.api->isQuick = true;
    desk.api->profile = sampleAmerican();
    desk.api->subscriptions = subscriptions;
    if (!desk.store)
        desk.make();
    QCoro::waitFor(desk.store->start());
    desk.api->isQuick = false;
}

inline void failNext(StoreDesk &desk, const APIError &error)
{
    desk.api->profile = tl::make_unexpected(error);
    desk.api->isQuick = true;
    QCoro::waitFor(desk.store->refresh());
    desk.api->isQuick = false;
}

inline ReleaseManifest sampleRelease(const QString &version)
{
    ReleaseManifest manifest;
    manifest.version = version;
    manifest.build = QStringLiteral("900");
    manifest.url = QUrl(QStringLiteral("https://example.com/download"));
    return manifest;
}

inline QList<Subscription> manySubscriptions(int count)
{
    QList<Subscription> list;
    for (int i = 0; i < count; ++i)
        list.append(SampleSubscription(QStringLiteral("Subscription %1").arg(i))
                .costs(QString::number(i % 90 + 1))
                .renewsOn(LocalDate::fromDaysSinceEpoch(LocalDate{2026, 3, 18}.daysSinceEpoch() + i % 60)));
    return list;
}

/// Every screen and state there is to look at.
inline std::vector<PanelScene> panelScenes()
{
    using namespace Qt::StringLiterals;
    const APIError offline = APIError::Transport{u"The Internet connection appears to be offline."_s};
    const APIError broken = APIError::RequestFailed{500, u"internal server error"_s};
    std::vector<PanelScene> scenes;
    const auto scene = [&](const QString &name, std::function<void(StoreDesk &)> prepare,
                           std::function<void(QWidget &, StoreDesk &)> act = nullptr) {
        scenes.push_back({.name = name, .prepare = std::move(prepare), .act = std::move(act)});
    };
    const auto typeCredentials = [](QWidget &panel, StoreDesk &) {
        typeInto(panel, u"Email"_s, u"ada@example.com"_s);
        typeInto(panel, u"Password"_s, u"correct horse"_s);
    };
    scene(u"session-check"_s, [](StoreDesk &desk) {
        desk.make();
        desk.store->start();
        desk.settle();
    });
    scene(u"recovery"_s, [offline](StoreDesk &desk) {
        desk.make();
        failNext(desk, offline);
    });
    scene(u"recovery-retrying"_s, [offline](StoreDesk &desk) {
        desk.make();
        failNext(desk, offline);
        desk.store->refresh();
        desk.settle();
    });
    scene(u"signed-out"_s, [](StoreDesk &desk) {
        desk.api->hasSession = false;
        desk.make();
        QCoro::waitFor(desk.store->start());
    });
    const auto signInInVain = [](StoreDesk &desk) {
        desk.api->hasSession = false;
        desk.make();
        QCoro::waitFor(desk.store->start());
        desk.api->isQuick = true;
        desk.api->profile = tl::make_unexpected(
            APIError(APIError::Unauthorized{u"The e-mail or the password is wrong."_s}));
        (void)QCoro::waitFor(desk.store->signIn(u"ada@example.com"_s, u"wrong"_s));
        desk.api->isQuick = false;
    };
    scene(u"signed-out-error"_s, signInInVain, typeCredentials);
    scene(
        u"signing-in"_s,
        [](StoreDesk &desk) {
            desk.api->hasSession = false;
            desk.make();
            QCoro::waitFor(desk.store->start());
        },
        [typeCredentials](QWidget &panel, StoreDesk &desk) {
            typeCredentials(panel, desk);
            pressIn(panel, u"Sign in"_s);
        });
    scene(u"loading"_s, [](StoreDesk &desk) {
        showList(desk, {});
        desk.store->refresh();
        desk.settle();
    });
    scene(u"empty"_s, [](StoreDesk &desk) { showList(desk, {}); });
    scene(u"timeline"_s, [](StoreDesk &desk) { showList(desk, sampleList()); });
    scene(u"updating"_s, [](StoreDesk &desk) {
        showList(desk, sampleList());
        desk.store->refresh();
        desk.settle();
    });
    scene(u"offline"_s, [offline](StoreDesk &desk) {
        showList(desk, sampleList());
        failNext(desk, offline);
    });
    scene(u"error"_s, [broken](StoreDesk &desk) {
        showList(desk, sampleList());
        failNext(desk, broken);
    });
    scene(u"long-error"_s, [](StoreDesk &desk) {
        showList(desk, sampleList());
        failNext(desk, APIError::InvalidResponse{});
    });
    scene(u"update-row"_s, [offline](StoreDesk &desk) {
        desk.releases->manifest = sampleRelease(u"1.4.2"_s);
        showList(desk, sampleList());
        failNext(desk, offline);
    });
    scene(u"one-row"_s, [](StoreDesk &desk) { showList(desk, sampleList().first(1)); });
    scene(u"many-rows"_s, [](StoreDesk &desk) { showList(desk, manySubscriptions(200)); });
    scene(u"long-names"_s, [](StoreDesk &desk) {
        QList<Subscription> list = sampleList();
        for (Subscription &subscription : list) {
            subscription.name += u", the complete and unabridged society of its friends"_s;
            subscription.categoryName = u"A category whose name is of some length as well"_s;
        }
        showList(desk, list);
    });
    scene(u"right-to-left"_s, [](StoreDesk &desk) {
        QList<Subscription> list = sampleList();
        const QStringList names{u"نور الشمال للفيديو"_s, u"מוזיקה של גאות"_s, u"日本語の庭"_s,
            u"Ελληνική εφημερίδα"_s, u"اشتراك بلا نهاية في كل شيء وفي أي مكان من العالم"_s};
        for (qsizetype i = 0; i < names.size(); ++i)
            list[i].name = names[i];
        showList(desk, list);
    });
    scene(u"large-sums"_s, [](StoreDesk &desk) {
        QList<Subscription> list = sampleList();
        list[0].cost = decimal(u"1234567890.12"_s);
        list[1].cost = decimal(u"98765432.1"_s);
        list[3].cost = decimal(u"12345678901234.5"_s);
        showList(desk, list);
    });
    scene(u"partial-total"_s, [](StoreDesk &desk) {
        QList<Subscription> list = sampleList();
        list[2].currency = u"XYZ"_s;
        showList(desk, list);
    });
    const auto presentQuickAdd = [](StoreDesk &desk) {
        showList(desk, sampleList());
        desk.store->setQuickAddPresented(true);
    };
    const auto suggest = [](StoreDesk &desk, qsizetype count) {
        desk.api->isQuick = true;
        desk.api->templates = sampleTemplates(count);
        QCoro::waitFor(desk.store->searchTemplates(u"Tid"_s));
        desk.api->isQuick = false;
    };
    const auto fillQuickAdd = [](QWidget &panel, StoreDesk &) {
        typeInto(panel, u"Service"_s, u"Tidewater Music"_s);
        typeInto(panel, u"Price"_s, u"10,99"_s);
    };
    scene(u"quick-add"_s, presentQuickAdd);
    scene(u"quick-add-suggestions"_s, presentQuickAdd, [suggest](QWidget &panel, StoreDesk &desk) {
        typeInto(panel, u"Service"_s, u"Tid"_s);
        suggest(desk, 5);
    });
    scene(u"quick-add-filled"_s, presentQuickAdd, [suggest, fillQuickAdd](QWidget &panel, StoreDesk &desk) {
        fillQuickAdd(panel, desk);
        suggest(desk, 2);
    });
    scene(u"quick-add-busy"_s, presentQuickAdd, [fillQuickAdd](QWidget &panel, StoreDesk &desk) {
        fillQuickAdd(panel, desk);
        pressIn(panel, u"Add subscription"_s);
    });
    scene(u"quick-add-error"_s, presentQuickAdd, [fillQuickAdd](QWidget &panel, StoreDesk &desk) {
        fillQuickAdd(panel, desk);
        desk.api->subscription = tl::make_unexpected(APIError(
            APIError::RequestFailed{422, u"The service does not know this currency. Try another one."_s}));
        pressIn(panel, u"Add subscription"_s);
        desk.api->answerAll();
        desk.settle();
    });
    return scenes;
}

} // namespace orbitledge::testing
