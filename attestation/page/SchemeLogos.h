#pragma once

#include "attestation/page/VectorImage.h"
#include "platform/Bundle.h"

#include <QMap>
#include <QString>

#include <memory>
#include <optional>

/// The logo of an insurance scheme. One whose file is damaged has no image: no document is made with it.
struct SchemeLogo
{
    QString name;
    std::optional<VectorImage> image;
};

/// The logos of the insurance schemes: vector images among the resources, each read from its file once. Main thread
/// only.
class SchemeLogos
{
public:
    explicit SchemeLogos(Bundle bundle);

    /// The logo of that name; null when there is no such resource.
    [[nodiscard]] std::shared_ptr<const SchemeLogo> logoNamed(const QString& name);

private:
    Bundle m_bundle;
    QMap<QString, std::shared_ptr<const SchemeLogo>> m_logos;
};
