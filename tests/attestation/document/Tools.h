#pragma once

#include <QByteArray>
#include <QImage>
#include <QRectF>
#include <QString>
#include <QStringList>

/// The output of a command-line tool. Ends the test program when the tool is missing or fails.
[[nodiscard]] QByteArray toolOutput(const QString& program, const QStringList& arguments);

/// A document in a temporary file, for the tools. The destructor removes the file.
class DocumentFile
{
public:
    explicit DocumentFile(const QByteArray& document);
    ~DocumentFile();
    Q_DISABLE_COPY_MOVE(DocumentFile)

    [[nodiscard]] const QString& path() const { return m_path; }

private:
    QString m_path;
};

/// Whether the syntax and the streams of a document have no error that qpdf finds.
[[nodiscard]] bool isSound(const DocumentFile& file);

/// A row about each font of a document, by pdffonts.
[[nodiscard]] QStringList fontsOf(const DocumentFile& file);

/// A word of a document's page and its box, in points from the page's top-left corner.
struct PageWord
{
    QString text;
    QRectF box;
};

/// The words of the document's one page, in the document's order.
[[nodiscard]] QList<PageWord> wordsOf(const QByteArray& document);

/// The document's page as a picture, with that many pixels per point. The first function uses Poppler, the second one
/// MuPDF, which share no code.
[[nodiscard]] QImage pixelsOf(const QByteArray& document, int pixelsPerPoint);
[[nodiscard]] QImage pixelsOfMuPdf(const QByteArray& document, int pixelsPerPoint);
