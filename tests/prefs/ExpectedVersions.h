#pragma once

#include "prefs/LVitAccessPrefs.h"
#include "tests/fakes/FakeService.h"

#include <QLabel>
#include <QString>

#include <array>

/// A version that the reading library's pane shows.
struct ExpectedField
{
    const char* name;
    QLabel* (LVitAccessPrefs::*outlet)() const;
    const char* element; // of the service's document
    const char* version;
};

inline constexpr std::array expectedFields{
    ExpectedField{"apiVersionTextField", &LVitAccessPrefs::apiVersionTextField, "version", "7.10"},
    ExpectedField{"tablebinVersionTextField", &LVitAccessPrefs::tablebinVersionTextField, "tableLibVitale", "2026.1"},
    ExpectedField{"pdtcdcVersionTextField", &LVitAccessPrefs::pdtcdcVersionTextField, "tableLibOrgDest", "<3> & 4"},
    ExpectedField{"tablehabVersionTextField", &LVitAccessPrefs::tablehabVersionTextField, "tableHab", "5"},
};

/// A service that reports all versions but one.
[[nodiscard]] inline FakeScript reporting(const QByteArray& left = {})
{
    QString document;
    for (const ExpectedField& field : expectedFields) {
        if (left != field.name)
            document += QStringLiteral("<%1>%2</%1>")
                            .arg(QLatin1StringView(field.element), QString::fromLatin1(field.version).toHtmlEscaped());
    }
    return FakeScript().text("informations", "Informations",
                             QStringLiteral("<informations><apiLecVitale>") + document +
                                 QStringLiteral("</apiLecVitale></informations>"));
}
