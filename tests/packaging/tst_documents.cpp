#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QDir sources(QStringLiteral(PELMORA_SOURCE));

// The anchors of the headings, as web pages that show such documents name them.
QStringList anchors(const QString& document)
{
    QStringList names;
    const QRegularExpression heading(u"^#+ (.*)$"_s, QRegularExpression::MultilineOption);
    for (const QRegularExpressionMatch& match : heading.globalMatch(document)) {
        QString name = match.captured(1).toLower();
        name.remove(QRegularExpression(u"[^\\w -]"_s, QRegularExpression::UseUnicodePropertiesOption));
        names.append(name.replace(u' ', u'-'));
    }
    return names;
}

// Whether a link of the document at that path leads to something in the sources.
bool leadsSomewhere(const QString& link, const QString& path)
{
    const QString file = link.section(u'#', 0, 0);
    const QString target = file.isEmpty() ? path : QFileInfo(path).dir().filePath(file);
    return QFileInfo::exists(target) &&
           (!link.contains(u'#') || anchors(textOfFile(target)).contains(link.section(u'#', 1)));
}

QStringList documents()
{
    QStringList paths;
    for (const QString& name : sources.entryList({u"*.md"_s}, QDir::Files, QDir::Name))
        paths.append(sources.filePath(name));
    const QDir docs(sources.filePath(u"docs"_s));
    for (const QString& name : docs.entryList({u"*.md"_s}, QDir::Files, QDir::Name))
        paths.append(docs.filePath(name));
    return paths;
}

} // namespace

class tst_Documents : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void everyLinkLeadsToAFileOfTheSources_data()
    {
        QTest::addColumn<QString>("path");
        for (const QString& path : documents())
            QTest::newRow(qPrintable(sources.relativeFilePath(path))) << path;
    }
    void everyLinkLeadsToAFileOfTheSources()
    {
        QFETCH(const QString, path);
        const QString document = textOfFile(path);
        QVERIFY(!document.isEmpty());
        QStringList dead;
        static const QRegularExpression linked(u"\\]\\(([^)]+)\\)|src=\"([^\"]+)\""_s);
        for (const QRegularExpressionMatch& match : linked.globalMatch(document)) {
            const QString link = match.captured(1) + match.captured(2);
            if (!link.startsWith("https://"_L1) && !leadsSomewhere(link, path))
                dead.append(link);
        }
        QCOMPARE(dead, QStringList());
    }

    void everyDocumentIsFoundFromTheFirstOnes()
    {
        const QString first =
            textOfFile(sources.filePath(u"README.md"_s)) + textOfFile(sources.filePath(u"docs/architecture.md"_s));
        QStringList hidden;
        for (const QString& path : documents()) {
            const QString name = QFileInfo(path).fileName();
            if (name != "README.md"_L1 && !first.contains(u'(' + name) && !first.contains(u"(docs/"_s + name))
                hidden.append(name);
        }
        QCOMPARE(hidden, QStringList());
    }

    void everyFolderOfTheSourcesIsToldInTheArchitecture()
    {
        const QString architecture = textOfFile(sources.filePath(u"docs/architecture.md"_s));
        QStringList missing;
        for (const QString& name : sources.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
            if (name != "build"_L1 && !architecture.contains(u'`' + name + u'/'))
                missing.append(name);
        }
        QCOMPARE(missing, QStringList());
    }
};

template class RunnableTests<tst_Documents, void>;
#include "tst_documents.moc"
