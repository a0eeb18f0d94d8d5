#include "attestation/page/PageOnSheet.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

class tst_PageOnSheet : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void thePageIsCentredAndOnlyScaledDown_data()
    {
        QTest::addColumn<QSizeF>("sheet");
        QTest::addColumn<double>("scale");
        QTest::addColumn<QPointF>("topLeft");
        QTest::newRow("its own size") << QSizeF(595, 842) << 1.0 << QPointF(0, 0);
        QTest::newRow("A3") << QSizeF(842, 1191) << 1.0 << QPointF(123.5, 174.5);
        QTest::newRow("A5") << QSizeF(420, 595) << 420.0 / 595 << QPointF(0, (595 - 842 * 420.0 / 595) / 2);
        QTest::newRow("Letter") << QSizeF(612, 792) << 792.0 / 842 << QPointF((612 - 595 * 792.0 / 842) / 2, 0);
        QTest::newRow("A4 across") << QSizeF(842, 595) << 595.0 / 842 << QPointF((842 - 595 * 595.0 / 842) / 2, 0);
        QTest::newRow("too narrow alone") << QSizeF(297.5, 1000) << 0.5 << QPointF(0, (1000 - 421.0) / 2);
        QTest::newRow("too low alone") << QSizeF(1000, 421) << 0.5 << QPointF((1000 - 297.5) / 2, 0);
    }

    void thePageIsCentredAndOnlyScaledDown()
    {
        QFETCH(const QSizeF, sheet);
        QFETCH(const QPointF, topLeft);
        const PageOnSheet place = PageOnSheet::on(sheet);
        QTEST(place.scale, "scale");
        QVERIFY(qAbs(place.topLeft.x() - topLeft.x()) < 1e-9);
        QVERIFY(qAbs(place.topLeft.y() - topLeft.y()) < 1e-9);
    }
};

template class RunnableTests<tst_PageOnSheet, void>;
#include "tst_pageonsheet.moc"
