#include "support/views/GlyphIcon.h"
#include "tests/common/Files.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QImage drawn(const QIcon& icon, const QColor& pen, int side)
{
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(pen);
    icon.paint(&painter, image.rect());
    return image;
}

} // namespace

class tst_GlyphIcon : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    LogCapture m_log;

private Q_SLOTS:
    void init() { m_log.clear(); }

    void theIconIsPaintedInThePensColour()
    {
        const QString path = m_folder.filePath(u"square.svg"_s);
        QVERIFY(writeFile(path, R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 8 8">)"
                                R"(<rect width="8" height="8" fill="currentColor"/></svg>)"));
        const QIcon icon = glyphIcon(path);
        QCOMPARE(drawn(icon, Qt::red, 32).pixelColor(16, 16), QColor(Qt::red));
        QCOMPARE(drawn(icon, Qt::blue, 32).pixelColor(16, 16), QColor(Qt::blue));
        QCOMPARE(drawn(icon, Qt::blue, 128).pixelColor(127, 127), QColor(Qt::blue));
        QCOMPARE(icon.pixmap(16, 16).size(), QSize(16, 16));
        QCOMPARE(m_log.lines(), QStringList());
    }

    void aMissingOrBrokenFileGivesAnEmptyIconAndIsLogged()
    {
        QVERIFY(writeFile(m_folder.filePath(u"broken.svg"_s), "<svg"));
        for (const QString& name : {u"none.svg"_s, u"broken.svg"_s}) {
            m_log.clear();
            QCOMPARE(drawn(glyphIcon(m_folder.filePath(name)), Qt::red, 32).pixelColor(16, 16), QColor(Qt::white));
            QCOMPARE(m_log.lines().size(), 1);
        }
    }
};

template class RunnableTests<tst_GlyphIcon, QApplication>;
#include "tst_glyphicon.moc"
