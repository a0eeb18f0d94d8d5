#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/update/FeedXml.h"
#include "update/UpdateFeed.h"

#include <QTest>

using namespace Qt::StringLiterals;
using Kind = UpdateChoice::Kind;

namespace {

constexpr qint64 maximumLength = 1'000'000;
const QUrl feedAddress(u"https://updates.morvel.example/feed/pelmora.xml"_s);

std::expected<UpdateChoice, UpdateFailure> choiceIn(const QByteArray& xml, const QString& current = u"1.0"_s,
                                                    const QString& system = u"2.36"_s)
{
    const auto feed = UpdateFeed::parse(xml, feedAddress, maximumLength);
    if (!feed)
        return std::unexpected(feed.error());
    return chooseUpdate(*feed, current, system);
}

std::expected<UpdateChoice, UpdateFailure> choiceOf(const QList<FeedItem>& items)
{
    QByteArray xml;
    for (const FeedItem& item : items)
        xml += itemXml(item);
    return choiceIn(feedXml(xml));
}

} // namespace

class tst_UpdateFeed : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aNewerVersionIsAvailable()
    {
        const auto choice = choiceOf({{.shortVersion = "2.0 (été)",
                                       .more = "<description><![CDATA[<p>Mieux</p>]]></description>"
                                               "<sparkle:minimumSystemVersion>2.36</sparkle:minimumSystemVersion>"}});
        QVERIFY(choice.has_value());
        QCOMPARE(choice->kind, Kind::Available);
        QCOMPARE(choice->item.version, u"2.0"_s);
        QCOMPARE(choice->item.shortVersion, u"2.0 (été)"_s);
        QCOMPARE(choice->item.minimumSystemVersion, u"2.36"_s);
        QCOMPARE(choice->item.notes, u"<p>Mieux</p>"_s);
        QVERIFY(choice->item.notesMayBeHtml);
        QCOMPARE(choice->item.package, QUrl(u"https://updates.morvel.example/pelmora_2.0_amd64.deb"_s));
        QCOMPARE(choice->item.packageName, u"pelmora_2.0_amd64.deb"_s);
        QCOMPARE(choice->item.length, 7);
        QCOMPARE(choice->item.signature.front(), static_cast<unsigned char>('s'));
    }

    void versionsCanBeAttributesOfTheEnclosure()
    {
        const auto choice = choiceOf({{.version = {},
                                       .shortVersion = {},
                                       .moreAttributes = " sparkle:version=\"2.0.1\" "
                                                         "sparkle:shortVersionString=\"deux\" sparkle:os=\"Linux\""}});
        QVERIFY(choice.has_value());
        QCOMPARE(choice->kind, Kind::Available);
        QCOMPARE(choice->item.version, u"2.0.1"_s);
        QCOMPARE(choice->item.shortVersion, u"deux"_s);
    }

    void anyPrefixOfTheNamespaceIsAccepted()
    {
        QByteArray xml = feedXml(itemXml({}));
        xml.replace("sparkle:", "s:").replace("xmlns:sparkle", "xmlns:s");
        QVERIFY(choiceIn(xml).has_value());
        QCOMPARE(choiceIn(xml)->kind, Kind::Available);
        xml.replace("andymatuschak.org", "somebody.example");
        QCOMPARE(choiceIn(xml).error(), UpdateFailure::Incomplete);
    }

    void anAddressCanBeRelativeToTheFeed()
    {
        const auto choice = choiceOf({{.url = "../packages/a.deb"}});
        QVERIFY(choice.has_value());
        QCOMPARE(choice->item.package, QUrl(u"https://updates.morvel.example/packages/a.deb"_s));
    }

    void releaseNotesCanBePlainText()
    {
        const auto choice = choiceOf({{.more = "<description sparkle:format=\"plain-text\">a &lt; b</description>"}});
        QVERIFY(choice.has_value());
        QCOMPARE(choice->item.notes, u"a < b"_s);
        QVERIFY(!choice->item.notesMayBeHtml);
    }

    void aVersionWithoutADisplayNameIsShownByItsNumber()
    {
        const auto choice = choiceOf({{.shortVersion = {}}});
        QVERIFY(choice.has_value());
        QCOMPARE(choice->item.shortVersion, u"2.0"_s);
    }

    void theNewestOfSeveralIsChosenWhateverTheirOrder()
    {
        QCOMPARE(choiceOf({{.version = "1.9"}, {.version = "1.10"}, {.version = "1.2"}})->item.version, u"1.10"_s);
    }

    void aVersionThatIsNotNewerIsNotOffered_data()
    {
        QTest::addColumn<QByteArray>("version");
        QTest::newRow("older") << QByteArray("0.9");
        QTest::newRow("the same") << QByteArray("1.0");
        QTest::newRow("the same, written otherwise") << QByteArray("1.0.0");
        QTest::newRow("unfinished") << QByteArray("1.0b3");
    }
    void aVersionThatIsNotNewerIsNotOffered()
    {
        QFETCH(const QByteArray, version);
        const auto choice = choiceOf({{.version = version}});
        QVERIFY(choice.has_value());
        QCOMPARE(choice->kind, Kind::UpToDate);
    }

    void anOlderVersionIsNotValidated()
    {
        QCOMPARE(choiceOf({{.version = "0.9", .signature = {}}})->kind, Kind::UpToDate);
    }

    void versionsForOtherSystemsOrChannelsAreIgnored()
    {
        QCOMPARE(choiceOf({{.moreAttributes = " sparkle:os=\"macos\""}})->kind, Kind::UpToDate);
        QCOMPARE(choiceOf({{.more = "<sparkle:channel>beta</sparkle:channel>"}})->kind, Kind::UpToDate);
    }

    void aVersionThatRunsHereIsPreferredToOneForANewerSystem()
    {
        const FeedItem demanding{.version = "3.0",
                                 .more = "<sparkle:minimumSystemVersion>2.40</sparkle:minimumSystemVersion>"};
        QCOMPARE(choiceOf({demanding, {}})->item.version, u"2.0"_s);
        QCOMPARE(choiceOf({demanding, {}})->kind, Kind::Available);
        QCOMPARE(choiceOf({demanding})->item.version, u"3.0"_s);
        QCOMPARE(choiceOf({demanding})->kind, Kind::NeedsNewerSystem);
    }

    void aValidVersionIsPreferredToAFaultyNewerOne()
    {
        const auto choice = choiceOf({{.version = "3.0", .signature = {}}, {}});
        QVERIFY(choice.has_value());
        QCOMPARE(choice->item.version, u"2.0"_s);
    }

    void aFaultyVersionIsNotOffered_data()
    {
        QTest::addColumn<QByteArray>("item");
        QTest::addColumn<UpdateFailure>("failure");
        const auto row = [](const char* name, const FeedItem& item, UpdateFailure failure) {
            QTest::newRow(name) << itemXml(item) << failure;
        };
        row("no version", {.version = {}}, UpdateFailure::Incomplete);
        row("version of other characters", {.version = "2.0 %1"}, UpdateFailure::Incomplete);
        row("no address", {.url = {}}, UpdateFailure::Incomplete);
        row("no length", {.length = {}}, UpdateFailure::Incomplete);
        row("length of 0", {.length = "0"}, UpdateFailure::Incomplete);
        row("negative length", {.length = "-7"}, UpdateFailure::Incomplete);
        row("length that is no number", {.length = "7 kB"}, UpdateFailure::Incomplete);
        row("endless length", {.length = "99999999999999999999"}, UpdateFailure::Incomplete);
        row("system that is no version",
            {.more = "<sparkle:minimumSystemVersion>Linux 6</sparkle:minimumSystemVersion>"},
            UpdateFailure::Incomplete);
        row("no signature", {.signature = {}}, UpdateFailure::Unsigned);
        row("empty signature", {.signature = ""}, UpdateFailure::Unsigned);
        row("short signature", {.signature = QByteArray(63, 's').toBase64()}, UpdateFailure::Unsigned);
        row("signature in hexadecimal", {.signature = QByteArray(64, 's').toHex()}, UpdateFailure::Unsigned);
        row("plain HTTP", {.url = "http://updates.morvel.example/a.deb"}, UpdateFailure::UnsafePackageAddress);
        row("plain HTTP of this machine", {.url = "http://127.0.0.1/a.deb"}, UpdateFailure::UnsafePackageAddress);
        row("file", {.url = "file:///tmp/a.deb"}, UpdateFailure::UnsafePackageAddress);
        row("not a package", {.url = "https://updates.morvel.example/a.desktop"}, UpdateFailure::UnsafePackageAddress);
        row("not an address", {.url = "https://[/a.deb"}, UpdateFailure::UnsafePackageAddress);
        row("huge", {.length = "1000001"}, UpdateFailure::PackageTooLarge);
        QTest::newRow("no enclosure") << QByteArray("<item><sparkle:version>2.0</sparkle:version></item>")
                                      << UpdateFailure::Incomplete;
        QTest::newRow("enclosure elsewhere")
            << "<item><sparkle:version>2.0</sparkle:version><sparkle:deltas>" + itemXml({}) + "</sparkle:deltas></item>"
            << UpdateFailure::Incomplete;
    }
    void aFaultyVersionIsNotOffered()
    {
        QFETCH(const QByteArray, item);
        QFETCH(const UpdateFailure, failure);
        const auto choice = choiceIn(feedXml(item));
        QVERIFY(!choice.has_value());
        QCOMPARE(choice.error(), failure);
    }

    void aTextThatIsNotAFeedIsRefused_data()
    {
        QTest::addColumn<QByteArray>("xml");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("blanks") << QByteArray(" \n");
        QTest::newRow("not XML") << QByteArray("Bonjour");
        QTest::newRow("null characters") << QByteArray(1000, '\0');
        QTest::newRow("page") << QByteArray("<html><body><p>Identifiez-vous</p></body></html>");
        QTest::newRow("other XML") << QByteArray("<feed xmlns=\"http://www.w3.org/2005/Atom\"/>");
        QTest::newRow("cut") << feedXml(itemXml({})).chopped(20);
        QTest::newRow("something after the end") << feedXml(itemXml({})) + "<more/>";
        QTest::newRow("document type") << "<!DOCTYPE rss>" + feedXml(itemXml({})).sliced(39);
        QTest::newRow("entity bomb") << QByteArray(
            "<!DOCTYPE rss [<!ENTITY a \"aaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>"
            "<rss><channel><item><description>&b;</description></item></channel></rss>");
        QTest::newRow("unknown entity") << feedXml("<item><description>&bonjour;</description></item>");
        QTest::newRow("undeclared prefix")
            << QByteArray("<rss><channel><item><sparkle:version>2.0</sparkle:version></item></channel></rss>");
        QTest::newRow("broken encoding") << feedXml("<item><title>\xe9</title></item>");
        QTest::newRow("element in a version") << feedXml("<item><sparkle:version><b>2.0</item>");
    }
    void aTextThatIsNotAFeedIsRefused()
    {
        QFETCH(const QByteArray, xml);
        QCOMPARE(choiceIn(xml).error(), UpdateFailure::NotAFeed);
    }

    void aFeedWithoutVersionsIsRefused()
    {
        QCOMPARE(choiceIn(feedXml({})).error(), UpdateFailure::EmptyFeed);
        QCOMPARE(choiceIn("<rss/>").error(), UpdateFailure::EmptyFeed);
        QCOMPARE(choiceIn("<rss><item/></rss>").error(), UpdateFailure::EmptyFeed);
    }

    void deepAndWideFeedsAreReadInTime()
    {
        QByteArray deep;
        for (int level = 0; level < 100'000; ++level)
            deep += "<a>";
        QCOMPARE(choiceIn(feedXml("<item><description>" + deep)).error(), UpdateFailure::NotAFeed);
        QByteArray wide;
        while (wide.size() < 1024 * 1024)
            wide += itemXml({});
        QCOMPARE(choiceIn(feedXml(wide))->kind, Kind::Available);
    }
};

template class RunnableTests<tst_UpdateFeed, void>;
#include "tst_updatefeed.moc"
