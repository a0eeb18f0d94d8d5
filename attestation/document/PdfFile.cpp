#include "attestation/document/PdfFile.h"

#include <QCryptographicHash>
#include <fmt/format.h>

#include <new>

#include <libdeflate.h>

namespace {

constexpr qsizetype usualSize = qsizetype{32} * 1024;

// Above it a document takes half as long again and is 40 bytes smaller.
constexpr int compressionLevel = 4;

} // namespace

PdfFile::PdfFile()
    : m_compressor(libdeflate_alloc_compressor(compressionLevel), &libdeflate_free_compressor)
{
    if (!m_compressor)
        throw std::bad_alloc();
    m_bytes.reserve(usualSize);
    // Bytes above 127 tell programs that transfer the file that it is not text.
    m_bytes += "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n";
}

PdfReference PdfFile::reserve()
{
    m_places.push_back(0);
    return {int(m_places.size())};
}

void PdfFile::set(PdfReference reference, std::string_view object)
{
    m_places[std::size_t(reference.number) - 1] = m_bytes.size();
    m_bytes += QByteArray::number(reference.number);
    m_bytes += " 0 obj\n";
    m_bytes += QByteArrayView(object.data(), qsizetype(object.size()));
    m_bytes += "\nendobj\n";
}

PdfReference PdfFile::add(std::string_view object)
{
    const PdfReference reference = reserve();
    set(reference, object);
    return reference;
}

PdfReference PdfFile::addStream(std::string_view bytes, std::string_view entries, Compression compression)
{
    QByteArray deflatedBytes;
    if (compression == Compression::Deflate) {
        deflatedBytes = deflated(bytes);
        bytes = {deflatedBytes.constData(), std::size_t(deflatedBytes.size())};
    }
    const std::string_view filter = compression == Compression::None ? "" : "/Filter /FlateDecode ";
    return add(fmt::format("<< {}{}/Length {} >>\nstream\n{}\nendstream", filter, entries, bytes.size(), bytes));
}

QByteArray PdfFile::deflated(std::string_view bytes) const
{
    QByteArray result(qsizetype(libdeflate_zlib_compress_bound(m_compressor.get(), bytes.size())), Qt::Uninitialized);
    result.truncate(qsizetype(libdeflate_zlib_compress(m_compressor.get(), bytes.data(), bytes.size(), result.data(),
                                                       std::size_t(result.size()))));
    return result;
}

QByteArray PdfFile::finished(PdfReference catalog, PdfReference information) &&
{
    const std::string identity = QCryptographicHash::hash(m_bytes, QCryptographicHash::Md5).toHex().toStdString();
    const qsizetype table = m_bytes.size();
    const std::size_t count = m_places.size() + 1;
    std::string end = fmt::format("xref\n0 {}\n0000000000 65535 f \n", count);
    for (const qsizetype place : m_places)
        end += fmt::format("{:010} 00000 n \n", place);
    end += fmt::format("trailer\n<< /Size {} /Root {} /Info {} /ID [<{}> <{}>] >>\nstartxref\n{}\n%%EOF\n", count,
                       catalog.text(), information.text(), identity, identity, table);
    m_bytes.append(end.data(), qsizetype(end.size()));
    return std::move(m_bytes);
}
