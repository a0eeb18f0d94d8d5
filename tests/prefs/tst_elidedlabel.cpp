#include "prefs/ElidedLabel.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_ElidedLabel final : public TestCase
{
    Q_OBJECT

private:
    const QString m_text = u"/home/specimen/Documents/Attestations Pelmora"_s;

    // A picture of the label at this width.
    static QImage drawn(ElidedLabel& label, int width)
    {
        label.resize(width, label.sizeHint().height());
        return label.grab().toImage();
    }

private Q_SLOTS:
    void theWholeTextIsKeptAndShownInTheToolTip()
    {
        ElidedLabel label;
        label.setWholeText(m_text);
        label.resize(40, 20);
        QVERIFY(!label.grab().isNull());
        QCOMPARE(label.text(), m_text);
        QCOMPARE(label.toolTip(), m_text);
    }

    void withoutEnoughRoomTheMiddleIsElided()
    {
        ElidedLabel label;
        label.setWholeText(m_text);
        const int narrow = label.fontMetrics().horizontalAdvance(m_text) / 2;
        ElidedLabel elided;
        elided.setWholeText(label.fontMetrics().elidedText(m_text, Qt::ElideMiddle, narrow));
        QVERIFY(elided.text().startsWith(u"/home") && elided.text().endsWith(u"Pelmora"));
        QCOMPARE(drawn(label, narrow), drawn(elided, narrow));
        QVERIFY(label.minimumSizeHint().width() < narrow);
    }

    void withEnoughRoomTheWholeTextIsShown()
    {
        ElidedLabel label;
        label.setWholeText(m_text);
        QLabel other(m_text);
        const QSize size = other.sizeHint();
        label.resize(size);
        other.resize(size);
        QCOMPARE(label.grab().toImage(), other.grab().toImage());
    }

    void markupIsShownAsText()
    {
        ElidedLabel label;
        label.setWholeText(u"/srv/<b>gras</b>"_s);
        QCOMPARE(label.text(), u"/srv/<b>gras</b>"_s);
        QVERIFY(label.toolTip().contains(u"&lt;b&gt;"_s));
    }
};

template class RunnableTests<tst_ElidedLabel, QApplication>;
#include "tst_elidedlabel.moc"
