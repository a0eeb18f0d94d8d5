#include "card/wire/XmlBytes.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QStringEncoder>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QByteArray encoded(QStringConverter::Encoding encoding, const QString& text, bool withMark)
{
    QStringEncoder encoder(encoding, withMark ? QStringConverter::Flag::WriteBom : QStringConverter::Flag::Default);
    return encoder(text);
}

const QString sample = u"<n>Zoé Œdipe €</n>"_s;

} // namespace

class tst_XmlBytes : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theEncodingIsThatOfTheMarkThenOfTheDeclarationThenUtf8_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");

        QTest::newRow("nothing said") << sample.toUtf8() << sample;
        QTest::newRow("UTF-8 mark") << encoded(QStringConverter::Utf8, sample, true) << sample;
        QTest::newRow("UTF-16LE mark") << encoded(QStringConverter::Utf16LE, sample, true) << sample;
        QTest::newRow("UTF-16BE mark") << encoded(QStringConverter::Utf16BE, sample, true) << sample;
        QTest::newRow("UTF-16LE bare") << encoded(QStringConverter::Utf16LE, sample, false) << sample;
        QTest::newRow("UTF-16BE bare") << encoded(QStringConverter::Utf16BE, sample, false) << sample;

        const auto declared = [](const QByteArray& declaration, const QByteArray& rest, const QString& text) {
            QTest::newRow(declaration.constData()) << declaration + rest << QString::fromLatin1(declaration) + text;
        };
        declared("<?xml version=\"1.0\" encoding=\"UTF-8\"?>", sample.toUtf8(), sample);
        declared("<?xml version='1.0' encoding='utf-8' standalone='yes'?>", sample.toUtf8(), sample);
        declared("<?xml version=\"1.0\"?>", sample.toUtf8(), sample);
        declared("<?xml version='1.0' encoding='ISO-8859-1'?>", "<n>Zo\xE9</n>", u"<n>Zoé</n>"_s);
        declared("<?xml version='1.0' encoding = \"iso-8859-1\" ?>", "<n>Zo\xE9</n>", u"<n>Zoé</n>"_s);
        declared("<?xml version='1.0' encoding='windows-1252'?>", "<n>Zo\xE9 \x8C\x64ipe \x80\x9F</n>",
                 u"<n>Zoé Œdipe €Ÿ</n>"_s);
        declared("<?xml version='1.0' encoding='US-ASCII'?>", "<n>Zoe</n>", u"<n>Zoe</n>"_s);
    }

    void theEncodingIsThatOfTheMarkThenOfTheDeclarationThenUtf8()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, expected);
        QCOMPARE(decodeXmlBytes(bytes), std::optional(expected));
    }

    void aByteOrderMarkOverridesTheDeclaration()
    {
        const QString text = u"<?xml version='1.0' encoding='ISO-8859-1'?><n>Zoé</n>"_s;
        QCOMPARE(decodeXmlBytes(encoded(QStringConverter::Utf8, text, true)), std::optional(text));
        QCOMPARE(decodeXmlBytes(encoded(QStringConverter::Utf16LE, text, true)), std::optional(text));
    }

    void bytesThatAreInvalidInTheEncodingAreRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("Latin-1 taken for UTF-8") << QByteArray("<n>Zo\xE9</n>");
        QTest::newRow("UTF-16 of an odd size") << QByteArray("\xFF\xFE<\0n", 5);
        QTest::newRow("UTF-16 with half a pair") << QByteArray("\xFF\xFE<\0\x00\xD8n\0", 8);
        QTest::newRow("hole of windows-1252") << QByteArray("<?xml version='1.0' encoding='windows-1252'?><n>\x81</n>");
        QTest::newRow("accent in US-ASCII") << QByteArray("<?xml version='1.0' encoding='US-ASCII'?><n>Zo\xE9</n>");
        QTest::newRow("unknown encoding") << QByteArray("<?xml version='1.0' encoding='EBCDIC-FR'?><n/>");
        QTest::newRow("UTF-16 declared in bytes") << QByteArray("<?xml version='1.0' encoding='UTF-16'?><n/>");
    }

    void bytesThatAreInvalidInTheEncodingAreRefused()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(decodeXmlBytes(bytes), std::nullopt);
    }

    void brokenDeclarationsAreReadAsUtf8_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no end") << QByteArray("<?xml version='1.0' encoding='ISO-8859-1'");
        QTest::newRow("no value") << QByteArray("<?xml version='1.0' encoding?><n/>");
        QTest::newRow("no quotes") << QByteArray("<?xml version='1.0' encoding=?><n/>");
        QTest::newRow("open quote") << QByteArray("<?xml version='1.0' encoding='?><n/>");
    }

    void brokenDeclarationsAreReadAsUtf8()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(decodeXmlBytes(bytes), std::optional(QString::fromUtf8(bytes)));
    }
};

template class RunnableTests<tst_XmlBytes, QCoreApplication>;
#include "tst_xmlbytes.moc"
