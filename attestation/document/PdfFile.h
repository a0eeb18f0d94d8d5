#pragma once

#include <QByteArray>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct libdeflate_compressor;

/// The number under which the objects of a file refer to one of them.
struct PdfReference
{
    int number = 0;

    /// As other objects write it.
    [[nodiscard]] std::string text() const { return std::to_string(number) + " 0 R"; }
};

/// A file of PDF 1.4: its objects, which are given in the format's own syntax, and the table of their places. The same
/// objects in the same order make the same bytes.
class PdfFile
{
public:
    enum class Compression
    {
        None,
        Deflate,
        Done // the bytes are deflated already
    };

    PdfFile();
    Q_DISABLE_COPY_MOVE(PdfFile)
    ~PdfFile() = default;

    /// A number for an object that set() gives later, for objects that refer to each other.
    [[nodiscard]] PdfReference reserve();
    void set(PdfReference reference, std::string_view object);
    [[nodiscard]] PdfReference add(std::string_view object);
    /// The entries are those of the stream's dictionary, beside its length and its filter.
    [[nodiscard]] PdfReference addStream(std::string_view bytes, std::string_view entries = {},
                                         Compression compression = Compression::Deflate);

    /// The whole file, which takes no more objects. Every number that was reserved must have its object.
    [[nodiscard]] QByteArray finished(PdfReference catalog, PdfReference information) &&;

private:
    [[nodiscard]] QByteArray deflated(std::string_view bytes) const;

    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> m_compressor;
    QByteArray m_bytes;
    std::vector<qsizetype> m_places; // of the objects 1, 2..., from the file's start
};
