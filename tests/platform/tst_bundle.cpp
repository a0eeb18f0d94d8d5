#include "platform/Bundle.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_Bundle : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        QFile file(m_folder.filePath(u"01.svg"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(QDir(m_folder.path()).mkdir(u"folder.svg"_s));
    }

    void aResourceIsFoundByNameAndType()
    {
        QCOMPARE(Bundle(m_folder.path()).pathForResource(u"01"_s, u"svg"_s), m_folder.filePath(u"01.svg"_s));
    }

    void whatIsNotAResourceHasNoPath()
    {
        const Bundle bundle(m_folder.path());
        QVERIFY(!bundle.pathForResource(u"99"_s, u"svg"_s));
        QVERIFY(!bundle.pathForResource(u"01"_s, u"png"_s));
        QVERIFY(!bundle.pathForResource(u"folder"_s, u"svg"_s));
        QVERIFY(!bundle.pathForResource(u""_s, u"svg"_s));
    }

    void aNameNeverLeadsOutOfTheFolder()
    {
        const Bundle inner(m_folder.filePath(u"folder.svg"_s));
        QVERIFY(!inner.pathForResource(u"../01"_s, u"svg"_s));
        QVERIFY(!inner.pathForResource(m_folder.filePath(u"01"_s), u"svg"_s));
    }
};

QTEST_GUILESS_MAIN(tst_Bundle)
#include "tst_bundle.moc"
