#include "support/MXLog.h"
#include "support/views/GlyphIcon.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QFile>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include <string>
#include <vector>

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
    std::vector<std::string> m_lines;

    QString written(const QString& name, const QByteArray& content)
    {
        QFile file(m_folder.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() ? file.fileName() : QString();
    }

private Q_SLOTS:
    void initTestCase()
    {
        MXLog::defaultLogger().setLineWriter(
            [this](MXLog::Level /*level*/, std::string_view line) { m_lines.emplace_back(line); });
    }

    void init() { m_lines.clear(); }

    void theIconIsPaintedInThePensColour()
    {
        const QString path = written(u"square.svg"_s, R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 8 8">)"
                                                      R"(<rect width="8" height="8" fill="currentColor"/></svg>)");
        const QIcon icon = glyphIcon(path);
        QCOMPARE(drawn(icon, Qt::red, 32).pixelColor(16, 16), QColor(Qt::red));
        QCOMPARE(drawn(icon, Qt::blue, 32).pixelColor(16, 16), QColor(Qt::blue));
        QCOMPARE(drawn(icon, Qt::blue, 128).pixelColor(127, 127), QColor(Qt::blue));
        QCOMPARE(icon.pixmap(16, 16).size(), QSize(16, 16));
        QVERIFY(m_lines.empty());
    }

    void aMissingOrBrokenFileGivesAnEmptyIconAndIsLogged()
    {
        for (const QString& path : {m_folder.filePath(u"none.svg"_s), written(u"broken.svg"_s, "<svg")}) {
            m_lines.clear();
            QCOMPARE(drawn(glyphIcon(path), Qt::red, 32).pixelColor(16, 16), QColor(Qt::white));
            QCOMPARE(m_lines.size(), 1U);
        }
    }
};

template class RunnableTests<tst_GlyphIcon, QApplication>;
#include "tst_glyphicon.moc"
