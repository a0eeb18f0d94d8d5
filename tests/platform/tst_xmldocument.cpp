#include "platform/XmlDocument.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

XmlDocument parsed(const QString& text)
{
    return std::move(XmlDocument::fromText(text).value());
}

QString firstText(const XmlNode& node, std::string_view path)
{
    const std::optional<XmlNode> found = node.firstNode(path);
    return found ? found->stringValue() : u"(absent)"_s;
}

} // namespace

class tst_XmlDocument : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aRelativePathStartsAtTheNode()
    {
        const XmlDocument document = parsed(u"<a><b><c>1</c></b><b><c>2</c></b></a>"_s);
        QCOMPARE(document.rootElement().nodes("b/c").size(), std::size_t{2});
        QCOMPARE(firstText(document.rootElement(), "b/c"), u"1"_s);
        QCOMPARE(document.rootElement().nodes("a/b").size(), std::size_t{0});
        QCOMPARE(document.documentNode().nodes("a/b").size(), std::size_t{2});
    }

    void anAbsolutePathStartsAtTheDocumentNode()
    {
        const XmlDocument document = parsed(u"<a><b><c>1</c></b></a>"_s);
        const XmlNode deep = document.rootElement().firstNode("b").value();
        QCOMPARE(firstText(deep, "/a/b/c"), u"1"_s);
        QCOMPARE(firstText(deep, "/b/c"), u"(absent)"_s);
    }

    void elementsOfANamespaceHaveOtherNames()
    {
        const XmlDocument document = parsed(u"<a xmlns:x='urn:x'><x:b>1</x:b><b>2</b></a>"_s);
        QCOMPARE(firstText(document.rootElement(), "b"), u"2"_s);
        QCOMPARE(firstText(parsed(u"<a xmlns='urn:x'><b>1</b></a>"_s).documentNode(), "a/b"), u"(absent)"_s);
    }

    void theStringValueJoinsAllTheTextOfANode()
    {
        const XmlDocument document =
            parsed(u"<a><b>un <i>deux</i><!-- rien --> <![CDATA[<trois>]]> &amp; &#233;</b><c/></a>"_s);
        QCOMPARE(firstText(document.rootElement(), "b"), u"un deux <trois> & é"_s);
        QCOMPARE(firstText(document.rootElement(), "c"), u""_s);
    }

    void anEmptyElementHasNoChildren()
    {
        const XmlDocument document = parsed(u"<a><b/><c></c><d> </d><e><!-- x --></e></a>"_s);
        const XmlNode root = document.rootElement();
        QVERIFY(!root.firstNode("b").value().hasChildren());
        QVERIFY(!root.firstNode("c").value().hasChildren());
        QVERIFY(root.firstNode("d").value().hasChildren());
        QVERIFY(root.firstNode("e").value().hasChildren());
    }

    void theDeclaredEncodingOfADecodedTextIsIgnored_data()
    {
        QTest::addColumn<QString>("encoding");
        for (const char* name : {"UTF-8", "UTF-16", "UTF-16LE", "UTF-16BE", "UCS-4", "ISO-8859-1", "ISO-8859-15",
                                 "windows-1252", "US-ASCII", "EBCDIC-FR", "Shift_JIS", "no-such-encoding"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void theDeclaredEncodingOfADecodedTextIsIgnored()
    {
        QFETCH(const QString, encoding);
        const QString text = u"<?xml version='1.0' encoding='%1'?><a>Zoé Œ €</a>"_s.arg(encoding);
        const auto document = XmlDocument::fromText(text);
        QVERIFY(document.has_value());
        QCOMPARE(document->rootElement().stringValue(), u"Zoé Œ €"_s);
    }

    void anErrorHasThePositionAndNoTextOfTheDocument()
    {
        const auto document = XmlDocument::fromText(u"<a>\n<SPECIMEN>1 85 05</b></a>"_s);
        QVERIFY(!document.has_value());
        QCOMPARE(document.error().domain(), u"XML"_s);
        const QString description = document.error().localizedDescription();
        QVERIFY2(description.startsWith(u"Le document n’est pas du XML valide (ligne 2, "_s), qPrintable(description));
        QVERIFY(!description.contains(u"SPECIMEN"_s));
    }

    void aDocumentTypeWithoutDeclarationsIsIgnored()
    {
        const XmlDocument document = parsed(u"<!DOCTYPE a SYSTEM 'a.dtd'><a><b>1</b></a>"_s);
        QCOMPARE(document.documentNode().nodes("a/b").size(), std::size_t{1});
        QCOMPARE(firstText(document.documentNode(), "a/b"), u"1"_s);
    }

    void aDocumentTypeWithDeclarationsIsRefused()
    {
        const auto document = XmlDocument::fromText(u"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>"_s);
        QVERIFY(!document.has_value());
        QVERIFY(document.error().localizedDescription().contains(u"DOCTYPE"_s));
    }

    void aTextOfTheMaximumSizeIsParsedAndALargerOneRefused()
    {
        const QByteArray open = "<a><b>";
        const QByteArray close = "</b></a>";
        // Several text nodes, because the parser has a lower limit for one.
        QByteArray body(static_cast<qsizetype>(XmlDocument::maximumSize) - open.size() - close.size(), 'x');
        for (qsizetype index = 0; index + 4 < body.size(); index += 1024 * 1024)
            body.replace(index, 4, "<i/>");
        QVERIFY(XmlDocument::fromText(QString::fromLatin1(open + body + close)).has_value());
        QVERIFY(!XmlDocument::fromText(QString::fromLatin1(open + body + 'x' + close)).has_value());
    }

    void anEmptyTextIsRefused()
    {
        QVERIFY(!XmlDocument::fromText({}).has_value());
        QVERIFY(!XmlDocument::fromText(u" "_s).has_value());
    }
};

template class RunnableTests<tst_XmlDocument, void>;
#include "tst_xmldocument.moc"
