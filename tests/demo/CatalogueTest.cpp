#include "demo/Catalogue.h"

#include "demo/Categories.h"
#include "support/TestMain.h"

#include <algorithm>
#include <set>

using namespace orbitledge;
using namespace orbitledge::demo;
using namespace Qt::StringLiterals;

class CatalogueTest : public QObject {
    Q_OBJECT

    static SearchableTemplate entry(
        const QString &name, qint64 uses = 0, const QString &company = {}, const QString &category = {})
    {
        SubscriptionTemplate record;
        record.name = name;
        record.companyName = company;
        record.category = category;
        record.usageCount = uses;
        return searchable(record);
    }

    static QStringList names(const QList<SubscriptionTemplate> &found)
    {
        QStringList result;
        for (const SubscriptionTemplate &record : found)
            result.append(record.name);
        return result;
    }

private Q_SLOTS:
    void shouldIgnoreCaseAccentsAndPunctuation_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("form");
        QTest::newRow("case") << u"Cloud ATTIC"_s << u"cloud attic"_s;
        QTest::newRow("accents") << u"Cinéma Étoile"_s << u"cinema etoile"_s;
        QTest::newRow("letters without accents") << u"Łódź Straße Ærø"_s << u"lodz strasse aero"_s;
        QTest::newRow("punctuation") << u"  Kettle & Bean!  "_s << u"kettle bean"_s;
        QTest::newRow("other scripts") << u"日本語の庭"_s << u"日本語の庭"_s;
        QTest::newRow("wide letters") << u"ＡＢＣ１"_s << u"abc1"_s;
        QTest::newRow("nothing left") << u"… !"_s << QString();
    }
    void shouldIgnoreCaseAccentsAndPunctuation()
    {
        QFETCH(QString, text);
        QFETCH(QString, form);
        QCOMPARE(searchForm(text), form);
    }

    void shouldRankByHowWellTheNameMatches()
    {
        const QList<SearchableTemplate> catalogue{
            entry(u"Other"_s, 900, u"Tide & Co"_s),
            entry(u"Riptide"_s, 800),
            entry(u"High Tide"_s, 700),
            entry(u"Tidewater"_s, 600),
            entry(u"Tide"_s, 1),
            entry(u"Nothing alike"_s, 5'000),
        };
        QCOMPARE(names(searchCatalogue(catalogue, u"tide"_s, 20)),
            QStringList({u"Tide"_s, u"Tidewater"_s, u"High Tide"_s, u"Riptide"_s, u"Other"_s}));
    }

    void shouldOrderEqualOnesByUseThenByName()
    {
        const QList<SearchableTemplate> catalogue{
            entry(u"Music C"_s, 5), entry(u"Music B"_s, 5), entry(u"Music A"_s, 9)};
        QCOMPARE(names(searchCatalogue(catalogue, u"mus"_s, 20)),
            QStringList({u"Music A"_s, u"Music B"_s, u"Music C"_s}));
        QCOMPARE(names(searchCatalogue(catalogue, u"mus"_s, 2)), QStringList({u"Music A"_s, u"Music B"_s}));
    }

    void shouldForgiveOneTypingErrorWhereNothingElseMatches_data()
    {
        QTest::addColumn<QString>("query");
        QTest::addColumn<bool>("isFound");
        QTest::newRow("wrong letter") << u"tidewster"_s << true;
        QTest::newRow("missing letter") << u"tidwater"_s << true;
        QTest::newRow("letter too many") << u"tidewwater"_s << true;
        QTest::newRow("two swapped") << u"tidweater"_s << true;
        QTest::newRow("first letter") << u"ridewater"_s << true;
        QTest::newRow("beginning of the name") << u"tidwe"_s << true;
        QTest::newRow("second word") << u"muisc"_s << true;
        QTest::newRow("two errors") << u"tudewster"_s << false;
        QTest::newRow("too short to guess") << u"tdi"_s << false;
    }
    void shouldForgiveOneTypingErrorWhereNothingElseMatches()
    {
        QFETCH(QString, query);
        QFETCH(bool, isFound);
        const QList<SearchableTemplate> catalogue{entry(u"Tidewater Music"_s), entry(u"Harbour Gym"_s)};
        QCOMPARE(names(searchCatalogue(catalogue, query, 20)),
            isFound ? QStringList({u"Tidewater Music"_s}) : QStringList());
    }

    void shouldNotGuessWhereSomethingMatches()
    {
        const QList<SearchableTemplate> catalogue{entry(u"Tiger"_s), entry(u"Tigre"_s)};
        QCOMPARE(names(searchCatalogue(catalogue, u"tiger"_s, 20)), QStringList({u"Tiger"_s}));
    }

    void shouldHoldACatalogueThatIsWhole()
    {
        const auto catalogue = loadCatalogue();
        QVERIFY(catalogue.size() >= 60);
        std::set<QString> ids;
        std::set<QString> all;
        for (const SearchableTemplate &template_ : catalogue) {
            const SubscriptionTemplate &record = template_.record;
            QVERIFY2(ids.insert(record.id.toString()).second, qPrintable(record.name));
            QVERIFY2(all.insert(record.name).second, qPrintable(record.name));
            QVERIFY2(record.typicalMonthlyCost || record.typicalAnnualCost, qPrintable(record.name));
            QVERIFY2(record.availableBillingCycles && !record.availableBillingCycles->isEmpty(),
                qPrintable(record.name));
            const auto category = std::ranges::find(categoryNames(), record.category.value_or(QString()));
            QVERIFY2(category != categoryNames().end(), qPrintable(record.name));
            QCOMPARE(categoryName(categoryId(*category)), *category);
            // Reserved for examples, so that nobody's site is meant.
            QVERIFY2(record.websiteURL->host().endsWith(u".example"_s), qPrintable(record.name));
        }
    }

    void shouldFindByCompanyAndCategory()
    {
        const auto catalogue = loadCatalogue();
        QCOMPARE(names(searchCatalogue(catalogue, u"cinema etoile"_s, 1)), QStringList({u"Cinéma Étoile"_s}));
        QCOMPARE(names(searchCatalogue(catalogue, u"lodz"_s, 5)), QStringList({u"Łódź Laundry"_s}));
        QCOMPARE(names(searchCatalogue(catalogue, u"日本"_s, 5)), QStringList({u"日本語の庭"_s}));
        const auto insurers = names(searchCatalogue(catalogue, u"lighthouse mut"_s, 5));
        QCOMPARE(insurers, QStringList({u"Lighthouse Insurance"_s, u"Paws & Claws Cover"_s}));
        QVERIFY(names(searchCatalogue(catalogue, u"streaming"_s, 20)).contains(u"Northlight Video"_s));
        QCOMPARE(searchCatalogue(catalogue, u"a"_s, 20).size(), 20);
    }
};

ORBITLEDGE_TEST_MAIN(CatalogueTest)
#include "CatalogueTest.moc"
