#include "platform/NativePath.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QRandomGenerator>
#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;

class tst_NativePath : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aPathInUtf8IsConvertedToItsText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("plain") << u"/home/a b/carte.xml"_s;
        QTest::newRow("accents") << u"Été/Œuvre €.xml"_s;
        QTest::newRow("decomposed accent") << u"e\u0301"_s;
        QTest::newRow("beyond 16 bits") << u"\U0001F600\U00010080"_s;
        QTest::newRow("replacement character") << u"a\uFFFDb"_s;
        QTest::newRow("empty") << u""_s;
    }

    void aPathInUtf8IsConvertedToItsText()
    {
        QFETCH(const QString, text);
        QCOMPARE(pathFromBytes(text.toUtf8()), text);
        QCOMPARE(bytesOfPath(text), text.toUtf8());
    }

    void aPathThatIsNotUtf8IsConvertedBackUnchanged_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("Latin 1") << QByteArray("/tmp/Zo\xE9.xml");
        QTest::newRow("at the ends") << QByteArray("\xE9.xml\xE9");
        QTest::newRow("after a character beyond 16 bits") << QByteArray("\xF0\x9F\x98\x80\xE9");
        QTest::newRow("UTF-8 cut short") << QByteArray("a\xC3/\xF0\x9F\x98");
        QTest::newRow("overlong") << QByteArray("\xC0\xAF");
        QTest::newRow("surrogates in UTF-8") << QByteArray("\xED\xB2\x80\xED\xA0\x80");
        QTest::newRow("every byte") << [] {
            QByteArray bytes;
            for (int byte = 1; byte < 256; ++byte)
                bytes += static_cast<char>(byte);
            return bytes;
        }();
    }

    void aPathThatIsNotUtf8IsConvertedBackUnchanged()
    {
        QFETCH(const QByteArray, bytes);
        QCOMPARE(bytesOfPath(pathFromBytes(bytes)), bytes);
    }

    void anyBytesAreConvertedBackUnchanged()
    {
        QRandomGenerator random(1);
        constexpr std::array<uchar, 12> pieces{'a', '/', 0x80, 0x9F, 0xA0, 0xB2, 0xC3, 0xE2, 0xED, 0xF0, 0xFE, 0xFF};
        for (int round = 0; round < 20'000; ++round) {
            QByteArray bytes;
            for (int index = random.bounded(10); index >= 0; --index)
                bytes += static_cast<char>(pieces.at(std::size_t(random.bounded(int(pieces.size())))));
            QCOMPARE(bytesOfPath(pathFromBytes(bytes)), bytes);
        }
    }

    void anAddressGivesThePathOfItsFileForAnyName_data()
    {
        QTest::addColumn<QByteArray>("address");
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("plain") << QByteArray("file:///tmp/a.xml") << QByteArray("/tmp/a.xml");
        QTest::newRow("UTF-8") << QByteArray("file:///tmp/Zo%C3%A9%20%25.xml") << QByteArray("/tmp/Zo\xC3\xA9 %.xml");
        QTest::newRow("Latin 1") << QByteArray("file:///tmp/Zo%E9.xml") << QByteArray("/tmp/Zo\xE9.xml");
        QTest::newRow("signs") << QByteArray("file:///a%23b%3Fc%2Bd+e%5B.xml") << QByteArray("/a#b?c+d+e[.xml");
        QTest::newRow("another machine") << QByteArray("file://machine/a.xml") << QByteArray();
        QTest::newRow("elsewhere") << QByteArray("http://machine/a.xml") << QByteArray();
        QTest::newRow("NUL") << QByteArray("file:///a%00b") << QByteArray();
    }

    void anAddressGivesThePathOfItsFileForAnyName()
    {
        QFETCH(const QByteArray, address);
        QFETCH(const QByteArray, path);
        const std::optional<QString> found = pathOfUrl(QUrl::fromEncoded(address));
        QCOMPARE(found.has_value(), !path.isEmpty());
        QCOMPARE(bytesOfPath(found.value_or(QString())), path);
    }
};

template class RunnableTests<tst_NativePath, void>;
#include "tst_nativepath.moc"
