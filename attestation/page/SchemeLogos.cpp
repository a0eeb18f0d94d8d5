#include "attestation/page/SchemeLogos.h"

#include "support/MXLog.h"

#include <QSvgRenderer>

#include <utility>

using namespace Qt::StringLiterals;

SchemeLogos::SchemeLogos(Bundle bundle)
    : m_bundle(std::move(bundle))
{
}

std::optional<std::shared_ptr<QSvgRenderer>> SchemeLogos::logoNamed(const QString& name)
{
    if (const auto known = m_logos.constFind(name); known != m_logos.cend())
        return *known;

    // Names without a resource are not remembered: cards hold any number of them.
    const std::optional<QString> path = m_bundle.pathForResource(name, u"svg"_s);
    if (!path)
        return std::nullopt;

    auto logo = std::make_shared<QSvgRenderer>(*path);
    if (!logo->isValid()) {
        MXLog::logError("Logo {} cannot be drawn", name);
        logo = nullptr;
    }
    m_logos.insert(name, logo);
    return logo;
}
