#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "update/UpdateNotes.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_UpdateNotes : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void notesBecomePlainText_data()
    {
        QTest::addColumn<QString>("notes");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << u""_s << u""_s;
        QTest::newRow("text") << u" Deux lignes,\nla seconde. "_s << u"Deux lignes,\nla seconde."_s;
        QTest::newRow("text with signs") << u"a < b & c > d"_s << u"a < b & c > d"_s;
        QTest::newRow("HTML") << u"<h2>Nouveau</h2><p>L&rsquo;&eacute;t&eacute; &amp; l’hiver</p>"_s
                              << u"Nouveau\nL’été & l’hiver"_s;
        QTest::newRow("list") << u"<ul><li>un</li><LI class=\"b\">deux</LI></ul>"_s << u"• un\n• deux"_s;
        QTest::newRow("script") << u"<p>a</p><script>alert(1)</script><style>p{}</style>"_s << u"a"_s;
        QTest::newRow("image from elsewhere")
            << u"<p>a<img src=\"https://elsewhere.example/seen.png\">b</p>"_s << u"ab"_s;
        QTest::newRow("link") << u"<a href=\"https://elsewhere.example/\">ici</a>"_s << u"ici"_s;
        QTest::newRow("hidden characters") << u"a\u202Eb\u200Bc\u0007d"_s << u"abcd"_s;
    }
    void notesBecomePlainText()
    {
        QFETCH(const QString, notes);
        QTEST(plainNotes(notes, true), "text");
    }

    void plainTextIsNotChanged() { QCOMPARE(plainNotes(u"<b>a</b>"_s, false), u"<b>a</b>"_s); }

    void longNotesAreCutAndReadInTime()
    {
        QCOMPARE(plainNotes(QString(1'000'000, u'a'), true).size(), 10'000);
        QElapsedTimer timer;
        timer.start();
        for (const QString& tag : {u"<table><tr><td>"_s, u"<ul><li>"_s, u"<b>"_s, u"&lt;<"_s})
            static_cast<void>(plainNotes(tag.repeated(100'000), true));
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    }

    void aShortLineHasNoLineBreakAndABoundedLength()
    {
        QCOMPARE(shortLine(u" 2.0\n(été)\u202E "_s), u"2.0 (été)"_s);
        QCOMPARE(shortLine(QString(1000, u'a')).size(), 64);
    }
};

template class RunnableTests<tst_UpdateNotes, QGuiApplication>;
#include "tst_updatenotes.moc"
