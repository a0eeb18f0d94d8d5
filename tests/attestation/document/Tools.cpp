#include "tests/attestation/document/Tools.h"

#include <QProcess>
#include <QTemporaryFile>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

QByteArray toolOutput(const QString& program, const QStringList& arguments)
{
    QProcess tool;
    tool.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    tool.start(program, arguments);
    if (!tool.waitForFinished() || tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0)
        qFatal("%s failed: %s", qPrintable(program), qPrintable(tool.errorString()));
    return tool.readAllStandardOutput();
}

DocumentFile::DocumentFile(const QByteArray& document)
{
    QTemporaryFile file;
    file.setAutoRemove(false);
    if (!file.open() || file.write(document) != document.size())
        qFatal("no temporary file: %s", qPrintable(file.errorString()));
    m_path = file.fileName();
}

DocumentFile::~DocumentFile()
{
    QFile::remove(m_path);
}

bool isSound(const DocumentFile& file)
{
    return toolOutput(u"qpdf"_s, {u"--check"_s, file.path()}).contains("No syntax or stream encoding errors");
}

QStringList fontsOf(const DocumentFile& file)
{
    constexpr int headerRows = 2;
    const QString rows = QString::fromUtf8(toolOutput(u"pdffonts"_s, {file.path()}));
    return rows.split(u'\n', Qt::SkipEmptyParts).sliced(headerRows);
}

QImage pixelsOf(const QByteArray& document, int pixelsPerPoint)
{
    const DocumentFile file(document);
    constexpr int pointsPerInch = 72;
    const QString resolution = QString::number(pointsPerInch * pixelsPerPoint);
    return QImage::fromData(toolOutput(u"pdftoppm"_s, {u"-r"_s, resolution, file.path()}), "PPM");
}

QImage pixelsOfMuPdf(const QByteArray& document, int pixelsPerPoint)
{
    const DocumentFile file(document);
    const QString resolution = QString::number(72 * pixelsPerPoint);
    return QImage::fromData(toolOutput(u"mutool"_s, {u"draw"_s, u"-q"_s, u"-F"_s, u"pnm"_s, u"-r"_s, resolution,
                                                     u"-o"_s, u"-"_s, file.path()}),
                            "PPM");
}

QList<PageWord> wordsOf(const QByteArray& document)
{
    const DocumentFile file(document);
    QXmlStreamReader reader(toolOutput(u"pdftotext"_s, {u"-raw"_s, u"-bbox"_s, file.path(), u"-"_s}));
    QList<PageWord> words;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement || reader.name() != "word"_L1)
            continue;
        const QXmlStreamAttributes edges = reader.attributes();
        const auto edge = [&edges](QLatin1StringView name) { return edges.value(name).toDouble(); };
        const QPointF topLeft(edge("xMin"_L1), edge("yMin"_L1));
        const QPointF bottomRight(edge("xMax"_L1), edge("yMax"_L1));
        words.append({reader.readElementText(), QRectF(topLeft, bottomRight)});
    }
    if (reader.hasError())
        qFatal("pdftotext: %s", qPrintable(reader.errorString()));
    return words;
}
