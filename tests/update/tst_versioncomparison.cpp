#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "update/VersionComparison.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_VersionComparison : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    // Each version is older than the next one.
    void versionPartsAreComparedAsNumbers()
    {
        const QStringList versions{u"0"_s,
                                   u"0.9"_s,
                                   u"0.10"_s,
                                   u"1.0a"_s,
                                   u"1.0b2"_s,
                                   u"1.0b10"_s,
                                   u"1.0-rc1"_s,
                                   u"1.0"_s,
                                   u"1.0.1"_s,
                                   u"1.1"_s,
                                   u"2.0"_s,
                                   u"10"_s,
                                   u"20240101"_s,
                                   u"18446744073709551616"_s,
                                   u"18446744073709551617"_s};
        for (qsizetype left = 0; left < versions.size(); ++left) {
            for (qsizetype right = 0; right < versions.size(); ++right) {
                const bool isAsExpected = compareVersions(versions[left], versions[right]) == (left <=> right);
                QVERIFY2(isAsExpected, qPrintable(versions[left] + " and "_L1 + versions[right]));
            }
        }
    }

    void differentSpellingsOfAVersionAreEquivalent_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        QTest::newRow("missing numbers are 0") << u"1"_s << u"1.0.0"_s;
        QTest::newRow("leading zeros") << u"1.01"_s << u"1.1"_s;
        QTest::newRow("separators") << u"1.0-b_2"_s << u"1.0b2"_s;
        QTest::newRow("letter case") << u"1.0RC1"_s << u"1.0rc1"_s;
        QTest::newRow("nothing is 0") << u""_s << u"0"_s;
    }
    void differentSpellingsOfAVersionAreEquivalent()
    {
        QFETCH(const QString, left);
        QFETCH(const QString, right);
        QVERIFY(std::is_eq(compareVersions(left, right)));
        QVERIFY(std::is_eq(compareVersions(right, left)));
    }

    void onlyShortTextsOfAllowedCharactersAreVersions()
    {
        for (const QString& version : {u"0"_s, u"1.2.3"_s, u"1.0-rc1"_s, u"v2"_s, QString(64, u'1')})
            QVERIFY2(isVersion(version), qPrintable(version));
        for (const QString& other :
             {u""_s, u"."_s, u"-1"_s, u"1 0"_s, u"1.0\n"_s, u"1.0é"_s, u"1/2"_s, u"%1"_s, u"٣"_s, QString(65, u'1')})
            QVERIFY2(!isVersion(other), qPrintable(other));
    }
};

template class RunnableTests<tst_VersionComparison, void>;
#include "tst_versioncomparison.moc"
