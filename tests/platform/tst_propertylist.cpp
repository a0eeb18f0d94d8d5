#include "platform/PropertyList.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QDateTime>
#include <QTest>
#include <QVariantMap>
#include <QXmlStreamReader>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

QByteArray document(const QByteArray& content)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + content + "</plist>\n";
}

QVariant writtenAndRead(const QVariant& value)
{
    const std::optional<QByteArray> xml = writePropertyList(value);
    return xml ? parsePropertyList(*xml).value_or(QVariant()) : QVariant();
}

// The text of the only value, as any XML parser reads it; absent when the document is not well-formed.
std::optional<QString> textInXml(const QByteArray& xml)
{
    QXmlStreamReader reader(xml);
    QString text;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::Characters && !reader.isWhitespace())
            text += reader.text();
    }
    if (reader.hasError())
        return std::nullopt;
    return text;
}

QVariantList nestedList(int depth)
{
    QVariantList list;
    for (int level = 1; level < depth; ++level)
        list = QVariantList{QVariant(list)};
    return list;
}

} // namespace

class tst_PropertyList : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void everyKindOfValueIsRead()
    {
        const auto list = parsePropertyList(document(R"(<dict>
<key>text</key><string>Médecin &amp; fils &lt;1&gt;</string>
<key>empty</key><string></string>
<key>integer</key><integer>-42</integer>
<key>real</key><real>1.5</real>
<key>yes</key><true/><key>no</key><false/>
<key>date</key><date>2026-02-28T12:30:00Z</date>
<key>data</key><data>AAH/</data>
<key>array</key><array><string>a</string><integer>0</integer><array/></array>
<key>dictionary</key><dict><key>é</key><string>è</string></dict>
</dict>)"));
        QVERIFY(list.has_value());
        const QVariantMap expected{
            {u"text"_s, u"Médecin & fils <1>"_s},
            {u"empty"_s, u""_s},
            {u"integer"_s, qint64{-42}},
            {u"real"_s, 1.5},
            {u"yes"_s, true},
            {u"no"_s, false},
            {u"date"_s, QDateTime(QDate(2026, 2, 28), QTime(12, 30), Qt::UTC)},
            {u"data"_s, QByteArray::fromHex("0001ff")},
            {u"array"_s, QVariantList{u"a"_s, qint64{0}, QVariantList()}},
            {u"dictionary"_s, QVariantMap{{u"é"_s, u"è"_s}}},
        };
        QCOMPARE(list->toMap(), expected);
    }

    void everyWrittenKindOfValueIsReadBackUnchanged_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("text") << QVariant(u"Zoé & « <fils> » \"\n\t\U0001F600"_s);
        QTest::newRow("empty text") << QVariant(u""_s);
        QTest::newRow("lowest integer") << QVariant(std::numeric_limits<qint64>::min());
        QTest::newRow("highest integer") << QVariant(std::numeric_limits<qint64>::max());
        QTest::newRow("real") << QVariant(-0.25);
        QTest::newRow("yes") << QVariant(true);
        QTest::newRow("no") << QVariant(false);
        QTest::newRow("date before the epoch") << QVariant(QDateTime(QDate(1969, 7, 20), QTime(20, 17), Qt::UTC));
        QTest::newRow("date after 2038") << QVariant(QDateTime(QDate(2060, 1, 1), QTime(0, 0, 1), Qt::UTC));
        QTest::newRow("data") << QVariant(QByteArray(1000, '\0') + "\xff");
        QTest::newRow("empty array") << QVariant(QVariantList());
        QTest::newRow("array") << QVariant(QVariantList{u"b"_s, true, QVariantList{u"c"_s}});
        QTest::newRow("empty dictionary") << QVariant(QVariantMap());
        QTest::newRow("dictionary") << QVariant(
            QVariantMap{{u"a<b>&"_s, u"x"_s}, {u"e"_s, QVariantMap{{u"f"_s, qint64{1}}}}});
    }

    void everyWrittenKindOfValueIsReadBackUnchanged()
    {
        QFETCH(const QVariant, value);
        const QVariant read = writtenAndRead(value);
        QCOMPARE(read.typeId(), value.typeId());
        QCOMPARE(read, value);
    }

    void theWrittenFormatIsThatOfPropertyLists()
    {
        const auto xml = writePropertyList(QVariantMap{{u"Beneficiaries"_s, QVariantList{QVariantMap()}}, {u"n"_s, 7}});
        QVERIFY(xml.has_value());
        const QByteArray text = xml->simplified();
        QVERIFY2(text.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?> <!DOCTYPE plist PUBLIC"),
                 text.constData());
        QVERIFY2(text.endsWith("<plist version=\"1.0\"> <dict> <key>Beneficiaries</key> <array> <dict/> </array> "
                               "<key>n</key> <integer>7</integer> </dict> </plist>"),
                 text.constData());
    }

    void charactersThatAreInvalidInXmlAreReplaced()
    {
        const auto xml = writePropertyList(u"a\u0001b\uFFFEc"_s);
        QVERIFY(xml.has_value());
        QCOMPARE(textInXml(*xml), u"a\uFFFDb\uFFFDc"_s);
    }

    void aValueThatAPropertyListCannotContainIsNotWritten_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("nothing") << QVariant();
        QTest::newRow("nothing in an array") << QVariant(QVariantList{QVariant()});
        QTest::newRow("nothing in a dictionary") << QVariant(QVariantMap{{u"a"_s, QVariant()}});
        QTest::newRow("a size") << QVariant(QSize(1, 2));
        QTest::newRow("no date") << QVariant(QDateTime());
        QTest::newRow("a date far away") << QVariant(QDateTime(QDate(9999, 1, 1), QTime(0, 0), Qt::UTC));
        QTest::newRow("nested too deep") << QVariant(nestedList(100));
    }

    void aValueThatAPropertyListCannotContainIsNotWritten()
    {
        QFETCH(const QVariant, value);
        QVERIFY(!writePropertyList(value).has_value());
    }

    void aTextThatIsNotAPropertyListIsRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("a word") << QByteArray("plist");
        QTest::newRow("zeros") << QByteArray(100, '\0');
        QTest::newRow("no value") << document("");
        QTest::newRow("cut") << document("<dict><key>a</key><string>b").chopped(9);
        QTest::newRow("a value without a key") << document("<dict><string>a</string></dict>");
        QTest::newRow("an unknown element") << document("<frobnicate/>");
        QTest::newRow("too large") << document("<string>" + QByteArray(2'000'000, 'x') + "</string>");
        QTest::newRow("nested too deep") << document(QByteArray("<array>").repeated(100'000) +
                                                     QByteArray("</array>").repeated(100'000));
        QTest::newRow("dictionaries nested too deep")
            << document(QByteArray("<dict><key>a</key>").repeated(50'000) + QByteArray("</dict>").repeated(50'000));
    }

    void aTextThatIsNotAPropertyListIsRefused()
    {
        QFETCH(const QByteArray, bytes);
        QVERIFY(!parsePropertyList(bytes).has_value());
    }

    void aListWithAcceptedNestingIsRead() { QCOMPARE(writtenAndRead(nestedList(60)), QVariant(nestedList(60))); }
};

template class RunnableTests<tst_PropertyList, void>;
#include "tst_propertylist.moc"
