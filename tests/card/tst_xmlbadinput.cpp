#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "card/PelmoraError.h"
#include "card/wire/XmlBytes.h"
#include "platform/XmlMarkup.h"
#include "tests/card/CardXml.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Milliseconds that any input may take; the sanitizers slow everything down.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr qint64 patience = 20'000;
#else
constexpr qint64 patience = 1000;
#endif

/// The result of parsing a card's XML: the insured person's name in brackets, "no beneficiary", "general error", or
/// "refused" by the XML parser.
QString outcomeOf(const QString& text)
{
    const std::expected<XmlDocument, Error> document = XmlDocument::fromText(text);
    if (!document)
        return document.error().domain() == XmlDocument::errorDomain ? u"refused"_s : u"(another domain)"_s;
    const std::expected<CardRecord, Error> record = parseCardDocument(&*document);
    if (!record && record.error() == PelmoraError::generalError())
        return u"general error"_s;
    if (!record)
        return record.error() == PelmoraError::vitaleNoBen() ? u"no beneficiary"_s : u"(another error)"_s;
    return u'[' + record->text(CardKey::lastName).value_or(u"(absent)"_s) + u']';
}

/// A card of one person with this name, which is not escaped.
QString cardOf(const QString& lastName)
{
    return CardXml::card(CardXml::person(lastName));
}

QString entityBomb()
{
    QString types = u"<!ENTITY a0 'ha'>"_s;
    for (int level = 1; level <= 30; ++level)
        types += u"<!ENTITY a%1 '&a%2;&a%2;&a%2;&a%2;&a%2;&a%2;&a%2;&a%2;&a%2;&a%2;'>"_s.arg(level).arg(level - 1);
    return u"<!DOCTYPE T_AsnDonneesVitale [%1]>"_s.arg(types) + cardOf(u"&a30;"_s);
}

QString quadraticBlowUp()
{
    return u"<!DOCTYPE T_AsnDonneesVitale [<!ENTITY a '%1'>]>"_s.arg(QString(100'000, u'x')) +
           cardOf(QString(u"&a;"_s).repeated(50'000));
}

QString attributes(int count)
{
    QString all;
    for (int number = 0; number < count; ++number)
        all += u" a%1=''"_s.arg(number);
    return all;
}

/// As many repetitions of a piece of XML as fit into a document of the maximum size.
QString asMuchAsAllowed(const QString& piece)
{
    constexpr qsizetype room = qsizetype(XmlDocument::maximumSize) - 4096;
    return piece.repeated(room / piece.toUtf8().size());
}

QString manyPersons(int count)
{
    QString persons;
    for (int number = 1; number <= count; ++number)
        persons += CardXml::person(u"NOM %1"_s.arg(number), number == count ? u"0"_s : u"6"_s);
    return CardXml::card(persons);
}

} // namespace

class tst_XmlBadInput : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void eachTextGivesTheExpectedResultWithinASecond_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const QString& text, const QString& expected) {
            QTest::newRow(name) << text << expected;
        };
        const QString refused = u"refused"_s;
        const QString sound = cardOf(u"SPECIMEN"_s);

        row("sound", sound, u"[SPECIMEN]"_s);
        row("not XML", u"Bonjour"_s, refused);
        row("empty", u""_s, refused);
        row("blanks", u" \n\t "_s, refused);
        row("declaration alone", u"<?xml version='1.0'?>"_s, refused);
        row("comment alone", u"<!-- rien -->"_s, refused);
        row("truncated in a tag", sound.chopped(1), refused);
        row("truncated in the middle", sound.first(sound.size() / 2), refused);
        row("text after the root", sound + u"x"_s, refused);
        row("element after the root", sound + u"<x/>"_s, refused);
        row("blanks and comments around the root", u"<!-- a -->\n"_s + sound + u"\n<!-- b -->\n"_s, u"[SPECIMEN]"_s);
        row("second declaration", u"<?xml version='1.0'?>"_s.repeated(2) + sound, refused);
        row("declaration after a blank", u" <?xml version='1.0'?>"_s + sound, refused);
        row("duplicate attributes", CardXml::card(u"<T_AsnBeneficiaire a='1' a='2'/>"_s), refused);
        row("mismatched tags", u"<a><b></a></b>"_s, refused);
        row("bare ampersand", cardOf(u"A & B"_s), refused);
        row("undefined entity", cardOf(u"&eacute;"_s), refused);
        row("less-than in an attribute", CardXml::card(u"<T_AsnBeneficiaire a='<'/>"_s), refused);
        row("control character", cardOf(u"A\u0001B"_s), refused);
        row("reference to a control character", cardOf(u"A&#1;B"_s), refused);
        row("NUL", cardOf(u"A%1B"_s.arg(QChar(0))), refused);
        row("reference to NUL", cardOf(u"A&#0;B"_s), refused);
        row("NUL at the end", sound + QChar(0), refused);
        row("noncharacter", cardOf(u"A\uFFFE"_s), refused);

        const QString ignored = u"[SPECIMEN]"_s;
        row("document type", u"<!DOCTYPE T_AsnDonneesVitale>"_s + sound, ignored);
        row("document type with blanks", u"<?xml version='1.0'?>\n<!DOCTYPE\n T_AsnDonneesVitale \n>\n"_s + sound,
            ignored);
        row("document type elsewhere", u"<!DOCTYPE x SYSTEM 'http://127.0.0.1:9/x.dtd'>"_s + sound, ignored);
        row("public document type", u"<!DOCTYPE x PUBLIC \"-//X//Y//FR\" 'http://127.0.0.1:9/x.dtd'>"_s + sound,
            ignored);
        row("document type with marks in quotes", u"<!DOCTYPE x SYSTEM 'a>[<!ENTITY b \"c\">]'>"_s + sound, ignored);
        row("comment like a document type", u"<!--<!DOCTYPE x [<!ENTITY a 'b'>]>-->"_s + sound, ignored);
        row("document type with an empty subset", u"<!DOCTYPE x []>"_s + sound, refused);
        row("document type with a comment in its subset", u"<!DOCTYPE x [<!-- rien -->]>"_s + sound, refused);
        row("document type with an instruction", u"<!DOCTYPE x [<?p x?>]>"_s + sound, refused);
        row("document type with an element", u"<!DOCTYPE x [<!ELEMENT x ANY>]>"_s + sound, refused);
        row("document type with attributes", u"<!DOCTYPE x [<!ATTLIST x a CDATA 'b'>]>"_s + sound, refused);
        row("document type with a notation", u"<!DOCTYPE x [<!NOTATION n SYSTEM 'n'>]>"_s + sound, refused);
        row("document type elsewhere with an entity",
            u"<!DOCTYPE x SYSTEM 'x.dtd' [<!ENTITY a 'b'>]>"_s + cardOf(u"&a;"_s), refused);
        row("quote that hides a subset", u"<!DOCTYPE x ' [<!ENTITY a 'b'>]>"_s + cardOf(u"&a;'"_s), refused);
        row("document type left open", u"<!DOCTYPE x SYSTEM 'x.dtd"_s + sound, refused);
        row("two document types", u"<!DOCTYPE x>"_s.repeated(2) + sound, refused);
        row("document type after the root", sound + u"<!DOCTYPE x>"_s, refused);
        row("entity that the file elsewhere might declare", u"<!DOCTYPE x SYSTEM 'x.dtd'>"_s + cardOf(u"Zo&eacute;"_s),
            refused);
        row("such an entity in an attribute",
            u"<!DOCTYPE x SYSTEM 'x.dtd'>"_s + CardXml::card(u"<T_AsnBeneficiaire a='&b;'/>"_s), refused);
        row("undefined entity with a document type", u"<!DOCTYPE x>"_s + cardOf(u"&eacute;"_s), refused);
        row("many document types", u"<!DOCTYPE x>"_s.repeated(1'000'000), refused);
        row("document type with an entity", u"<!DOCTYPE x [<!ENTITY a 'b'>]>"_s + cardOf(u"&a;"_s), refused);
        row("entity bomb", entityBomb(), refused);
        row("quadratic blow-up", quadraticBlowUp(), refused);
        row("entity that names itself", u"<!DOCTYPE x [<!ENTITY a '&a;'>]>"_s + cardOf(u"&a;"_s), refused);
        row("parameter entity bomb",
            u"<!DOCTYPE x [<!ENTITY % a '<!ENTITY b \"c\">'><!ENTITY % d '%a;%a;'> %d; %d;]>"_s + sound, refused);

        row("100,000 levels", u"<a>"_s.repeated(100'000) + u"</a>"_s.repeated(100'000), refused);
        row("100,000 levels in a value", cardOf(u"<a>"_s.repeated(100'000) + u"</a>"_s.repeated(100'000)), refused);
        row("1,000,000 levels left open", u"<a>"_s.repeated(1'000'000), refused);
        row("200 levels in a value", cardOf(u"<a>"_s.repeated(200) + u"A"_s + u"</a>"_s.repeated(200)), u"[A]"_s);
        row("as many tags as a document may have", u"<a>%1</a>"_s.arg(QString(u"<b/>"_s).repeated(maximumTags - 2)),
            u"no beneficiary"_s);
        row("too many tags", u"<a>%1</a>"_s.arg(QString(u"<b/>"_s).repeated(maximumTags - 1)), refused);
        row("256 attributes", CardXml::card(u"<T_AsnBeneficiaire%1/>"_s.arg(attributes(256))), u"[(absent)]"_s);
        row("257 attributes", CardXml::card(u"<T_AsnBeneficiaire%1/>"_s.arg(attributes(257))), refused);
        row("100,000 attributes", CardXml::card(u"<T_AsnBeneficiaire%1/>"_s.arg(attributes(100'000))), refused);
        row("100,000 attributes after a fault that hides them", u"<a><?><c%1/>?></a>"_s.arg(attributes(100'000)),
            refused);
        row("100,000 attributes in an open quote", u"<a b='><c%1/>"_s.arg(attributes(100'000)), refused);
        row("100,000 attributes in a comment", u"<a><!-- <c%1/> --></a>"_s.arg(attributes(100'000)),
            u"no beneficiary"_s);
        row("many namespaces", u"<a>%1</a>"_s.arg(QString(u"<b xmlns:c='urn:c'/>"_s).repeated(64)),
            u"no beneficiary"_s);
        row("too many namespaces", u"<a>%1</a>"_s.arg(QString(u"<b xmlns:c='urn:c'/>"_s).repeated(65)), refused);
        row("100 MB", u"<a>"_s + QString(100'000'000, u'x') + u"</a>"_s, refused);
        row("just over 16 MiB", u"<a>"_s + QString(16 * 1024 * 1024 - 6, u'x') + u"</a>"_s, refused);

        row("wrong root", u"<autre/>"_s, u"no beneficiary"_s);
        row("no beneficiary", CardXml::card(u""_s), u"no beneficiary"_s);
        row("500 beneficiaries", manyPersons(500), u"[NOM 500]"_s);
        row("249,000 beneficiaries",
            u"<T_AsnDonneesVitale><listeBenef>%1</listeBenef></T_AsnDonneesVitale>"_s.arg(
                QString(u"<T_AsnBeneficiaire/>"_s).repeated(249'000)),
            u"general error"_s);

        row("default namespace", u"<T_AsnDonneesVitale xmlns='urn:x'>"_s + sound.sliced(20), u"no beneficiary"_s);
        row("prefixed beneficiary", CardXml::card(u"<p:T_AsnBeneficiaire xmlns:p='urn:x'/>"_s), u"no beneficiary"_s);
        row("namespace of a value alone", cardOf(u"<p:x xmlns:p='urn:x'>A</p:x>"_s), u"[A]"_s);

        row("comment in a value", cardOf(u"A<!-- x -->B"_s), u"[AB]"_s);
        row("CDATA in a value", cardOf(u"A<![CDATA[ & <B>]]>"_s), u"[A & <B>]"_s);
        row("CDATA alone", cardOf(u"<![CDATA[]]>"_s), u"[]"_s);
        row("processing instruction in a value", cardOf(u"A<?p x?>B"_s), u"[AB]"_s);
        row("comment alone in a value", cardOf(u"<!-- x -->"_s), u"[]"_s);
        row("predefined entities", cardOf(u"&lt;&amp;&gt;&quot;&apos;&#x41;&#66;"_s), u"[<&>\"'AB]"_s);
        row("characters beyond 16 bits", cardOf(u"A\U0001F600"_s), u"[A\U0001F600]"_s);
        row("carriage returns", cardOf(u"A\r\nB\rC"_s), u"[A\nB\nC]"_s);
    }

    void eachTextGivesTheExpectedResultWithinASecond()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(outcomeOf(text), expected);
        QVERIFY2(timer.elapsed() < patience, qPrintable(u"%1 ms"_s.arg(timer.elapsed())));
    }

    void theLargestDocumentsTakeTimeInProportionToTheirSize_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("piece");
        QTest::addColumn<QString>("after");
        const auto row = [](const char* piece) {
            QTest::newRow(piece) << u"<a>"_s << QString::fromLatin1(piece) << u"</a>"_s;
        };
        for (const char* piece : {"<b/>",
                                  "<b></b>",
                                  "<b a=''/>",
                                  "<b a='1' c='2'/>",
                                  "<!---->",
                                  "<?p?>",
                                  "<![CDATA[x]]>",
                                  "<![CDATA[]]>",
                                  "x<!---->",
                                  "x<?p?>",
                                  "x<![CDATA[y]]>",
                                  "&lt;",
                                  "&#65;",
                                  "&lt;<!---->",
                                  "<b>x</b>",
                                  "<b>&amp;</b>",
                                  " ",
                                  "\n",
                                  "]]",
                                  "x<b/>",
                                  "\r\n"})
            row(piece);
        row("<T_AsnBeneficiaire/>");
        QTest::newRow("beneficiaries") << u"<T_AsnDonneesVitale><listeBenef>"_s << CardXml::person(u"A"_s, u"6"_s)
                                       << u"</listeBenef></T_AsnDonneesVitale>"_s;
        QTest::newRow("values") << u"<T_AsnDonneesVitale><listeBenef><T_AsnBeneficiaire>"_s
                                << u"<ident><nir>1</nir></ident>"_s
                                << u"</T_AsnBeneficiaire></listeBenef></T_AsnDonneesVitale>"_s;
        QTest::newRow("deep") << QString(u"<a>"_s).repeated(250) << u"<b/>"_s << QString(u"</a>"_s).repeated(250);
        QTest::newRow("deep, in a namespace") << u"<n:a xmlns:n='urn:n'>"_s + QString(u"<a>"_s).repeated(250)
                                              << u"<n:b/>"_s << QString(u"</a>"_s).repeated(250) + u"</n:a>"_s;
        QTest::newRow("deep, default namespace") << u"<a xmlns='urn:n'>"_s + QString(u"<a>"_s).repeated(250)
                                                 << u"<b/>"_s << QString(u"</a>"_s).repeated(251);
        QTest::newRow("undeclared prefix")
            << QString(u"<a>"_s).repeated(250) << u"<n:b/>"_s << QString(u"</a>"_s).repeated(250);
    }

    void theLargestDocumentsTakeTimeInProportionToTheirSize()
    {
        QFETCH(QString, before);
        QFETCH(QString, piece);
        QFETCH(QString, after);
        const QString text = before + asMuchAsAllowed(piece) + after;
        QElapsedTimer timer;
        timer.start();
        // A document of this size has too many tags, if its pieces have any.
        QCOMPARE(outcomeOf(text), piece.contains(u'<') ? u"refused"_s : u"no beneficiary"_s);
        QVERIFY2(timer.elapsed() < patience, qPrintable(u"%1 ms"_s.arg(timer.elapsed())));
    }

    void bytesGiveTheExpectedResultWithinASecond_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const QByteArray& bytes, const QString& expected) {
            QTest::newRow(name) << bytes << expected;
        };
        row("NUL", cardOf(u"A%1B"_s.arg(QChar(0))).toUtf8(), u"refused"_s);
        row("zeros", QByteArray(4096, '\0'), u"refused"_s);
        row("mark alone", QByteArray("\xEF\xBB\xBF"), u"refused"_s);
        row("100 MB", QByteArray(100'000'000, ' '), u"refused"_s);
        row("16 MiB of one value", "<a>" + QByteArray(16 * 1024 * 1024 - 7, 'x') + "</a>", u"no beneficiary"_s);
        row("16 MiB of empty elements", "<a>" + QByteArray("<b/>").repeated(4 * 1024 * 1024 - 2) + "</a>",
            u"refused"_s);
    }

    // The encodings are tested where bytes are decoded.
    void bytesGiveTheExpectedResultWithinASecond()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, expected);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(outcomeOf(decodeXmlBytes(bytes).value()), expected);
        QVERIFY2(timer.elapsed() < patience, qPrintable(u"%1 ms"_s.arg(timer.elapsed())));
    }

    void aFileNamedInADocumentIsNeverOpened_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("expected");
        const QString refused = u"refused"_s;
        const QString ignored = u"no beneficiary"_s;
        QTest::newRow("entity") << u"<!DOCTYPE a [<!ENTITY x SYSTEM '%1'>]><a>&x;</a>"_s << refused;
        QTest::newRow("parameter entity") << u"<!DOCTYPE a [<!ENTITY % x SYSTEM '%1'> %x;]><a/>"_s << refused;
        QTest::newRow("document type") << u"<!DOCTYPE a SYSTEM '%1'><a/>"_s << ignored;
        QTest::newRow("document type by its address") << u"<!DOCTYPE a SYSTEM 'file://%1'><a/>"_s << ignored;
        QTest::newRow("public document type") << u"<!DOCTYPE a PUBLIC 'a' '%1'><a/>"_s << ignored;
        QTest::newRow("entity of a document type") << u"<!DOCTYPE a SYSTEM '%1'><a>&x;</a>"_s << refused;
        QTest::newRow("inclusion") << u"<!DOCTYPE a [<!ENTITY x SYSTEM 'file://%1'>]><a b='&x;'/>"_s << refused;
    }

    void aFileNamedInADocumentIsNeverOpened()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, expected);
        const QTemporaryDir folder;
        const QString pipe = folder.filePath(u"secret"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        // Opening the pipe for reading would block the parser. Opening it for writing fails while it has no reader.
        QCOMPARE(outcomeOf(pattern.arg(pipe)), expected);
        QCOMPARE(::open(QFile::encodeName(pipe).constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC), -1);
    }

    void everyPrefixOfACardIsRefused()
    {
        const QString card = manyPersons(2);
        for (qsizetype size = 0; size < card.size(); ++size)
            QCOMPARE(outcomeOf(card.first(size)), u"refused"_s);
        QCOMPARE(outcomeOf(card), u"[NOM 2]"_s);
    }
};

template class RunnableTests<tst_XmlBadInput, QCoreApplication>;
#include "tst_xmlbadinput.moc"
