#include "platform/files/FileName.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_FileName : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aTextBecomesAFileName_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << u"SPECIMEN Zoé"_s << u"SPECIMEN Zoé.pdf"_s;
        QTest::newRow("slash") << u"A/B ../../etc/passwd"_s << u"A_B .._.._etc_passwd.pdf"_s;
        QTest::newRow("absolute") << u"/tmp/x"_s << u"_tmp_x.pdf"_s;
        QTest::newRow("quotes") << u"D'ARC \"Jeanne\" `x`"_s << u"D'ARC \"Jeanne\" `x`.pdf"_s;
        QTest::newRow("controls") << u"a\nb\tc\u007Fd\u0085e"_s << u"a_b_c_d_e.pdf"_s;
        QTest::newRow("line separators") << u"a\u2028b\u2029c"_s << u"a_b_c.pdf"_s;
        QTest::newRow("zero") << QString(QChar(u'\0')) + u'x' << u"_x.pdf"_s;
        QTest::newRow("blanks") << u"   "_s << u"   .pdf"_s;
        QTest::newRow("empty") << u""_s << u".pdf"_s;
        QTest::newRow("dots") << u".."_s << u"...pdf"_s;
    }

    void aTextBecomesAFileName()
    {
        QFETCH(const QString, text);
        QTEST(fileNameFromText(text, u"pdf"_s), "name");
    }

    void aNameOf255BytesIsKeptAndALongerOneCut()
    {
        const QString fits(251, u'a');
        QCOMPARE(fileNameFromText(fits, u"pdf"_s), fits + u".pdf"_s);
        QCOMPARE(fileNameFromText(fits + u'a', u"pdf"_s), fits + u".pdf"_s);
    }

    void aCharacterLongerThanTheLimitIsRemoved()
    {
        const QString name = fileNameFromText(u'e' + QString(300, QChar(u'\u0301')), u"pdf"_s);
        QCOMPARE(name, u'e' + QString(125, QChar(u'\u0301')) + u".pdf"_s);
    }

    void aLongNameIsCutBetweenTwoCharacters_data()
    {
        QTest::addColumn<QString>("character");
        QTest::newRow("two bytes") << u"é"_s;
        QTest::newRow("three bytes") << u"ệ"_s;
        QTest::newRow("surrogates") << u"\U0001D400"_s;
        QTest::newRow("letter and accent") << u"e\u0301"_s;
    }

    void aLongNameIsCutBetweenTwoCharacters()
    {
        QFETCH(const QString, character);
        const qsizetype bytes = character.toUtf8().size();
        const QString name = fileNameFromText(character.repeated(300), u"pdf"_s);
        QCOMPARE(name, character.repeated((255 - 4) / bytes) + u".pdf"_s);
    }
};

template class RunnableTests<tst_FileName, void>;
#include "tst_filename.moc"
