#pragma once

#include "platform/Bundle.h"

#include <QMap>
#include <QString>

#include <memory>
#include <optional>

class QSvgRenderer;

/// The logos of the insurance schemes: vector images among the resources, each read from its file once. Main thread
/// only.
class SchemeLogos
{
public:
    explicit SchemeLogos(Bundle bundle);

    /// The logo of that name, which is null when its file cannot be drawn; absent when there is no such resource.
    [[nodiscard]] std::optional<std::shared_ptr<QSvgRenderer>> logoNamed(const QString& name);

private:
    Bundle m_bundle;
    QMap<QString, std::shared_ptr<QSvgRenderer>> m_logos;
};
