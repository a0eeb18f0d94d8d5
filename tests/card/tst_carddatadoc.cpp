#include "card/CardKeys.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// The fields' table as the documentation shows it.
QString renderedTable()
{
    QString table = u"| key | path |\n|---|---|\n"_s;
    for (const BeneficiaryField& field : beneficiaryFields)
        table += u"| `%1` | `%2` |\n"_s.arg(QStringView(field.key), field.path.utf16());
    return table;
}

QString document()
{
    return textOfFile(QStringLiteral(PELMORA_SOURCE "/docs/card-data.md"));
}

/// The part of the documentation from that table's heading to the blank line after it.
QString documentedTable(const QString& text)
{
    const qsizetype start = text.indexOf(u"| key | path |\n"_s);
    const qsizetype end = text.indexOf(u"\n\n"_s, start);
    return start < 0 || end < 0 ? QString() : text.sliced(start, end + 1 - start);
}

} // namespace

class tst_CardDataDoc : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theDocumentedFieldsAreThoseOfTheTable()
    {
        QVERIFY2(documentedTable(document()) == renderedTable(),
                 qPrintable(u"docs/card-data.md should contain:\n"_s + renderedTable()));
    }

    void theDocumentedCopiesAreThoseOfTheTable()
    {
        QStringList keys;
        for (const RecordKey key : mainBeneficiaryKeys)
            keys.append(u'`' + key.toString() + u'`');
        const QString row = u"| %1 | the insured person's |"_s.arg(keys.join(u", "_s));
        QVERIFY2(document().contains(row), qPrintable(row));
    }
};

template class RunnableTests<tst_CardDataDoc, QCoreApplication>;
#include "tst_carddatadoc.moc"
