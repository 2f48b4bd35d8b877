#include "demo/SubscriptionInput.h"

#include "demo/Categories.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::demo;
using namespace Qt::StringLiterals;

class SubscriptionInputTest : public QObject {
    Q_OBJECT

    static constexpr LocalDate today{2026, 1, 31};

    static CreateSubscriptionRequest valid()
    {
        CreateSubscriptionRequest request;
        request.name = u"Cloud Attic"_s;
        request.cost = *Decimal::fromText("2.99");
        request.billingCycle = u"monthly"_s;
        return request;
    }

    static QStringList fieldsOf(const FieldProblems &problems)
    {
        QStringList result;
        for (const FieldProblem &problem : problems)
            result.append(problem.field);
        return result;
    }

    static QStringList problemsOf(const CreateSubscriptionRequest &request)
    {
        const auto checked = checkSubscription(request, u"EUR"_s, today);
        return checked ? QStringList() : fieldsOf(checked.error());
    }

    static FormFields form(const QByteArray &changes = {})
    {
        // The first field of a name counts.
        return FormFields::parse(changes
            + "&name=Cloud+Attic&cost=2%2C99&currency=usd&billing_cycle=yearly"
              "&next_billing_date=2026-03-18&trial_end_date=");
    }

private Q_SLOTS:
    void shouldFillInWhatIsLeftOut()
    {
        auto request = valid();
        request.name = u"  Cloud Attic "_s;
        request.billingCycle = u" Monthly"_s;
        const auto draft = checkSubscription(request, u"eur"_s, today);
        QVERIFY(draft);
        QCOMPARE(draft->name, u"Cloud Attic"_s);
        QCOMPARE(draft->currency, u"EUR"_s);
        QCOMPARE(draft->cycle, BillingCycle::Monthly);
        QCOMPARE(draft->nextBillingDate.text(), u"2026-02-28"_s);
    }

    void shouldNameTheFieldThatIsWrong()
    {
        const auto with = [](auto &&change) {
            CreateSubscriptionRequest request = valid();
            change(request);
            return problemsOf(request);
        };
        const auto cost = [&](const char *text, const char *currency = "EUR") {
            return with([&](auto &request) {
                request.cost = *Decimal::fromText(text);
                request.currency = QString::fromLatin1(currency);
            });
        };
        const QStringList name{u"name"_s};
        QCOMPARE(with([](auto &) { }), QStringList());
        QCOMPARE(with([](auto &request) { request.name = u" \t "_s; }), name);
        QCOMPARE(with([](auto &request) { request.name = QString(200, u'x'); }), QStringList());
        QCOMPARE(with([](auto &request) { request.name = QString(201, u'x'); }), name);
        QCOMPARE(with([](auto &request) { request.name = u"a\u0007b"_s; }), name);
        QCOMPARE(with([](auto &request) { request.name = QString(u"a"_s) + QChar(0) + u"b"_s; }), name);

        QCOMPARE(cost("0"), QStringList());
        QCOMPARE(cost("999999999"), QStringList());
        QCOMPARE(cost("999999999.01"), QStringList({u"cost"_s}));
        QCOMPARE(cost("-0.01"), QStringList({u"cost"_s}));
        QCOMPARE(cost("9.990"), QStringList());
        QCOMPARE(cost("9.999"), QStringList({u"cost"_s}));
        QCOMPARE(cost("9.999", "KWD"), QStringList());
        QCOMPARE(cost("9.5", "JPY"), QStringList({u"cost"_s}));

        QCOMPARE(with([](auto &request) { request.currency = u"EURO"_s; }), QStringList({u"currency"_s}));
        QCOMPARE(with([](auto &request) { request.currency = u""_s; }), QStringList({u"currency"_s}));
        QCOMPARE(with([](auto &request) { request.currency = u"gbp"_s; }), QStringList());
        QCOMPARE(with([](auto &request) { request.billingCycle = u"biweekly"_s; }),
            QStringList({u"billing_cycle"_s}));
        QCOMPARE(with([](auto &request) { request.billingCycle = u"Annually"_s; }), QStringList());

        const QStringList next{u"next_billing_date"_s};
        QCOMPARE(with([](auto &request) { request.nextBillingDate = LocalDate{1999, 12, 31}; }), next);
        QCOMPARE(with([](auto &request) { request.nextBillingDate = LocalDate{2000, 1, 1}; }), QStringList());
        QCOMPARE(with([](auto &request) { request.nextBillingDate = LocalDate{2200, 1, 1}; }), next);

        QCOMPARE(with([](auto &request) { request.categoryID = QUuid::createUuid(); }),
            QStringList({u"category_id"_s}));
        QCOMPARE(with([](auto &request) { request.categoryID = categoryId("Music"_L1); }), QStringList());
        const QStringList notice{u"trial_notification_days"_s};
        QCOMPARE(with([](auto &request) { request.trialNotificationDays = 3; }), notice);
        QCOMPARE(with([](auto &request) {
            request.trialEndDate = LocalDate{2026, 3, 1};
            request.trialNotificationDays = 366;
        }),
            notice);
        QCOMPARE(with([](auto &request) {
            request.trialEndDate = LocalDate{2026, 3, 1};
            request.trialNotificationDays = 3;
        }),
            QStringList());
    }

    void shouldTellEverythingThatIsWrongAtOnce()
    {
        CreateSubscriptionRequest request;
        request.cost = Decimal(-1);
        request.currency = u"?"_s;
        QCOMPARE(problemsOf(request), QStringList({u"name"_s, u"cost"_s, u"currency"_s, u"billing_cycle"_s}));
    }

    void shouldReadAFormAsPeopleType()
    {
        const auto draft = checkSubscriptionForm(form(), u"EUR"_s, today);
        QVERIFY(draft);
        QCOMPARE(draft->cost, *Decimal::fromText("2.99"));
        QCOMPARE(draft->currency, u"USD"_s);
        QCOMPARE(draft->cycle, BillingCycle::Yearly);
        QVERIFY(!draft->trialEndDate);
    }

    void shouldSayWhichFieldOfAFormCannotBeRead_data()
    {
        QTest::addColumn<QByteArray>("changes");
        QTest::addColumn<QStringList>("fields");
        QTest::newRow("no number") << "cost=abc"_ba << QStringList({u"cost"_s});
        QTest::newRow("no cost") << "cost="_ba << QStringList({u"cost"_s});
        QTest::newRow("two commas") << "cost=1,000,00"_ba << QStringList({u"cost"_s});
        QTest::newRow("huge exponent") << "cost=1e400"_ba << QStringList({u"cost"_s});
        QTest::newRow("long") << "cost=" + QByteArray(10'000, '9') << QStringList({u"cost"_s});
        QTest::newRow("no such day") << "next_billing_date=2026-02-30"_ba
                                     << QStringList({u"next_billing_date"_s});
        QTest::newRow("no day") << "next_billing_date="_ba << QStringList({u"next_billing_date"_s});
        QTest::newRow("trial") << "trial_end_date=soon"_ba << QStringList({u"trial_end_date"_s});
        QTest::newRow("several") << "name=&cost=x&next_billing_date=y"_ba
                                 << QStringList({u"cost"_s, u"next_billing_date"_s, u"name"_s});
    }
    void shouldSayWhichFieldOfAFormCannotBeRead()
    {
        QFETCH(QByteArray, changes);
        QFETCH(QStringList, fields);
        const auto checked = checkSubscriptionForm(form(changes), u"EUR"_s, today);
        QVERIFY(!checked);
        QCOMPARE(fieldsOf(checked.error()), fields);
    }
};

ORBITLEDGE_TEST_MAIN(SubscriptionInputTest)
#include "SubscriptionInputTest.moc"
