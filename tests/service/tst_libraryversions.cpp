#include "service/LibraryVersions.h"
#include "service/SimulatedReader.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QHash>
#include <QTest>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

/// The text of each element of a document by its path, the root's own name left out.
QHash<QString, QString> textsByPath(const QString& document)
{
    QHash<QString, QString> texts;
    QStringList path;
    QXmlStreamReader reader(document);
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            path.append(reader.name().toString());
            break;
        case QXmlStreamReader::Characters:
            texts[path.sliced(1).join(u'/')] += reader.text();
            break;
        case QXmlStreamReader::EndElement:
            path.removeLast();
            break;
        default:
            break;
        }
    }
    return reader.hasError() ? QHash<QString, QString>() : texts;
}

const QStringList versionPaths{u"apiLecVitale/version"_s, u"apiLecVitale/tableLibVitale"_s,
                               u"apiLecVitale/tableLibOrgDest"_s, u"apiLecVitale/tableHab"_s};

} // namespace

class tst_LibraryVersions : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theFourVersionsAreAtTheirPaths()
    {
        const QHash<QString, QString> texts =
            textsByPath(informationsDocument({u"1.0"_s, u"2 & 3"_s, u"é"_s, u"<4>"_s}));
        QCOMPARE(texts.size(), 4);
        QCOMPARE(texts[versionPaths[0]], u"1.0"_s);
        QCOMPARE(texts[versionPaths[1]], u"2 & 3"_s);
        QCOMPARE(texts[versionPaths[2]], u"é"_s);
        QCOMPARE(texts[versionPaths[3]], u"<4>"_s);
    }

    void theSimulatedReaderReportsItsFourVersions()
    {
        const QHash<QString, QString> simulated = textsByPath(SimulatedReader("x").informations());
        for (const QString& path : versionPaths)
            QVERIFY2(!simulated[path].isEmpty(), qPrintable(path));
    }
};

template class RunnableTests<tst_LibraryVersions, QCoreApplication>;
#include "tst_libraryversions.moc"
