#pragma once

#include <QStringView>

/// The document's title: what heads the page when that is asked for, and what names the PDF.
inline constexpr QStringView attestationTitle = u"Attestation de droits à l'assurance maladie";
