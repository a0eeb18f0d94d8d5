#include "attestation/page/SchemeLogos.h"

#include "support/MXLog.h"

#include <QFile>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

SchemeLogos::SchemeLogos(Bundle bundle)
    : m_bundle(std::move(bundle))
{
}

std::shared_ptr<const SchemeLogo> SchemeLogos::logoNamed(const QString& name)
{
    if (const auto known = m_logos.constFind(name); known != m_logos.cend())
        return *known;

    // Names without a resource are not remembered: cards hold any number of them.
    const std::optional<QString> path = m_bundle.pathForResource(name, u"logo"_s);
    if (!path)
        return nullptr;

    auto logo = std::make_shared<const SchemeLogo>(SchemeLogo{name, VectorImage::parsed(contentOf(*path))});
    if (!logo->image)
        MXLog::logError("Logo {} cannot be drawn", name);
    m_logos.insert(name, logo);
    return logo;
}
